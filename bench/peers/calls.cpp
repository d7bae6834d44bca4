// Probabilities and quantiles: arrays of arguments under one law, and single calls with changing
// parameters, in this library's functions and in the numerical library behind the entry points,
// beside Boost, GSL and R's nmath.
#include <gsl/gsl_cdf.h>
#include <nag2/nag2.h>

#include <algorithm>
#include <array>
#include <boost/math/distributions.hpp>
#include <cmath>
#include <random>
#include <string>
#include <vector>
#include <vexel/distributions.hpp>
#ifdef HAVE_RMATH
#define MATHLIB_STANDALONE
#include <Rmath.h>
#endif

#include "stopwatch.hpp"

namespace {

namespace bm = boost::math;
namespace policies = bm::policies;
using DoubleOnly = policies::policy<policies::promote_double<false>,
                                    policies::overflow_error<policies::ignore_error>,
                                    policies::evaluation_error<policies::ignore_error>>;

// --- one law, an array of arguments over the middle of the range; nanoseconds an argument ---

constexpr int kArguments = 100'000;

template <typename F>
void call(const std::string& job, const char* peer, double from, double to, F f) {
  measure(job.c_str(), peer, kArguments, [&] {
    double sum = 0.0;
    for (int i = 0; i < kArguments; ++i) {
      sum += f(from + (to - from) * (i + 0.5) / kArguments);
    }
    keep(sum);
  });
}

template <typename L>
void functions(const std::string& job, double from, double to, const L& law) {
  std::vector<double> x;
  for (int i = 0; i < kArguments; ++i) {
    x.push_back(from + (to - from) * (i + 0.5) / kArguments);
  }
  std::vector<double> p(x.size());
  const bool inverse = job.find("quantile") != std::string::npos;
  measure(job.c_str(), "functions", kArguments, [&] {
    inverse ? law.quantile(x, p) : law.cdf(x, p);
    keep(p.data());
  });
}

// The third of what the numerical library tells of a discrete law.
template <typename F>
double lower(F f) {
  double le = 0.0;
  double gt = 0.0;
  double eq = 0.0;
  f(&le, &gt, &eq);
  return le;
}

void probabilities() {
  NagError fail{};
  const auto boost = [](const std::string& job, double from, double to, auto distribution) {
    call(job, "Boost", from, to, [&](double x) { return bm::cdf(distribution, x); });
  };
  std::string job = "normal probability";
  functions(job, -3, 3, vexel::Normal());
  call(job, "entry points", -3, 3,
       [&](double x) { return nag2_normal_probability(Nag_LowerTail, x, &fail); });
  boost(job, -3, 3, bm::normal());
  call(job, "GSL", -3, 3, [](double x) { return gsl_cdf_ugaussian_P(x); });

  job = "Student t(5) probability";
  functions(job, -3, 3, vexel::StudentT(5));
  call(job, "entry points", -3, 3,
       [&](double x) { return nag2_student_t_probability(Nag_LowerTail, x, 5, &fail); });
  boost(job, -3, 3, bm::students_t(5));
  call(job, "GSL", -3, 3, [](double x) { return gsl_cdf_tdist_P(x, 5); });

  job = "gamma(2.5) probability";
  functions(job, 0, 8, vexel::Gamma(2.5));
  call(job, "entry points", 0, 8,
       [&](double x) { return nag2_gamma_probability(Nag_LowerTail, x, 2.5, 1, &fail); });
  boost(job, 0, 8, bm::gamma_distribution<>(2.5, 1));
  call(job, "GSL", 0, 8, [](double x) { return gsl_cdf_gamma_P(x, 2.5, 1.0); });

  job = "beta(2, 3) probability";
  functions(job, 0, 1, vexel::Beta(2, 3));
  call(job, "entry points", 0, 1,
       [&](double x) { return nag2_beta_probability(x, 2, 3, 0, &fail); });
  boost(job, 0, 1, bm::beta_distribution<>(2, 3));
  call(job, "GSL", 0, 1, [](double x) { return gsl_cdf_beta_P(x, 2.0, 3.0); });

  job = "F(5, 7) probability";
  functions(job, 0, 5, vexel::FRatio(5, 7));
  call(job, "entry points", 0, 5,
       [&](double x) { return nag2_f_probability(Nag_LowerTail, x, 5, 7, &fail); });
  boost(job, 0, 5, bm::fisher_f(5, 7));
  call(job, "GSL", 0, 5, [](double x) { return gsl_cdf_fdist_P(x, 5, 7); });

  job = "Poisson(10) probability";
  functions(job, 0, 25, vexel::Poisson(10));
  call(job, "entry points", 0, 25, [&](double x) {
    return lower([&](double* le, double* gt, double* eq) {
      nag2_poisson(10, static_cast<int>(x), le, gt, eq, &fail);
    });
  });
  call(job, "Boost", 0, 25, [](double x) { return bm::cdf(bm::poisson(10), std::floor(x)); });
  call(job, "GSL", 0, 25, [](double x) { return gsl_cdf_poisson_P(static_cast<unsigned>(x), 10); });

  job = "binomial(100, 0.3) probability";
  functions(job, 10, 50, vexel::Binomial(100, 0.3));
  call(job, "entry points", 10, 50, [&](double x) {
    return lower([&](double* le, double* gt, double* eq) {
      nag2_binomial(100, 0.3, static_cast<int>(x), le, gt, eq, &fail);
    });
  });
  call(job, "Boost", 10, 50,
       [](double x) { return bm::cdf(bm::binomial(100, 0.3), std::floor(x)); });
  call(job, "GSL", 10, 50,
       [](double x) { return gsl_cdf_binomial_P(static_cast<unsigned>(x), 0.3, 100); });
}

void quantiles() {
  NagError fail{};
  const auto boost = [](const std::string& job, auto distribution) {
    call(job, "Boost", 0, 1, [&](double p) { return bm::quantile(distribution, p); });
  };
  std::string job = "normal quantile";
  functions(job, 0, 1, vexel::Normal());
  call(job, "entry points", 0, 1,
       [&](double p) { return nag2_normal_quantile(Nag_LowerTail, p, &fail); });
  boost(job, bm::normal());
  call(job, "GSL", 0, 1, [](double p) { return gsl_cdf_ugaussian_Pinv(p); });

  job = "Student t(5) quantile";
  functions(job, 0, 1, vexel::StudentT(5));
  call(job, "entry points", 0, 1,
       [&](double p) { return nag2_student_t_quantile(Nag_LowerTail, p, 5, &fail); });
  boost(job, bm::students_t(5));
  call(job, "GSL", 0, 1, [](double p) { return gsl_cdf_tdist_Pinv(p, 5); });

  job = "gamma(2.5) quantile";
  functions(job, 0, 1, vexel::Gamma(2.5));
  call(job, "entry points", 0, 1,
       [&](double p) { return nag2_gamma_quantile(p, 2.5, 1, 0, &fail); });
  boost(job, bm::gamma_distribution<>(2.5, 1));
  call(job, "GSL", 0, 1, [](double p) { return gsl_cdf_gamma_Pinv(p, 2.5, 1.0); });

  job = "beta(2, 3) quantile";
  functions(job, 0, 1, vexel::Beta(2, 3));
  call(job, "entry points", 0, 1, [&](double p) { return nag2_beta_quantile(p, 2, 3, 0, &fail); });
  boost(job, bm::beta_distribution<>(2, 3));
  call(job, "GSL", 0, 1, [](double p) { return gsl_cdf_beta_Pinv(p, 2.0, 3.0); });
}

// --- one call, changing parameters: a new law for each of 1024 random points ---

constexpr std::size_t kPoints = 1024;

// Parameters, a quantile's probability and a likely argument.
struct Point {
  double a;
  double b;
  double nc;
  double p;
  double z;  // standard normal

