// What the root finders' entry points share: procedure arguments and guard digits.
#pragma once

#include <cmath>
#include <cstdint>

#include "kernel/callback_adapters.hpp"
#include "kernel/conversions.hpp"
#include "kernel/entry_frame.hpp"

// Argument i as a callable; raises message, with the argument for its %1, unless it is a procedure.
inline STATS_VexelProcAdapter_HW procedureArgument(VKernelVector kv, const Arguments& arg, V_INT i,
                                                   const char* message) {
  const ALGEB proc = arg[i];
  if (!IsVexelProcedure(kv, proc)) {
    VexelRaiseError1(kv, message, proc);
  }
  return STATS_VexelProcAdapter_HW(kv, proc);
}

// One unit of the last of digits decimal digits.
inline double lastDigit(std::int32_t digits) {
  return std::pow(10.0, -static_cast<double>(digits));
}

// Runs worker, which calls host procedures, with Digits three above digits; its double result
// becomes a host float.
//
// Digits goes back to its former value only when the worker returns.  An error leaves it raised:
// hosts restore it themselves where they care.
template <typename Worker>
ALGEB withGuardDigits(VKernelVector kv, std::int32_t digits, Worker worker) {
  const ALGEB name = ToVexelName(kv, "Digits", 1);
  const ALGEB former = VexelAssign(kv, name, ToVexelInteger(kv, V_INT{digits} + 3));
  const ALGEB result = STATS_DoubleToVexelFloat_HW(kv, worker());
  VexelAssign(kv, name, former);
  return result;
}

// A float rounded by the host to that many digits.
inline ALGEB roundedTo(VKernelVector kv, ALGEB x, std::int32_t digits) {
  return EvalVexelProc(kv, ToVexelName(kv, "evalf", 1), 2, x, ToVexelInteger(kv, digits));
}
