// Density estimates, binning, the normality test and Fourier transforms.

#include <benchmark/benchmark.h>
#include <nag2/nag2.h>

#include <cmath>
#include <random>
#include <vector>
#include <vexel/kernel.hpp>

namespace {

std::vector<double> normals(std::size_t n) {
  std::mt19937_64 random(1);
  std::normal_distribution<double> draw;
  std::vector<double> x(n);
  for (double& v : x) {
    v = draw(random);
  }
  return x;
}

// Density of 10^6 points on a grid of the length given.
void density(benchmark::State& state) {
  vexel::Kernel kernel;
  kernel.loadLibrary(STATS_LIBRARY_PATH);
  std::vector<double> x = normals(1000000);
  const vexel::Value data = kernel.wrap(x);
  const vexel::Value none = kernel.array(std::initializer_list<double>{});
  for (auto _ : state) {
    benchmark::DoNotOptimize(kernel.call("STATS_VexelKernelDensity_HW", data, none, 0, 0.1,
                                         state.range(0), true, -5.0, 5.0));
  }
}
BENCHMARK(density)->Arg(4096)->Arg(4093)->Unit(benchmark::kMillisecond);

// The baseline of density: one plain pass over as many points.
void sumOfPoints(benchmark::State& state) {
  const std::vector<double> x = normals(1000000);
  for (auto _ : state) {
    double total = 0.0;
    for (double v : x) {
      total += v;
    }
    benchmark::DoNotOptimize(total);
  }
}
BENCHMARK(sumOfPoints)->Unit(benchmark::kMillisecond);

void shapiroWilk(benchmark::State& state) {
  const std::vector<double> original = normals(static_cast<std::size_t>(state.range(0)));
  std::vector<double> x = original;
  std::vector<double> a(x.size());
  double w = 0.0;
  double p = 0.0;
  for (auto _ : state) {
    x = original;
    q43352(x.data(), x.size(), Nag_Ascending, nullptr);
    q32554(static_cast<int>(x.size()), x.data(), 1, a.data(), &w, &p, nullptr);
    benchmark::DoNotOptimize(p);
  }
}
BENCHMARK(shapiroWilk)->Arg(5000)->Unit(benchmark::kMicrosecond);

void fourier(benchmark::State& state) {
  const int m = static_cast<int>(state.range(0));
  std::vector<double> x = normals(static_cast<std::size_t>(m));
  std::vector<double> work(x.size());
  int ifail = 0;
  for (auto _ : state) {
    q64883(x.data(), &m, work.data(), &ifail);
    benchmark::DoNotOptimize(x.data());
  }
}
BENCHMARK(fourier)->Arg(65536)->Arg(65537)->Unit(benchmark::kMillisecond);

}  // namespace
