// Linear binning of a sample onto an equally spaced grid (kernels/density/linear_binning.hpp).
#pragma once

#include <vexelc/vexelc.h>

#include <cstdint>

// Raises unless a < b, both are finite, and M >= 1.
void STATS_CheckGrid_HW(VKernelVector kv, std::int32_t M, double a, double b);

// The binned data; tells the user of missing ones, unless quiet.  The grid must be one that
// STATS_CheckGrid_HW lets pass.
void STATS_Discretize_HW(VKernelVector kv, std::int32_t M, double a, double b, double c, bool quiet,
                         V_INT n, const double* x, const double* w, double* out);
