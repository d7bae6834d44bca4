// The given names of the smoothing kernels, with the user's interrupts; kernels/smoothing says what
// each does.
#pragma once

#include "kernel/interrupt.hpp"
#include "kernels/smoothing/linear_filter.hpp"
#include "kernels/smoothing/moving_mean.hpp"
#include "kernels/smoothing/moving_median.hpp"

inline void STATS_LinearFilter_HW(VKernelVector kv, double* series, const double* taps, int n,
                                  int k, bool recursive, double* y) {
  const STATS_InterruptWatch_HW watch(kv);
  vexel::kernels::linearFilter(series, taps, n, k, recursive, y);
}

inline void STATS_MovingMean_HW(VKernelVector kv, const double* series, const double* weights,
                                int n, int w, vexel::kernels::MeanKind kind, double* out) {
  const STATS_InterruptWatch_HW watch(kv);
  vexel::kernels::movingMean(series, weights, n, w, kind, out);
}

inline void STATS_MovingMedian_HW(VKernelVector kv, double* series, int n, int w, V_INT offset,
                                  bool recursive, double* out) {
  const STATS_InterruptWatch_HW watch(kv);
  vexel::kernels::movingMedian(series, n, w, offset, recursive, out);
}

inline void STATS_WeightedMovingMedian_HW(VKernelVector kv, double* series, const double* weights,
                                          int n, int w, V_INT offset, bool recursive,
                                          double* scratch, double* weightScratch, double* out) {
  const STATS_InterruptWatch_HW watch(kv);
  vexel::kernels::weightedMovingMedian(series, weights, n, w, offset, recursive, scratch,
                                       weightScratch, out);
}
