// The given names of the smoothing kernels; kernels/smoothing says what each does.
#pragma once

#include <vexelc/vexelc.h>

#include "kernels/smoothing/linear_filter.hpp"
#include "kernels/smoothing/moving_mean.hpp"
#include "kernels/smoothing/moving_median.hpp"

inline void STATS_LinearFilter_HW(VKernelVector, double* series, const double* taps, int n, int k,
                                  bool recursive, double* y) {
  vexel::kernels::linearFilter(series, taps, n, k, recursive, y);
}

inline void STATS_MovingMean_HW(VKernelVector, const double* series, const double* weights, int n,
                                int w, vexel::kernels::MeanKind kind, double* out) {
  vexel::kernels::movingMean(series, weights, n, w, kind, out);
}

inline void STATS_MovingMedian_HW(VKernelVector, double* series, int n, int w, V_INT offset,
                                  bool recursive, double* out) {
  vexel::kernels::movingMedian(series, n, w, offset, recursive, out);
}

inline void STATS_WeightedMovingMedian_HW(VKernelVector, double* series, const double* weights,
                                          int n, int w, V_INT offset, bool recursive,
                                          double* scratch, double* weightScratch, double* out) {
  vexel::kernels::weightedMovingMedian(series, weights, n, w, offset, recursive, scratch,
                                       weightScratch, out);
}
