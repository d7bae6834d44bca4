// The distributions' entry points that no row of the tables describes: samples with a way of their
// own, the empirical distribution, the error quantile and the normal approximations.

#include <cmath>

#include "distributions/empirical.hpp"
#include "distributions/entry_rows.hpp"
#include "distributions/families.hpp"
#include "distributions/normal_approximations.hpp"
#include "kernel/host_settings.hpp"
#include "kernel/sample_view.hpp"
#include "rootfinding/entry_helpers.hpp"

// (n, mu, sigma) or (array, mu, sigma): the only sample that fills an array of the caller's.
STATS_ENTRY(STATS_VexelNormalRandomSample_HW) {
  const Arguments arg(kv, args, 3, "VexelNormalRandomSample expects 3 arguments, received: %1");
  const double mu = arg.real(2);
  const double sigma = arg.real(3);
  const ALGEB sample = STATS_CreateRandomSample_HW(kv, arg[1]);
  double* const data = STATS_FloatBlock_HW(kv, sample);
  const V_INT n = RTableNumElements(kv, sample);
  for (V_INT k = 0; k < n; ++k) {
    data[k] = STATS_NormalRandomVariate_HW(kv, mu, sigma);
  }
  return sample;
}

// (n, p): rounded down from the exponential ziggurat, unlike single variates, which invert one
// uniform.
STATS_ENTRY(STATS_VexelGeometricRandomSample_HW) {
  const Arguments arg(kv, args, 2, "VexelGeometricRandomSample expects 2 arguments, received: %1");
  const std::int32_t n = arg.integer32(1);
  const double p = arg.real(2);
  const ALGEB sample = STATS_CreateRandomSample_HW(kv, n, ToVexelNULL(kv));
  double* const data = STATS_FloatBlock_HW(kv, sample);
  const double logFailure = std::log1p(-p) + 0.0;  // +0 for either zero p
  for (std::int32_t k = 0; k < n; ++k) {
    data[k] = std::floor(-STATS_ExponentialRandomVariate_HW(kv, 1.0) / logFailure);
  }
  return sample;
}

// The entry points of the empirical distribution take data, weights, copy: the arrays' own blocks,
// which drawing then reorders, or with copy those without missing values.

// (u, data, weights, copy)
STATS_ENTRY(STATS_VexelEmpiricalDeviate_HW) {
  const Arguments arg(kv, args, 4, "VexelEmpiricalDeviate expects 4 arguments, received: %1");
  const double u = arg.real(1);
  const STATS_VexelDataSample_HW sample(kv, arg[2], arg[3]);
  const SampleView data = SampleView::forReading(kv, sample, arg.boolean(4));
  return STATS_DoubleToVexelFloat_HW(
      kv, STATS_EmpiricalDeviate_HW(kv, u, data.size, data.points, data.weights));
}

// (data, weights, copy)
STATS_ENTRY(STATS_VexelEmpiricalRandomVariate_HW) {
  const Arguments arg(kv, args, 3, "VexelEmpiricalRandomVariate expects 3 arguments, received: %1");
  const STATS_VexelDataSample_HW sample(kv, arg[1], arg[2]);
  const SampleView data = SampleView::forReading(kv, sample, arg.boolean(3));
  return STATS_DoubleToVexelFloat_HW(
      kv, STATS_EmpiricalRandomVariate_HW(kv, data.size, data.points, data.weights));
}

// (n, data, weights, copy)
STATS_ENTRY(STATS_VexelEmpiricalRandomSample_HW) {
  const Arguments arg(kv, args, 4, "VexelEmpiricalRandomSample expects 4 arguments, received: %1");
  const std::int32_t n = arg.integer32(1);
  const STATS_VexelDataSample_HW sample(kv, arg[2], arg[3]);
  const SampleView data = SampleView::forReading(kv, sample, arg.boolean(4));
  const bool own = data.points == sample.points();
  const ALGEB result = STATS_CreateRandomSample_HW(kv, n, ToVexelNULL(kv));
  STATS_EmpiricalRandomSample_HW(kv, STATS_FloatBlock_HW(kv, result), n, data.size, data.points,
                                 data.weights, own);
  return result;
}

// (p, F, f, a, b, c): Newton-Raphson on host procedures; the host rounds the root to its Digits.
STATS_ENTRY(STATS_VexelErrorDeviate_HW) {
  const Arguments arg(kv, args, 6, "VexelErrorDeviate expects 6 arguments, received: %1");
  const double p = arg.real(1);
  auto F = procedureArgument(
      kv, arg, 2, "VexelErrorDeviate expects a procedure as its second parameter, received: %1");
  auto f = procedureArgument(
      kv, arg, 3, "VexelErrorDeviate expects a procedure as its third parameter, received: %1");
  const double a = arg.real(4);
  const double b = arg.real(5);
  const double c = arg.real(6);
  const std::int32_t digits = STATS_HostDigits_HW(kv);
  const double root = STATS_ErrorDeviate_HW(kv, p, F, f, a, b, c, STATS_HostTolerance_HW(kv));
  return STATS_RoundedTo_HW(kv, STATS_DoubleToVexelFloat_HW(kv, root), digits);
}

STATS_ENTRY(STATS_VexelNormalDeviateApprox_HW) {
  const Arguments arg(kv, args, 1, "VexelNormalDeviateApprox expects 1 arguments, received: %1");
  return STATS_DoubleToVexelFloat_HW(kv, STATS_NormalDeviateApprox_HW(kv, arg.real(1)));
}

// Counts one argument and reads three, so with one the host refuses the second.  Nobody can have
// called it with success; its worker is of use inside the library only.
STATS_ENTRY(STATS_VexelNormalWApprox_HW) {
  const Arguments arg(kv, args, 1, "VexelNormalDeviateApprox expects 1 arguments, received: %1");
  const double x = arg.real(1);
  const double a = arg.real(2);
  const double b = arg.real(3);
  return STATS_DoubleToVexelFloat_HW(kv, STATS_NormalWApprox_HW(kv, x, a, b));
}
