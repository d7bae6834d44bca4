// Means of all windows: the logarithm, reciprocal or square of a value is taken once, not once for
// every window, and neighbouring windows are summed side by side.

#include "kernels/smoothing/moving_mean.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "kernels/smoothing/side_by_side.hpp"

namespace vexel::kernels {

namespace {

// What the windows sum when it is not the series itself: the terms of the unweighted mean.  The
// harmonic weighted one divides each weight by the value itself.
std::vector<double> windowTerms(const double* series, int n, MeanKind type, bool weighted) {
  std::vector<double> terms;
  const auto fill = [&](auto term) {
    terms.resize(static_cast<std::size_t>(n));
    std::transform(series, series + n, terms.begin(), term);
  };
  if (type == MeanKind::geometric) {
    fill([](double x) { return std::log(x); });
  } else if (type == MeanKind::harmonic && !weighted) {
    fill([](double x) { return 1.0 / x; });
  } else if (type == MeanKind::quadratic) {
    fill([](double x) { return x * x; });
  }
  return terms;
}

// The mean from a window's sum and its total weight.
double meanOf(double sum, double total, MeanKind type) {
  switch (type) {
    case MeanKind::geometric:
      return std::exp(sum / total);
    case MeanKind::harmonic:
      return total / sum;
    case MeanKind::quadratic:
      return std::sqrt(sum / total);
    default:
      return sum / total;
  }
}

}  // namespace

void movingMean(const double* series, const double* weights, int n, int w, MeanKind type,
                double* out) {
  Lookout lookout;
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
    if (type == MeanKind::harmonic) {
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

}  // namespace vexel::kernels
