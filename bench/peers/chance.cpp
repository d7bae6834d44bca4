// Chance: samples, probabilities and quantiles, quasi-random points, root solves and the bootstrap,
// beside the standard library, Boost and GSL.

#include <gsl/gsl_cdf.h>
#include <gsl/gsl_errno.h>
#include <gsl/gsl_qrng.h>
#include <gsl/gsl_randist.h>
#include <gsl/gsl_roots.h>
#include <nag2/nag2.h>

#include <array>
#include <boost/math/distributions.hpp>
#include <boost/math/tools/roots.hpp>
#include <boost/random.hpp>
#include <random>
#include <string>
#include <vector>
#include <vexel/distributions.hpp>
#include <vexel/kernel.hpp>
#include <vexel/sampling.hpp>

#include "stopwatch.hpp"

namespace {

constexpr int kSample = 1'000'000;
constexpr int kCalls = 10'000;

class Chance {
 public:
  Chance() : generator_(gsl_rng_alloc(gsl_rng_mt19937)) { kernel_.loadLibrary(STATS_LIBRARY_PATH); }
  ~Chance() { gsl_rng_free(generator_); }

  void run() {
    samples();
    probabilities();
    quantiles();
    points();
    roots();
    bootstrap();
  }

 private:
  // --- samples: nanoseconds a variate ---
  template <typename... Args>
  void vexelSample(const char* job, const std::string& name, Args... parameters) {
    measure(job, "vexel", kSample, [&] {
      kernel_.call("STATS_Vexel" + name + "RandomSample_HW", kSample, parameters...);
    });
  }
  template <typename L>
  static void sample(const char* job, const L& law) {
    vexel::Random rng(1);
    std::vector<double> x(kSample);
    measure(job, "functions", kSample, [&] {
      law.sample(x, rng);
      keep(x.data());
    });
  }
  template <typename Engine, typename Distribution>
  static void sample(const char* job, const char* peer, Distribution distribution) {
    Engine engine(1);
    std::vector<double> x(kSample);
    measure(job, peer, kSample, [&] {
      for (double& v : x) {
        v = static_cast<double>(distribution(engine));
      }
      keep(x.data());
    });
  }
  template <typename Draw>
  void gslSample(const char* job, Draw draw) {
    std::vector<double> x(kSample);
    measure(job, "GSL", kSample, [&] {
      for (double& v : x) {
        v = draw(generator_);
      }
      keep(x.data());
    });
  }

  void samples() {
    using Std = std::mt19937_64;
    using Boost = boost::random::mt19937_64;
    vexelSample("uniform variates", "Uniform", 0, 1);
    sample("uniform variates", vexel::Uniform());
    sample<Std>("uniform variates", "C++", std::uniform_real_distribution<double>());
    sample<Boost>("uniform variates", "Boost", boost::random::uniform_01<double>());
    gslSample("uniform variates", [](gsl_rng* r) { return gsl_rng_uniform(r); });

    vexelSample("normal variates", "Normal", 0, 1);
    sample("normal variates", vexel::Normal());
    sample<Std>("normal variates", "C++", std::normal_distribution<double>());
    sample<Boost>("normal variates", "Boost", boost::random::normal_distribution<double>());
    gslSample("normal variates", [](gsl_rng* r) { return gsl_ran_gaussian_ziggurat(r, 1.0); });

    vexelSample("exponential variates", "Exponential", 1);
    sample("exponential variates", vexel::Exponential());
    sample<Std>("exponential variates", "C++", std::exponential_distribution<double>());
    sample<Boost>("exponential variates", "Boost",
                  boost::random::exponential_distribution<double>());
    gslSample("exponential variates", [](gsl_rng* r) { return gsl_ran_exponential(r, 1.0); });

    vexelSample("gamma(2.5) variates", "Gamma", 1, 2.5);
    sample("gamma(2.5) variates", vexel::Gamma(2.5));
    sample<Std>("gamma(2.5) variates", "C++", std::gamma_distribution<double>(2.5));
    sample<Boost>("gamma(2.5) variates", "Boost", boost::random::gamma_distribution<double>(2.5));
    gslSample("gamma(2.5) variates", [](gsl_rng* r) { return gsl_ran_gamma(r, 2.5, 1.0); });

    vexelSample("beta(2, 3) variates", "Beta", 2, 3);
    sample("beta(2, 3) variates", vexel::Beta(2, 3));
    sample<Boost>("beta(2, 3) variates", "Boost", boost::random::beta_distribution<double>(2, 3));
    gslSample("beta(2, 3) variates", [](gsl_rng* r) { return gsl_ran_beta(r, 2.0, 3.0); });

    vexelSample("Poisson(10) variates", "Poisson", 10);
    sample("Poisson(10) variates", vexel::Poisson(10));
    sample<Std>("Poisson(10) variates", "C++", std::poisson_distribution<int>(10));
    sample<Boost>("Poisson(10) variates", "Boost", boost::random::poisson_distribution<int>(10));
    gslSample("Poisson(10) variates", [](gsl_rng* r) { return gsl_ran_poisson(r, 10.0); });

    vexelSample("binomial(100, 0.3) variates", "Binomial", 100, 0.3);
    sample("binomial(100, 0.3) variates", vexel::Binomial(100, 0.3));
    sample<Std>("binomial(100, 0.3) variates", "C++", std::binomial_distribution<int>(100, 0.3));
    sample<Boost>("binomial(100, 0.3) variates", "Boost",
                  boost::random::binomial_distribution<int>(100, 0.3));
    gslSample("binomial(100, 0.3) variates",
              [](gsl_rng* r) { return gsl_ran_binomial(r, 0.3, 100); });
  }

