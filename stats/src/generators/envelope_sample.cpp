// The non-central chi-square sample from an envelope: base points at far quantiles, the mode and
// the density's points of inflection.

#include "generators/envelope_sample.hpp"

#include <algorithm>
#include <cmath>

#include "distributions/non_central_chi_square.hpp"
#include "generators/envelope_generator.hpp"
#include "kernel/callback_adapters.hpp"
#include "kernel/conversions.hpp"
#include "kernel/entry_frame.hpp"
#include "rootfinding/brent.hpp"

namespace {

ALGEB requireProcedure(VKernelVector kv, const Arguments& arg, V_INT i, const char* message) {
  if (!IsVexelProcedure(kv, arg[i])) {
    VexelRaiseError1(kv, message, arg[i]);
  }
  return arg[i];
}

// A list of five base points; a density with one point of inflection leaves the last two unset,
// and unset elements are no base points.
ALGEB basePoints(VKernelVector kv, STATS_VexelProcAdapter_HW& firstDerivative,
                 STATS_VexelProcAdapter_HW& secondDerivative, double xLow, double xHigh,
                 double tol) {
  const int limit = STATS_IterationLimit_HW(kv);
  const double mode = STATS_BrentMethod_HW(kv, 0.0, firstDerivative, xLow, xHigh, tol, limit);
  const double right = STATS_BrentMethod_HW(kv, 0.0, secondDerivative, mode, xHigh, tol, limit);
  const ALGEB points = VexelListAlloc(kv, 5);
  V_INT count = 0;
  const auto add = [&](double x) {
    VexelListAssign(kv, points, ++count, STATS_DoubleToVexelFloat_HW(kv, x));
  };
  add(xLow);
  const double curvatureLow = secondDerivative.Call(xLow);
  if (!(curvatureLow * secondDerivative.Call(mode) >= 0.0)) {
    add(STATS_BrentMethod_HW(kv, 0.0, secondDerivative, xLow, mode, tol, limit));
    add(mode);
  }
  add(right);
  add(xHigh);
  return points;
}

}  // namespace

ALGEB STATS_NonCentralChiSquareEnvelopeSample_HW(VKernelVector kv, ALGEB args, std::int32_t n,
                                                 double nu, double delta, ALGEB sample) {
  const Arguments arg(kv, args);
  const ALGEB density = requireProcedure(
      kv, arg, 4,
      "procedure expected as fourth parameter to VexelNonCentralChiSquareRandomSample, received: "
      "%1");
  const ALGEB first = requireProcedure(
      kv, arg, 5,
      "procedure expected as fifth parameter to VexelNonCentralChiSquareRandomSample, received: "
      "%1");
  const ALGEB second = requireProcedure(
      kv, arg, 6,
      "procedure expected as sixth parameter to VexelNonCentralChiSquareRandomSample, received: "
      "%1");
  STATS_VexelProcAdapter_HW firstDerivative(kv, first);
  STATS_VexelProcAdapter_HW secondDerivative(kv, second);

  const double tol = std::pow(10.0, -static_cast<double>(STATS_HostDigits_HW(kv)));
  const double pHigh = std::max(1.0 - 0.1 / n, 0.999);
  const double pLow = std::min(0.1 / n, 0.001);
  const double xLow = STATS_NonCentralChiSquareDeviate_HW(kv, pLow, nu, delta, tol);
  const double xHigh = STATS_NonCentralChiSquareDeviate_HW(kv, pHigh, nu, delta, tol);

  constexpr std::int32_t kVariatesPerElement = 10000;
  constexpr std::int32_t kElementsAtLeast = 100;
  const ALGEB points = basePoints(kv, firstDerivative, secondDerivative, xLow, xHigh, tol);
  const ALGEB spec = VexelListAlloc(kv, 5);
  VexelListAssign(kv, spec, 1, density);
  VexelListAssign(kv, spec, 2, first);
  VexelListAssign(kv, spec, 3, points);
  VexelListAssign(kv, spec, 4,
                  ToVexelInteger(kv, std::max(n / kVariatesPerElement, kElementsAtLeast)));
  VexelListAssign(kv, spec, 5, ToVexelBoolean(kv, 0));

  STATS_EnvelopeGenerator_HW generator(kv);
  if (!generator.initialize(kv, spec)) {
    VexelRaiseError1(kv, "unable to initialize random variate generator", ToVexelNULL(kv));
  }
  auto* out = static_cast<double*>(RTableDataBlock(kv, sample));
  for (std::int32_t k = 0; k < n; ++k) {
    out[k] = generator.next(kv);
  }
  return sample;
}
