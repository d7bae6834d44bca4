// The four kinds of mean and their entry point.

#include "descriptive/means.hpp"

#include <cmath>

#include "descriptive/sample_view.hpp"
#include "kernel/entry_frame.hpp"

double STATS_SimpleMean_HW(const double* x, int n, STATS_MEAN_TYPE_HW type) {
  double sum = 0.0;
  switch (type) {
    case STATS_GEOMETRIC_MEAN_HW:
      for (int i = 0; i < n; ++i) {
        sum += std::log(x[i]);
      }
      return std::exp(sum / n);
    case STATS_HARMONIC_MEAN_HW:
      for (int i = 0; i < n; ++i) {
        sum += 1.0 / x[i];
      }
      return n / sum;
    case STATS_QUADRATIC_MEAN_HW:
      for (int i = 0; i < n; ++i) {
        sum += x[i] * x[i];
      }
      return std::sqrt(sum / n);
    default:
      for (int i = 0; i < n; ++i) {
        sum += x[i];
      }
      return sum / n;
  }
}

double STATS_WeightedMean_HW(const double* x, const double* w, int n, STATS_MEAN_TYPE_HW type) {
  double sum = 0.0;
  double total = 0.0;
  for (int i = 0; i < n; ++i) {
    total += w[i];
  }
  switch (type) {
    case STATS_GEOMETRIC_MEAN_HW:
      for (int i = 0; i < n; ++i) {
        sum += w[i] * std::log(x[i]);
      }
      return std::exp(sum / total);
    case STATS_HARMONIC_MEAN_HW:
      for (int i = 0; i < n; ++i) {
        sum += w[i] / x[i];
      }
      return total / sum;
    case STATS_QUADRATIC_MEAN_HW:
      for (int i = 0; i < n; ++i) {
        sum += w[i] * (x[i] * x[i]);
      }
      return std::sqrt(sum / total);
    default:
      for (int i = 0; i < n; ++i) {
        sum += w[i] * x[i];
      }
      return sum / total;
  }
}

double STATS_Mean_HW(VKernelVector, const double* x, const double* w, int n,
                     STATS_MEAN_TYPE_HW type) {
  return w != nullptr ? STATS_WeightedMean_HW(x, w, n, type) : STATS_SimpleMean_HW(x, n, type);
}

// STATS_VexelMean_HW(data, weights, ignore, kind): the mean of a sample as a host float.
//
// data     array of any element type; complex elements must have no imaginary part
// weights  array of the same size, or an empty one for an unweighted sample
// ignore   true drops every pair with a missing point or weight; false lets a NaN through
// kind     1 geometric, 2 harmonic, 3 quadratic, anything else arithmetic
//
// The host's arrays are not changed.  An empty sample gives NaN (0/0), not an error.
STATS_ENTRY(STATS_VexelMean_HW) {
  const Arguments arg(kv, args, 4, "expected 4 arguments, received: %1");
  const STATS_VexelDataSample_HW sample(kv, arg[1], arg[2]);
  const SampleView view = SampleView::forReading(kv, sample, arg.boolean(3));
  const STATS_MEAN_TYPE_HW type = STATS_ToMeanType_HW(arg.integer(4));
  return STATS_DoubleToVexelFloat_HW(kv,
                                     STATS_Mean_HW(kv, view.points, view.weights, view.size, type));
}
