// Series of the functions beside GSL and plain loops, over 10^6 doubles.

#include <benchmark/benchmark.h>
#include <gsl/gsl_movstat.h>

#include <algorithm>
#include <random>
#include <vector>
#include <vexel/series.hpp>

namespace {

using Doubles = std::vector<double>;
constexpr std::size_t kSize = 1'000'000;

Doubles noise() {
  std::mt19937_64 random(1);
  std::uniform_real_distribution<double> uniform;
  Doubles x(kSize);
  std::generate(x.begin(), x.end(), [&] { return uniform(random); });
  return x;
}

// f(series, window, out).
template <typename F>
void overWindows(benchmark::State& state, F f) {
  const Doubles x = noise();
  Doubles out(kSize);
  for (auto _ : state) {
    f(x, static_cast<std::size_t>(state.range(0)), out);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kSize));
}

template <vexel::Statistic kStatistic>
void moving(benchmark::State& state) {
  overWindows(state, [](const Doubles& x, std::size_t w, Doubles& out) {
    vexel::moving(x, w, kStatistic, std::span<double>(out));
  });
}
BENCHMARK(moving<vexel::Statistic::mean>)->Arg(11)->Arg(101)->Arg(10001);
BENCHMARK(moving<vexel::Statistic::std>)->Arg(101);
BENCHMARK(moving<vexel::Statistic::max>)->Arg(101);
BENCHMARK(moving<vexel::Statistic::median>)->Arg(11)->Arg(101)->Arg(10001);

using GslMoving = int (*)(gsl_movstat_end_t, const gsl_vector*, gsl_vector*,
                          gsl_movstat_workspace*);
template <GslMoving kFunction>
void gsl(benchmark::State& state) {
  overWindows(state, [](const Doubles& x, std::size_t w, Doubles& out) {
    gsl_vector_const_view in = gsl_vector_const_view_array(x.data(), x.size());
    gsl_vector_view y = gsl_vector_view_array(out.data(), out.size());
    gsl_movstat_workspace* work = gsl_movstat_alloc(w);
    kFunction(GSL_MOVSTAT_END_TRUNCATE, &in.vector, &y.vector, work);
    gsl_movstat_free(work);
  });
}
BENCHMARK(gsl<gsl_movstat_mean>)->Arg(101);
BENCHMARK(gsl<gsl_movstat_median>)->Arg(101);

// What drifts: a running sum.
void runningSum(benchmark::State& state) {
  overWindows(state, [](const Doubles& x, std::size_t w, Doubles& out) {
    double sum = 0;
    for (std::size_t i = 0; i < x.size(); ++i) {
      sum += x[i] - (i < w ? 0 : x[i - w]);
      out[i] = sum / static_cast<double>(w);
    }
  });
}
BENCHMARK(runningSum)->Arg(101);

void filter(benchmark::State& state) {
  overWindows(state, [](const Doubles& x, std::size_t taps, Doubles& out) {
    vexel::filter(x, Doubles(taps, 0.3), std::span<double>(out));
  });
}
BENCHMARK(filter)->Arg(16);
void filterPlain(benchmark::State& state) {
  overWindows(state, [](const Doubles& x, std::size_t taps, Doubles& out) {
    const Doubles t(taps, 0.3);
    for (std::size_t i = taps; i < x.size(); ++i) {
      double sum = 0;
      for (std::size_t k = 0; k < taps; ++k) {
        sum += t[k] * x[i - k];
      }
      out[i] = sum;
    }
  });
}
BENCHMARK(filterPlain)->Arg(16);

}  // namespace
