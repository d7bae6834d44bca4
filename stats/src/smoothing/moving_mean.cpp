// Means of all windows: the logarithm, reciprocal or square of a value is taken once, not once for
// every window, and neighbouring windows are summed side by side.

#include "smoothing/moving_mean.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "smoothing/side_by_side.hpp"

namespace {

// What the windows sum when it is not the series itself: the terms of the unweighted mean.  The
// harmonic weighted one divides each weight by the value itself.
std::vector<double> windowTerms(const double* series, int n, STATS_MEAN_TYPE_HW type,
                                bool weighted) {
  std::vector<double> terms;
  const auto fill = [&](auto term) {
    terms.resize(static_cast<std::size_t>(n));
    std::transform(series, series + n, terms.begin(), term);
  };
  if (type == STATS_GEOMETRIC_MEAN_HW) {
    fill([](double x) { return std::log(x); });
  } else if (type == STATS_HARMONIC_MEAN_HW && !weighted) {
    fill([](double x) { return 1.0 / x; });
  } else if (type == STATS_QUADRATIC_MEAN_HW) {
    fill([](double x) { return x * x; });
  }
  return terms;
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
                         int w, STATS_MEAN_TYPE_HW type, double* out) {
  const STATS_InterruptLookout_HW lookout(kv);
  const int count = n - w + 1;
  const bool weighted = weights != nullptr;
  const std::vector<double> ownTerms = windowTerms(series, n, type, weighted);
  const double* terms = ownTerms.empty() ? series : ownTerms.data();
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
