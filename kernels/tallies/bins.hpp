// Counting numbers into bins.
//
// The edges of m bins are m + 1 values e[0] <= ... <= e[m].  Bin k takes e[k] <= x < e[k+1], the
// last one e[m] as well.  Several ranges lie one after another, each with edges of its own; a
// number is counted once in every range that holds it, and a NaN in none.
#pragma once

#include <cstdint>

namespace vexel::kernels {

// The largest k < m with edges[k] <= x, for m >= 1 and x >= edges[0].
int binOf(const double* edges, int m, double x);

// Counts data[0..n-1] into counts, nRanges * m cells, which are cleared first.  Polls.
void tallyInto(std::uint32_t* counts, const double* data, int n, const double* edges, int nRanges,
               int m);

// The same with weights; every sum is formed in data order.
void weightedTallyInto(double* sums, const double* data, const double* weights, int n,
                       const double* edges, int nRanges, int m);

}  // namespace vexel::kernels
