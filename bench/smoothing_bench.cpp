// Moving statistics and the filter against the direct loops that define them, over 10^6 doubles.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <random>
#include <vector>

#include "kernels/descriptive/quantiles.hpp"
#include "kernels/smoothing/linear_filter.hpp"
#include "kernels/smoothing/moving_mean.hpp"
#include "kernels/smoothing/moving_median.hpp"

namespace {

using Doubles = std::vector<double>;
constexpr int kSize = 1000000;

Doubles noise() {
  std::mt19937_64 random(1);
  std::uniform_real_distribution<double> uniform;
  Doubles x(kSize);
  for (double& v : x) {
    v = uniform(random);
  }
  return x;
}

// f(series, w, out) for the window size of the benchmark's argument.
template <typename F>
void overWindows(benchmark::State& state, F f) {
  Doubles x = noise();
  Doubles out(kSize);
  for ([[maybe_unused]] auto step : state) {
    f(x, static_cast<int>(state.range(0)), out);
    benchmark::DoNotOptimize(out.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * kSize);
}

void movingMedian(benchmark::State& state) {
  overWindows(state, [](Doubles& x, int w, Doubles& out) {
    vexel::kernels::movingMedian(x.data(), kSize, w, 0, false, out.data());
  });
}
void movingMedianDirect(benchmark::State& state) {
  overWindows(state, [](Doubles& x, int w, Doubles& out) {
    Doubles window(static_cast<std::size_t>(w));
    for (int s = 0; s <= kSize - w; ++s) {
      std::copy_n(x.data() + s, w, window.data());
      out[static_cast<std::size_t>(s)] = vexel::kernels::simpleMedian(window.data(), w);
    }
  });
}
void movingMean(benchmark::State& state) {
  overWindows(state, [](Doubles& x, int w, Doubles& out) {
    vexel::kernels::movingMean(x.data(), nullptr, kSize, w, vexel::kernels::MeanKind::arithmetic,
                               out.data());
  });
}
void movingMeanDirect(benchmark::State& state) {
  overWindows(state, [](Doubles& x, int w, Doubles& out) {
    for (int s = 0; s <= kSize - w; ++s) {
      out[static_cast<std::size_t>(s)] =
          vexel::kernels::simpleMean(x.data() + s, w, vexel::kernels::MeanKind::arithmetic);
    }
  });
}
void linearFilter(benchmark::State& state) {
  const Doubles taps(static_cast<std::size_t>(state.range(0)), 0.01);
  overWindows(state, [&](Doubles& x, int k, Doubles& out) {
    vexel::kernels::linearFilter(x.data(), taps.data(), kSize - k + 1, k, false, out.data());
  });
}
void linearFilterDirect(benchmark::State& state) {
  const Doubles taps(static_cast<std::size_t>(state.range(0)), 0.01);
  overWindows(state, [&](Doubles& x, int k, Doubles& out) {
    for (int i = 0; i < kSize - k + 1; ++i) {
      double sum = 0.0;
      for (int j = 0; j < k; ++j) {
        sum += x[static_cast<std::size_t>(i + j)] * taps[static_cast<std::size_t>(j)];
      }
      out[static_cast<std::size_t>(i)] = sum;
    }
  });
}

BENCHMARK(movingMedian)->Arg(11)->Arg(101)->Arg(1001)->Unit(benchmark::kMillisecond);
BENCHMARK(movingMedianDirect)->Arg(11)->Arg(101)->Arg(1001)->Unit(benchmark::kMillisecond);
BENCHMARK(movingMean)->Arg(11)->Arg(101)->Arg(1001)->Unit(benchmark::kMillisecond);
BENCHMARK(movingMeanDirect)->Arg(11)->Arg(101)->Arg(1001)->Unit(benchmark::kMillisecond);
BENCHMARK(linearFilter)->Arg(11)->Arg(101)->Arg(1001)->Unit(benchmark::kMillisecond);
BENCHMARK(linearFilterDirect)->Arg(11)->Arg(101)->Arg(1001)->Unit(benchmark::kMillisecond);

}  // namespace
