// Means of four kinds, trimmed and winsorized means.
//
// Nothing is checked: values outside a mean's domain, a total weight of zero or an empty sample
// (0/0) give whatever the floating-point operations give.  Sums run from the first to the last.
#pragma once

#include <vexelc/vexelc.h>

// Any other value is the arithmetic mean too.
enum STATS_MEAN_TYPE_HW : int {
  STATS_ARITHMETIC_MEAN_HW = 0,  // sum w x / W
  STATS_GEOMETRIC_MEAN_HW = 1,   // exp(sum w log x / W)
  STATS_HARMONIC_MEAN_HW = 2,    // W / sum (w / x)
  STATS_QUADRATIC_MEAN_HW = 3,   // sqrt(sum w x^2 / W)
};

// The kind for an integer of the user's, of any size.
constexpr STATS_MEAN_TYPE_HW STATS_ToMeanType_HW(V_INT kind) {
  return kind >= 1 && kind <= 3 ? static_cast<STATS_MEAN_TYPE_HW>(kind) : STATS_ARITHMETIC_MEAN_HW;
}

// The mean of x[0..n-1], with weights unless w is null.
double STATS_Mean_HW(VKernelVector kv, const double* x, const double* w, int n,
                     STATS_MEAN_TYPE_HW type);
double STATS_SimpleMean_HW(const double* x, int n, STATS_MEAN_TYPE_HW type);
double STATS_WeightedMean_HW(const double* x, const double* w, int n, STATS_MEAN_TYPE_HW type);

// The mean of what lies between the fractions lower and upper of the sample (0 <= lower <= upper
// <= 1).  Reorders x, and changes w when it is given.
double STATS_TrimmedMean_HW(VKernelVector kv, double* x, double* w, int n, double lower,
                            double upper, STATS_MEAN_TYPE_HW type);
double STATS_SimpleTrimmedMean_HW(double* x, int n, double lower, double upper,
                                  STATS_MEAN_TYPE_HW type);
double STATS_WeightedTrimmedMean_HW(double* x, double* w, int n, double lower, double upper,
                                    STATS_MEAN_TYPE_HW type);

// The same with what lies outside the fractions replaced by the nearest value inside.  Overwrites
// x, and reorders w when it is given.
double STATS_WinsorizedMean_HW(VKernelVector kv, double* x, double* w, int n, double lower,
                               double upper, STATS_MEAN_TYPE_HW type);
double STATS_SimpleWinsorizedMean_HW(double* x, int n, double lower, double upper,
                                     STATS_MEAN_TYPE_HW type);
double STATS_WeightedWinsorizedMean_HW(double* x, double* w, int n, double lower, double upper,
                                       STATS_MEAN_TYPE_HW type);
