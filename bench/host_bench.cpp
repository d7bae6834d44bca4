// What the host costs: making floats, calling entry points, filling arrays, drawing.

#include <benchmark/benchmark.h>

#include <cmath>
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

// A scalar entry point from C++ by its name, and from a list of arguments that exists, as in a
// procedure of the language, beside the function itself.
void scalarEntryPointByName(benchmark::State& state) {
  vexel::Kernel kernel;
  kernel.loadLibrary(STATS_LIBRARY_PATH);
  double x = 0.5;
  for (auto _ : state) {
    benchmark::DoNotOptimize(kernel.call("STATS_VexelNormalProbability_HW", x, 0.0, 1.0).number());
    x += 1e-9;
  }
}
BENCHMARK(scalarEntryPointByName);

void scalarEntryPoint(benchmark::State& state) {
  vexel::Kernel kernel;
  kernel.loadLibrary(STATS_LIBRARY_PATH);
  const vexel::Value f = kernel.eval("STATS_VexelNormalProbability_HW");
  const VKernelVector kv = kernel.vector();
  double x = 0.5;
  for (auto _ : state) {
    ALGEB args = NewVexelExpressionSequence(kv, 3);
    VexelExpseqAssign(kv, args, 1, ToVexelFloat(kv, x));
    VexelExpseqAssign(kv, args, 2, ToVexelFloat(kv, 0.0));
    VexelExpseqAssign(kv, args, 3, ToVexelFloat(kv, 1.0));
    benchmark::DoNotOptimize(VexelToFloat64(kv, EvalVexelProcedure(kv, f.handle(), args)));
    x += 1e-9;
  }
}
BENCHMARK(scalarEntryPoint);

void scalarFunctionItself(benchmark::State& state) {
  const vexel::Kernel kernel;
  double x = 0.5;
  for (auto _ : state) {
    benchmark::DoNotOptimize(0.5 * std::erfc(-x * M_SQRT1_2));
    x += 1e-9;
  }
}
BENCHMARK(scalarFunctionItself);

// A root of x^3 - 2 x - 5 by an entry point.
void rootOfHostProcedure(benchmark::State& state) {
  vexel::Kernel kernel;
  kernel.loadLibrary(STATS_LIBRARY_PATH);
  const vexel::Value f = kernel.eval("x -> x^3 - 2*x - 5");
  for (auto _ : state) {
    benchmark::DoNotOptimize(kernel.call("STATS_VexelBrentMethod_HW", 0.0, f, 2.0, 3.0, 1, 100));
  }
}
BENCHMARK(rootOfHostProcedure);

void rootOfFunction(benchmark::State& state) {
  vexel::Kernel kernel;
  kernel.loadLibrary(STATS_LIBRARY_PATH);
  const vexel::Value f = kernel.function("", [](double x) { return x * x * x - 2 * x - 5; });
  for (auto _ : state) {
    benchmark::DoNotOptimize(kernel.call("STATS_VexelBrentMethod_HW", 0.0, f, 2.0, 3.0, 1, 100));
  }
}
BENCHMARK(rootOfFunction);

// Statements on 10^6 floats of 15 digits, at most.
void onMillion(benchmark::State& state, const char* statement) {
  vexel::Kernel kernel;
  kernel.eval(
      "A := Array([seq(sin(i/1000.0), i = 1 .. 1000000)], datatype = float[8]): L := tolist(A):"
      "f := x -> x^3 - 2*x - 5: n := 1000000:");
  for (auto _ : state) {
    benchmark::DoNotOptimize(kernel.eval(statement));
  }
  state.SetItemsProcessed(state.iterations() * 1'000'000);
}
BENCHMARK_CAPTURE(onMillion, mapArray, "map(f, A):")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(onMillion, mapInHardware, "evalhf(map(f, A)):")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(onMillion, mapList, "map(f, L):")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(onMillion, sumArray, "sum(A):")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(onMillion, sumList, "sum(L):")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(onMillion, loop, "s := 0.0: for i from 1 to n do s := s + 0.1 end:")
    ->Unit(benchmark::kMillisecond);

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