  // --- distribution functions: nanoseconds a call, arguments over the middle of the range ---
  template <typename F>
  static void call(const std::string& job, const char* peer, double from, double to, F f) {
    measure(job.c_str(), peer, kCalls, [&] {
      double sum = 0.0;
      for (int i = 0; i < kCalls; ++i) {
        sum += f(from + (to - from) * (i + 0.5) / kCalls);
      }
      keep(sum);
    });
  }

  static void probabilities() {
    namespace bm = boost::math;
    NagError fail{};
    const auto boost = [](const std::string& job, double from, double to, auto distribution) {
      call(job, "Boost", from, to, [&](double x) { return bm::cdf(distribution, x); });
    };
    call("normal probability", "vexel", -3, 3,
         [&](double x) { return nag2_normal_probability(Nag_LowerTail, x, &fail); });
    boost("normal probability", -3, 3, bm::normal());
    call("normal probability", "GSL", -3, 3, [](double x) { return gsl_cdf_ugaussian_P(x); });

    call("Student t(5) probability", "vexel", -3, 3,
         [&](double x) { return nag2_student_t_probability(Nag_LowerTail, x, 5, &fail); });
    boost("Student t(5) probability", -3, 3, bm::students_t(5));
    call("Student t(5) probability", "GSL", -3, 3, [](double x) { return gsl_cdf_tdist_P(x, 5); });

    call("gamma(2.5) probability", "vexel", 0, 8,
         [&](double x) { return nag2_gamma_probability(Nag_LowerTail, x, 2.5, 1, &fail); });
    boost("gamma(2.5) probability", 0, 8, bm::gamma_distribution<>(2.5, 1));
    call("gamma(2.5) probability", "GSL", 0, 8,
         [](double x) { return gsl_cdf_gamma_P(x, 2.5, 1.0); });

    call("beta(2, 3) probability", "vexel", 0, 1,
         [&](double x) { return nag2_beta_probability(x, 2, 3, 0, &fail); });
    boost("beta(2, 3) probability", 0, 1, bm::beta_distribution<>(2, 3));
    call("beta(2, 3) probability", "GSL", 0, 1,
         [](double x) { return gsl_cdf_beta_P(x, 2.0, 3.0); });

    call("F(5, 7) probability", "vexel", 0, 5,
         [&](double x) { return nag2_f_probability(Nag_LowerTail, x, 5, 7, &fail); });
    boost("F(5, 7) probability", 0, 5, bm::fisher_f(5, 7));
    call("F(5, 7) probability", "GSL", 0, 5, [](double x) { return gsl_cdf_fdist_P(x, 5, 7); });

    call("Poisson(10) probability", "vexel", 0, 25, [&](double x) {
      double le = 0.0;
      double gt = 0.0;
      double eq = 0.0;
      nag2_poisson(10, static_cast<int>(x), &le, &gt, &eq, &fail);
      return le;
    });
    call("Poisson(10) probability", "Boost", 0, 25,
         [](double x) { return bm::cdf(bm::poisson(10), std::floor(x)); });
    call("Poisson(10) probability", "GSL", 0, 25,
         [](double x) { return gsl_cdf_poisson_P(static_cast<unsigned>(x), 10); });

    call("binomial(100, 0.3) probability", "vexel", 10, 50, [&](double x) {
      double le = 0.0;
      double gt = 0.0;
      double eq = 0.0;
      nag2_binomial(100, 0.3, static_cast<int>(x), &le, &gt, &eq, &fail);
      return le;
    });
    call("binomial(100, 0.3) probability", "Boost", 10, 50,
         [](double x) { return bm::cdf(bm::binomial(100, 0.3), std::floor(x)); });
    call("binomial(100, 0.3) probability", "GSL", 10, 50,
         [](double x) { return gsl_cdf_binomial_P(static_cast<unsigned>(x), 0.3, 100); });
  }

