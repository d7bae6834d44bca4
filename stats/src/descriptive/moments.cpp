// The entry points of moments, mean absolute deviation and expected values.

#include <vector>

#include "descriptive/given_names.hpp"
#include "descriptive/one_or_list.hpp"
#include "kernel/callback_adapters.hpp"
#include "kernel/entry_frame.hpp"
#include "kernel/sample_view.hpp"

namespace {

// One positive integer, or a list of them.
std::vector<int> momentOrders(VKernelVector kv, ALGEB given) {
  std::vector<int> orders;
  STATS_ForEachGiven_HW(kv, given, [&](ALGEB order) {
    if (!IsVexelInteger32(kv, order) || VexelToInteger32(kv, order) < 1) {
      VexelRaiseError1(kv, "expected: list of positive integers, received %1", given);
    }
    orders.push_back(VexelToInteger32(kv, order));
  });
  return orders;
}

}  // namespace

// STATS_VexelMoment_HW(data, weights, orders, origin, ignore): moments about the origin.
//
// orders is a positive integer, which gives a float, or a list of them, which gives a list of
// floats.
STATS_ENTRY(STATS_VexelMoment_HW) {
  const Arguments arg(kv, args, 5, "VexelMoment expects 5 arguments, received: %1");
  const STATS_VexelDataSample_HW sample(kv, arg[1], arg[2]);
  const std::vector<int> orders = momentOrders(kv, arg[3]);
  const double origin = arg.real(4);
  const SampleView view = SampleView::forReading(kv, sample, arg.boolean(5));

  std::vector<double> moments(orders.size());
  STATS_Moment_HW(moments.data(), view.points, view.weights, view.size, orders.data(),
                  static_cast<int>(orders.size()), origin);
  return STATS_InFormOf_HW(kv, arg[3], moments);
}

// STATS_VexelAbsoluteDeviation_HW(data, weights, origin, ignore): mean absolute deviation about the
// origin.
STATS_ENTRY(STATS_VexelAbsoluteDeviation_HW) {
  const Arguments arg(kv, args, 4, "VexelAbsoluteDeviation expects 4 arguments, received: %1");
  const STATS_VexelDataSample_HW sample(kv, arg[1], arg[2]);
  const double origin = arg.real(3);
  const SampleView view = SampleView::forReading(kv, sample, arg.boolean(4));
  return STATS_DoubleToVexelFloat_HW(
      kv, STATS_AbsoluteDeviation_HW(view.points, view.weights, view.size, origin));
}

// STATS_VexelExpectedValue_HW(data, weights, procedure, ignore): the mean of the procedure's values
// at the points.  An error of the procedure passes to the caller unchanged.
STATS_ENTRY(STATS_VexelExpectedValue_HW) {
  const Arguments arg(kv, args, 4, "VexelExpectedValue expects 4 arguments, received: %1");
  const STATS_VexelDataSample_HW sample(kv, arg[1], arg[2]);
  const SampleView view = SampleView::forReading(kv, sample, arg.boolean(4));
  const STATS_StaticProcScope_HW scope(kv, arg[3]);
  return STATS_DoubleToVexelFloat_HW(
      kv, STATS_ExpectedValue_HW(STATS_VexelStaticProcAdapter_HW::Call, view.points, view.weights,
                                 view.size));
}
