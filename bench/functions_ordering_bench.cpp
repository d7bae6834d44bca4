// Order and counts of the functions beside plain loops of the standard library, over 10^7 (sort,
// histogram, cumulative) or 10^6 elements; densities over 10^6.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <random>
#include <unordered_map>
#include <vector>
#include <vexel/hypothesis.hpp>
#include <vexel/kernel_density.hpp>
#include <vexel/ordering.hpp>

namespace {

using Doubles = std::vector<double>;
constexpr std::size_t kLarge = 10'000'000;
constexpr std::size_t kMedium = 1'000'000;

Doubles normals(std::size_t n) {
  std::mt19937_64 random(1);
  std::normal_distribution<double> normal;
  Doubles x(n);
  std::generate(x.begin(), x.end(), [&] { return normal(random); });
  return x;
}

std::vector<std::int32_t> integers(std::size_t n, std::int64_t levels) {
  std::mt19937_64 random(2);
  std::vector<std::int32_t> x(n);
  std::generate(x.begin(), x.end(), [&] {
    return static_cast<std::int32_t>(random() % static_cast<std::uint64_t>(levels));
  });
  return x;
}

void items(benchmark::State& state, std::size_t n) {
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(n));
}

template <typename T>
void sorting(benchmark::State& state, const std::vector<T>& x, bool standard) {
  std::vector<T> out(x.size());
  for (auto _ : state) {
    if (standard) {
      out = x;
      std::sort(out.begin(), out.end());
    } else {
      vexel::sort(x, std::span<T>(out));
    }
    benchmark::ClobberMemory();
  }
  items(state, x.size());
}
BENCHMARK_CAPTURE(sorting, doubles, normals(kLarge), false);
BENCHMARK_CAPTURE(sorting, doublesStandard, normals(kLarge), true)->Iterations(1);
BENCHMARK_CAPTURE(sorting, integers, integers(kLarge, std::int64_t{1} << 32), false);

// A job over x that gives something.
template <typename X, typename F>
void job(benchmark::State& state, const X& x, F f) {
  for (auto _ : state) {
    benchmark::DoNotOptimize(f(x));
  }
  items(state, x.size());
}

BENCHMARK_CAPTURE(job, argsort, normals(kMedium), [](const auto& x) { return vexel::argsort(x); });
BENCHMARK_CAPTURE(job, argsortStandard, normals(kMedium), [](const auto& x) {
  std::vector<std::int64_t> at(x.size());
  std::iota(at.begin(), at.end(), 0);
  std::stable_sort(at.begin(), at.end(), [&](auto i, auto j) {
    return x[static_cast<std::size_t>(i)] < x[static_cast<std::size_t>(j)];
  });
  return at;
});
BENCHMARK_CAPTURE(job, rank, normals(kMedium), [](const auto& x) { return vexel::rank(x); });
BENCHMARK_CAPTURE(job, tally, integers(kMedium, 1000),
                  [](const auto& x) { return vexel::tally(x); });
BENCHMARK_CAPTURE(job, tallyDoubles, vexel::sorted<double>(integers(kMedium, 1000)),
                  [](const auto& x) { return vexel::tally(x); });
BENCHMARK_CAPTURE(job, tallyStandard, integers(kMedium, 1000), [](const auto& x) {
  std::unordered_map<std::int32_t, std::int64_t> counts;
  for (const auto v : x) {
    ++counts[v];
  }
  return counts.size();
});
BENCHMARK_CAPTURE(job, histogram, normals(kLarge), [](const auto& x) {
  return vexel::histogram(x, 100, {.range = vexel::Interval{-4, 4}});
});
BENCHMARK_CAPTURE(job, histogramPlain, normals(kLarge), [](const auto& x) {
  std::vector<std::int64_t> counts(101);
  for (const double v : x) {
    const double t = (v + 4) * (100 / 8.0);
    ++counts[t >= 0 && t <= 100 ? static_cast<std::size_t>(t) : 100];
  }
  return counts;
});
BENCHMARK_CAPTURE(job, density, normals(kMedium),
                  [](const auto& x) { return vexel::kde(x, {.points = 4096}); });
BENCHMARK_CAPTURE(job, densityWithBandwidth, normals(kMedium),
                  [](const auto& x) { return vexel::kde(x, {.bandwidth = 0.06, .points = 4096}); });
BENCHMARK_CAPTURE(job, shapiro, normals(5000), [](const auto& x) { return vexel::shapiro(x); });

void cumulative(benchmark::State& state, const Doubles& x, bool standard) {
  Doubles out(x.size());
  for (auto _ : state) {
    if (standard) {
      std::partial_sum(x.begin(), x.end(), out.begin());
    } else {
      vexel::cumulative(x, std::span<double>(out));
    }
    benchmark::ClobberMemory();
  }
  items(state, x.size());
}
BENCHMARK_CAPTURE(cumulative, compensated, normals(kLarge), false);
BENCHMARK_CAPTURE(cumulative, plain, normals(kLarge), true);

}  // namespace
