// Quasi-random sequences of the functions: 10^6 points in ten dimensions, plain and scrambled,
// beside GSL's generators; and root finders beside Boost's and GSL's on the same C function.

#include <benchmark/benchmark.h>
#include <gsl/gsl_errno.h>
#include <gsl/gsl_qrng.h>
#include <gsl/gsl_roots.h>

#include <boost/math/tools/toms748_solve.hpp>
#include <cmath>
#include <vexel/roots.hpp>
#include <vexel/sequences.hpp>

namespace {

constexpr std::size_t kDimension = 10;
constexpr std::size_t kPoints = 1'000'000;

template <typename Sequence>
void points(benchmark::State& state, vexel::Scramble scramble, vexel::PointOrder order) {
  Sequence sequence(kDimension, {.scramble = scramble, .seed = 1});
  std::vector<double> out(kPoints * kDimension);
  for (auto _ : state) {
    sequence.reset();
    sequence.points(kPoints, out, order);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * static_cast<long>(kPoints * kDimension));
}

using vexel::PointOrder;
using vexel::Scramble;

// Kinds: 0 rows, 1 columns, 2 rows with nested uniform scrambling.
template <typename Sequence>
void points(benchmark::State& state) {
  const bool scrambled = state.range(0) == 2;
  points<Sequence>(state, scrambled ? Scramble::owen : Scramble::none,
                   state.range(0) == 1 ? PointOrder::column : PointOrder::row);
}
BENCHMARK(points<vexel::Sobol>)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);
BENCHMARK(points<vexel::Halton>)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);
BENCHMARK(points<vexel::Faure>)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);

void pointsOfGsl(benchmark::State& state, const gsl_qrng_type* type) {
  gsl_qrng* const q = gsl_qrng_alloc(type, kDimension);
  std::vector<double> out(kPoints * kDimension);
  for (auto _ : state) {
    gsl_qrng_init(q);
    for (std::size_t i = 0; i < kPoints; ++i) {
      gsl_qrng_get(q, &out[i * kDimension]);
    }
    benchmark::ClobberMemory();
  }
  gsl_qrng_free(q);
  state.SetItemsProcessed(state.iterations() * static_cast<long>(kPoints * kDimension));
}
BENCHMARK_CAPTURE(pointsOfGsl, sobol, gsl_qrng_sobol)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(pointsOfGsl, halton, gsl_qrng_halton)->Unit(benchmark::kMillisecond);

// 1 / (1 + exp(-x)) = p from [-10, 10], p = 0.01, ... 0.99.
double next(int& step) {
  step = step % 99 + 1;
  return step / 100.0;
}
double logistic(double x) { return 1 / (1 + std::exp(-x)); }

void rootByBrent(benchmark::State& state) {
  int step = 0;
  for (auto _ : state) {
    const double p = next(step);
    benchmark::DoNotOptimize(
        vexel::find_root([](double x) { return logistic(x); }, {-10, 10}, {.target = p}));
  }
}
BENCHMARK(rootByBrent);

void rootByNewton(benchmark::State& state) {
  int step = 0;
  const auto slope = [](double x) {
    const double e = std::exp(-std::abs(x));
    return e / ((1 + e) * (1 + e));
  };
  for (auto _ : state) {
    const double p = next(step);
    benchmark::DoNotOptimize(vexel::find_root([](double x) { return logistic(x); }, {-10, 10},
                                              {.target = p, .derivative = slope}));
  }
}
BENCHMARK(rootByNewton);

void rootByBoost(benchmark::State& state) {
  int step = 0;
  for (auto _ : state) {
    const double p = next(step);
    boost::uintmax_t most = 100;
    benchmark::DoNotOptimize(
        boost::math::tools::toms748_solve([p](double x) { return logistic(x) - p; }, -10.0, 10.0,
                                          boost::math::tools::eps_tolerance<double>(50), most));
  }
}
BENCHMARK(rootByBoost);

void rootByGsl(benchmark::State& state) {
  int step = 0;
  gsl_root_fsolver* const solver = gsl_root_fsolver_alloc(gsl_root_fsolver_brent);
  for (auto _ : state) {
    double p = next(step);
    gsl_function f{[](double x, void* q) { return logistic(x) - *static_cast<double*>(q); }, &p};
    gsl_root_fsolver_set(solver, &f, -10, 10);
    int status = GSL_CONTINUE;
    while (status == GSL_CONTINUE) {
      gsl_root_fsolver_iterate(solver);
      status = gsl_root_test_interval(gsl_root_fsolver_x_lower(solver),
                                      gsl_root_fsolver_x_upper(solver), 0, 1e-15);
    }
    benchmark::DoNotOptimize(gsl_root_fsolver_root(solver));
  }
  gsl_root_fsolver_free(solver);
}
BENCHMARK(rootByGsl);

}  // namespace
