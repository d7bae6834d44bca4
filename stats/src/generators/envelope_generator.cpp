// What the host says of a density, and drawing from its envelope.

#include "generators/envelope_generator.hpp"

#include <array>
#include <vector>

#include "kernel/conversions.hpp"
#include "kernel/data_argument.hpp"
#include "kernel/refusals.hpp"
#include "kernel/uniform_source.hpp"

namespace {

// The base points of a list; unset elements are none.
std::vector<double> pointsOfList(VKernelVector kv, ALGEB list) {
  std::vector<double> points;
  const V_INT n = VexelNumArgs(kv, list);
  for (V_INT i = 1; i <= n; ++i) {
    const ALGEB x = VexelListSelect(kv, list, i);
    if (!IsVexelNULL(kv, x)) {
      points.push_back(STATS_VexelFloatToDouble_HW(kv, x));
    }
  }
  return points;
}

std::vector<double> pointsOfArray(VKernelVector kv, ALGEB array) {
  std::vector<double> points;
  const RTableSettings settings = STATS_SettingsOf_HW(kv, array);
  const V_INT n = RTableNumElements(kv, array);
  const V_INT lower = RTableLowerBound(kv, array, 1);
  for (V_INT k = 0; k < n; ++k) {
    const V_INT i = lower + k;
    points.push_back(RTableDataToDouble(kv, RTableSelect(kv, array, &i), settings.data_type));
  }
  return points;
}

void requireBasePoints(VKernelVector kv, ALGEB points) {
  if (IsVexelList(kv, points)) {
    return;
  }
  STATS_RequireVector_HW(kv, points,
                         "expected base points as list or one-dimensional array, received %1");
  const RTableSettings settings = STATS_SettingsOf_HW(kv, points);
  if (settings.data_type != RTABLE_FLOAT32 && settings.data_type != RTABLE_FLOAT64 &&
      settings.data_type != RTABLE_DAG) {
    VexelRaiseError1(kv, "expected array of floats, received %1", points);
  }
}

}  // namespace

double STATS_EnvelopeGenerator_HW::Callback::operator()(double x) const {
  std::array<double, 2> point{0.0, x};  // the host counts arguments from 1
  STATS_VexelUtils_HW::VexelCallbackArgs call{proc, useEvalhf, 1, point.data()};
  return STATS_VexelUtils_HW::EvalfVexelProc(&call);
}

int STATS_EnvelopeGenerator_HW::initialize(VKernelVector kv, ALGEB setup) {
  if (!IsVexelList(kv, setup) || VexelNumArgs(kv, setup) != 5) {
    VexelRaiseError1(kv, "expected: list of size 5, received: %1", setup);
  }
  const ALGEB maximum = VexelListSelect(kv, setup, 4);
  if (!IsVexelInteger32(kv, maximum)) {
    VexelRaiseError1(
        kv, "invalid maximum number of envelope elements, expected: positive integer, received %1",
        maximum);
  }
  const int useEvalhf = VexelToV_BOOL(kv, VexelListSelect(kv, setup, 5));
  const ALGEB basePoints = VexelListSelect(kv, setup, 3);
  requireBasePoints(kv, basePoints);

  h_ = {VexelListSelect(kv, setup, 1), useEvalhf};
  h1_ = {VexelListSelect(kv, setup, 2), useEvalhf};
  envelope_ = Envelope(VexelToInteger32(kv, maximum));
  const std::vector<double> points =
      IsVexelList(kv, basePoints) ? pointsOfList(kv, basePoints) : pointsOfArray(kv, basePoints);
  return envelope_.reset(points, h_, h1_) ? 1 : 0;
}

double STATS_EnvelopeGenerator_HW::next(VKernelVector kv) {
  return STATS_RaisingRefusals_HW(kv, [this] {
    STATS_VexelRandomStream_HW uniforms;
    return envelope_.next(uniforms, h_, h1_);
  });
}
