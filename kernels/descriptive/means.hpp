// Means of four kinds, trimmed and winsorized means.
//
// Nothing is checked: values outside a mean's domain, a total weight of zero or an empty sample
// (0/0) give whatever the floating-point operations give.  Sums run from the first to the last.
#pragma once

#include <cstdint>

namespace vexel::kernels {

enum class MeanKind : int {
  arithmetic = 0,  // sum w x / W
  geometric = 1,   // exp(sum w log x / W)
  harmonic = 2,    // W / sum (w / x)
  quadratic = 3,   // sqrt(sum w x^2 / W)
};

// The kind for an integer of the user's, of any size.
constexpr MeanKind toMeanKind(std::int64_t kind) {
  return kind >= 1 && kind <= 3 ? static_cast<MeanKind>(kind) : MeanKind::arithmetic;
}

// The mean of x[0..n-1], with weights unless w is null.
double mean(const double* x, const double* w, int n, MeanKind type);
double simpleMean(const double* x, int n, MeanKind type);
double weightedMean(const double* x, const double* w, int n, MeanKind type);

// The mean of what lies between the fractions lower and upper of the sample (0 <= lower <= upper
// <= 1).  Reorders x, and changes w when it is given.
double trimmedMean(double* x, double* w, int n, double lower, double upper, MeanKind type);
double simpleTrimmedMean(double* x, int n, double lower, double upper, MeanKind type);
double weightedTrimmedMean(double* x, double* w, int n, double lower, double upper, MeanKind type);

// The same with what lies outside the fractions replaced by the nearest value inside.  Overwrites
// x, and reorders w when it is given.
double winsorizedMean(double* x, double* w, int n, double lower, double upper, MeanKind type);
double simpleWinsorizedMean(double* x, int n, double lower, double upper, MeanKind type);
double weightedWinsorizedMean(double* x, double* w, int n, double lower, double upper,
                              MeanKind type);

}  // namespace vexel::kernels
