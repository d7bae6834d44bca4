// Descriptive statistics against their baselines, in one run: sorting and selection against the
// standard library's, the mean against the rate at which memory can be read.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <random>
#include <vector>

#include "kernels/descriptive/covariance.hpp"
#include "kernels/descriptive/means.hpp"
#include "kernels/descriptive/quantiles.hpp"
#include "kernels/sorting/sorting.hpp"

namespace {

using Doubles = std::vector<double>;

const Doubles& randomDoubles(std::int64_t n) {
  static Doubles x;
  if (static_cast<std::int64_t>(x.size()) != n) {
    std::mt19937_64 random(1);
    std::uniform_real_distribution<double> uniform;
    x.resize(static_cast<std::size_t>(n));
    for (double& v : x) {
      v = uniform(random);
    }
  }
  return x;
}

// Times f on a fresh copy of n random doubles in every iteration.
template <typename F>
void onCopy(benchmark::State& state, F f) {
  const Doubles& given = randomDoubles(state.range(0));
  Doubles x;
  for ([[maybe_unused]] auto step : state) {
    state.PauseTiming();
    x = given;
    state.ResumeTiming();
    f(x);
    benchmark::DoNotOptimize(x.data());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

int size(const Doubles& x) { return static_cast<int>(x.size()); }

void sortStandard(benchmark::State& state) {
  onCopy(state, [](Doubles& x) { std::sort(x.begin(), x.end()); });
}
void sortKernel(benchmark::State& state) {
  onCopy(state, [](Doubles& x) { vexel::kernels::sortData(x.data(), size(x)); });
}
void sortKernelPaired(benchmark::State& state) {
  Doubles w(static_cast<std::size_t>(state.range(0)), 1.0);
  onCopy(state, [&](Doubles& x) { vexel::kernels::sortData(x.data(), w.data(), size(x)); });
}
void selectStandard(benchmark::State& state) {
  onCopy(state, [](Doubles& x) { std::nth_element(x.begin(), x.begin() + size(x) / 2, x.end()); });
}
void selectKernel(benchmark::State& state) {
  onCopy(state, [](Doubles& x) { vexel::kernels::quickSelect(x.data(), size(x), size(x) / 2); });
}
void medianKernel(benchmark::State& state) {
  onCopy(state, [](Doubles& x) { vexel::kernels::simpleMedian(x.data(), size(x)); });
}
// What a caller whose sample must stay as it is pays, and what the library does for him.
void medianOfCopyStandard(benchmark::State& state) {
  const Doubles& given = randomDoubles(state.range(0));
  for ([[maybe_unused]] auto step : state) {
    Doubles x = given;
    std::nth_element(x.begin(), x.begin() + size(x) / 2, x.end());
    benchmark::DoNotOptimize(x.data());
  }
}
void medianReading(benchmark::State& state) {
  const Doubles& given = randomDoubles(state.range(0));
  double median = 0.0;
  for ([[maybe_unused]] auto step : state) {
    vexel::kernels::medianReading(&median, given.data(), size(given), size(given));
    benchmark::DoNotOptimize(median);
  }
}
void quantilesKernel(benchmark::State& state) {
  Doubles probs(25);
  for (std::size_t j = 0; j < probs.size(); ++j) {
    probs[j] = (static_cast<double>(j) + 0.5) / 25.0;
  }
  Doubles result(probs.size());
  onCopy(state, [&](Doubles& x) {
    vexel::kernels::simpleQuantile(result.data(), x.data(), probs.data(), size(x), 25,
                                   vexel::kernels::QuantileKind::medianUnbiased);
  });
}

template <typename F>
void reading(benchmark::State& state, int arrays, F f) {
  const Doubles& x = randomDoubles(state.range(0));
  for ([[maybe_unused]] auto step : state) {
    benchmark::DoNotOptimize(f(x));
  }
  state.SetBytesProcessed(state.iterations() * state.range(0) * 8 * arrays);
}

// Eight independent sums: the rate at which memory gives the doubles.
void readMemory(benchmark::State& state) {
  reading(state, 1, [](const Doubles& x) {
    double sum[8] = {};
    for (std::size_t i = 0; i + 8 <= x.size(); i += 8) {
      for (std::size_t lane = 0; lane < 8; ++lane) {
        sum[lane] += x[i + lane];
      }
    }
    return std::max({sum[0], sum[1], sum[2], sum[3], sum[4], sum[5], sum[6], sum[7]});
  });
}
// A sum from the first value to the last waits for each addition before the next, four cycles of
// eight bytes: that, and not memory, is the bound where memory is faster.
void meanKernel(benchmark::State& state) {
  reading(state, 1, [](const Doubles& x) {
    return vexel::kernels::mean(x.data(), nullptr, size(x), vexel::kernels::MeanKind::arithmetic);
  });
}
void covarianceKernel(benchmark::State& state) {
  const Doubles y(static_cast<std::size_t>(state.range(0)), 0.25);
  reading(state, 4, [&](const Doubles& x) {
    return vexel::kernels::covarianceSums(x.data(), y.data(), nullptr, size(x), false).xy;
  });
}

constexpr std::int64_t kMillion = 1000000;

BENCHMARK(sortStandard)->Arg(10 * kMillion)->Unit(benchmark::kMillisecond);
BENCHMARK(sortKernel)->Arg(10 * kMillion)->Unit(benchmark::kMillisecond);
BENCHMARK(sortKernelPaired)->Arg(10 * kMillion)->Unit(benchmark::kMillisecond);
BENCHMARK(selectStandard)->Arg(kMillion)->Arg(10 * kMillion)->Unit(benchmark::kMillisecond);
BENCHMARK(selectKernel)->Arg(kMillion)->Arg(10 * kMillion)->Unit(benchmark::kMillisecond);
BENCHMARK(medianKernel)->Arg(kMillion)->Arg(10 * kMillion)->Unit(benchmark::kMillisecond);
BENCHMARK(medianOfCopyStandard)->Arg(kMillion)->Arg(10 * kMillion)->Unit(benchmark::kMillisecond);
BENCHMARK(medianReading)->Arg(kMillion)->Arg(10 * kMillion)->Unit(benchmark::kMillisecond);
BENCHMARK(quantilesKernel)->Arg(kMillion)->Arg(10 * kMillion)->Unit(benchmark::kMillisecond);
BENCHMARK(readMemory)->Arg(10 * kMillion)->Unit(benchmark::kMillisecond);
BENCHMARK(meanKernel)->Arg(10 * kMillion)->Unit(benchmark::kMillisecond);
BENCHMARK(covarianceKernel)->Arg(20 * kMillion)->Unit(benchmark::kMillisecond);

}  // namespace
