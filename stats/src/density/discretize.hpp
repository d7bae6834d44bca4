// Linear binning of a sample onto an equally spaced grid.
#pragma once

#include <vexelc/vexelc.h>

#include <cstdint>

// Raises unless a < b, both are finite, and M >= 1.
void STATS_CheckGrid_HW(VKernelVector kv, std::int32_t M, double a, double b);

// Adds the data in [a, b] to the M points a + j (b - a)/(M - 1), each datum's weight shared between
// its two neighbours in proportion to nearness, then scales all points by c over the total weight
// binned; c = 0 stands for M/(b - a).
//
// out has M elements, cleared by the caller.  w may be null; a NaN weight counts as 1.  NaN data
// are left out, with a message to the user unless quiet; data outside [a, b] are left out silently.
// With no datum inside, the scaling divides by zero.  The grid must be one that
// STATS_CheckGrid_HW lets pass.
void STATS_Discretize_HW(VKernelVector kv, std::int32_t M, double a, double b, double c, bool quiet,
                         V_INT n, const double* x, const double* w, double* out);
