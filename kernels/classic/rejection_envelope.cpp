// Building and refining the elements of an envelope.

#include "kernels/classic/rejection_envelope.hpp"

#include <algorithm>
#include <cmath>

namespace vexel::kernels::classic {
namespace {

using Element = EnvelopeElement;

// Where to split [x0, x1]: where the end tangents meet if that is inside, else in the middle. False
// when one end is so steep against the other, itself steep, that neither says anything.
bool splitPoint(double x0, double x1, double y0, double y1, double d0, double d1, double* xm) {
  constexpr double kHalfTheDigits = 7.5;  // of the 15 that a double has
  if (d0 != d1) {
    *xm = -(y0 - d0 * x0 - y1 + d1 * x1) / (d0 - d1);
    if (x0 < *xm && *xm < x1) {
      return true;
    }
  }
  const double big = std::max(std::abs(d0), std::abs(d1));
  const double small = std::min(std::abs(d0), std::abs(d1));
  if (big * 0.5 > small && small >= std::pow(10.0, kHalfTheDigits)) {
    return false;
  }
  *xm = (x0 + x1) * 0.5;
  return true;
}

// Makes e the element on [x0, x1] from end values and slopes.  False, with e unchanged, when the
// split point or the density there cannot be had.
bool build(Element& e, double x0, double x1, double y0, double y1, double d0, double d1,
           RealFunction h) {
  double xm = 0.0;
  if (!splitPoint(x0, x1, y0, y1, d0, d1, &xm)) {
    return false;
  }
  const double ym = h(xm);
  if (std::isnan(ym)) {
    return false;
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
  return true;
}

}  // namespace

RejectionEnvelope::RejectionEnvelope(int maximum) : maximum_(maximum) {
  constexpr int kReservedAtMost = 1 << 16;  // a huge maximum is a way of saying "no limit"
  elements_.reserve(static_cast<std::size_t>(std::clamp(maximum, 0, kReservedAtMost)));
}

bool RejectionEnvelope::reset(std::span<const double> points, RealFunction h, RealFunction h1) {
  elements_.clear();
  for (std::size_t i = 1; i < points.size(); ++i) {
    const double p = points[i - 1];
    const double q = points[i];
    const double hp = h(p);
    const double h1p = h1(p);
    const double hq = h(q);
    const double h1q = h1(q);
    Element element{};
    if (!build(element, p, q, hp, hq, h1p, h1q, h)) {
      return false;
    }
    elements_.push_back(element);
  }
  updateUrn();
  return true;
}

// Splits element i at x.  False when either part cannot be built; the left one may then stand
// alone.
bool RejectionEnvelope::refine(std::size_t i, double x, double hx, double h1x, RealFunction h) {
  const Element whole = elements_[i];
  const auto& ends = whole.slope[envelope_lines::tangents];
  if (!build(elements_[i], whole.x[0], x, whole.y[0], hx, ends[0], h1x, h)) {
    return false;
  }
  Element rest{};
  if (!build(rest, x, whole.x[2], hx, whole.y[2], h1x, ends[1], h)) {
    return false;
  }
  elements_.push_back(rest);  // at the end: the urn knows elements by area, not place
  return true;
}

// Brings the urn up to date with the elements' areas.
void RejectionEnvelope::updateUrn() {
  areas_.resize(elements_.size());
  std::transform(elements_.begin(), elements_.end(), areas_.begin(),
                 [](const Element& e) { return e.A[3]; });
  const int n = static_cast<int>(elements_.size());
  urn_.reset(n, n, areas_.data());
}

// Points in descending order, or twice the same one, make areas that no hat has.
void RejectionEnvelope::endSearch(int rejected) const {
  if (rejected == kMost) {
    throw Refusal("the base points make no envelope of the density: no variate in 10000000 tries");
  }
  if (!std::all_of(areas_.begin(), areas_.end(),
                   [](double area) { return area > 0.0 && std::isfinite(area); })) {
    throw Refusal("the base points make no envelope of the density: no variate in 10000 tries");
  }
}

}  // namespace vexel::kernels::classic
