// Making host arrays: the few shapes that the library returns.
#pragma once

#include <vexelc/vexelc.h>

// The host's default settings with the given element type, dense, of one dimension.
RTableSettings STATS_VectorSettings_HW(VKernelVector kv, int dataType);

// The bounds of count indices from lower; of none from the lowest index there is, those from 1.
// Raises when the indices end before count of them.
struct STATS_Bounds_HW {
  V_INT lower;
  V_INT upper;
};
STATS_Bounds_HW STATS_BoundsFrom_HW(VKernelVector kv, V_INT lower, V_INT count);

// Indices of a dimension; of more than there are 64-bit integers, the greatest one.
V_INT STATS_Extent_HW(VKernelVector kv, ALGEB array, V_INT dimension);

// A new one-dimensional array with bounds lower..upper; data, unless null, is copied into it.
ALGEB STATS_CreateVector_HW(VKernelVector kv, int dataType, V_INT lower, V_INT upper,
                            const void* data = nullptr);

// A float[8] array 1..n and its block.
ALGEB STATS_CreateFloatVector_HW(VKernelVector kv, V_INT n);

inline double* STATS_FloatBlock_HW(VKernelVector kv, ALGEB array) {
  return static_cast<double*>(RTableDataBlock(kv, array));
}

// Room for n doubles from the host's allocator (at least one, so that the pointer is real).
double* STATS_AllocDoubles_HW(VKernelVector kv, V_INT n);

// A host list of n floats.
ALGEB STATS_FloatList_HW(VKernelVector kv, const double* values, V_INT n);
