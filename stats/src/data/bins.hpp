// Counting numbers into bins.
//
// The edges of m bins are m + 1 values e[0] <= ... <= e[m].  Bin k takes e[k] <= x < e[k+1], the
// last one e[m] as well.  Several ranges lie one after another, each with edges of its own; a
// number is counted once in every range that holds it, and a NaN in none.
#pragma once

#include <vexelc/vexelc.h>

#include <cstdint>

// The largest k < m with edges[k] <= x, for m >= 1 and x >= edges[0].
int STATS_TallyIntoFindBin_HW(const double* edges, int m, double x);

// Counts data[0..n-1] into counts, nRanges * m cells, which are cleared first.  Given a host, it
// answers the user's interrupts.
void STATS_SimpleTallyInto_HW(std::uint32_t* counts, const double* data, int n, const double* edges,
                              int nRanges, int m, VKernelVector kv = nullptr);

// The same with weights; every sum is formed in data order.
void STATS_WeightedTallyInto_HW(double* sums, const double* data, const double* weights, int n,
                                const double* edges, int nRanges, int m,
                                VKernelVector kv = nullptr);
