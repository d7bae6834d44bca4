// Random numbers, variates, urns, shuffles, the bootstrap and own laws of the functions, beside the
// standard library, Boost and GSL.

#include <benchmark/benchmark.h>
#include <gsl/gsl_randist.h>
#include <gsl/gsl_rng.h>

#include <algorithm>
#include <boost/random/beta_distribution.hpp>
#include <boost/random/binomial_distribution.hpp>
#include <boost/random/exponential_distribution.hpp>
#include <boost/random/gamma_distribution.hpp>
#include <boost/random/mersenne_twister.hpp>
#include <boost/random/normal_distribution.hpp>
#include <boost/random/poisson_distribution.hpp>
#include <boost/random/uniform_01.hpp>
#include <cmath>
#include <numeric>
#include <random>
#include <vexel/distributions.hpp>
#include <vexel/sampling.hpp>

namespace {

constexpr std::size_t kSize = 10'000'000;

template <typename Fill>
void fill(benchmark::State& state, Fill draw) {
  std::vector<double> out(kSize);
  for (auto _ : state) {
    draw(out);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * static_cast<long>(kSize));
}

template <typename L>
void law(benchmark::State& state, const L& d) {
  vexel::Random rng(1);
  fill(state, [&](std::vector<double>& out) { d.sample(out, rng); });
}

template <typename Distribution>
void boostLaw(benchmark::State& state, Distribution d) {
  boost::random::mt19937_64 engine(1);
  fill(state, [&](std::vector<double>& out) {
    std::generate(out.begin(), out.end(), [&] { return static_cast<double>(d(engine)); });
  });
}

template <typename Variate>
void gslLaw(benchmark::State& state, Variate variate) {
  gsl_rng* rng = gsl_rng_alloc(gsl_rng_taus2);
  fill(state, [&](std::vector<double>& out) {
    std::generate(out.begin(), out.end(), [&] { return static_cast<double>(variate(rng)); });
  });
  gsl_rng_free(rng);
}

#define JOB(name, ...) BENCHMARK_CAPTURE(__VA_ARGS__)->Name(name)->Unit(benchmark::kMillisecond)

void uniform(benchmark::State& state) {
  vexel::Random rng(1);
  fill(state, [&](std::vector<double>& out) { rng.uniform(out); });
}
BENCHMARK(uniform)->Name("uniform/vexel")->Unit(benchmark::kMillisecond);
void normal(benchmark::State& state) {
  vexel::Random rng(1);
  fill(state, [&](std::vector<double>& out) { rng.normal(out); });
}
BENCHMARK(normal)->Name("normal/vexel")->Unit(benchmark::kMillisecond);
void exponential(benchmark::State& state) {
  vexel::Random rng(1);
  fill(state, [&](std::vector<double>& out) { rng.exponential(out); });
}
BENCHMARK(exponential)->Name("exponential/vexel")->Unit(benchmark::kMillisecond);

JOB("uniform/Boost", boostLaw, uniform, boost::random::uniform_01<double>());
JOB("normal/Boost", boostLaw, normal, boost::random::normal_distribution<double>());
JOB("exponential/Boost", boostLaw, exponential, boost::random::exponential_distribution<double>());
JOB("uniform/GSL", gslLaw, uniform, gsl_rng_uniform);
JOB("normal/GSL", gslLaw, normal, [](gsl_rng* r) { return gsl_ran_gaussian_ziggurat(r, 1.0); });
JOB("exponential/GSL", gslLaw, exponential, [](gsl_rng* r) { return gsl_ran_exponential(r, 1.0); });

JOB("gamma(2.5)/vexel", law, gamma, vexel::Gamma(2.5));
JOB("gamma(2.5)/Boost", boostLaw, gamma, boost::random::gamma_distribution<double>(2.5));
JOB("gamma(2.5)/GSL", gslLaw, gamma, [](gsl_rng* r) { return gsl_ran_gamma(r, 2.5, 1.0); });
JOB("beta(2, 3)/vexel", law, beta, vexel::Beta(2, 3));
JOB("beta(2, 3)/Boost", boostLaw, beta, boost::random::beta_distribution<double>(2, 3));
JOB("beta(2, 3)/GSL", gslLaw, beta, [](gsl_rng* r) { return gsl_ran_beta(r, 2.0, 3.0); });
JOB("Poisson(7.9)/vexel", law, poisson, vexel::Poisson(7.9));
JOB("Poisson(7.9)/Boost", boostLaw, poisson, boost::random::poisson_distribution<int>(7.9));
JOB("Poisson(7.9)/GSL", gslLaw, poisson, [](gsl_rng* r) { return gsl_ran_poisson(r, 7.9); });
JOB("binomial(50, 0.3)/vexel", law, binomial, vexel::Binomial(50, 0.3));
JOB("binomial(50, 0.3)/Boost", boostLaw, binomial,
    boost::random::binomial_distribution<int>(50, 0.3));
JOB("binomial(50, 0.3)/GSL", gslLaw, binomial,
    [](gsl_rng* r) { return gsl_ran_binomial(r, 0.3, 50); });
JOB("binomial(10000, 0.3)/vexel", law, manyBinomial, vexel::Binomial(10000, 0.3));
JOB("binomial(10000, 0.3)/Boost", boostLaw, manyBinomial,
    boost::random::binomial_distribution<int>(10000, 0.3));
JOB("Poisson(1000)/vexel", law, manyPoisson, vexel::Poisson(1000));
JOB("Poisson(1000)/Boost", boostLaw, manyPoisson, boost::random::poisson_distribution<int>(1000));

std::vector<double> urnWeights() {
  std::vector<double> w(1000);
  std::iota(w.begin(), w.end(), 1.0);
  return w;
}

void urn(benchmark::State& state) {
  const std::vector<double> w = urnWeights();
  const vexel::Urn u{vexel::Data(w)};
  vexel::Random rng(1);
  std::vector<std::int64_t> out(kSize);
  for (auto _ : state) {
    u.sample(out, rng);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<long>(kSize));
}
BENCHMARK(urn)->Name("urn of 1000/vexel")->Unit(benchmark::kMillisecond);
void gslUrn(benchmark::State& state) {
  const std::vector<double> w = urnWeights();
  gsl_ran_discrete_t* table = gsl_ran_discrete_preproc(w.size(), w.data());
  gslLaw(state, [&](gsl_rng* r) { return gsl_ran_discrete(r, table); });
  gsl_ran_discrete_free(table);
}
BENCHMARK(gslUrn)->Name("urn of 1000/GSL")->Unit(benchmark::kMillisecond);

void shuffle(benchmark::State& state) {
  vexel::Random rng(1);
  fill(state, [&](std::vector<double>& out) { vexel::shuffle(out, rng); });
}
BENCHMARK(shuffle)->Name("shuffle/vexel")->Unit(benchmark::kMillisecond);
void stdShuffle(benchmark::State& state) {
  std::mt19937_64 engine(1);
  fill(state, [&](std::vector<double>& out) { std::shuffle(out.begin(), out.end(), engine); });
}
BENCHMARK(stdShuffle)->Name("shuffle/std")->Unit(benchmark::kMillisecond);

constexpr std::size_t kSample = 1000;
constexpr std::size_t kReplicates = 1000;

void bootstrap(benchmark::State& state) {
  vexel::Random rng(1);
  const std::vector<double> x = rng.normal(kSample);
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        vexel::bootstrap(x, vexel::Statistic::mean, rng, {.replicates = kReplicates}));
  }
  state.SetItemsProcessed(state.iterations() * static_cast<long>(kSample * kReplicates));
}
BENCHMARK(bootstrap)->Name("bootstrap of a mean/vexel")->Unit(benchmark::kMillisecond);
void plainBootstrap(benchmark::State& state) {
  std::mt19937_64 engine(1);
  std::uniform_int_distribution<std::size_t> place(0, kSample - 1);
  const std::vector<double> x(kSample, 0.5);
  for (auto _ : state) {
    for (std::size_t b = 0; b < kReplicates; ++b) {
      double sum = 0;
      for (std::size_t i = 0; i < kSample; ++i) {
        sum += x[place(engine)];
      }
      benchmark::DoNotOptimize(sum / kSample);
    }
  }
  state.SetItemsProcessed(state.iterations() * static_cast<long>(kSample * kReplicates));
}
BENCHMARK(plainBootstrap)->Name("bootstrap of a mean/loop")->Unit(benchmark::kMillisecond);

constexpr double kInfinity = std::numeric_limits<double>::infinity();
const auto kBell = [](double t) { return std::exp(-t * t / 2); };
const auto kCauchy = [](double t) { return 1 / (1 + t * t); };
const auto kNormalCdf = [](double t) { return 0.5 * std::erfc(-t * std::sqrt(0.5)); };

JOB("own log-concave density/vexel", law, bell,
    vexel::Density(kBell, {.support = {-kInfinity, kInfinity}}));
JOB("own density by inversion/vexel", law, cauchy,
    vexel::Density(kCauchy, {.support = {-kInfinity, kInfinity}}));
JOB("own distribution function/vexel", law, cdf, vexel::CumulativeDistribution(kNormalCdf));

void build(benchmark::State& state) {
  for (auto _ : state) {
    benchmark::DoNotOptimize(vexel::Density(kBell, {.support = {-kInfinity, kInfinity}}));
  }
}
BENCHMARK(build)->Name("own density, built")->Unit(benchmark::kMicrosecond);

}  // namespace
