// Quasi-random streams: 10^6 points in ten dimensions, against GSL's generators where it has them.

#include <benchmark/benchmark.h>
#include <gsl/gsl_qrng.h>

#include <cstdint>
#include <vector>
#include <vexel/kernel.hpp>

namespace {

constexpr int kDimension = 10;
constexpr int kPoints = 1000000;

vexel::Value output(vexel::Kernel& kernel, std::int64_t order) {
  RTableSettings s;
  RTableGetDefaults(kernel.vector(), &s);
  s.data_type = RTABLE_FLOAT64;
  s.num_dimensions = 2;
  s.order = static_cast<std::int32_t>(order);
  const V_INT bounds[] = {1, kDimension, 1, kPoints};
  return kernel.array(s, nullptr, bounds);
}

// Sobol tables do not change the time of a point; these are the first polynomials with ones.
vexel::Value sobol(vexel::Kernel& kernel) {
  const std::vector<std::int32_t> degrees = {0, 1, 2, 3, 3, 4, 4, 5, 5, 5};
  const std::vector<std::int32_t> codes = {0, 0, 1, 1, 2, 1, 4, 2, 4, 7};
  RTableSettings s;
  RTableGetDefaults(kernel.vector(), &s);
  s.data_type = RTABLE_INTEGER64;
  s.num_dimensions = 2;
  s.order = RTABLE_ROW_MAJOR;
  const V_INT bounds[] = {1, kDimension, 1, 31};
  const std::vector<std::int64_t> ones(kDimension * 31, 1);
  return kernel.call("STATS_InitializeQRStream_HW", kDimension, 0, kernel.array(std::span(degrees)),
                     kernel.array(std::span(codes)), kernel.array(s, ones.data(), bounds), 31);
}

void drawStream(benchmark::State& state) {
  vexel::Kernel kernel;
  kernel.loadLibrary(STATS_LIBRARY_PATH);
  const auto kind = state.range(0);
  const vexel::Value stream =
      kind == 0 ? sobol(kernel) : kernel.call("STATS_InitializeQRStream_HW", kDimension, kind);
  const vexel::Value out = output(kernel, state.range(1));
  for (auto _ : state) {
    kernel.call("STATS_ResetQRStream_HW", stream);
    kernel.call("STATS_QRStreamNext_HW", stream, kPoints, out);
  }
  state.SetItemsProcessed(state.iterations() * kPoints * kDimension);
}
BENCHMARK(drawStream)
    ->ArgNames({"kind", "order"})
    ->ArgsProduct({{0, 1, 2}, {RTABLE_COLUMN_MAJOR, RTABLE_ROW_MAJOR}})
    ->Unit(benchmark::kMillisecond);

void drawGsl(benchmark::State& state) {
  const gsl_qrng_type* const type = state.range(0) == 0 ? gsl_qrng_sobol : gsl_qrng_halton;
  gsl_qrng* const q = gsl_qrng_alloc(type, kDimension);
  std::vector<double> out(std::size_t{kDimension} * kPoints);
  for (auto _ : state) {
    gsl_qrng_init(q);
    for (int i = 0; i < kPoints; ++i) {
      gsl_qrng_get(q, out.data() + std::size_t{kDimension} * i);
    }
    benchmark::DoNotOptimize(out.data());
  }
  gsl_qrng_free(q);
  state.SetItemsProcessed(state.iterations() * kPoints * kDimension);
}
BENCHMARK(drawGsl)->ArgName("kind")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

}  // namespace
