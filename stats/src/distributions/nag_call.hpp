// Calls of the numerical library with its failure record turned into host errors, and the host
// settings that distribution workers read.
#pragma once

#include <nag2/nag2.h>
#include <vexelc/vexelc.h>

#include <cmath>

#include "kernel/conversions.hpp"

// The value of f(&record); a failure raises the numerical library's own text.
template <typename F>
double STATS_CallNag_HW(VKernelVector kv, F f) {
  NagError fail = STATS_NagError_HW();
  const double result = f(&fail);
  STATS_RaiseNagError_HW(kv, fail);
  return result;
}

// P(X <= k) of a discrete distribution f(&le, &gt, &eq, &record).
template <typename F>
double STATS_CallNagDiscrete_HW(VKernelVector kv, F f) {
  return STATS_CallNag_HW(kv, [&](NagError* fail) {
    double le = 0.0;
    double gt = 0.0;
    double eq = 0.0;
    f(&le, &gt, &eq, fail);
    return le;
  });
}

inline Nag_TailProbability STATS_LowerTail_HW() {
  return STATS_ToNag_TailProbability_HW(STATS_LOWER_TAIL_HW);
}

// The host's own Pi, which a host may redefine.
inline double STATS_HostPi_HW(VKernelVector kv) {
  return STATS_VexelUtils_HW::VexelDAGToDouble(ToVexelName(kv, "Pi", 1));
}

// One unit of the last of the host's Digits.
inline double STATS_HostTolerance_HW(VKernelVector kv) {
  return std::pow(10.0, -static_cast<double>(STATS_HostDigits_HW(kv)));
}
