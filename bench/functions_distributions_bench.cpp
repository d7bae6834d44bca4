// One call with changing parameters: probabilities and quantiles of the distributions, beside
// Boost.Math, GSL and, where it is installed, R's nmath.
//
// Every row runs over the same 1024 random points, a new law for each; its time is that of one
// call, the law's making included.  Ratios are to be taken to the fastest peer of the same run.

#include <benchmark/benchmark.h>
#include <gsl/gsl_cdf.h>

#include <algorithm>
#include <array>
#include <boost/math/distributions.hpp>
#include <cmath>
#include <random>
#include <vector>
#include <vexel/distributions.hpp>
#ifdef HAVE_RMATH
#define MATHLIB_STANDALONE
#include <Rmath.h>
#endif

namespace {

namespace policies = boost::math::policies;
using DoubleOnly = policies::policy<policies::promote_double<false>,
                                    policies::overflow_error<policies::ignore_error>,
                                    policies::evaluation_error<policies::ignore_error>>;

constexpr std::size_t kPoints = 1024;

// Parameters, a quantile's probability and a likely argument.
struct Point {
  double a;
  double b;
  double nc;
  double p;
  double z;  // standard normal
};

const std::array<Point, kPoints>& points() {
  static const auto all = [] {
    std::array<Point, kPoints> made{};
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

template <typename Call>
void row(benchmark::State& state, Call call) {
  const auto& all = points();
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(call(all[i]));
    i = (i + 1) % kPoints;
  }
}

double gammaPoint(const Point& q) { return std::fmax(1e-3 * q.a, q.a + q.z * std::sqrt(q.a)); }
double betaPoint(const Point& q) {
  const double mean = q.a / (q.a + q.b);
  return std::clamp(mean + q.z * std::sqrt(mean * (1.0 - mean) / (q.a + q.b + 1.0)), 1e-3, 0.999);
}
double fPoint(const Point& q) { return std::exp(0.5 * q.z); }
double trials(const Point& q) { return std::ceil(20.0 * q.a); }
double successes(const Point& q) {
  return std::clamp(std::round(trials(q) * q.p + q.z * std::sqrt(trials(q) * q.p * (1.0 - q.p))),
                    0.0, trials(q));
}
double chiPoint(const Point& q) {
  return std::fmax(0.01, q.a + q.nc + q.z * std::sqrt(2.0 * (q.a + 2.0 * q.nc)));
}
double noncentralBetaPoint(const Point& q) {
  const double a = q.a + 0.5 * q.nc;
  return std::clamp(a / (a + q.b) + 0.15 * q.z, 0.01, 0.99);
}
double noncentralTPoint(const Point& q) { return 0.25 * q.nc + 1.3 * q.z; }
// Population, marked, drawn, marked among the drawn.
std::array<std::int64_t, 4> table(const Point& q) {
  const auto n = static_cast<std::int64_t>(20.0 * (q.a + q.b)) + 10;
  const auto m = static_cast<std::int64_t>(20.0 * q.a) + 1;
  const auto l = static_cast<std::int64_t>(static_cast<double>(n) * q.p);
  const double mean = static_cast<double>(l) * static_cast<double>(m) / static_cast<double>(n);
  const auto k = static_cast<std::int64_t>(mean + q.z * std::sqrt(mean * (1.0 - q.p)));
  return {n, m, l, std::clamp(k, std::max<std::int64_t>(0, l - (n - m)), std::min(l, m))};
}

#define ROW(name, expression) \
  BENCHMARK_CAPTURE(row, name, [](const Point& q) { return expression; })

ROW(normal_cdf, vexel::Normal().cdf(3.0 * q.z));
ROW(normal_cdf_boost, cdf(boost::math::normal_distribution<double, DoubleOnly>(), 3.0 * q.z));
ROW(normal_cdf_gsl, gsl_cdf_ugaussian_P(3.0 * q.z));
ROW(normal_quantile, vexel::Normal().quantile(q.p));
ROW(normal_quantile_boost, quantile(boost::math::normal_distribution<double, DoubleOnly>(), q.p));
ROW(normal_quantile_gsl, gsl_cdf_ugaussian_Pinv(q.p));
ROW(t_cdf, vexel::StudentT(q.a).cdf(q.z));
ROW(t_cdf_boost, cdf(boost::math::students_t_distribution<double, DoubleOnly>(q.a), q.z));
ROW(t_cdf_gsl, gsl_cdf_tdist_P(q.z, q.a));
ROW(t_quantile, vexel::StudentT(q.a).quantile(q.p));
ROW(t_quantile_boost, quantile(boost::math::students_t_distribution<double, DoubleOnly>(q.a), q.p));
ROW(gamma_cdf, vexel::Gamma(q.a).cdf(gammaPoint(q)));
ROW(gamma_cdf_boost, cdf(boost::math::gamma_distribution<double, DoubleOnly>(q.a), gammaPoint(q)));
ROW(gamma_cdf_gsl, gsl_cdf_gamma_P(gammaPoint(q), q.a, 1.0));
ROW(gamma_quantile, vexel::Gamma(q.a).quantile(q.p));
ROW(gamma_quantile_boost, quantile(boost::math::gamma_distribution<double, DoubleOnly>(q.a), q.p));
ROW(gamma_quantile_gsl, gsl_cdf_gamma_Pinv(q.p, q.a, 1.0));
ROW(beta_cdf, vexel::Beta(q.a, q.b).cdf(betaPoint(q)));
ROW(beta_cdf_boost,
    cdf(boost::math::beta_distribution<double, DoubleOnly>(q.a, q.b), betaPoint(q)));
ROW(beta_cdf_gsl, gsl_cdf_beta_P(betaPoint(q), q.a, q.b));
ROW(beta_quantile, vexel::Beta(q.a, q.b).quantile(q.p));
ROW(beta_quantile_boost,
    quantile(boost::math::beta_distribution<double, DoubleOnly>(q.a, q.b), q.p));
ROW(f_cdf, vexel::FRatio(q.a, q.b).cdf(fPoint(q)));
ROW(f_quantile, vexel::FRatio(q.a, q.b).quantile(q.p));
ROW(f_quantile_boost,
    quantile(boost::math::fisher_f_distribution<double, DoubleOnly>(q.a, q.b), q.p));
ROW(poisson_cdf, vexel::Poisson(q.a).cdf(std::round(gammaPoint(q))));
ROW(poisson_cdf_boost,
    cdf(boost::math::poisson_distribution<double, DoubleOnly>(q.a), std::round(gammaPoint(q))));
ROW(binomial_cdf, vexel::Binomial(static_cast<std::int64_t>(trials(q)), q.p).cdf(successes(q)));
ROW(binomial_quantile,
    vexel::Binomial(static_cast<std::int64_t>(trials(q)), q.b / (q.a + q.b)).quantile(q.p));
ROW(hypergeometric_cdf, [](const auto& t) {
  return vexel::Hypergeometric(t[0], t[1], t[2]).cdf(static_cast<double>(t[3]));
}(table(q)));
// One law, many points: arrays of 1024.
template <typename Law>
void array(benchmark::State& state, const Law& law) {
  std::vector<double> x;
  std::vector<double> out(kPoints);
  for (const Point& point : points()) {
    x.push_back(point.z);
  }
  for (auto _ : state) {
    law.cdf(x, out);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kPoints));
}
BENCHMARK_CAPTURE(array, normal_cdf, vexel::Normal());
BENCHMARK_CAPTURE(array, t_cdf_one_df, vexel::StudentT(7.5));

ROW(hypergeometric_cdf_gsl, [](const auto& t) {
  return gsl_cdf_hypergeometric_P(static_cast<unsigned>(t[3]), static_cast<unsigned>(t[1]),
                                  static_cast<unsigned>(t[0] - t[1]), static_cast<unsigned>(t[2]));
}(table(q)));
ROW(noncentral_chi_square_cdf, vexel::NonCentralChiSquare(q.a, q.nc).cdf(chiPoint(q)));
ROW(noncentral_chi_square_cdf_boost,
    cdf(boost::math::non_central_chi_squared_distribution<double, DoubleOnly>(q.a, q.nc),
        chiPoint(q)));
ROW(noncentral_chi_square_quantile, vexel::NonCentralChiSquare(q.a, q.nc).quantile(q.p));
ROW(noncentral_chi_square_quantile_boost,
    quantile(boost::math::non_central_chi_squared_distribution<double, DoubleOnly>(q.a, q.nc),
             q.p));
ROW(noncentral_t_cdf, vexel::NonCentralStudentT(q.a, 0.25 * q.nc).cdf(noncentralTPoint(q)));
ROW(noncentral_t_cdf_boost,
    cdf(boost::math::non_central_t_distribution<double, DoubleOnly>(q.a, 0.25 * q.nc),
        noncentralTPoint(q)));
ROW(noncentral_t_quantile, vexel::NonCentralStudentT(q.a, 0.25 * q.nc).quantile(q.p));
ROW(noncentral_f_cdf, vexel::NonCentralFRatio(q.a, q.b, q.nc).cdf(3.0 * fPoint(q)));
ROW(noncentral_f_cdf_boost,
    cdf(boost::math::non_central_f_distribution<double, DoubleOnly>(q.a, q.b, q.nc),
        3.0 * fPoint(q)));
ROW(noncentral_beta_cdf, vexel::NonCentralBeta(q.a, q.b, q.nc).cdf(noncentralBetaPoint(q)));
ROW(noncentral_beta_cdf_boost,
    cdf(boost::math::non_central_beta_distribution<double, DoubleOnly>(q.a, q.b, q.nc),
        noncentralBetaPoint(q)));

#ifdef HAVE_RMATH
ROW(normal_cdf_r, pnorm(3.0 * q.z, 0, 1, 1, 0));
ROW(normal_quantile_r, qnorm(q.p, 0, 1, 1, 0));
ROW(t_cdf_r, pt(q.z, q.a, 1, 0));
ROW(t_quantile_r, qt(q.p, q.a, 1, 0));
ROW(gamma_cdf_r, pgamma(gammaPoint(q), q.a, 1.0, 1, 0));
ROW(gamma_quantile_r, qgamma(q.p, q.a, 1.0, 1, 0));
ROW(beta_cdf_r, pbeta(betaPoint(q), q.a, q.b, 1, 0));
ROW(f_cdf_r, pf(fPoint(q), q.a, q.b, 1, 0));
ROW(poisson_cdf_r, ppois(std::round(gammaPoint(q)), q.a, 1, 0));
ROW(binomial_cdf_r, pbinom(successes(q), trials(q), q.p, 1, 0));
ROW(binomial_quantile_r, qbinom(q.p, trials(q), q.b / (q.a + q.b), 1, 0));
ROW(noncentral_chi_square_cdf_r, pnchisq(chiPoint(q), q.a, q.nc, 1, 0));
ROW(noncentral_t_cdf_r, pnt(noncentralTPoint(q), q.a, 0.25 * q.nc, 1, 0));
ROW(noncentral_beta_cdf_r, pnbeta(noncentralBetaPoint(q), q.a, q.b, q.nc, 1, 0));
#endif

}  // namespace
