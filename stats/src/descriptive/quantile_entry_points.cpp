// The entry points of quantiles, order statistics, medians and median deviations.
//
// A sample without values gives the host's undefined float for each value asked for.

#include <algorithm>
#include <cmath>
#include <vector>

#include "descriptive/given_names.hpp"
#include "descriptive/one_or_list.hpp"
#include "kernel/conversions.hpp"
#include "kernel/entry_frame.hpp"
#include "kernel/sample_view.hpp"
#include "kernels/watch.hpp"

namespace {

// A number in [0, 1] or a list of them.
std::vector<double> probabilities(VKernelVector kv, ALGEB given) {
  std::vector<double> probs;
  STATS_ForEachGiven_HW(kv, given, [&](ALGEB element) {
    const double p =
        IsVexelNumeric(kv, element) ? STATS_VexelUtils_HW::VexelDAGToDouble(element) : -1.0;
    if (!(p >= 0.0 && p <= 1.0)) {
      VexelRaiseError1(kv,
                       IsVexelList(kv, given)
                           ? "expected: list of numeric constants between 0 and 1, received %1"
                           : "expected: numeric constant or a list of numeric constants between "
                             "0 and 1, received %1",
                       given);
    }
    probs.push_back(p);
  });
  return probs;
}

struct Conversion {
  VKernelVector kv;
  ALGEB element;
  V_INT value;
};

// Body of a trapped conversion.
void* convertToInteger(void* conversion) {
  auto* c = static_cast<Conversion*>(conversion);
  c->value = VexelToV_INT(c->kv, c->element);
  return nullptr;
}

// An integer of 64 bits or a list of them.
std::vector<V_INT> integers(VKernelVector kv, ALGEB given) {
  std::vector<V_INT> values;
  STATS_ForEachGiven_HW(kv, given, [&](ALGEB element) {
    Conversion c{kv, element, 0};
    V_BOOL failed = 0;
    if (IsVexelInteger32(kv, c.element)) {
      c.value = VexelToInteger32(kv, c.element);
    } else {
      VexelTrapError(kv, convertToInteger, &c, &failed);
    }
    if (failed) {
      VexelRaiseError1(kv, "expected: integer or list of integers, received %1", given);
    }
    values.push_back(c.value);
  });
  return values;
}

// How many points take part in an unweighted sample.
int pointsTaken(const STATS_VexelDataSample_HW& sample, bool skipMissing) {
  const double* x = sample.points();
  const int n = sample.size();
  return skipMissing ? n - static_cast<int>(
                               vexel::kernels::countWatched(x, n, [](double v) { return v != v; }))
                     : n;
}

}  // namespace

// STATS_VexelQuantile_HW(data, probabilities, weights, ignore, type, inplace)
//
// probabilities  a number in [0, 1], which gives a float, or a list, which gives a list of floats
// ignore         true drops every pair with a missing point or weight
// type           definition 1 to 8; anything else is the first
// inplace        true lets the arrays be reordered (when nothing is ignored), which saves a copy
STATS_ENTRY(STATS_VexelQuantile_HW) {
  const Arguments arg(kv, args, 6, "expected 6 arguments, received: %1");
  const STATS_VexelDataSample_HW sample(kv, arg[1], arg[3]);
  const std::vector<double> probs = probabilities(kv, arg[2]);
  const bool ignoreMissing = arg.boolean(4);
  const STATS_QUANTILE_TYPE_HW type = STATS_ToQuantileType_HW(arg.integer(5));
  const bool inPlace = arg.boolean(6) && !ignoreMissing;
  const auto m = static_cast<int>(probs.size());
  std::vector<double> values(probs.size(), STATS_FloatUndefined_HW(kv));
  if (!inPlace && !sample.weighted() &&
      STATS_QuantileReading_HW(values.data(), sample.points(), sample.size(), probs.data(),
                               pointsTaken(sample, ignoreMissing), m, type)) {
    return STATS_InFormOf_HW(kv, arg[2], values);
  }
  const SampleView view =
      SampleView::forReordering(kv, sample, arg[1], arg[3], ignoreMissing, inPlace);
  if (view.size > 0) {
    const auto quantile =
        view.points == sample.points() ? &STATS_Quantile_HW : &STATS_QuantileOfCopy_HW;
    quantile(values.data(), view.points, view.weights, probs.data(), view.size, m, type);
  }
  return STATS_InFormOf_HW(kv, arg[2], values);
}

