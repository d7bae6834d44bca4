// The adaptive envelope: its elements, its bounds, drawing from it and refining it.

#include "generators/envelope_generator.hpp"

#include <algorithm>
#include <cmath>

namespace {

using Element = STATS_RejectionEnvelopeElement_HW;

double uniform() { return STATS_VexelRandomStream_HW::NextDouble(); }

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
  RTableSettings settings;
  RTableGetSettings(kv, &settings, array);
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
  if (!IsVexelRTable(kv, points) || RTableNumDimensions(kv, points) != 1) {
    VexelRaiseError1(kv, "expected base points as list or one-dimensional array, received %1",
                     points);
  }
  RTableSettings settings;
  RTableGetSettings(kv, &settings, points);
  if (settings.data_type != RTABLE_FLOAT32 && settings.data_type != RTABLE_FLOAT64 &&
      settings.data_type != RTABLE_DAG) {
    VexelRaiseError1(kv, "expected array of floats, received %1", points);
  }
}

// Where to split [x0, x1]: where the end tangents meet if that is inside, else in the middle. False
// when one end is so steep against the other, itself steep, that neither says anything.
bool splitPoint(double x0, double x1, double y0, double y1, double d0, double d1, double* xm) {
  if (d0 != d1) {
    *xm = -(y0 - d0 * x0 - y1 + d1 * x1) / (d0 - d1);
    if (x0 < *xm && *xm < x1) {
      return true;
    }
  }
  const double big = std::max(std::abs(d0), std::abs(d1));
  const double small = std::min(std::abs(d0), std::abs(d1));
  if (big * 0.5 > small && small >= std::pow(10.0, STATS_GetVexelDigits_HW() * 0.5)) {
    return false;
  }
  *xm = (x0 + x1) * 0.5;
  return true;
}

constexpr std::size_t kTangents = 0;
constexpr std::size_t kChords = 1;

// The line of the left half from its left end or of the right half from its right end.
double lineAt(const Element& e, double x, std::size_t lines) {
  const std::size_t half = x >= e.x[1] ? 1 : 0;
  return e.y[2 * half] + (x - e.x[2 * half]) * e.slope[lines][half];
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
  maxElements_ = VexelToInteger32(kv, maximum);
  constexpr int kReservedAtMost = 1 << 16;  // a huge maximum is a way of saying "no limit"
  envelope_ = STATS_RejectionEnvelope_HW(
      static_cast<std::uint32_t>(std::clamp(maxElements_, 0, kReservedAtMost)));
  return reset(kv, basePoints);
}

int STATS_EnvelopeGenerator_HW::reset(VKernelVector kv, ALGEB basePoints) {
  const std::vector<double> points =
      IsVexelList(kv, basePoints) ? pointsOfList(kv, basePoints) : pointsOfArray(kv, basePoints);
  envelope_.removeAllElements();
  for (std::size_t i = 1; i < points.size(); ++i) {
    const double p = points[i - 1];
    const double q = points[i];
    // The order of evaluations is what the host's procedures see; shared ends are evaluated twice.
    const double hp = h_(p);
    const double h1p = h1_(p);
    const double hq = h_(q);
    const double h1q = h1_(q);
    Element element{};
    if (!UpdateEnvelopeElement(element, p, q, hp, hq, h1p, h1q)) {
      return 0;
    }
    envelope_.addElement(element);
  }
  UpdateDispatcher();
  return 1;
}

int STATS_EnvelopeGenerator_HW::UpdateEnvelopeElement(Element& e, double x0, double x1, double y0,
                                                      double y1, double d0, double d1) {
  double xm = 0.0;
  if (!splitPoint(x0, x1, y0, y1, d0, d1, &xm)) {
    return 0;
  }
  const double ym = h_(xm);
  if (std::isnan(ym)) {
    return 0;
  }
  const double sL = (ym - y0) / (xm - x0);
  const bool tangentUpper = d0 > sL;
  const double u = y0 + (xm - x0) * (tangentUpper ? d0 : sL);  // the upper bound at xm
  e = {{x0, xm, x1},
       {y0, ym, y1},
       {{d0, d1}, {sL, (y1 - ym) / (x1 - xm)}},
       {},
       {!(u <= y0), !(y1 <= u)},
       tangentUpper};

  // Each half is a rectangle and a triangle on it.
  double area = 0.0;
  const double ends[] = {y0, u, y1};
  for (std::size_t half = 0; half < 2; ++half) {
    const double width = e.x[half + 1] - e.x[half];
    const double low = ends[half + (e.rising[half] ? 0 : 1)];
    const double high = ends[half + (e.rising[half] ? 1 : 0)];
    e.A[2 * half] = area + width * low;
    e.A[2 * half + 1] = e.A[2 * half] + (high - low) * 0.5 * width;
    area = e.A[2 * half + 1];
  }
  return 1;
}

