// The exported integer quantile searches.  They neither raise Digits nor round: F is evaluated at
// the host's precision and the result is an integer.

#include "kernel/conversions.hpp"
#include "rootfinding/entry_helpers.hpp"
#include "rootfinding/given_names.hpp"

namespace {

std::int32_t integerPoint(const Arguments& arg, V_INT i) {
  return STATS_DoubleToInteger_HW(arg.real(i));
}

using HybridWorker = std::int32_t (*)(VKernelVector, double, STATS_RealFunction_HW, double, double,
                                      std::int32_t, std::int32_t, int);

// (p, F, lowerValue, upperValue, two integer points, maxIter).  The three searches share their
// messages.
ALGEB callHybrid(VKernelVector kv, ALGEB args, HybridWorker worker) {
  const Arguments arg(kv, args, 7,
                      "VexelDiscreteInterpolationHybrid expects 7 arguments, received: %1");
  const double p = arg.real(1);
  auto F = procedureArgument(kv, arg, 2,
                             "VexelDiscreteInterpolationHybridLeft expects a procedure as its "
                             "second parameter, received: %1");
  const double lowerValue = arg.real(3);
  const double upperValue = arg.real(4);
  const std::int32_t point1 = integerPoint(arg, 5);
  const std::int32_t point2 = integerPoint(arg, 6);
  const std::int32_t maxIter = arg.integer32(7);
  return ToVexelInteger(kv, worker(kv, p, F, lowerValue, upperValue, point1, point2, maxIter));
}

}  // namespace

// (p, F, lo, hi, maxIter)
STATS_ENTRY(STATS_VexelDiscreteInterpolation_HW) {
  const Arguments arg(kv, args, 5, "VexelDiscreteInterpolation expects 5 arguments, received: %1");
  const double p = arg.real(1);
  auto F = procedureArgument(
      kv, arg, 2,
      "VexelDiscreteInterpolation expects a procedure as its second parameter, received: %1");
  const std::int32_t lo = integerPoint(arg, 3);
  const std::int32_t hi = integerPoint(arg, 4);
  const std::int32_t maxIter = arg.integer32(5);
  return ToVexelInteger(kv, STATS_DiscreteInterpolation_HW(kv, p, F, lo, hi, maxIter));
}

// (p, F, lowerValue, upperValue, left, x0, maxIter)
STATS_ENTRY(STATS_VexelDiscreteInterpolationHybridLeft_HW) {
  return callHybrid(kv, args, STATS_DiscreteInterpolationHybridLeft_HW);
}

// (p, F, lowerValue, upperValue, x0, right, maxIter)
STATS_ENTRY(STATS_VexelDiscreteInterpolationHybridRight_HW) {
  return callHybrid(kv, args, STATS_DiscreteInterpolationHybridRight_HW);
}

// (p, F, lowerValue, upperValue, initPoint1, initPoint2, maxIter)
STATS_ENTRY(STATS_VexelDiscreteInterpolationHybridUnbound_HW) {
  return callHybrid(kv, args, STATS_DiscreteInterpolationHybridUnbound_HW);
}
