// Sampling generators: indices from an urn beside the standard library's and GSL's, variates of
// densities and distribution functions that are host procedures beside UNU.RAN's, and bootstrap
// replications.

#include <benchmark/benchmark.h>
#include <gsl/gsl_randist.h>
#ifdef HAVE_UNURAN
#include <unuran.h>
#endif

#include <cmath>
#include <random>
#include <vector>
#include <vexel/kernel.hpp>

#include "generators/alias_urn.hpp"
#include "generators/envelope_generator.hpp"
#include "generators/inverse_distribution.hpp"
#include "kernel/conversions.hpp"
#include "kernel/uniform_source.hpp"

namespace {

vexel::Kernel& kernel() {
  static vexel::Kernel instance;
  static const bool ready = [] {
    instance.loadLibrary(STATS_LIBRARY_PATH);
    STATS_VexelUtils_HW::Initialize(instance.vector());
    STATS_VexelRandomStream_HW::Initialize(instance.vector());
    return true;
  }();
  static_cast<void>(ready);
  return instance;
}

std::vector<double> thousandWeights() {
  std::vector<double> w(1000);
  for (std::size_t i = 0; i < w.size(); ++i) {
    w[i] = 1.0 + static_cast<double>(i % 37);
  }
  return w;
}

void UrnIndices(benchmark::State& state) {
  kernel();
  const std::vector<double> w = thousandWeights();
  STATS_AliasUrnGenerator_HW urn(1000, 1000, w.data());
  for (auto _ : state) {
    benchmark::DoNotOptimize(urn.Next());
  }
}
BENCHMARK(UrnIndices);

void UrnSampleEntryPoint(benchmark::State& state) {
  const vexel::Value w = kernel().toValue(thousandWeights());
  constexpr int kLength = 10000000;
  for (auto _ : state) {
    benchmark::DoNotOptimize(kernel().call("STATS_VexelAliasUrnSample_HW", kLength, w));
  }
  state.SetItemsProcessed(state.iterations() * kLength);
}
BENCHMARK(UrnSampleEntryPoint)->Unit(benchmark::kMillisecond);

void UrnStandardLibrary(benchmark::State& state) {
  const std::vector<double> w = thousandWeights();
  std::discrete_distribution<int> urn(w.begin(), w.end());
  std::mt19937_64 engine(1);
  for (auto _ : state) {
    benchmark::DoNotOptimize(urn(engine));
  }
}
BENCHMARK(UrnStandardLibrary);

void UrnGsl(benchmark::State& state) {
  const std::vector<double> w = thousandWeights();
  gsl_ran_discrete_t* urn = gsl_ran_discrete_preproc(w.size(), w.data());
  gsl_rng* engine = gsl_rng_alloc(gsl_rng_mt19937);
  for (auto _ : state) {
    benchmark::DoNotOptimize(gsl_ran_discrete(engine, urn));
  }
  gsl_rng_free(engine);
  gsl_ran_discrete_free(urn);
}
BENCHMARK(UrnGsl);

long evaluations = 0;

vexel::Value counted(const char* name, double (*f)(double)) {
  return kernel().function(name, std::function<double(double)>([f](double x) {
                             ++evaluations;
                             return f(x);
                           }));
}

// 10^6 variates of a density given as host procedures, at most 400 elements; the counter says how
// often the density or its derivative was evaluated for one.
void envelope(benchmark::State& state, double (*h)(double), double (*h1)(double),
              std::initializer_list<double> basePoints) {
  constexpr int kVariates = 1000000;
  std::vector<vexel::Value> points;
  for (const double x : basePoints) {
    points.push_back(kernel().real(x));
  }
  const vexel::Value setup = kernel().list(
      std::vector<vexel::Value>{counted("h", h), counted("h1", h1), kernel().list(points),
                                kernel().integer(400), kernel().boolean(true)});
  evaluations = 0;
  for (auto _ : state) {
    STATS_EnvelopeGenerator_HW generator(kernel().vector());
    generator.initialize(kernel().vector(), setup.handle());
    for (int i = 0; i < kVariates; ++i) {
      benchmark::DoNotOptimize(generator.next(kernel().vector()));
    }
  }
  const auto variates = state.iterations() * kVariates;
  state.SetItemsProcessed(variates);
  state.counters["evaluations/variate"] =
      static_cast<double>(evaluations) / static_cast<double>(variates);
}

void EnvelopeNormal(benchmark::State& state) {
  envelope(
      state, [](double x) { return std::exp(-x * x / 2); },
      [](double x) { return -x * std::exp(-x * x / 2); }, {-6, -1, 0, 1, 6});
}
BENCHMARK(EnvelopeNormal)->Unit(benchmark::kMillisecond);

void EnvelopeGamma(benchmark::State& state) {
  envelope(
      state, [](double x) { return x * x * std::exp(-x); },
      [](double x) { return (2 - x) * x * std::exp(-x); },
      {0, 0.5857864376269049, 2, 3.414213562373095, 30});
}
BENCHMARK(EnvelopeGamma)->Unit(benchmark::kMillisecond);

#ifdef HAVE_UNURAN
// Transformed density rejection of the same densities as C functions, with the same uniforms.
void transformedRejection(benchmark::State& state, double (*h)(double), double (*h1)(double),
                          double mode) {
  static double (*density)(double);
  static double (*derivative)(double);
  density = h;
  derivative = h1;
  constexpr int kVariates = 1000000;
  unur_set_default_urng(
      unur_urng_new([](void* kv) { return VexelRandomDouble01(static_cast<VKernelVector>(kv)); },
                    kernel().vector()));
  UNUR_DISTR* distribution = unur_distr_cont_new();
  unur_distr_cont_set_pdf(distribution,
                          [](double x, const UNUR_DISTR*) { return ++evaluations, density(x); });
  unur_distr_cont_set_dpdf(
      distribution, [](double x, const UNUR_DISTR*) { return ++evaluations, derivative(x); });
  unur_distr_cont_set_mode(distribution, mode);
  if (mode > 0) {
    unur_distr_cont_set_domain(distribution, 0, INFINITY);
  }
  evaluations = 0;
  for (auto _ : state) {
    UNUR_GEN* generator = unur_init(unur_tdr_new(distribution));
    for (int i = 0; i < kVariates; ++i) {
      benchmark::DoNotOptimize(unur_sample_cont(generator));
    }
    unur_free(generator);
  }
  unur_distr_free(distribution);
  const auto variates = state.iterations() * kVariates;
  state.SetItemsProcessed(variates);
  state.counters["evaluations/variate"] =
      static_cast<double>(evaluations) / static_cast<double>(variates);
}

void TransformedRejectionNormal(benchmark::State& state) {
  transformedRejection(
      state, [](double x) { return std::exp(-x * x / 2); },
      [](double x) { return -x * std::exp(-x * x / 2); }, 0);
}
BENCHMARK(TransformedRejectionNormal)->Unit(benchmark::kMillisecond);

void TransformedRejectionGamma(benchmark::State& state) {
  transformedRejection(
      state, [](double x) { return x * x * std::exp(-x); },
      [](double x) { return (2 - x) * x * std::exp(-x); }, 2);
}
BENCHMARK(TransformedRejectionGamma)->Unit(benchmark::kMillisecond);
#endif

void InverseDistribution(benchmark::State& state) {
  const vexel::Value F = counted("F", [](double x) { return 1 / (1 + std::exp(-x)); });
  const vexel::Value f = counted("f", [](double x) {
    const double e = std::exp(-std::abs(x));
    return e / ((1 + e) * (1 + e));
  });
  constexpr int kVariates = 100000;
  evaluations = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(kernel().call("STATS_VexelInverseDistributionSampleId_HW", kVariates,
                                           F, f, -30.0, 30.0, 1e-12, true));
  }
  const auto variates = state.iterations() * kVariates;
  state.SetItemsProcessed(variates);
  state.counters["evaluations/variate"] =
      static_cast<double>(evaluations) / static_cast<double>(variates);
}
BENCHMARK(InverseDistribution)->Unit(benchmark::kMillisecond);

// 2000 replications of the mean of 1000 points; the statistic is the library's own mean, called by
// the host.
void Bootstrap(benchmark::State& state) {
  std::vector<double> x(1000);
  for (std::size_t i = 0; i < x.size(); ++i) {
    x[i] = std::sin(static_cast<double>(i));
  }
  const vexel::Value data = kernel().toValue(x);
  const vexel::Value none = kernel().toValue(std::vector<double>{});
  const vexel::Value mean =
      kernel().function("mean", [none](vexel::Kernel& k, std::span<const vexel::Value> a) {
        return k.call("STATS_VexelMean_HW", a[0], none, false, 0);
      });
  constexpr int kReplications = 2000;
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        kernel().call("STATS_VexelBootstrapStatistic_HW", data, none, mean, 1000, kReplications));
  }
  state.SetItemsProcessed(state.iterations() * kReplications);
}
BENCHMARK(Bootstrap)->Unit(benchmark::kMillisecond);

}  // namespace
