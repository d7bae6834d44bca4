// Calls of the numerical library: its tails, its failure record.

#include "kernel/nag_call.hpp"

Nag_TailProbability STATS_ToNag_TailProbability_HW(STATS_PROBABILITY_TYPE_HW type) {
  switch (type) {
    case STATS_UPPER_TAIL_HW:
      return Nag_UpperTail;
    case STATS_TWO_TAIL_SIGNIFICANCE_HW:
      return Nag_TwoTailSignif;
    case STATS_TWO_TAIL_CONFIDENCE_HW:
      return Nag_TwoTailConfid;
    default:
      return Nag_LowerTail;
  }
}

// The text ends with its first zero: clearing all its room would take longer than many calls.
NagError STATS_NagError_HW() {
  NagError fail;
  fail.code = NAG2_OK;
  fail.print = 0;
  fail.message[0] = '\0';
  fail.handler = nullptr;
  return fail;
}

void STATS_RaiseNagError_HW(VKernelVector kv, const NagError& fail) {
  if (fail.code != NAG2_OK) {
    VexelRaiseError1(kv, fail.message, ToVexelNULL(kv));
  }
}
