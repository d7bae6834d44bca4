// The exported Newton-Raphson root finders.
//
// tolFactor is a multiple of the last digit at the host's Digits.  f and df are host procedures and
// run with three guard digits; the result is rounded to Digits.

#include "kernel/host_settings.hpp"
#include "rootfinding/entry_helpers.hpp"
#include "rootfinding/given_names.hpp"

namespace {

// A flag and the barrier that follows it; a barrier whose flag is false is not looked at.
struct BarrierArgument {
  BarrierArgument(const Arguments& arg, V_INT flag)
      : set(arg.boolean(flag)), value(set ? arg.real(flag + 1) : 0.0) {}
  bool set;
  double value;
};

}  // namespace

// (target, f, df, x0, hasLeft, left, hasRight, right, tolFactor, maxIter)
STATS_ENTRY(STATS_VexelNewtonRaphson_HW) {
  const Arguments arg(kv, args, 10, "VexelNewtonRaphson expects 10 arguments, received: %1");
  const double target = arg.real(1);
  auto f = procedureArgument(
      kv, arg, 2, "VexelNewtonRaphson expects a procedure as its second parameter, received: %1");
  auto df = procedureArgument(
      kv, arg, 3, "VexelNewtonRaphson expects a procedure as its third parameter, received: %1");
  const double x0 = arg.real(4);
  const BarrierArgument left(arg, 5);
  const BarrierArgument right(arg, 7);
  const double tolFactor = arg.real(9);
  const std::int32_t digits = STATS_HostDigits_HW(kv);
  const std::int32_t maxIter = arg.integer32(10);

  const ALGEB root = withGuardDigits(kv, digits, [&] {
    return STATS_NewtonRaphson_HW(kv, target, f, df, x0, left.set, left.value, right.set,
                                  right.value, tolFactor * STATS_LastDigit_HW(digits), maxIter);
  });
  return STATS_RoundedTo_HW(kv, root, digits);
}

// (target, f, df, x0, lower, upper, tolFactor, maxIter)
STATS_ENTRY(STATS_VexelNewtonRaphsonSafe_HW) {
  const Arguments arg(kv, args, 8, "VexelNewtonRaphsonSafe expects 8 arguments, received: %1");
  const double target = arg.real(1);
  auto f = procedureArgument(
      kv, arg, 2,
      "VexelNewtonRaphsonSafe expects a procedure as its second parameter, received: %1");
  auto df = procedureArgument(
      kv, arg, 3,
      "VexelNewtonRaphsonSafe expects a procedure as its third parameter, received: %1");
  const double x0 = arg.real(4);
  const double lower = arg.real(5);
  const double upper = arg.real(6);
  const double tolFactor = arg.real(7);
  const std::int32_t digits = STATS_HostDigits_HW(kv);
  const std::int32_t maxIter = arg.integer32(8);

  const ALGEB root = withGuardDigits(kv, digits, [&] {
    return STATS_NewtonRaphsonSafe_HW(kv, target, f, df, x0, lower, upper,
                                      tolFactor * STATS_LastDigit_HW(digits), maxIter);
  });
  return STATS_RoundedTo_HW(kv, root, digits);
}

// (target, f, df, x0, lowerValue, upperValue, hasLeft, left, hasRight, right, tolFactor, maxIter)
STATS_ENTRY(STATS_VexelNewtonRaphsonHybrid_HW) {
  const Arguments arg(kv, args, 12, "VexelNewtonRaphsonHybrid expects 12 arguments, received: %1");
  const double target = arg.real(1);
  auto f = procedureArgument(
      kv, arg, 2,
      "VexelNewtonRaphsonHybrid expects a procedure as its second parameter, received: %1");
  auto df = procedureArgument(
      kv, arg, 3,
      "VexelNewtonRaphsonHybrid expects a procedure as its third parameter, received: %1");
  const double x0 = arg.real(4);
  const double lowerValue = arg.real(5);
  const double upperValue = arg.real(6);
  const BarrierArgument left(arg, 7);
  const BarrierArgument right(arg, 9);
  const double tolFactor = arg.real(11);
  const std::int32_t digits = STATS_HostDigits_HW(kv);
  const std::int32_t maxIter = arg.integer32(12);

  const ALGEB root = withGuardDigits(kv, digits, [&] {
    return STATS_NewtonRaphsonHybrid_HW(kv, target, f, df, x0, lowerValue, upperValue, left.set,
                                        left.value, right.set, right.value,
                                        tolFactor * STATS_LastDigit_HW(digits), maxIter);
  });
  return STATS_RoundedTo_HW(kv, root, digits);
}
