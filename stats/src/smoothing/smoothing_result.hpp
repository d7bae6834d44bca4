// The array that the smoothing entry points return.
#pragma once

#include <vexelc/vexelc.h>

#include "kernel/conversions.hpp"
#include "kernel/host_arrays.hpp"

// A new float[8] array of n values from index lower, otherwise with the settings of data.
inline ALGEB STATS_SmoothingResult_HW(VKernelVector kv, ALGEB data, V_INT lower, V_INT n) {
  RTableSettings settings;
  RTableGetSettings(kv, &settings, data);
  settings.data_type = RTABLE_FLOAT64;
  settings.storage = RTABLE_RECTANGULAR;
  settings.num_dimensions = 1;
  settings.read_only = 0;
  const STATS_Bounds_HW indices = STATS_BoundsFrom_HW(kv, lower, n);
  const V_INT bounds[] = {indices.lower, indices.upper};
  return RTableCreate(kv, &settings, nullptr, bounds);
}
