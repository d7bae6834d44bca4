// The entry point of covariance sums.

#include <iterator>

#include "descriptive/given_names.hpp"
#include "kernel/data_sample.hpp"
#include "kernel/entry_frame.hpp"
#include "kernel/host_arrays.hpp"

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
