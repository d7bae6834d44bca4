// Means of all windows: the logarithm, reciprocal or square of a value is taken once, not once for
// every window, and neighbouring windows are summed side by side.

#include "smoothing/moving_mean.hpp"

#include <cmath>

#include "smoothing/side_by_side.hpp"

namespace {

// What the windows sum: the terms of the unweighted mean, apart from the harmonic weighted one,
// which divides each weight by the value itself.
const double* windowTerms(const double* series, int n, STATS_MEAN_TYPE_HW type, bool weighted,
                          double* scratch) {
  switch (type) {
    case STATS_GEOMETRIC_MEAN_HW:
      for (int i = 0; i < n; ++i) {
        scratch[i] = std::log(series[i]);
      }
      return scratch;
    case STATS_HARMONIC_MEAN_HW:
      if (weighted) {
        return series;
      }
      for (int i = 0; i < n; ++i) {
        scratch[i] = 1.0 / series[i];
      }
      return scratch;
    case STATS_QUADRATIC_MEAN_HW:
      for (int i = 0; i < n; ++i) {
        scratch[i] = series[i] * series[i];
      }
      return scratch;
    default:
      return series;
  }
}

// The mean from a window's sum and its total weight.
double meanOf(double sum, double total, STATS_MEAN_TYPE_HW type) {
  switch (type) {
    case STATS_GEOMETRIC_MEAN_HW:
      return std::exp(sum / total);
    case STATS_HARMONIC_MEAN_HW:
      return total / sum;
    case STATS_QUADRATIC_MEAN_HW:
      return std::sqrt(sum / total);
    default:
      return sum / total;
  }
}

}  // namespace

void STATS_MovingMean_HW(VKernelVector kv, const double* series, const double* weights, int n,
                         int w, STATS_MEAN_TYPE_HW type, double* scratch, double* out) {
  const STATS_InterruptLookout_HW lookout(kv);
  const int count = n - w + 1;
  const bool weighted = weights != nullptr;
  const double* terms = windowTerms(series, n, type, weighted, scratch);
  double total = w;
  if (!weighted) {
    sumsSideBySide(count, w, out, lookout, [=](auto s, auto j) { return terms[s + j]; });
  } else {
    total = 0.0;
    for (int j = 0; j < w; ++j) {
      total += weights[j];
    }
    if (type == STATS_HARMONIC_MEAN_HW) {
      sumsSideBySide(count, w, out, lookout,
                     [=](auto s, auto j) { return weights[j] / terms[s + j]; });
    } else {
      sumsSideBySide(count, w, out, lookout,
                     [=](auto s, auto j) { return weights[j] * terms[s + j]; });
    }
  }
  for (int s = 0; s < count; ++s) {
    out[s] = meanOf(out[s], total, type);
  }
}