  double gamma() const { return std::fmax(1e-3 * a, a + z * std::sqrt(a)); }
  double beta() const {
    const double mean = a / (a + b);
    return std::clamp(mean + z * std::sqrt(mean * (1.0 - mean) / (a + b + 1.0)), 1e-3, 0.999);
  }
  double ratio() const { return 3.0 * std::exp(0.5 * z); }
  std::int64_t trials() const { return static_cast<std::int64_t>(std::ceil(20.0 * a)); }
  double share() const { return b / (a + b); }
  double count() const {  // under Poisson(a)
    return std::round(gamma());
  }
  double chi() const { return std::fmax(0.01, a + nc + z * std::sqrt(2.0 * (a + 2.0 * nc))); }
  double noncentralBeta() const {
    return std::clamp((a + 0.5 * nc) / (a + 0.5 * nc + b) + 0.15 * z, 0.01, 0.99);
  }
  double delta() const { return 0.25 * nc; }
  double noncentralT() const { return delta() + 1.3 * z; }
  // Population, marked, drawn, marked among the drawn.
  std::array<std::int64_t, 4> table() const {
    const auto n = static_cast<std::int64_t>(20.0 * (a + b)) + 10;
    const auto m = static_cast<std::int64_t>(20.0 * a) + 1;
    const auto l = static_cast<std::int64_t>(static_cast<double>(n) * p);
    const double mean = static_cast<double>(l) * static_cast<double>(m) / static_cast<double>(n);
    const auto k = static_cast<std::int64_t>(mean + z * std::sqrt(mean * (1.0 - p)));
    return {n, m, l, std::clamp(k, std::max<std::int64_t>(0, l - (n - m)), std::min(l, m))};
  }
};

const std::vector<Point>& points() {
  static const auto all = [] {
    std::vector<Point> made(kPoints);
    std::mt19937_64 engine(20);
    std::uniform_real_distribution<double> uniform;
    std::normal_distribution<double> normal;
    for (Point& point : made) {
      point = {std::exp(4.0 * uniform(engine) - 0.5), std::exp(4.0 * uniform(engine) - 0.5),
               20.0 * uniform(engine), uniform(engine), normal(engine)};
    }
    return made;
  }();
  return all;
}

template <typename F>
void change(const char* job, const char* peer, F f) {
  const std::vector<Point>& all = points();
  measure(job, peer, 8.0 * kPoints, [&] {
    double sum = 0.0;
    for (int turn = 0; turn < 8; ++turn) {
      for (const Point& point : all) {
        sum += f(point);
      }
    }
    keep(sum);
  });
}

#define ROW(job, peer, expression) change(job, peer, [&](const Point& q) { return expression; })
#ifdef HAVE_RMATH
#define R_ROW(job, expression) ROW(job, "R", expression)
#else
#define R_ROW(job, expression) static_assert(true, "")
#endif

void normalCalls() {
  NagError fail{};
  const bm::normal_distribution<double, DoubleOnly> normal;
  ROW("normal cdf, a call", "functions", vexel::Normal().cdf(3 * q.z));
  ROW("normal cdf, a call", "entry points", nag2_normal_probability(Nag_LowerTail, 3 * q.z, &fail));
  ROW("normal cdf, a call", "Boost", cdf(normal, 3 * q.z));
  ROW("normal cdf, a call", "GSL", gsl_cdf_ugaussian_P(3 * q.z));
  R_ROW("normal cdf, a call", pnorm(3 * q.z, 0, 1, 1, 0));
  ROW("normal quantile, a call", "functions", vexel::Normal().quantile(q.p));
  ROW("normal quantile, a call", "entry points", nag2_normal_quantile(Nag_LowerTail, q.p, &fail));
  ROW("normal quantile, a call", "Boost", quantile(normal, q.p));
  ROW("normal quantile, a call", "GSL", gsl_cdf_ugaussian_Pinv(q.p));
  R_ROW("normal quantile, a call", qnorm(q.p, 0, 1, 1, 0));
  using T = bm::students_t_distribution<double, DoubleOnly>;
  ROW("t cdf, a call", "functions", vexel::StudentT(q.a).cdf(q.z));
  ROW("t cdf, a call", "entry points", nag2_student_t_probability(Nag_LowerTail, q.z, q.a, &fail));
  ROW("t cdf, a call", "Boost", cdf(T(q.a), q.z));
  ROW("t cdf, a call", "GSL", gsl_cdf_tdist_P(q.z, q.a));
  R_ROW("t cdf, a call", pt(q.z, q.a, 1, 0));
}

void gammaCalls() {
  NagError fail{};
  using Law = bm::gamma_distribution<double, DoubleOnly>;
  ROW("gamma cdf, a call", "functions", vexel::Gamma(q.a).cdf(q.gamma()));
  ROW("gamma cdf, a call", "entry points",
      nag2_gamma_probability(Nag_LowerTail, q.gamma(), q.a, 1, &fail));
  ROW("gamma cdf, a call", "Boost", cdf(Law(q.a), q.gamma()));
  ROW("gamma cdf, a call", "GSL", gsl_cdf_gamma_P(q.gamma(), q.a, 1.0));
  R_ROW("gamma cdf, a call", pgamma(q.gamma(), q.a, 1.0, 1, 0));
  ROW("gamma quantile, a call", "functions", vexel::Gamma(q.a).quantile(q.p));
  ROW("gamma quantile, a call", "entry points", nag2_gamma_quantile(q.p, q.a, 1, 0, &fail));
  ROW("gamma quantile, a call", "Boost", quantile(Law(q.a), q.p));
  ROW("gamma quantile, a call", "GSL", gsl_cdf_gamma_Pinv(q.p, q.a, 1.0));
  R_ROW("gamma quantile, a call", qgamma(q.p, q.a, 1.0, 1, 0));
}

void betaCalls() {
  NagError fail{};
  using Law = bm::beta_distribution<double, DoubleOnly>;
  using Ratio = bm::fisher_f_distribution<double, DoubleOnly>;
  ROW("beta cdf, a call", "functions", vexel::Beta(q.a, q.b).cdf(q.beta()));
  ROW("beta cdf, a call", "entry points", nag2_beta_probability(q.beta(), q.a, q.b, 0, &fail));
  ROW("beta cdf, a call", "Boost", cdf(Law(q.a, q.b), q.beta()));
  ROW("beta cdf, a call", "GSL", gsl_cdf_beta_P(q.beta(), q.a, q.b));
  R_ROW("beta cdf, a call", pbeta(q.beta(), q.a, q.b, 1, 0));
  ROW("beta quantile, a call", "functions", vexel::Beta(q.a, q.b).quantile(q.p));
  ROW("beta quantile, a call", "entry points", nag2_beta_quantile(q.p, q.a, q.b, 0, &fail));
  ROW("beta quantile, a call", "Boost", quantile(Law(q.a, q.b), q.p));
  ROW("F quantile, a call", "functions", vexel::FRatio(q.a, q.b).quantile(q.p));
  ROW("F quantile, a call", "entry points", nag2_f_quantile(q.p, q.a, q.b, &fail));
  ROW("F quantile, a call", "Boost", quantile(Ratio(q.a, q.b), q.p));
}

void discreteCalls() {
  NagError fail{};
  const char* job = "Poisson cdf, a call";
  ROW(job, "functions", vexel::Poisson(q.a).cdf(q.count()));
  ROW(job, "entry points", lower([&](double* le, double* gt, double* eq) {
        nag2_poisson(q.a, static_cast<std::int64_t>(q.count()), le, gt, eq, &fail);
      }));
  ROW(job, "Boost", cdf(bm::poisson_distribution<double, DoubleOnly>(q.a), q.count()));
  ROW(job, "GSL", gsl_cdf_poisson_P(static_cast<unsigned>(q.count()), q.a));
  R_ROW(job, ppois(q.count(), q.a, 1, 0));
  job = "binomial quantile, a call";
  ROW(job, "functions", vexel::Binomial(q.trials(), q.share()).quantile(q.p));
  ROW(job, "Boost",
      quantile(
          bm::binomial_distribution<double, DoubleOnly>(static_cast<double>(q.trials()), q.share()),
          q.p));
  R_ROW(job, qbinom(q.p, static_cast<double>(q.trials()), q.share(), 1, 0));
  job = "hypergeometric cdf, a call";
  const auto of = [](const Point& q, auto f) {
    const auto t = q.table();
    return f(t[0], t[1], t[2], t[3]);
  };
  ROW(job, "functions", of(q, [](auto n, auto m, auto l, auto k) {
        return vexel::Hypergeometric(n, m, l).cdf(static_cast<double>(k));
      }));
  ROW(job, "entry points", of(q, [&](auto n, auto m, auto l, auto k) {
        return lower([&](double* le, double* gt, double* eq) {
          nag2_hypergeometric(n, l, m, k, le, gt, eq, &fail);
        });
      }));
  ROW(job, "GSL", of(q, [](auto n, auto m, auto l, auto k) {
        return gsl_cdf_hypergeometric_P(static_cast<unsigned>(k), static_cast<unsigned>(m),
                                        static_cast<unsigned>(n - m), static_cast<unsigned>(l));
      }));
}

void noncentralCalls() {
  NagError fail{};
  using Chi = bm::non_central_chi_squared_distribution<double, DoubleOnly>;
  using T = bm::non_central_t_distribution<double, DoubleOnly>;
  using Ratio = bm::non_central_f_distribution<double, DoubleOnly>;
  using Law = bm::non_central_beta_distribution<double, DoubleOnly>;
  const char* job = "non-central chi-square cdf, a call";
  ROW(job, "functions", vexel::NonCentralChiSquare(q.a, q.nc).cdf(q.chi()));
  ROW(job, "entry points",
      nag2_noncentral_chi_square_probability(q.chi(), q.a, q.nc, 0, 1000, &fail));
  ROW(job, "Boost", cdf(Chi(q.a, q.nc), q.chi()));
  R_ROW(job, pnchisq(q.chi(), q.a, q.nc, 1, 0));
  job = "non-central chi-square quantile, a call";
  ROW(job, "functions", vexel::NonCentralChiSquare(q.a, q.nc).quantile(q.p));
  ROW(job, "Boost", quantile(Chi(q.a, q.nc), q.p));
  job = "non-central t cdf, a call";
  ROW(job, "functions", vexel::NonCentralStudentT(q.a, q.delta()).cdf(q.noncentralT()));
  ROW(job, "entry points",
      nag2_noncentral_t_probability(q.noncentralT(), q.a, q.delta(), 0, 1000, &fail));
  ROW(job, "Boost", cdf(T(q.a, q.delta()), q.noncentralT()));
  R_ROW(job, pnt(q.noncentralT(), q.a, q.delta(), 1, 0));
  job = "non-central F cdf, a call";
  ROW(job, "functions", vexel::NonCentralFRatio(q.a, q.b, q.nc).cdf(q.ratio()));
  ROW(job, "entry points",
      nag2_noncentral_f_probability(q.ratio(), q.a, q.b, q.nc, 0, 1000, &fail));
  ROW(job, "Boost", cdf(Ratio(q.a, q.b, q.nc), q.ratio()));
  job = "non-central beta cdf, a call";
  ROW(job, "functions", vexel::NonCentralBeta(q.a, q.b, q.nc).cdf(q.noncentralBeta()));
  ROW(job, "entry points",
      nag2_noncentral_beta_probability(q.noncentralBeta(), q.a, q.b, q.nc, 0, 1000, &fail));
  ROW(job, "Boost", cdf(Law(q.a, q.b, q.nc), q.noncentralBeta()));
  R_ROW(job, pnbeta(q.noncentralBeta(), q.a, q.b, q.nc, 1, 0));
}

}  // namespace

void measureCalls() {
  probabilities();
  quantiles();
  normalCalls();
  gammaCalls();
  betaCalls();
  discreteCalls();
  noncentralCalls();
}
