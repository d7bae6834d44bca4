// Calls of the numerical library with its failure record turned into host errors.
#pragma once

#include <nag2/nag2.h>
#include <vexelc/vexelc.h>

enum STATS_PROBABILITY_TYPE_HW : int {
  STATS_LOWER_TAIL_HW = 1,  // the only one the library passes
  STATS_UPPER_TAIL_HW = 2,
  STATS_TWO_TAIL_SIGNIFICANCE_HW = 3,
  STATS_TWO_TAIL_CONFIDENCE_HW = 4,
};

Nag_TailProbability STATS_ToNag_TailProbability_HW(STATS_PROBABILITY_TYPE_HW type);

// Clears a failure record for a call: no handler, no printing.
NagError STATS_NagError_HW();

// Raises the record's message as the host error unless its code is 0.
void STATS_RaiseNagError_HW(VKernelVector kv, const NagError& fail);

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