// STATS_VexelOrderStatistic_HW(data, ranks, weights, ignore): the values of the given ranks,
// from 1. A rank gives a float, a list of ranks a list of floats.  The weights are not looked at.
STATS_ENTRY(STATS_VexelOrderStatistic_HW) {
  const Arguments arg(kv, args, 4, "VexelOrderStatistic expects 4 arguments, received: %1");
  const STATS_VexelDataSample_HW sample(kv, arg[1]);
  const std::vector<V_INT> given = integers(kv, arg[2]);
  const bool ignoreMissing = arg.boolean(4);
  const int n = pointsTaken(sample, ignoreMissing);

  std::vector<double> values(given.size(), STATS_FloatUndefined_HW(kv));
  std::vector<int> ranks;
  for (const V_INT rank : given) {
    if (n > 0 && (rank < 1 || rank > n)) {
      VexelRaiseError1(kv, "index out of range: %1", ToVexelInteger(kv, rank));
    }
    ranks.push_back(static_cast<int>(rank));
  }
  const auto m = static_cast<int>(ranks.size());
  if (n > 0 && !STATS_OrderStatisticReading_HW(values.data(), sample.points(), sample.size(),
                                               ranks.data(), n, m)) {
    const SampleView view = SampleView::copied(kv, sample, ignoreMissing);
    STATS_OrderStatisticOfCopy_HW(values.data(), view.points, ranks.data(), n, m);
  }
  return STATS_InFormOf_HW(kv, arg[2], values);
}

// STATS_VexelMedian_HW(data, weights, ignore, inplace)
STATS_ENTRY(STATS_VexelMedian_HW) {
  const Arguments arg(kv, args, 4, "expected 4 arguments, received: %1");
  const STATS_VexelDataSample_HW sample(kv, arg[1], arg[2]);
  const bool ignoreMissing = arg.boolean(3);
  const bool inPlace = arg.boolean(4) && !ignoreMissing;
  double median = 0.0;
  if (!inPlace && !sample.weighted() &&
      STATS_MedianReading_HW(&median, sample.points(), sample.size(),
                             pointsTaken(sample, ignoreMissing))) {
    return STATS_DoubleToVexelFloat_HW(kv, median);
  }
  const SampleView view =
      SampleView::forReordering(kv, sample, arg[1], arg[2], ignoreMissing, inPlace);
  return STATS_DoubleToVexelFloat_HW(
      kv, view.size == 0 ? STATS_FloatUndefined_HW(kv)
                         : STATS_Median_HW(view.points, view.weights, view.size));
}

// STATS_VexelMedianDeviation_HW(data, weights, ignore): the median of the absolute deviations from
// the median; each deviation has the weight of its point.
STATS_ENTRY(STATS_VexelMedianDeviation_HW) {
  // The wording names another entry point; hosts match on it.
  const Arguments arg(kv, args, 3, "VexelAbsoluteDeviation expects 3 arguments, received: %1");
  const STATS_VexelDataSample_HW sample(kv, arg[1], arg[2]);
  const SampleView view = SampleView::copied(kv, sample, arg.boolean(3));
  if (view.size == 0) {
    return STATS_DoubleToVexelFloat_HW(kv, STATS_FloatUndefined_HW(kv));
  }
  // Points and weights are reordered together, so they stay partners for the second median.
  const double median = STATS_Median_HW(view.points, view.weights, view.size);
  vexel::kernels::forEach(view.size,
                          [=](int i) { view.points[i] = std::fabs(view.points[i] - median); });
  return STATS_DoubleToVexelFloat_HW(kv, STATS_Median_HW(view.points, view.weights, view.size));
}
