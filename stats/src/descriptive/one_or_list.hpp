// Arguments that are one value or a list of them, and results in the same form.
#pragma once

#include <vexelc/vexelc.h>

#include <vector>

#include "kernel/conversions.hpp"
#include "kernel/host_arrays.hpp"

// Calls take with every element of a list, with anything else itself.
template <typename Take>
void STATS_ForEachGiven_HW(VKernelVector kv, ALGEB given, Take take) {
  if (!IsVexelList(kv, given)) {
    take(given);
    return;
  }
  const V_INT count = VexelNumArgs(kv, given);
  for (V_INT j = 1; j <= count; ++j) {
    take(VexelListSelect(kv, given, j));
  }
}

// The values of what was given: a list for a list, one float for anything else.
inline ALGEB STATS_InFormOf_HW(VKernelVector kv, ALGEB given, const std::vector<double>& values) {
  return IsVexelList(kv, given)
             ? STATS_FloatList_HW(kv, values.data(), static_cast<V_INT>(values.size()))
             : STATS_DoubleToVexelFloat_HW(kv, values.front());
}
