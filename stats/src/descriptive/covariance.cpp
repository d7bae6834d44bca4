// Covariance sums of two paired samples, and their entry point.

#include "descriptive/covariance.hpp"

#include <iterator>

#include "kernel/data_sample.hpp"
#include "kernel/entry_frame.hpp"
#include "kernel/host_arrays.hpp"

namespace {

template <bool kWeighted, bool kSkip>
STATS_COVARIANCE_SUMS_HW sums(const double* x, const double* y, const double* w, int n) {
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
  for (int i = 0; i < n; ++i) {
    if (takesPart(i)) {
      total += kWeighted ? w[i] : 1.0;
      sumX += kWeighted ? w[i] * x[i] : x[i];
      sumY += kWeighted ? w[i] * y[i] : y[i];
    }
  }
  const double meanX = sumX / total;
  const double meanY = sumY / total;

  STATS_COVARIANCE_SUMS_HW result{0.0, 0.0, 0.0, total};
  for (int i = 0; i < n; ++i) {
    if (takesPart(i)) {
      const double dx = x[i] - meanX;
      const double dy = y[i] - meanY;
      result.xy += kWeighted ? dx * dy * w[i] : dx * dy;
      result.xx += kWeighted ? dx * dx * w[i] : dx * dx;
      result.yy += kWeighted ? dy * dy * w[i] : dy * dy;
    }
  }
  return result;
}

}  // namespace

STATS_COVARIANCE_SUMS_HW STATS_CovarianceSums_HW(const double* x, const double* y, const double* w,
                                                 int n, bool skipMissing) {
  if (w != nullptr) {
    return skipMissing ? sums<true, true>(x, y, w, n) : sums<true, false>(x, y, w, n);
  }
  return skipMissing ? sums<false, true>(x, y, w, n) : sums<false, false>(x, y, w, n);
}

// STATS_VexelCovariance_HW(x, y, weights, ignore): the list [Cxy, Cxx, Cyy, T] of sums; the divisor
// is the caller's choice.  ignore is an integer: exactly 1 leaves out missing values.
STATS_ENTRY(STATS_VexelCovariance_HW) {
  const Arguments arg(kv, args, 4, "expected 4 arguments, received: %1");
  const STATS_VexelDataSample_HW x(kv, arg[1]);
  const STATS_VexelDataSample_HW y(kv, arg[2]);
  const STATS_VexelDataSample_HW weights(kv, arg[3]);
  const int n = x.size();
  if (n != y.size()) {
    VexelRaiseError1(kv, "data samples are expected to have the same size", ToVexelNULL(kv));
  }
  const bool skipMissing = arg.integer(4) == 1;
  VexelUserInfo(
      kv, 2, "Statistics",
      skipMissing ? "instructed to igore missing data" : "instructed not to ignore missing data");
  const bool weighted = weights.size() != 0;
  if (weighted && weights.size() != n) {
    VexelRaiseError1(kv, "array of weights is expected to be of the same size as both data samples",
                     ToVexelNULL(kv));
  }

  const STATS_COVARIANCE_SUMS_HW sums = STATS_CovarianceSums_HW(
      x.points(), y.points(), weighted ? weights.points() : nullptr, n, skipMissing);
  if (sums.total == 0.0) {
    VexelUserInfo(kv, 2, "Statistics", "cumulative weight is equal to 0");
  }
  const double list[] = {sums.xy, sums.xx, sums.yy, sums.total};
  return STATS_FloatList_HW(kv, list, std::ssize(list));
}
