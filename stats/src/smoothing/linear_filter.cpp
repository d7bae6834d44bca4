// The entry point of the finite linear filter.

#include <algorithm>

#include "kernel/data_argument.hpp"
#include "kernel/data_sample.hpp"
#include "kernel/entry_frame.hpp"
#include "kernel/host_arrays.hpp"
#include "smoothing/given_names.hpp"

// STATS_VexelLinearFilter_HW(data, coefficients, initial values, recursive, ignore)
//
// y(i) = c[0] x(i) + c[1] x(i-1) + ... + c[k-1] x(i-k+1); the recursive filter has earlier y in
// place of earlier x.  The initial values are x(-1), x(-2), ...; those not given are 0, those
// beyond k - 1 are not looked at.  ignore drops missing values first.  The result has the data's
// lower bound.
STATS_ENTRY(STATS_VexelLinearFilter_HW) {
  const Arguments arg(kv, args, 5, "expected 5 arguments, received: %1");
  const STATS_VexelDataSample_HW data(kv, arg[1]);
  const STATS_VexelDataSample_HW coefficients(kv, arg[2]);
  const STATS_VexelDataSample_HW initial(kv, arg[3]);
  const int k = coefficients.size();
  if (data.size() < k) {
    VexelRaiseError(kv, "the size of the filter cannot exceed the size of the data set");
  }
  const bool ignoreMissing = arg.boolean(5);
  const bool recursive = arg.boolean(4);

  // The history ends with the first initial value; what is before the last one stays 0.  Outputs
  // that no longer reach it are filtered from the data where they lie, if these stay as they are.
  const int history = std::max(k - 1, 0);
  const bool inPlace = !ignoreMissing && !recursive;
  const int copies = inPlace ? history : data.size();
  double* series = STATS_AllocDoubles_HW(kv, V_INT{copies} + history);
  std::reverse_copy(initial.points(), initial.points() + std::min(history, initial.size()),
                    series + history - std::min(history, initial.size()));
  const int head =
      STATS_CopySimpleData_HW(data.points(), series + history, copies, ignoreMissing ? 1 : 0);
  double* taps = STATS_AllocDoubles_HW(kv, k);
  std::reverse_copy(coefficients.points(), coefficients.points() + k, taps);

  const int n = inPlace ? data.size() : head;
  const ALGEB result = STATS_FloatsLike_HW(kv, arg[1], RTableLowerBound(kv, arg[1], 1), n);
  double* y = STATS_FloatBlock_HW(kv, result);
  STATS_LinearFilter_HW(kv, series, taps, head, k, recursive, y);
  if (head < n) {
    STATS_LinearFilter_HW(kv, data.points(), taps, n - head, k, recursive, y + head);
  }
  return result;
}
