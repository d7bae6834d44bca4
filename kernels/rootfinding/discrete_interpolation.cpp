// Integer quantile search: bisection, and floored secant extrapolation to a bracket.
//
// Differences and midpoints are formed in 64 bits or in double, and steps beyond the 32-bit range
// stay at its end, where the next value repeats and ends the search.

#include "kernels/rootfinding/discrete_interpolation.hpp"

#include <cmath>
#include <limits>

#include "kernels/refusal.hpp"
#include "kernels/saturate.hpp"

namespace vexel::kernels {
namespace {

using Limits = std::numeric_limits<std::int32_t>;

constexpr const char* kExhausted =
    "maximum number of iterations exceeded in discrete root finding.";
constexpr const char* kNotNondecreasing = "specified function is not a nondecreasing function.";
constexpr const char* kNotConverged =
    "DiscreteInterpolationHybrid was not able to converge to the specified root.";

struct Point {
  std::int32_t x;
  double f;
};

double slopeThrough(const Point& a, const Point& b) {
  return (b.f - a.f) / (static_cast<double>(b.x) - static_cast<double>(a.x));
}

// Where the line of that slope through the point reaches value, rounded down.
std::int32_t abscissaAt(double value, const Point& point, double slope) {
  return toInteger(std::floor((value - (point.f - point.x * slope)) / slope));
}

void requireInRange(double p, double lowerValue, double upperValue) {
  if (p < lowerValue || p > upperValue) {
    throw Refusal("the specified approximation point must be between function bounds.");
  }
}

void requireBudget(int maxIter) {
  if (maxIter < 1) {
    throw Refusal(kNotConverged);
  }
}

}  // namespace

std::int32_t interpolate(double p, RealFunction F, std::int32_t lo, std::int32_t hi, int maxIter) {
  if (F(lo) > p) {
    return lo;
  }
  if (F(hi) < p) {
    throw Refusal("root must be bracketed by left and right barriers.");
  }
  if (maxIter < 1) {
    throw Refusal(kExhausted);
  }
  std::int64_t a = lo;
  std::int64_t b = hi;  // F(b) is never below p
  for (int pass = 1; b - a > 1; ++pass) {
    const std::int64_t mid = (a + b) / 2;  // toward zero, so below it the upper of two middles
    (p <= F(static_cast<double>(mid)) ? b : a) = mid;
    if (pass == maxIter) {
      throw Refusal(kExhausted);
    }
  }
  return static_cast<std::int32_t>(b);
}

std::int32_t interpolateRightOf(double p, RealFunction F, double lowerValue, double upperValue,
                                std::int32_t left, std::int32_t x0, int maxIter) {
  if (x0 <= left) {
    throw Refusal("the specified initial point must be greater than the left barrier.");
  }
  requireInRange(p, lowerValue, upperValue);
  Point reference{left, F(left)};
  Point current{x0, F(x0)};
  requireBudget(maxIter);
  if (current.f >= p) {
    return interpolate(p, F, left, x0, maxIter);
  }
  int used = 0;
  do {
    const double slope = slopeThrough(reference, current);
    Point next{abscissaAt(upperValue, reference, slope), 0.0};
    if (next.x == current.x) {
      next.x += next.x < Limits::max() ? 1 : 0;
    } else if (next.x < current.x) {
      throw Refusal(kNotNondecreasing);
    }
    next.f = F(next.x);
    if (next.f < current.f) {
      throw Refusal(kNotNondecreasing);
    }
    if (next.f == current.f || ++used == maxIter) {
      throw Refusal(kNotConverged);
    }
    reference = current;
    current = next;
  } while (!(current.f >= p));
  return interpolate(p, F, reference.x, current.x, maxIter - used);
}

// Unlike its mirror image, this search looks for a bracket with its upper point: it steps to the
// left while F is below p at the point before, so for a nondecreasing F it brackets nothing new and
// ends in an error unless F(right) >= p.  Hosts know it so.
std::int32_t interpolateLeftOf(double p, RealFunction F, double lowerValue, double upperValue,
                               std::int32_t x0, std::int32_t right, int maxIter) {
  if (x0 >= right) {
    throw Refusal("the specified initial point must be less than the right barrier.");
  }
  requireInRange(p, lowerValue, upperValue);
  Point current{x0, F(x0)};
  Point reference{right, F(right)};
  requireBudget(maxIter);
  if (reference.f >= p) {
    return interpolate(p, F, x0, right, maxIter);
  }
  int used = 0;
  do {
    const double slope = slopeThrough(current, reference);
    Point next{abscissaAt(lowerValue, current, slope), 0.0};
    if (next.x == current.x) {
      next.x -= next.x > Limits::min() ? 1 : 0;
    } else if (next.x > current.x) {
      throw Refusal(kNotNondecreasing);
    }
    next.f = F(next.x);
    if (next.f > current.f) {
      throw Refusal(kNotNondecreasing);
    }
    if (next.f == current.f || ++used == maxIter) {
      throw Refusal(kNotConverged);
    }
    reference = current;
    current = next;
  } while (reference.f < p);
  return interpolate(p, F, current.x, reference.x, maxIter - used);
}

std::int32_t interpolateFromTwo(double p, RealFunction F, double lowerValue, double upperValue,
                                std::int32_t initPoint1, std::int32_t initPoint2, int maxIter) {
  requireInRange(p, lowerValue, upperValue);
  if (initPoint1 == initPoint2) {
    throw Refusal(
        "DiscreteInterpolationHybridUnbound requires distinct initial points "
        "(InitPoint1 != InitPoint2).");
  }
  // Points in descending order are not exchanged: both become the smaller one.
  const std::int32_t lo = initPoint1 > initPoint2 ? initPoint2 : initPoint1;
  const std::int32_t hi = initPoint2;
  const double flo = F(lo);
  const double fhi = F(hi);
  if (flo == p) {
    return lo;
  }
  if (fhi == p) {
    return hi;
  }
  return p <= flo ? interpolateLeftOf(p, F, lowerValue, upperValue, lo, hi, maxIter)
                  : interpolateRightOf(p, F, lowerValue, upperValue, lo, hi, maxIter);
}

}  // namespace vexel::kernels
