// Covariance sums of two paired samples.

#include "kernels/descriptive/covariance.hpp"

#include <cstddef>

#include "kernels/watch.hpp"

namespace vexel::kernels {

namespace {

template <bool kWeighted, bool kSkip>
CovarianceSums sums(const double* x, const double* y, const double* w, int n) {
  const auto takesPart = [&](int i) {
    if constexpr (!kSkip) {
      return true;
    } else {
      return (x[i] == x[i]) & (y[i] == y[i]) & (!kWeighted || w[i] == w[i]);
    }
  };
  double total = 0.0;
  double sumX = 0.0;
  double sumY = 0.0;
  forEach(n, [&](int i) {
    if (takesPart(i)) {
      total += kWeighted ? w[i] : 1.0;
      sumX += kWeighted ? w[i] * x[i] : x[i];
      sumY += kWeighted ? w[i] * y[i] : y[i];
    }
  });
  const double meanX = sumX / total;
  const double meanY = sumY / total;

  CovarianceSums result{0.0, 0.0, 0.0, total};
  forEach(n, [&](int i) {
    if (takesPart(i)) {
      const double dx = x[i] - meanX;
      const double dy = y[i] - meanY;
      result.xy += kWeighted ? dx * dy * w[i] : dx * dy;
      result.xx += kWeighted ? dx * dx * w[i] : dx * dx;
      result.yy += kWeighted ? dy * dy * w[i] : dy * dy;
    }
  });
  return result;
}

}  // namespace

CovarianceSums covarianceSums(const double* x, const double* y, const double* w, int n,
                              bool skipMissing) {
  if (w != nullptr) {
    return skipMissing ? sums<true, true>(x, y, w, n) : sums<true, false>(x, y, w, n);
  }
  return skipMissing ? sums<false, true>(x, y, w, n) : sums<false, false>(x, y, w, n);
}

}  // namespace vexel::kernels
