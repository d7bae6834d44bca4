// Chance: samples, urns, quasi-random points, root solves and the bootstrap, beside the standard
// library, Boost and GSL.

#include <gsl/gsl_errno.h>
#include <gsl/gsl_qrng.h>
#include <gsl/gsl_randist.h>
#include <gsl/gsl_roots.h>

#include <algorithm>
#include <boost/math/tools/roots.hpp>
#include <boost/random.hpp>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <random>
#include <string>
#include <vector>
#include <vexel/distributions.hpp>
#include <vexel/kernel.hpp>
#include <vexel/own_laws.hpp>
#include <vexel/random.hpp>
#include <vexel/roots.hpp>
#include <vexel/sampling.hpp>
#include <vexel/sequences.hpp>

#include "stopwatch.hpp"

namespace {

constexpr int kSample = 1'000'000;

class Chance {
 public:
  Chance() : generator_(gsl_rng_alloc(gsl_rng_mt19937)) { kernel_.loadLibrary(STATS_LIBRARY_PATH); }
  ~Chance() { gsl_rng_free(generator_); }

  void run() {
    samples();
    urns();
    ownLaws();
    points();
    roots();
    bootstrap();
  }

 private:
  // --- samples: nanoseconds a variate ---
  template <typename... Args>
  void vexelSample(const char* job, const std::string& name, Args... parameters) {
    measure(job, "entry points", kSample, [&] {
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

  void urns() {
    std::vector<double> weights(1000);
    std::iota(weights.begin(), weights.end(), 1.0);
    const char* job = "alias urn of 1000";
    measure(job, "entry points", kSample, [&] {
      kernel_.call("STATS_VexelAliasUrnSample_HW", kSample, kernel_.toValue(weights));
    });
    const vexel::Urn urn{vexel::Data(weights)};
    std::vector<std::int64_t> drawn(kSample);
    measure(job, "functions", kSample, [&] { urn.sample(drawn, random_); });
    gsl_ran_discrete_t* table = gsl_ran_discrete_preproc(weights.size(), weights.data());
    gslSample(job, [&](gsl_rng* r) { return static_cast<double>(gsl_ran_discrete(r, table)); });
    gsl_ran_discrete_free(table);

    job = "shuffle of 10^7";
    std::vector<double> x(10'000'000);
    measure(job, "functions", 1, [&] { vexel::shuffle(x, random_); });
    measure(job, "entry points", 1,
            [&] { kernel_.call("STATS_VexelShuffle_HW", kernel_.wrap(x)); });
    std::mt19937_64 engine(1);
    measure(job, "C++", 1, [&] { std::shuffle(x.begin(), x.end(), engine); });
    measure(job, "GSL", 1,
            [&] { gsl_ran_shuffle(generator_, x.data(), x.size(), sizeof(double)); });
  }

  void ownLaws() {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    sample("own log-concave density", vexel::Density([](double t) { return std::exp(-t * t / 2); },
                                                     {.support = {-infinity, infinity}}));
    sample("own distribution function", vexel::CumulativeDistribution([](double t) {
             return 0.5 * std::erfc(-t * std::sqrt(0.5));
           }));
  }

  // --- a million points in ten dimensions: nanoseconds a coordinate ---
  void points() {
    constexpr int kPoints = 1'000'000;
    const vexel::Value out = kernel_.eval("Array(1..10, 1..1000000, datatype = float[8])");
    const auto stream = [&](const char* job, const vexel::Value& handle) {
      measure(job, "entry points", 10.0 * kPoints,
              [&] { kernel_.call("STATS_QRStreamNext_HW", handle, kPoints, out); });
    };
    stream("Sobol points, 10 dimensions", kernel_.eval(R"(
      read := name -> ReadCSV(")" SOURCE_DIR R"(/functions/sequences/direction_numbers.csv", name):
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
    stream("Faure points, 10 dimensions", kernel_.eval("STATS_InitializeQRStream_HW(10, 2)"));
    const auto sequence = [&](const char* job, auto made) {
      std::vector<double> x(10 * kPoints);
      measure(job, "functions", 10.0 * kPoints, [&] {
        made.reset();
        made.points(kPoints, x);
      });
    };
    sequence("Sobol points, 10 dimensions", vexel::Sobol(10));
    sequence("Halton points, 10 dimensions", vexel::Halton(10));
    sequence("Faure points, 10 dimensions", vexel::Faure(10));
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
    measure(job, "entry points", 1000, [&] {
      for (int i = 0; i < 1000; ++i) {
        kernel_.call("STATS_VexelBrentMethod_HW", 0.0, f, 2.0, 3.0, 1, 100);
      }
    });
    measure(job, "functions", 1000, [&] {
      for (int i = 0; i < 1000; ++i) {
        keep(vexel::find_root([](double x) { return x * x * x - 2 * x - 5; }, {2.0, 3.0}).root);
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
    measure(job, "entry points", 1, [&] {
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
  vexel::Random random_{1};
  gsl_rng* generator_;
};

}  // namespace

void measureChance() { Chance().run(); }
