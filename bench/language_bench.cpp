// The language: a procedure in hardware against the same C++ function through a pointer, a software
// call, and parsing.

#include <benchmark/benchmark.h>

#include <string>
#include <vexel/kernel.hpp>
#include <vexel/session.hpp>

namespace {

double polynomial(double x) { return x * x * x - 2.0 * x - 5.0; }

void throughPointer(benchmark::State& state) {
  double (*volatile f)(double) = polynomial;
  double x = 2.0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(x);
    benchmark::DoNotOptimize(f(x));
  }
}
BENCHMARK(throughPointer);

void inHardware(benchmark::State& state) {
  vexel::Kernel kernel;
  const vexel::Value f = kernel.eval("x -> x^3 - 2*x - 5");
  const double args[] = {0.0, 2.0};
  for (auto _ : state) {
    benchmark::DoNotOptimize(EvalhfVexelProc(kernel.vector(), f.handle(), 1, args));
  }
}
BENCHMARK(inHardware);

void inSoftware(benchmark::State& state) {
  vexel::Kernel kernel;
  const vexel::Value f = kernel.eval("x -> x^3 - 2*x - 5");
  const vexel::Value x = kernel.real(2.0);
  for (auto _ : state) {
    benchmark::DoNotOptimize(EvalVexelProc(kernel.vector(), f.handle(), 1, x.handle()));
  }
}
BENCHMARK(inSoftware);

void parsing(benchmark::State& state) {
  vexel::Kernel kernel;
  std::string text;
  while (text.size() < 1000000) {
    text += "y" + std::to_string(text.size() % 997) + " := x -> x^3 + sin(x)*2.5 - 1/3:\n";
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(vexel::isIncomplete(kernel, text));
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(parsing);

}  // namespace
