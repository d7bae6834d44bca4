// What the host costs: making floats, calling entry points, filling arrays, drawing.

#include <benchmark/benchmark.h>

#include <vector>
#include <vexel/kernel.hpp>

namespace {

void newFloats(benchmark::State& state) {
  vexel::Kernel kernel;
  double x = 0.5;
  for (auto _ : state) {
    benchmark::DoNotOptimize(ToVexelFloat(kernel.vector(), x));
    x += 0.37;
  }
}
BENCHMARK(newFloats);

void sameFloat(benchmark::State& state) {
  vexel::Kernel kernel;
  for (auto _ : state) {
    benchmark::DoNotOptimize(ToVexelFloat(kernel.vector(), 0.5));
  }
}
BENCHMARK(sameFloat);

void entryPointCall(benchmark::State& state) {
  vexel::Kernel kernel;
  kernel.loadLibrary(STATS_LIBRARY_PATH);
  const vexel::Value data = kernel.array({3, 1, 2});
  const vexel::Value weights = kernel.array(std::initializer_list<double>{});
  for (auto _ : state) {
    benchmark::DoNotOptimize(kernel.call("STATS_VexelMean_HW", data, weights, false, 0));
  }
}
BENCHMARK(entryPointCall);

void machineFunctionCall(benchmark::State& state) {
  vexel::Kernel kernel;
  const vexel::Value f = kernel.function("", [](double x) { return x * x; });
  const double args[] = {0, 1.5};
  for (auto _ : state) {
    benchmark::DoNotOptimize(EvalhfVexelProc(kernel.vector(), f.handle(), 1, args));
  }
}
BENCHMARK(machineFunctionCall);

void convertIntegersToFloats(benchmark::State& state) {
  vexel::Kernel kernel;
  const std::vector<std::int32_t> x(1'000'000, 7);
  const vexel::Value integers = kernel.array(std::span<const std::int32_t>(x));
  const RTableSettings floats{RTABLE_FLOAT64, RTABLE_RECTANGULAR, RTABLE_COLUMN_MAJOR, 1, 0};
  for (auto _ : state) {
    benchmark::DoNotOptimize(RTableCopy(kernel.vector(), &floats, integers.handle()));
  }
  state.SetItemsProcessed(state.iterations() * 1'000'000);
}
BENCHMARK(convertIntegersToFloats);

void randomDoubles(benchmark::State& state) {
  vexel::Kernel kernel;
  for (auto _ : state) {
    benchmark::DoNotOptimize(VexelRandomDouble01(kernel.vector()));
  }
}
BENCHMARK(randomDoubles);

void newKernel(benchmark::State& state) {
  for (auto _ : state) {
    vexel::Kernel kernel;
    kernel.loadLibrary(STATS_LIBRARY_PATH);
  }
}
BENCHMARK(newKernel)->Unit(benchmark::kMicrosecond);

}  // namespace
