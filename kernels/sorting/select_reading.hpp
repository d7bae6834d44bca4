// Values of a few ranks of a large array that must stay as it is.
#pragma once

namespace vexel::kernels {

// Writes the values of the ranks ranks[0..m-1] (from 0, ascending, each in [0, n)) of x[0..n-1],
// NaN last, to values[0..m-1].  Reads x once and part of it twice; never rearranges nor copies it.
//
// False, with values of no meaning, when a copy is the better way: for small arrays, more than a
// few ranks, ranks among the NaNs, and orders that deceive the sample that the method takes.  Of
// zeros of both signs it may give one where a sort would give the other.
bool selectReading(const double* x, int n, const int* ranks, int m, double* values);

}  // namespace vexel::kernels
