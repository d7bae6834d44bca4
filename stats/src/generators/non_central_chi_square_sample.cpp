// The sample of a non-central chi-square distribution: variate by variate, or from an envelope of
// the density with base points at far quantiles, the mode and the points of inflection.

#include <algorithm>
#include <cmath>

#include "distributions/families.hpp"
#include "distributions/random_sample.hpp"
#include "generators/envelope_generator.hpp"
#include "kernel/callback_adapters.hpp"
#include "kernel/conversions.hpp"
#include "kernel/entry_frame.hpp"
#include "kernel/host_arrays.hpp"
#include "kernel/host_settings.hpp"
#include "rootfinding/entry_helpers.hpp"
#include "rootfinding/given_names.hpp"

namespace {

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

// Fills sample, n doubles.  The last three of the six arguments are procedures: the density, its
// first and its second derivative, which place the envelope's base points.
void fillFromEnvelope(VKernelVector kv, const Arguments& arg, std::int32_t n, double nu,
                      double delta, double* sample) {
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

  const double tol = STATS_HostTolerance_HW(kv);
  const double pHigh = std::max(1.0 - 0.1 / n, 0.999);
  const double pLow = std::min(0.1 / n, 0.001);
  const double xLow = STATS_NonCentralChiSquareDeviate_HW(kv, pLow, nu, delta, tol);
  const double xHigh = STATS_NonCentralChiSquareDeviate_HW(kv, pHigh, nu, delta, tol);

  constexpr std::int32_t kVariatesPerElement = 10000;
  constexpr std::int32_t kElementsAtLeast = 100;
  const ALGEB points = basePoints(kv, firstDerivative, secondDerivative, xLow, xHigh, tol);
  const ALGEB setup = VexelListAlloc(kv, 5);
  VexelListAssign(kv, setup, 1, density);
  VexelListAssign(kv, setup, 2, first);
  VexelListAssign(kv, setup, 3, points);
  VexelListAssign(kv, setup, 4,
                  ToVexelInteger(kv, std::max(n / kVariatesPerElement, kElementsAtLeast)));
  VexelListAssign(kv, setup, 5, ToVexelBoolean(kv, 0));

  STATS_EnvelopeGenerator_HW generator(kv);
  if (!generator.initialize(kv, setup)) {
    VexelRaiseError1(kv, "unable to initialize random variate generator", ToVexelNULL(kv));
  }
  for (std::int32_t k = 0; k < n; ++k) {
    sample[k] = generator.next(kv);
  }
}

}  // namespace

// (n, nu, delta, squares) draws each variate by itself; (n, nu, delta, f, df, ddf) draws them from
// an envelope of the density.
STATS_ENTRY(STATS_VexelNonCentralChiSquareRandomSample_HW) {
  const Arguments arg(kv, args);
  if (arg.count() != 4 && arg.count() != 6) {
    VexelRaiseError1(
        kv, "VexelNonCentralChiSquareRandomSample expects 4 or 6 arguments, received: %1", args);
  }
  const std::int32_t n = arg.integer32(1);
  const double nu = arg.real(2);
  const double delta = arg.real(3);
  const ALGEB sample = STATS_CreateRandomSample_HW(kv, n, ToVexelNULL(kv));
  double* const data = STATS_FloatBlock_HW(kv, sample);
  if (arg.count() == 6) {
    fillFromEnvelope(kv, arg, n, nu, delta, data);
    return sample;
  }
  const int method = arg.boolean(4) ? 1 : 0;
  for (std::int32_t k = 0; k < n; ++k) {
    data[k] = STATS_NonCentralChiSquareRandomVariate_HW(kv, nu, delta, method);
  }
  return sample;
}
