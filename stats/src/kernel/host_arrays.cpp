// Making host arrays: the few shapes that the library returns.

#include "kernel/host_arrays.hpp"

#include <limits>

#include "kernel/conversions.hpp"

RTableSettings STATS_VectorSettings_HW(VKernelVector kv, int dataType) {
  RTableSettings settings;
  RTableGetDefaults(kv, &settings);
  settings.data_type = dataType;
  settings.storage = RTABLE_RECTANGULAR;
  settings.num_dimensions = 1;
  return settings;
}

STATS_Bounds_HW STATS_BoundsFrom_HW(VKernelVector kv, V_INT lower, V_INT count) {
  if (count == 0 && lower == std::numeric_limits<V_INT>::min()) {
    lower = 1;  // there is no bound below it
  }
  V_INT upper = 0;
  if (__builtin_add_overflow(lower, count - 1, &upper)) {
    VexelRaiseError2(kv, "there are no %1 indices from %2", ToVexelInteger(kv, count),
                     ToVexelInteger(kv, lower));
  }
  return {lower, upper};
}

V_INT STATS_Extent_HW(VKernelVector kv, ALGEB array, V_INT dimension) {
  constexpr V_INT kMost = std::numeric_limits<V_INT>::max();
  const V_INT lower = RTableLowerBound(kv, array, dimension);
  const V_INT upper = RTableUpperBound(kv, array, dimension);
  V_INT distance = 0;
  if (upper < lower) {
    return 0;
  }
  return __builtin_sub_overflow(upper, lower, &distance) || distance == kMost ? kMost
                                                                              : distance + 1;
}

ALGEB STATS_CreateVector_HW(VKernelVector kv, int dataType, V_INT lower, V_INT upper,
                            const void* data) {
  const RTableSettings settings = STATS_VectorSettings_HW(kv, dataType);
  const V_INT bounds[] = {lower, upper};
  return RTableCreate(kv, &settings, data, bounds);
}

ALGEB STATS_CreateFloatVector_HW(VKernelVector kv, V_INT n) {
  return STATS_CreateVector_HW(kv, RTABLE_FLOAT64, 1, n);
}

double* STATS_AllocDoubles_HW(VKernelVector kv, V_INT n) {
  constexpr V_INT kWidth = sizeof(double);
  if (n > std::numeric_limits<V_INT>::max() / kWidth) {
    VexelRaiseError(kv, "not enough memory");
  }
  return static_cast<double*>(VexelAlloc(kv, (n > 0 ? n : 1) * kWidth));
}

ALGEB STATS_FloatList_HW(VKernelVector kv, const double* values, V_INT n) {
  const ALGEB list = VexelListAlloc(kv, n);
  for (V_INT i = 0; i < n; ++i) {
    VexelListAssign(kv, list, i + 1, STATS_DoubleToVexelFloat_HW(kv, values[i]));
  }
  return list;
}
