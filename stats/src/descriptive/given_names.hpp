// The given names of the kernels of descriptive statistics; kernels/ says what each does.
#pragma once

#include <vexelc/vexelc.h>

#include "kernels/descriptive/covariance.hpp"
#include "kernels/descriptive/means.hpp"
#include "kernels/descriptive/moments.hpp"
#include "kernels/descriptive/quantiles.hpp"
#include "kernels/sorting/sorting.hpp"

inline void STATS_SortData_HW(double* a, int n) { vexel::kernels::sortData(a, n); }
inline void STATS_SortData_HW(double* a, double* w, int n) { vexel::kernels::sortData(a, w, n); }
inline double STATS_QuickSelect_HW(double* a, int n, int k) {
  return vexel::kernels::quickSelect(a, n, k);
}
inline double STATS_QuickSelect_HW(double* a, double* w, int n, int k) {
  return vexel::kernels::quickSelect(a, w, n, k);
}

using STATS_MEAN_TYPE_HW = vexel::kernels::MeanKind;
using STATS_QUANTILE_TYPE_HW = vexel::kernels::QuantileKind;
using STATS_COVARIANCE_SUMS_HW = vexel::kernels::CovarianceSums;

inline double STATS_Mean_HW(VKernelVector, const double* x, const double* w, int n,
                            STATS_MEAN_TYPE_HW type) {
  return vexel::kernels::mean(x, w, n, type);
}
inline double STATS_TrimmedMean_HW(VKernelVector, double* x, double* w, int n, double lower,
                                   double upper, STATS_MEAN_TYPE_HW type) {
  return vexel::kernels::trimmedMean(x, w, n, lower, upper, type);
}
inline double STATS_WinsorizedMean_HW(VKernelVector, double* x, double* w, int n, double lower,
                                      double upper, STATS_MEAN_TYPE_HW type) {
  return vexel::kernels::winsorizedMean(x, w, n, lower, upper, type);
}

inline constexpr auto& STATS_ToMeanType_HW = vexel::kernels::toMeanKind;
inline constexpr auto& STATS_SimpleMean_HW = vexel::kernels::simpleMean;
inline constexpr auto& STATS_WeightedMean_HW = vexel::kernels::weightedMean;
inline constexpr auto& STATS_Moment_HW = vexel::kernels::moment;
inline constexpr auto& STATS_AbsoluteDeviation_HW = vexel::kernels::absoluteDeviation;
inline constexpr auto& STATS_ExpectedValue_HW = vexel::kernels::expectedValue;
inline constexpr auto& STATS_CovarianceSums_HW = vexel::kernels::covarianceSums;
inline constexpr auto& STATS_ToQuantileType_HW = vexel::kernels::toQuantileKind;
inline constexpr auto& STATS_Quantile_HW = vexel::kernels::quantile;
inline constexpr auto& STATS_SimpleQuantile_HW = vexel::kernels::simpleQuantile;
inline constexpr auto& STATS_QuantileOfCopy_HW = vexel::kernels::quantileOfCopy;
inline constexpr auto& STATS_QuantileReading_HW = vexel::kernels::quantileReading;
inline constexpr auto& STATS_OrderStatistic_HW = vexel::kernels::orderStatistic;
inline constexpr auto& STATS_OrderStatisticOfCopy_HW = vexel::kernels::orderStatisticOfCopy;
inline constexpr auto& STATS_OrderStatisticReading_HW = vexel::kernels::orderStatisticReading;
inline constexpr auto& STATS_Median_HW = vexel::kernels::median;
inline constexpr auto& STATS_SimpleMedian_HW = vexel::kernels::simpleMedian;
inline constexpr auto& STATS_MedianReading_HW = vexel::kernels::medianReading;
