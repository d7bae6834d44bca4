// Inverting a law's tail on logarithmic scales.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

namespace nag2 {

// A tail T near the wanted p at x > 0: gap = log(T / p), slope = x T' / T, bend = 1 + x f' / f with
// the density f.  A gap of -infinity is a tail that has underflowed.
struct TailSlope {
  double gap;
  double slope;
  double bend;
};

// log(tail / p) without loss where they are near each other.
inline double logQuotient(double tail, double p) {
  const double relative = (tail - p) / p;
  return std::fabs(relative) < 0.5 ? std::log1p(relative) : std::log(tail) - std::log(p);
}

// x in (low, high) where at(x).gap is 0.  Halley's steps in log x, of third order, kept in the
// bracket that the signs of the gaps give; each one that leaves it or finds no slope halves the
// bracket in log x instead.  A root below the least positive double is 0.
template <typename At>
double invertTail(At at, bool rising, double start, double low, double high) {
  double x = start;
  high = std::min(high, 1.7e308);
  // Below this quotient of its ends a bracket is halved in x.
  constexpr double narrow = 2.0;
  for (int i = 0; i < 200; ++i) {
    // Where the steps have not settled by then, the bracket is narrowed first; of a narrow law they
    // creep where the tail is nearly 1.
    if (!(x > low && x < high) || (i >= 12 && high > 1.001 * low) || (i >= 30 && i % 2 == 0)) {
      const double from = std::max(low, std::numeric_limits<double>::denorm_min());
      const double to = std::min(high, std::numeric_limits<double>::max());
      x = to > narrow * from ? std::sqrt(from) * std::sqrt(to) : 0.5 * from + 0.5 * to;
      if (!(x > low && x < high)) {
        return low;
      }
    }
    const TailSlope s = at(x);
    if (s.gap == 0.0) {
      return x;
    }
    ((s.gap < 0.0) == rising ? low : high) = x;
    const double newton = -s.gap / s.slope;
    const double curve = 0.5 * (s.bend - s.slope);
    const double share = std::max(0.3, 1.0 + newton * curve);
    const double step = newton / share;
    if (!(std::fabs(step) < 600.0) || std::isinf(s.gap) || std::isinf(s.slope)) {
      x = -1.0;
      continue;
    }
    const double next = std::fabs(step) < 0.01 ? x + x * (step * (1.0 + step * (0.5 + step / 6.0)))
                                               : x * std::exp(step);
    const double size = std::fabs(step);
    // Far from the root the curve may be mere rounding, and such a step says nothing; of a narrow
    // law it is short, too.
    if (share < 2.0 && size * size * size * (1.0 + 4.0 * curve * curve) < 1e-17 &&
        size * s.gap * s.gap < 1e-17) {
      return next;
    }
    x = next;
  }
  return x > low && x < high ? x : low;
}

}  // namespace nag2
