// Samples of 10^7 variates through the host interface against Boost.Random, the standard library
// and GSL, and single closed-form calls of the workers.
//
// Each baseline writes an array of the same length with its own recommended generator.

#include <benchmark/benchmark.h>
#include <gsl/gsl_randist.h>
#include <gsl/gsl_rng.h>

#include <array>
#include <boost/random.hpp>
#include <random>
#include <string>
#include <vector>
#include <vexel/kernel.hpp>

namespace {

constexpr int kSize = 10'000'000;

vexel::Kernel& kernel() {
  static vexel::Kernel instance;
  static const bool loaded = [] {
    instance.loadLibrary(STATS_LIBRARY_PATH);
    return true;
  }();
  static_cast<void>(loaded);
  return instance;
}

void countVariates(benchmark::State& state, std::int64_t n = kSize) {
  state.SetItemsProcessed(state.iterations() * n);
}

void sample(benchmark::State& state, const std::string& family, const std::vector<double>& params) {
  std::vector<vexel::Value> args = {kernel().integer(kSize)};
  for (const double x : params) {
    args.push_back(kernel().real(x));
  }
  const std::string entry = "STATS_Vexel" + family + "RandomSample_HW";
  for (auto _ : state) {
    benchmark::DoNotOptimize(kernel().callValues(entry, args));
    state.PauseTiming();
    kernel().collect();
    state.ResumeTiming();
  }
  countVariates(state);
}

template <typename Engine, typename Distribution>
void baseline(benchmark::State& state, Engine engine, Distribution distribution) {
  for (auto _ : state) {
    std::vector<double> x(kSize);
    for (double& value : x) {
      value = static_cast<double>(distribution(engine));
    }
    benchmark::DoNotOptimize(x.data());
    benchmark::ClobberMemory();
  }
  countVariates(state);
}

const boost::random::mt19937 kBoost;
const std::mt19937_64 kStd;

BENCHMARK_CAPTURE(sample, uniform, "Uniform", std::vector<double>{0.0, 1.0})
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(sample, normal, "Normal", std::vector<double>{0.0, 1.0})
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(sample, exponential, "Exponential", std::vector<double>{1.0})
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(sample, gamma, "Gamma", std::vector<double>{1.0, 2.5})
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(sample, beta, "Beta", std::vector<double>{2.0, 3.5})
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(sample, cauchy, "Cauchy", std::vector<double>{0.0, 1.0})
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(sample, weibull, "Weibull", std::vector<double>{2.0, 1.5})
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(sample, poisson_10, "Poisson", std::vector<double>{10.0})
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(sample, poisson_1e6, "Poisson", std::vector<double>{1e6})
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(sample, binomial_100, "Binomial", std::vector<double>{100, 0.3})
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(sample, binomial_1000, "Binomial", std::vector<double>{1000, 0.5})
    ->Unit(benchmark::kMillisecond);

BENCHMARK_CAPTURE(baseline, boost_poisson_10, kBoost, boost::random::poisson_distribution<>(10.0))
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(baseline, boost_poisson_1e6, kBoost, boost::random::poisson_distribution<>(1e6))
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(baseline, boost_binomial_100, kBoost,
                  boost::random::binomial_distribution<>(100, 0.3))
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(baseline, boost_binomial_1000, kBoost,
                  boost::random::binomial_distribution<>(1000, 0.5))
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(baseline, std_poisson_10, kStd, std::poisson_distribution<>(10.0))
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(baseline, std_binomial_100, kStd, std::binomial_distribution<>(100, 0.3))
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(baseline, boost_uniform, kBoost, boost::random::uniform_real_distribution<>())
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(baseline, boost_normal, kBoost, boost::random::normal_distribution<>())
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(baseline, boost_exponential, kBoost, boost::random::exponential_distribution<>())
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(baseline, boost_gamma, kBoost, boost::random::gamma_distribution<>(2.5))
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(baseline, boost_beta, kBoost, boost::random::beta_distribution<>(2.0, 3.5))
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(baseline, std_normal, kStd, std::normal_distribution<>())
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(baseline, std_exponential, kStd, std::exponential_distribution<>())
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(baseline, std_gamma, kStd, std::gamma_distribution<>(2.5))
    ->Unit(benchmark::kMillisecond);

// One host-side call of a closed formula: conversion, formula, packing.
void probability(benchmark::State& state, const char* entry) {
  const std::array<vexel::Value, 3> args = {kernel().real(0.7), kernel().real(2.0),
                                            kernel().real(1.5)};
  for (auto _ : state) {
    benchmark::DoNotOptimize(kernel().callValues(entry, args));
  }
}
BENCHMARK_CAPTURE(probability, weibull, "STATS_VexelWeibullProbability_HW");
BENCHMARK_CAPTURE(probability, weibull_quantile, "STATS_VexelWeibullDeviate_HW");
BENCHMARK_CAPTURE(probability, cauchy, "STATS_VexelCauchyProbability_HW");

template <typename Draw>
void gsl(benchmark::State& state, Draw draw) {
  gsl_rng* const source = gsl_rng_alloc(gsl_rng_mt19937);
  for (auto _ : state) {
    std::vector<double> x(kSize);
    for (double& value : x) {
      value = draw(source);
    }
    benchmark::DoNotOptimize(x.data());
    benchmark::ClobberMemory();
  }
  gsl_rng_free(source);
  countVariates(state);
}
BENCHMARK_CAPTURE(gsl, normal_ziggurat, [](gsl_rng* r) {
  return gsl_ran_gaussian_ziggurat(r, 1.0);
})->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(gsl, poisson_10, [](gsl_rng* r) {
  return static_cast<double>(gsl_ran_poisson(r, 10.0));
})->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(gsl, binomial_100, [](gsl_rng* r) {
  return static_cast<double>(gsl_ran_binomial(r, 0.3, 100));
})->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(gsl, beta, [](gsl_rng* r) {
  return gsl_ran_beta(r, 2.0, 3.5);
})->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(gsl, exponential, [](gsl_rng* r) {
  return gsl_ran_exponential(r, 1.0);
})->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(gsl, gamma, [](gsl_rng* r) {
  return gsl_ran_gamma(r, 2.5, 1.0);
})->Unit(benchmark::kMillisecond);

}  // namespace
