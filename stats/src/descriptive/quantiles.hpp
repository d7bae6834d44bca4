// Quantiles of eight definitions, order statistics and medians.
//
// Hyndman and Fan, Sample Quantiles in Statistical Packages, The American Statistician 50, 1996,
// survey the definitions.  A missing value sorts after every number.  No sample, or a rank outside
// it, gives NaN.
#pragma once

#include <vexelc/vexelc.h>

// The value at probability p is that at the position h = a + (n + b) p, counted from 1:
// x[k] + (x[k+1] - x[k]) (c + d (h - k)) with k = floor(h).  Weighted samples have their total
// weight in place of n.
enum STATS_QUANTILE_TYPE_HW : int {
  STATS_QUANTILE_NEXT_HW = 1,             // c = 1: the next value; also for any value not listed
  STATS_QUANTILE_NEAREST_HW = 2,          // a = 1/2
  STATS_QUANTILE_LINEAR_HW = 3,           // d = 1
  STATS_QUANTILE_HAZEN_HW = 4,            // a = 1/2, d = 1
  STATS_QUANTILE_WEIBULL_HW = 5,          // b = 1, d = 1
  STATS_QUANTILE_GUMBEL_HW = 6,           // a = 1, b = -1, d = 1
  STATS_QUANTILE_MEDIAN_UNBIASED_HW = 7,  // a = b = 1/3, d = 1
  STATS_QUANTILE_BLOM_HW = 8,             // a = 3/8, b = 1/4, d = 1
};

// The definition for an integer of the user's, of any size.
constexpr STATS_QUANTILE_TYPE_HW STATS_ToQuantileType_HW(V_INT type) {
  return type >= 1 && type <= 8 ? static_cast<STATS_QUANTILE_TYPE_HW>(type)
                                : STATS_QUANTILE_NEXT_HW;
}

void STATS_SetQuantileType_HW(double& a, double& b, double& c, double& d,
                              STATS_QUANTILE_TYPE_HW type);

// result[j] is the quantile of x[0..n-1] at probs[j], 0 <= probs[j] <= 1, for j < m.  Reorders x,
// and w along with it unless w is null; the order that the selections leave, one for each
// probability in turn, is the caller's to see.
void STATS_Quantile_HW(double* result, double* x, double* w, const double* probs, int n, int m,
                       STATS_QUANTILE_TYPE_HW type);
void STATS_SimpleQuantile_HW(double* result, double* x, const double* probs, int n, int m,
                             STATS_QUANTILE_TYPE_HW type);
void STATS_WeightedQuantile_HW(double* result, double* x, double* w, const double* probs, int n,
                               int m, STATS_QUANTILE_TYPE_HW type);

// The same when nobody sees the order that x is left in: all ranks are found in one go.
void STATS_QuantileOfCopy_HW(double* result, double* x, double* w, const double* probs, int n,
                             int m, STATS_QUANTILE_TYPE_HW type);

// result[j] is the value of rank ranks[j], from 1, for j < m.  Reorders x, by one selection after
// the other; w is not looked at.
void STATS_OrderStatistic_HW(double* result, double* x, double* w, const int* ranks, int n, int m);
void STATS_SimpleOrderStatistic_HW(double* result, double* x, const int* ranks, int n, int m);

// The same when nobody sees the order that x is left in.
void STATS_OrderStatisticOfCopy_HW(double* result, double* x, const int* ranks, int n, int m);

// The median; with weights, the weighted quantile of the first definition at 1/2.  Reorders x, and
// w along with it unless w is null.
double STATS_Median_HW(double* x, double* w, int n);
double STATS_SimpleMedian_HW(double* x, int n);

// The same for a large unweighted sample that stays as it is: the first n of the size values of x
// in their order, missing ones last.  False, and no result, when it is better copied
// (descriptive/select_reading.hpp).
bool STATS_QuantileReading_HW(double* result, const double* x, int size, const double* probs, int n,
                              int m, STATS_QUANTILE_TYPE_HW type);
bool STATS_OrderStatisticReading_HW(double* result, const double* x, int size, const int* ranks,
                                    int n, int m);
bool STATS_MedianReading_HW(double* result, const double* x, int size, int n);
