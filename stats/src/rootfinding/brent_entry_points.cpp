// The exported root finders without derivatives.
//
// tolFactor, an integer here, counts units of the last digit at the host's Digits; f runs with
// three guard digits.  Only the plain method rounds its result to Digits; the searches hand out the
// float as it is.

#include "kernel/host_settings.hpp"
#include "rootfinding/entry_helpers.hpp"
#include "rootfinding/given_names.hpp"

namespace {

using HybridWorker = double (*)(VKernelVector, double, STATS_RealFunction_HW, double, double,
                                double, double, double, int);

// (target, f, lowerValue, upperValue, two points, tolFactor, maxIter)
ALGEB callHybrid(VKernelVector kv, ALGEB args, HybridWorker worker, const char* countMessage,
                 const char* procedureMessage) {
  const Arguments arg(kv, args, 8, countMessage);
  const double target = arg.real(1);
  auto f = procedureArgument(kv, arg, 2, procedureMessage);
  const double lowerValue = arg.real(3);
  const double upperValue = arg.real(4);
  const double point1 = arg.real(5);
  const double point2 = arg.real(6);
  const std::int32_t tolFactor = arg.integer32(7);
  const std::int32_t digits = STATS_HostDigits_HW(kv);
  const std::int32_t maxIter = arg.integer32(8);
  return withGuardDigits(kv, digits, [&] {
    return worker(kv, target, f, lowerValue, upperValue, point1, point2,
                  STATS_LastDigit_HW(digits) * tolFactor, maxIter);
  });
}

constexpr const char* kUnboundProcedure =
    "VexelBrentMethodHybridUnbound expects a procedure as its second parameter, received: %1";

}  // namespace

// (target, f, a, b, tolFactor, maxIter)
STATS_ENTRY(STATS_VexelBrentMethod_HW) {
  const Arguments arg(kv, args, 6, "VexelBrentMethod expects 6 arguments, received: %1");
  const double target = arg.real(1);
  auto f = procedureArgument(
      kv, arg, 2, "VexelBrentMethod expects a procedure as its second parameter, received: %1");
  const double a = arg.real(3);
  const double b = arg.real(4);
  const std::int32_t tolFactor = arg.integer32(5);
  const std::int32_t digits = STATS_HostDigits_HW(kv);
  const std::int32_t maxIter = arg.integer32(6);

  const ALGEB root = withGuardDigits(kv, digits, [&] {
    return STATS_BrentMethod_HW(kv, target, f, a, b, STATS_LastDigit_HW(digits) * tolFactor,
                                maxIter);
  });
  return STATS_RoundedTo_HW(kv, root, digits);
}

// (target, f, lowerValue, upperValue, left, x0, tolFactor, maxIter)
STATS_ENTRY(STATS_VexelBrentMethodHybridLeft_HW) {
  return callHybrid(
      kv, args, STATS_BrentMethodHybridLeft_HW,
      "VexelBrentMethodHybridLeft expects 8 arguments, received: %1",
      "VexelBrentMethodHybridLeft expects a procedure as its second parameter, received: %1");
}

// (target, f, lowerValue, upperValue, x0, right, tolFactor, maxIter)
STATS_ENTRY(STATS_VexelBrentMethodHybridRight_HW) {
  return callHybrid(kv, args, STATS_BrentMethodHybridRight_HW,
                    "VexelBrentMethodHybridRight expects 8 arguments, received: %1",
                    kUnboundProcedure);  // names the other entry point; hosts match on it
}

// (target, f, lowerValue, upperValue, initPoint1, initPoint2, tolFactor, maxIter)
STATS_ENTRY(STATS_VexelBrentMethodHybridUnbound_HW) {
  return callHybrid(kv, args, STATS_BrentMethodHybridUnbound_HW,
                    "VexelBrentMethodHybridUnbound expects 8 arguments, received: %1",
                    kUnboundProcedure);
}
