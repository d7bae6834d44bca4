// Quantiles of eight definitions, order statistics and medians.
//
// Hyndman and Fan, Sample Quantiles in Statistical Packages, The American Statistician 50, 1996,
// survey the definitions.  A missing value sorts after every number.  No sample, or a rank outside
// it, gives NaN.
#pragma once

#include <cstdint>

namespace vexel::kernels {

// The value at probability p is that at the position h = a + (n + b) p, counted from 1:
// x[k] + (x[k+1] - x[k]) (c + d (h - k)) with k = floor(h).  Weighted samples have their total
// weight in place of n.
enum class QuantileKind : int {
  next = 1,            // c = 1: the next value; also for any value not listed
  nearest = 2,         // a = 1/2
  linear = 3,          // d = 1
  hazen = 4,           // a = 1/2, d = 1
  weibull = 5,         // b = 1, d = 1
  gumbel = 6,          // a = 1, b = -1, d = 1
  medianUnbiased = 7,  // a = b = 1/3, d = 1
  blom = 8,            // a = 3/8, b = 1/4, d = 1
};

// The definition for an integer of the user's, of any size.
constexpr QuantileKind toQuantileKind(std::int64_t type) {
  return type >= 1 && type <= 8 ? static_cast<QuantileKind>(type) : QuantileKind::next;
}

void quantileConstants(double& a, double& b, double& c, double& d, QuantileKind type);

// result[j] is the quantile of x[0..n-1] at probs[j], 0 <= probs[j] <= 1, for j < m.  Reorders x,
// and w along with it unless w is null; the order that the selections leave, one for each
// probability in turn, is the caller's to see.
void quantile(double* result, double* x, double* w, const double* probs, int n, int m,
              QuantileKind type);
void simpleQuantile(double* result, double* x, const double* probs, int n, int m,
                    QuantileKind type);
void weightedQuantile(double* result, double* x, double* w, const double* probs, int n, int m,
                      QuantileKind type);

// The same when nobody sees the order that x is left in: all ranks are found in one go.
void quantileOfCopy(double* result, double* x, double* w, const double* probs, int n, int m,
                    QuantileKind type);

// result[j] is the value of rank ranks[j], from 1, for j < m.  Reorders x, by one selection after
// the other; w is not looked at.
void orderStatistic(double* result, double* x, double* w, const int* ranks, int n, int m);
void simpleOrderStatistic(double* result, double* x, const int* ranks, int n, int m);

// The same when nobody sees the order that x is left in.
void orderStatisticOfCopy(double* result, double* x, const int* ranks, int n, int m);

// The median; with weights, the weighted quantile of the first definition at 1/2.  Reorders x, and
// w along with it unless w is null.
double median(double* x, double* w, int n);
double simpleMedian(double* x, int n);

// The same for a large unweighted sample that stays as it is: the first n of the size values of x
// in their order, missing ones last.  False, and no result, when it is better copied
// (descriptive/select_reading.hpp).
bool quantileReading(double* result, const double* x, int size, const double* probs, int n, int m,
                     QuantileKind type);
bool orderStatisticReading(double* result, const double* x, int size, const int* ranks, int n,
                           int m);
bool medianReading(double* result, const double* x, int size, int n);

}  // namespace vexel::kernels