  static void quantiles() {
    namespace bm = boost::math;
    NagError fail{};
    const auto boost = [](const std::string& job, auto distribution) {
      call(job, "Boost", 0, 1, [&](double p) { return bm::quantile(distribution, p); });
    };
    call("normal quantile", "vexel", 0, 1,
         [&](double p) { return nag2_normal_quantile(Nag_LowerTail, p, &fail); });
    boost("normal quantile", bm::normal());
    call("normal quantile", "GSL", 0, 1, [](double p) { return gsl_cdf_ugaussian_Pinv(p); });

    call("Student t(5) quantile", "vexel", 0, 1,
         [&](double p) { return nag2_student_t_quantile(Nag_LowerTail, p, 5, &fail); });
    boost("Student t(5) quantile", bm::students_t(5));
    call("Student t(5) quantile", "GSL", 0, 1, [](double p) { return gsl_cdf_tdist_Pinv(p, 5); });

    call("gamma(2.5) quantile", "vexel", 0, 1,
         [&](double p) { return nag2_gamma_quantile(p, 2.5, 1, 0, &fail); });
    boost("gamma(2.5) quantile", bm::gamma_distribution<>(2.5, 1));
    call("gamma(2.5) quantile", "GSL", 0, 1,
         [](double p) { return gsl_cdf_gamma_Pinv(p, 2.5, 1.0); });

    call("beta(2, 3) quantile", "vexel", 0, 1,
         [&](double p) { return nag2_beta_quantile(p, 2, 3, 0, &fail); });
    boost("beta(2, 3) quantile", bm::beta_distribution<>(2, 3));
    call("beta(2, 3) quantile", "GSL", 0, 1,
         [](double p) { return gsl_cdf_beta_Pinv(p, 2.0, 3.0); });
  }

