// The array that the smoothing entry points return.
#pragma once

#include <vexelc/vexelc.h>

#include <limits>

#include "kernel/conversions.hpp"

// A new float[8] array of n values from index lower, otherwise with the settings of data.
inline ALGEB STATS_SmoothingResult_HW(VKernelVector kv, ALGEB data, V_INT lower, V_INT n) {
  RTableSettings settings;
  RTableGetSettings(kv, &settings, data);
  settings.data_type = RTABLE_FLOAT64;
  settings.storage = RTABLE_RECTANGULAR;
  settings.num_dimensions = 1;
  settings.read_only = 0;
  if (n == 0 && lower == std::numeric_limits<V_INT>::min()) {
    lower = 1;  // there is no bound below it
  }
  const V_INT bounds[] = {lower, lower + (n - 1)};
  return RTableCreate(kv, &settings, nullptr, bounds);
}
