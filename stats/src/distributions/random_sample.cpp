// Making, or accepting, the host array of a sample.

#include "distributions/random_sample.hpp"

#include "kernel/host_arrays.hpp"

ALGEB STATS_CreateRandomSample_HW(VKernelVector kv, int n, ALGEB) {
  return STATS_CreateVector_HW(kv, RTABLE_FLOAT64, 1, n);
}

ALGEB STATS_CreateRandomSample_HW(VKernelVector kv, ALGEB a) {
  if (!IsVexelRTable(kv, a)) {
    return STATS_CreateRandomSample_HW(kv, VexelToInteger32(kv, a), ToVexelNULL(kv));
  }
  RTableSettings settings;
  RTableGetSettings(kv, &settings, a);
  if (settings.storage != RTABLE_RECTANGULAR) {
    VexelRaiseError1(kv, "output array must have rectangular storage, received: %1", a);
  }
  if (settings.data_type != RTABLE_FLOAT64) {
    VexelRaiseError1(kv, "output array must have float[8] or sfloat data type, received: %1", a);
  }
  return a;
}