double STATS_EnvelopeGenerator_HW::fU(const Element& e, double x) {
  return lineAt(e, x, e.tangentUpper ? kTangents : kChords);
}

double STATS_EnvelopeGenerator_HW::fL(const Element& e, double x) {
  return lineAt(e, x, e.tangentUpper ? kChords : kTangents);
}

double STATS_EnvelopeGenerator_HW::NextFromEnvelopeElement(const Element& e) {
  const double area = uniform() * e.A[3];
  double u = uniform();
  const bool left = static_cast<int>(e.A[0] >= area) | static_cast<int>(e.A[1] >= area);
  const std::size_t half = left ? 0 : 1;
  if (!(e.A[2 * half] >= area)) {
    const double v = uniform();  // in the triangle, which lies toward the higher side
    u = e.rising[half] ? std::max(u, v) : std::min(u, v);
  }
  return e.x[half] + (e.x[half + 1] - e.x[half]) * u;
}

void STATS_EnvelopeGenerator_HW::UpdateDispatcher() {
  const std::uint32_t n = envelope_.size();
  areas_.resize(n);
  for (std::uint32_t i = 0; i < n; ++i) {
    areas_[i] = envelope_.elementAt(i).A[3];
  }
  urn_.Reset(static_cast<int>(n), static_cast<int>(n), areas_.data());
}

double STATS_EnvelopeGenerator_HW::next(VKernelVector kv) {
  constexpr double kLoose = 0.9;  // a lower bound below this share of the density is worth a split
  for (int rejected = 0;; ++rejected) {
    endSearch(kv, rejected);
    const int i = urn_.Next();
    const Element& e = envelope_.elementAt(static_cast<std::uint32_t>(i));
    const double x = NextFromEnvelopeElement(e);
    const double t = uniform() * fU(e, x);
    const double lower = fL(e, x);
    if (lower > t) {
      return x;
    }
    const double hx = h_(x);
    if ((t > hx || lower < kLoose * hx) && V_INT{envelope_.size()} < V_INT{maxElements_}) {
      if (!RefineEnvelope(i, x, hx, h1_(x))) {
        VexelRaiseError(kv, "could not evaluate PDF to floating point");
      }
      UpdateDispatcher();
    }
    if (hx > t) {
      return x;
    }
  }
}

// Points in descending order, or twice the same one, make areas that no hat has.
bool STATS_EnvelopeGenerator_HW::isHat() const {
  return std::all_of(areas_.begin(), areas_.end(),
                     [](double area) { return area > 0.0 && std::isfinite(area); });
}

void STATS_EnvelopeGenerator_HW::endSearch(VKernelVector kv, int rejected) const {
  constexpr int kMostWithoutHat = 10000;
  constexpr int kMost = 10000000;
  if (rejected == kMost || (rejected == kMostWithoutHat && !isHat())) {
    VexelRaiseError1(kv, "the base points make no envelope of the density: no variate in %1 tries",
                     ToVexelInteger(kv, rejected));
  }
}

int STATS_EnvelopeGenerator_HW::RefineEnvelope(int i, double x, double hx, double h1x) {
  Element& e = envelope_.elementAt(static_cast<std::uint32_t>(i));
  const Element whole = e;
  if (!UpdateEnvelopeElement(e, whole.x[0], x, whole.y[0], hx, whole.slope[kTangents][0], h1x)) {
    return 0;
  }
  Element rest{};
  if (!UpdateEnvelopeElement(rest, x, whole.x[2], hx, whole.y[2], h1x, whole.slope[kTangents][1])) {
    return 0;
  }
  envelope_.addElement(rest);  // at the end: the urn knows elements by area, not place
  return 1;
}
