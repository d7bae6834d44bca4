// Root finders: the cost of one solve of Phi-like equations through the internal adapters and
// through host procedures, beside Boost's and GSL's solvers on the same C function.
//
// The equation is 1 / (1 + exp(-x)) = p with p running over 0.01 ... 0.99, started at 0 or from
// [-10, 10]; all solvers go on to a relative 1e-12.

#include <benchmark/benchmark.h>
#include <gsl/gsl_errno.h>
#include <gsl/gsl_roots.h>

#include <boost/math/tools/roots.hpp>
#include <boost/math/tools/toms748_solve.hpp>
#include <cmath>
#include <vexel/kernel.hpp>

#include "kernel/callback_adapters.hpp"
#include "rootfinding/given_names.hpp"

namespace {

constexpr double kTol = 1e-12;

double cdf(double x) { return 1.0 / (1.0 + std::exp(-x)); }
double pdf(double x) {
  const double e = std::exp(-std::abs(x));
  return e / ((1.0 + e) * (1.0 + e));
}

// The next target: 0.01, 0.02, ... 0.99, over and over.
class Targets {
 public:
  double next() {
    step_ = step_ % 99 + 1;
    return step_ / 100.0;
  }

 private:
  int step_ = 0;
};

vexel::Kernel& kernel() {
  static vexel::Kernel instance;
  return instance;
}

void BrentInternal(benchmark::State& state) {
  const auto f = [](double x) { return cdf(x); };
  Targets targets;
  for (auto _ : state) {
    benchmark::DoNotOptimize(STATS_BrentMethod_HW(nullptr, targets.next(), f, -10, 10, kTol, 100));
  }
}
BENCHMARK(BrentInternal);

void BrentHostFunction(benchmark::State& state) {
  const vexel::Value proc = kernel().function("cdf", std::function<double(double)>(cdf));
  STATS_VexelProcAdapter_HW f(kernel().vector(), proc.handle());
  Targets targets;
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        STATS_BrentMethod_HW(kernel().vector(), targets.next(), f, -10, 10, kTol, 100));
  }
}
BENCHMARK(BrentHostFunction);

void BrentBoostToms748(benchmark::State& state) {
  Targets targets;
  for (auto _ : state) {
    const double p = targets.next();
    std::uintmax_t limit = 100;
    benchmark::DoNotOptimize(
        boost::math::tools::toms748_solve([p](double x) { return cdf(x) - p; }, -10.0, 10.0,
                                          boost::math::tools::eps_tolerance<double>(40), limit));
  }
}
BENCHMARK(BrentBoostToms748);

struct GslEquation {
  double p;
};
double gslF(double x, void* e) { return cdf(x) - static_cast<GslEquation*>(e)->p; }
double gslDf(double x, void*) { return pdf(x); }
void gslFdf(double x, void* e, double* f, double* d) {
  *f = gslF(x, e);
  *d = pdf(x);
}

void BrentGsl(benchmark::State& state) {
  gsl_root_fsolver* solver = gsl_root_fsolver_alloc(gsl_root_fsolver_brent);
  Targets targets;
  for (auto _ : state) {
    GslEquation e{targets.next()};
    gsl_function f{gslF, &e};
    gsl_root_fsolver_set(solver, &f, -10, 10);
    do {
      gsl_root_fsolver_iterate(solver);
    } while (gsl_root_test_interval(gsl_root_fsolver_x_lower(solver),
                                    gsl_root_fsolver_x_upper(solver), kTol, kTol) == GSL_CONTINUE);
    benchmark::DoNotOptimize(gsl_root_fsolver_root(solver));
  }
  gsl_root_fsolver_free(solver);
}
BENCHMARK(BrentGsl);

void NewtonInternal(benchmark::State& state) {
  const auto f = [](double x) { return cdf(x); };
  const auto d = [](double x) { return pdf(x); };
  Targets targets;
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        STATS_NewtonRaphsonSafe_HW(nullptr, targets.next(), f, d, 0.0, -10, 10, kTol, 100));
  }
}
BENCHMARK(NewtonInternal);

void NewtonHostFunction(benchmark::State& state) {
  const vexel::Value f0 = kernel().function("cdf", std::function<double(double)>(cdf));
  const vexel::Value d0 = kernel().function("pdf", std::function<double(double)>(pdf));
  STATS_VexelProcAdapter_HW f(kernel().vector(), f0.handle());
  STATS_VexelProcAdapter_HW d(kernel().vector(), d0.handle());
  Targets targets;
  for (auto _ : state) {
    benchmark::DoNotOptimize(STATS_NewtonRaphsonSafe_HW(kernel().vector(), targets.next(), f, d,
                                                        0.0, -10, 10, kTol, 100));
  }
}
BENCHMARK(NewtonHostFunction);

void NewtonBoost(benchmark::State& state) {
  Targets targets;
  for (auto _ : state) {
    const double p = targets.next();
    std::uintmax_t limit = 100;
    benchmark::DoNotOptimize(boost::math::tools::newton_raphson_iterate(
        [p](double x) { return std::make_pair(cdf(x) - p, pdf(x)); }, 0.0, -10.0, 10.0, 40, limit));
  }
}
BENCHMARK(NewtonBoost);

void NewtonGsl(benchmark::State& state) {
  gsl_root_fdfsolver* solver = gsl_root_fdfsolver_alloc(gsl_root_fdfsolver_newton);
  Targets targets;
  for (auto _ : state) {
    GslEquation e{targets.next()};
    gsl_function_fdf f{gslF, gslDf, gslFdf, &e};
    double x = 0;
    double previous;
    gsl_root_fdfsolver_set(solver, &f, x);
    int pass = 0;
    do {
      gsl_root_fdfsolver_iterate(solver);
      previous = x;
      x = gsl_root_fdfsolver_root(solver);
    } while (gsl_root_test_delta(x, previous, kTol, kTol) == GSL_CONTINUE && ++pass < 100);
    benchmark::DoNotOptimize(x);
  }
  gsl_root_fdfsolver_free(solver);
}
BENCHMARK(NewtonGsl);

}  // namespace
