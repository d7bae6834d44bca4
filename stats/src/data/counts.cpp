// Numbers, or weights, of present and missing values.

#include <vexelc/vexelc.h>

#include <cmath>

#include "kernel/conversions.hpp"
#include "kernel/data_sample.hpp"
#include "kernel/entry_frame.hpp"
#include "kernels/watch.hpp"

namespace {

// Unweighted, the number of points that counted selects as a host integer; weighted, the total
// weight of the pairs that it selects as a host float.
template <typename Counted>
ALGEB countOrWeigh(VKernelVector kv, const STATS_VexelDataSample_HW& sample, Counted counted) {
  const double* x = sample.points();
  const double* w = sample.weights();
  const int n = sample.size();
  constexpr double kNoWeight = 1.0;
  if (w == nullptr) {
    V_INT number = 0;
    vexel::kernels::forEach(n, [&](int i) { number += counted(x[i], kNoWeight) ? 1 : 0; });
    return ToVexelInteger(kv, number);
  }
  double weight = 0.0;
  vexel::kernels::forEach(n, [&](int i) { weight += counted(x[i], w[i]) ? w[i] : 0.0; });
  return STATS_DoubleToVexelFloat_HW(kv, weight);
}

}  // namespace

// STATS_VexelCount_HW(data, weights, ignore): how many points there are, or their total weight.
//
// Only ignore = 1 leaves out missing points and missing weights; otherwise a missing weight makes
// the total undefined.
STATS_ENTRY(STATS_VexelCount_HW) {
  const Arguments arg(kv, args, 3, "expected 3 arguments, received: %1");
  const STATS_VexelDataSample_HW sample(kv, arg[1], arg[2]);
  const bool ignoreMissing = arg.integer(3) == 1;
  return countOrWeigh(kv, sample, [=](double x, double w) {
    return !ignoreMissing || (!std::isnan(x) && !std::isnan(w));
  });
}

// STATS_VexelCountMissing_HW(data, weights): how many points are missing, or their total weight,
// missing weights left out.
STATS_ENTRY(STATS_VexelCountMissing_HW) {
  const Arguments arg(kv, args, 2, "expected 2 arguments, received: %1");
  const STATS_VexelDataSample_HW sample(kv, arg[1], arg[2]);
  return countOrWeigh(kv, sample,
                      [](double x, double w) { return std::isnan(x) && !std::isnan(w); });
}
