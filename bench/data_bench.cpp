// Sorting, ranking, tallying, binning, selecting and shuffling through the entry points, each
// beside what a plain loop of the standard library takes on the same data.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <numeric>
#include <random>
#include <unordered_map>
#include <vector>
#include <vexel/kernel.hpp>

namespace {

struct Session {
  vexel::Kernel kernel;
  vexel::Value none;
  Session() {
    kernel.loadLibrary(STATS_LIBRARY_PATH);
    none = kernel.array(std::initializer_list<double>{});
  }
};

std::vector<double> doubles(std::size_t n) {
  std::mt19937_64 random(1);
  std::uniform_real_distribution<double> uniform;
  std::vector<double> x(n);
  std::generate(x.begin(), x.end(), [&] { return uniform(random); });
  return x;
}
std::vector<std::int32_t> integers(std::size_t n, std::int32_t distinct) {
  std::mt19937_64 random(1);
  std::uniform_int_distribution<std::int32_t> uniform(0, distinct - 1);
  std::vector<std::int32_t> x(n);
  std::generate(x.begin(), x.end(), [&] { return uniform(random); });
  return x;
}

constexpr std::size_t kLarge = 10000000;
constexpr std::size_t kMedium = 1000000;

template <typename Make>
void sortArray(benchmark::State& state, Make make) {
  Session s;
  const auto x = make();
  const vexel::Value data = s.kernel.array(std::span(x));
  for (auto _ : state) {
    benchmark::DoNotOptimize(s.kernel.call("STATS_VexelSort_HW", data, true, false));
  }
}
template <typename Make>
void sortStandard(benchmark::State& state, Make make) {
  const auto x = make();
  for (auto _ : state) {
    auto copy = x;
    std::sort(copy.begin(), copy.end());
    benchmark::DoNotOptimize(copy.data());
  }
}
const auto kDoubles = [] { return doubles(kLarge); };
const auto kIntegers = [] { return integers(kLarge, INT32_MAX); };
BENCHMARK_CAPTURE(sortArray, doubles, kDoubles)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(sortStandard, doubles, kDoubles)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(sortArray, integers32, kIntegers)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(sortStandard, integers32, kIntegers)->Unit(benchmark::kMillisecond);

void rankArray(benchmark::State& state) {
  Session s;
  const vexel::Value data = s.kernel.array(std::span<const double>(doubles(kMedium)));
  for (auto _ : state) {
    benchmark::DoNotOptimize(s.kernel.call("STATS_VexelRankSort_HW", data, 1, true));
  }
}
void rankStandard(benchmark::State& state) {
  const std::vector<double> x = doubles(kMedium);
  for (auto _ : state) {
    std::vector<std::uint32_t> order(x.size());
    std::vector<std::uint32_t> ranks(x.size());
    std::iota(order.begin(), order.end(), 0U);
    std::stable_sort(order.begin(), order.end(),
                     [&](std::uint32_t a, std::uint32_t b) { return x[a] < x[b]; });
    for (std::uint32_t i = 0; i < order.size(); ++i) {
      ranks[order[i]] = i;
    }
    benchmark::DoNotOptimize(ranks.data());
  }
}
BENCHMARK(rankArray)->Unit(benchmark::kMillisecond);
BENCHMARK(rankStandard)->Unit(benchmark::kMillisecond);

void tally(benchmark::State& state) {
  Session s;
  const auto x = integers(kMedium, static_cast<std::int32_t>(state.range(0)));
  const vexel::Value data = s.kernel.array(std::span(x));
  for (auto _ : state) {
    benchmark::DoNotOptimize(s.kernel.call("STATS_VexelTally_HW", data, s.none));
  }
}
void tallyStandard(benchmark::State& state) {
  const auto x = integers(kMedium, static_cast<std::int32_t>(state.range(0)));
  for (auto _ : state) {
    std::unordered_map<std::int32_t, std::int64_t> counts;
    for (const std::int32_t v : x) {
      ++counts[v];
    }
    benchmark::DoNotOptimize(counts.size());
  }
}
BENCHMARK(tally)->ArgName("distinct")->Arg(1000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(tallyStandard)
    ->ArgName("distinct")
    ->Arg(1000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond);

void bins(benchmark::State& state) {
  Session s;
  const vexel::Value data = s.kernel.array(std::span<const double>(doubles(kLarge)));
  const vexel::Value range = s.kernel.range(s.kernel.real(0.0), s.kernel.real(1.0));
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        s.kernel.call("STATS_VexelFrequencyData_HW", data, s.none, false, range, 100));
  }
}
void binsPlainLoop(benchmark::State& state) {
  const std::vector<double> x = doubles(kLarge);
  for (auto _ : state) {
    std::vector<std::uint32_t> counts(101, 0);
    for (const double v : x) {
      ++counts[static_cast<std::size_t>(v * 100.0)];
    }
    benchmark::DoNotOptimize(counts.data());
  }
}
BENCHMARK(bins)->Unit(benchmark::kMillisecond);
BENCHMARK(binsPlainLoop)->Unit(benchmark::kMillisecond);

void selectInRange(benchmark::State& state) {
  Session s;
  const vexel::Value data = s.kernel.array(std::span<const double>(doubles(kLarge)));
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        s.kernel.call("STATS_VexelSelectRemoveInRange_HW", data, 0.25, 0.75, 1));
  }
}
void selectStandard(benchmark::State& state) {
  const std::vector<double> x = doubles(kLarge);
  for (auto _ : state) {
    std::vector<double> kept;
    std::copy_if(x.begin(), x.end(), std::back_inserter(kept),
                 [](double v) { return 0.25 <= v && v < 0.75; });
    benchmark::DoNotOptimize(kept.data());
  }
}
BENCHMARK(selectInRange)->Unit(benchmark::kMillisecond);
BENCHMARK(selectStandard)->Unit(benchmark::kMillisecond);

void shuffle(benchmark::State& state) {
  Session s;
  const vexel::Value data = s.kernel.array(std::span<const double>(doubles(kLarge)));
  for (auto _ : state) {
    benchmark::DoNotOptimize(s.kernel.call("STATS_VexelShuffle_HW", data));
  }
}
void shuffleStandard(benchmark::State& state) {
  std::vector<double> x = doubles(kLarge);
  std::mt19937_64 random(1);
  for (auto _ : state) {
    std::shuffle(x.begin(), x.end(), random);
    benchmark::DoNotOptimize(x.data());
  }
}
BENCHMARK(shuffle)->Unit(benchmark::kMillisecond);
BENCHMARK(shuffleStandard)->Unit(benchmark::kMillisecond);

}  // namespace
