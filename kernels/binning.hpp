// Guesses of equal bins.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vexel::kernels {

// Bins of width 1 / scale from low on.
struct BinGuess {
  double low;
  double scale;
  double doubt;  // the least distance of a sure guess from the bin's ends, in widths
  std::int32_t bins;
};

// bin[j] of x[j], or `bins` where the guess is not sure or x[j] is not in a bin; returns how many
// those are.  The same on every machine.
std::int32_t guessBins(const double* x, std::size_t n, BinGuess guess, std::int32_t* bin);

// The smallest and largest of x; false, with neither set, where something is not finite or nothing
// is there.
bool finiteRange(const double* x, std::size_t n, double* low, double* high);

// The sum of a[i] b[i] in 32 interleaved sums.  The same bits on every machine.
double dot(const double* a, const double* b, std::size_t n);

}  // namespace vexel::kernels
