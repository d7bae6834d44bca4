// Making, or accepting, the host array of a sample.

#include "distributions/random_sample.hpp"

#include "kernel/data_argument.hpp"
#include "kernel/host_arrays.hpp"

ALGEB STATS_CreateRandomSample_HW(VKernelVector kv, int n, ALGEB) {
  return STATS_CreateVector_HW(kv, RTABLE_FLOAT64, 1, n);
}

ALGEB STATS_CreateRandomSample_HW(VKernelVector kv, ALGEB a) {
  if (!IsVexelRTable(kv, a)) {
    return STATS_CreateRandomSample_HW(kv, VexelToInteger32(kv, a), ToVexelNULL(kv));
  }
  STATS_RequireFloatBlock_HW(kv, a, "output array must have rectangular storage, received: %1",
                             "output array must have float[8] or sfloat data type, received: %1");
  return a;
}
