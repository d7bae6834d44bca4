// What the root finders' entry points share: procedure arguments and guard digits.
#pragma once

#include <cstdint>

#include "kernel/callback_adapters.hpp"
#include "kernel/conversions.hpp"
#include "kernel/entry_frame.hpp"

// Argument i; raises message, with the argument for its %1, unless it is a procedure.
inline ALGEB requireProcedure(VKernelVector kv, const Arguments& arg, V_INT i,
                              const char* message) {
  const ALGEB proc = arg[i];
  if (!IsVexelProcedure(kv, proc)) {
    VexelRaiseError1(kv, message, proc);
  }
  return proc;
}

// The same as a callable.
inline STATS_VexelProcAdapter_HW procedureArgument(VKernelVector kv, const Arguments& arg, V_INT i,
                                                   const char* message) {
  return {kv, requireProcedure(kv, arg, i, message)};
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
