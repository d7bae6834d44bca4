// What the user has set in the host, as far as the library asks: Digits, Pi, the limit of
// iterations.
#pragma once

#include <vexelc/vexelc.h>

#include <cmath>
#include <cstdint>

// The value of the host variable Digits as a 32-bit integer.
std::int32_t STATS_HostDigits_HW(VKernelVector kv);

// One unit of the last of digits decimal digits.
inline double STATS_LastDigit_HW(std::int32_t digits) {
  return std::pow(10.0, -static_cast<double>(digits));
}

// The same of the host's Digits.
inline double STATS_HostTolerance_HW(VKernelVector kv) {
  return STATS_LastDigit_HW(STATS_HostDigits_HW(kv));
}

// A float rounded by the host to that many digits.
inline ALGEB STATS_RoundedTo_HW(VKernelVector kv, ALGEB x, std::int32_t digits) {
  return EvalVexelProc(kv, ToVexelName(kv, "evalf", 1), 2, x, ToVexelInteger(kv, digits));
}

// The host's own Pi, which a host may redefine.
double STATS_HostPi_HW(VKernelVector kv);

// The value of the host variable _EnvStatisticsIterations if it is assigned, else 100.
int STATS_IterationLimit_HW(VKernelVector kv);