  // --- a million points in ten dimensions: nanoseconds a coordinate ---
  void points() {
    constexpr int kPoints = 1'000'000;
    const vexel::Value out = kernel_.eval("Array(1..10, 1..1000000, datatype = float[8])");
    const auto stream = [&](const char* job, const vexel::Value& handle) {
      measure(job, "vexel", 10.0 * kPoints,
              [&] { kernel_.call("STATS_QRStreamNext_HW", handle, kPoints, out); });
    };
    stream("Sobol points, 10 dimensions", kernel_.eval(R"(
      read := name -> ReadCSV(")" SOURCE_DIR R"(/examples/lds/direction_numbers.csv", name):
      column := proc(name) local k, x, A;
        x := read(name); A := Array(1..10, datatype = integer[4]);
        for k from 1 to 10 do A[k] := round(x[k]) end; A end:
      degrees := column("degree"): codes := column("code"):
      directions := Array(1..10, 1..30, datatype = integer[8], order = row):
      for k from 1 to 13 do
        m := read(cat("m", k));
        for j from 1 to 10 do if k <= max(1, degrees[j]) then directions[j, k] := m[j] end end
      end:
      STATS_InitializeQRStream_HW(10, 0, degrees, codes, directions, 30);)"));
    stream("Halton points, 10 dimensions", kernel_.eval("STATS_InitializeQRStream_HW(10, 1)"));
    const auto gsl = [&](const char* job, const gsl_qrng_type* type) {
      gsl_qrng* q = gsl_qrng_alloc(type, 10);
      std::vector<double> x(10 * kPoints);
      measure(job, "GSL", 10.0 * kPoints, [&] {
        for (int i = 0; i < kPoints; ++i) {
          gsl_qrng_get(q, &x[10 * static_cast<std::size_t>(i)]);
        }
      });
      gsl_qrng_free(q);
    };
    gsl("Sobol points, 10 dimensions", gsl_qrng_sobol);
    gsl("Halton points, 10 dimensions", gsl_qrng_halton);
  }

  // --- x^3 - 2 x - 5 = 0 by Brent's method, the user's function: microseconds a solve ---
  void roots() {
    const char* job = "Brent solve, the user's function";
    const vexel::Value f = kernel_.eval("x -> x^3 - 2*x - 5");
    measure(job, "vexel", 1000, [&] {
      for (int i = 0; i < 1000; ++i) {
        kernel_.call("STATS_VexelBrentMethod_HW", 0.0, f, 2.0, 3.0, 1, 100);
      }
    });
    measure(job, "Boost", 1000, [&] {
      for (int i = 0; i < 1000; ++i) {
        std::uintmax_t limit = 100;
        keep(boost::math::tools::toms748_solve([](double x) { return x * x * x - 2 * x - 5; }, 2.0,
                                               3.0, boost::math::tools::eps_tolerance<double>(52),
                                               limit));
      }
    });
    gsl_set_error_handler_off();
    gsl_root_fsolver* solver = gsl_root_fsolver_alloc(gsl_root_fsolver_brent);
    gsl_function function{[](double x, void*) { return x * x * x - 2 * x - 5; }, nullptr};
    measure(job, "GSL", 1000, [&] {
      for (int i = 0; i < 1000; ++i) {
        gsl_root_fsolver_set(solver, &function, 2.0, 3.0);
        int status = GSL_CONTINUE;
        for (int k = 0; k < 100 && status == GSL_CONTINUE; ++k) {
          gsl_root_fsolver_iterate(solver);
          status = gsl_root_test_interval(gsl_root_fsolver_x_lower(solver),
                                          gsl_root_fsolver_x_upper(solver), 0.0, 4.5e-16);
        }
      }
    });
    gsl_root_fsolver_free(solver);
  }

  void bootstrap() {
    const char* job = "bootstrap, 2000 means of 1000";
    const vexel::Value data = kernel_.call("STATS_VexelNormalRandomSample_HW", 1000, 0, 1);
    const vexel::Value mean =
        kernel_.eval("x -> STATS_VexelMean_HW(x, Array(1..0, datatype = float[8]), false, 0)");
    measure(job, "vexel", 1, [&] {
      kernel_.call("STATS_VexelBootstrapStatistic_HW", data, kernel_.array({}), mean, 1000, 2000);
    });
    const std::vector<double> x = data.numbers();
    vexel::Random rng(1);
    measure(job, "functions", 1, [&] {
      keep(vexel::bootstrap(x, vexel::Statistic::mean, rng, {.replicates = 2000}).estimate);
    });
    std::mt19937_64 random(1);
    std::uniform_int_distribution<std::size_t> index(0, 999);
    measure(job, "C++", 1, [&] {
      for (int i = 0; i < 2000; ++i) {
        double sum = 0.0;
        for (int k = 0; k < 1000; ++k) {
          sum += x[index(random)];
        }
        keep(sum);
      }
    });
  }

  vexel::Kernel kernel_;
  gsl_rng* generator_;
};

}  // namespace

void measureChance() { Chance().run(); }
