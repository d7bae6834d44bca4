// Integer quantile search: bisection, and floored secant extrapolation to a bracket.
//
// Differences and midpoints are formed in 64 bits or in double, and steps beyond the 32-bit range
// stay at its end, where the next value repeats and ends the search.

#include "rootfinding/discrete_interpolation.hpp"

#include <cmath>
#include <limits>

#include "kernel/conversions.hpp"

namespace {

using Function = STATS_VexelCallbackAdapter_HW;
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
  return STATS_DoubleToInteger_HW(std::floor((value - (point.f - point.x * slope)) / slope));
}

void requireInRange(VKernelVector kv, double p, double lowerValue, double upperValue) {
  if (p < lowerValue || p > upperValue) {
    VexelRaiseError(kv, "the specified approximation point must be between function bounds.");
  }
}

void requireBudget(VKernelVector kv, int maxIter) {
  if (maxIter < 1) {
    VexelRaiseError(kv, kNotConverged);
  }
}

}  // namespace

std::int32_t STATS_DiscreteInterpolation_HW(VKernelVector kv, double p,
                                            STATS_VexelCallbackAdapter_HW& F, std::int32_t lo,
                                            std::int32_t hi, int maxIter) {
  if (F.Call(lo) > p) {
    return lo;
  }
  if (F.Call(hi) < p) {
    VexelRaiseError(kv, "root must be bracketed by left and right barriers.");
  }
  if (maxIter < 1) {
    VexelRaiseError(kv, kExhausted);
  }
  std::int64_t a = lo;
  std::int64_t b = hi;  // F(b) is never below p
  for (int pass = 1; b - a > 1; ++pass) {
    const std::int64_t mid = (a + b) / 2;  // toward zero, so below it the upper of two middles
    (p <= F.Call(static_cast<double>(mid)) ? b : a) = mid;
    if (pass == maxIter) {
      VexelRaiseError(kv, kExhausted);
    }
  }
  return static_cast<std::int32_t>(b);
}

std::int32_t STATS_DiscreteInterpolationHybridLeft_HW(VKernelVector kv, double p,
                                                      STATS_VexelCallbackAdapter_HW& F,
                                                      double lowerValue, double upperValue,
                                                      std::int32_t left, std::int32_t x0,
                                                      int maxIter) {
  if (x0 <= left) {
    VexelRaiseError(kv, "the specified initial point must be greater than the left barrier.");
  }
  requireInRange(kv, p, lowerValue, upperValue);
  Point reference{left, F.Call(left)};
  Point current{x0, F.Call(x0)};
  requireBudget(kv, maxIter);
  if (current.f >= p) {
    return STATS_DiscreteInterpolation_HW(kv, p, F, left, x0, maxIter);
  }
  int used = 0;
  do {
    const double slope = slopeThrough(reference, current);
    Point next{abscissaAt(upperValue, reference, slope), 0.0};
    if (next.x == current.x) {
      next.x += next.x < Limits::max() ? 1 : 0;
    } else if (next.x < current.x) {
      VexelRaiseError(kv, kNotNondecreasing);
    }
    next.f = F.Call(next.x);
    if (next.f < current.f) {
      VexelRaiseError(kv, kNotNondecreasing);
    }
    if (next.f == current.f || ++used == maxIter) {
      VexelRaiseError(kv, kNotConverged);
    }
    reference = current;
    current = next;
  } while (!(current.f >= p));
  return STATS_DiscreteInterpolation_HW(kv, p, F, reference.x, current.x, maxIter - used);
}

// Unlike its mirror image, this search looks for a bracket with its upper point: it steps to the
// left while F is below p at the point before, so for a nondecreasing F it brackets nothing new and
// ends in an error unless F(right) >= p.  Hosts know it so.
std::int32_t STATS_DiscreteInterpolationHybridRight_HW(VKernelVector kv, double p,
                                                       STATS_VexelCallbackAdapter_HW& F,
                                                       double lowerValue, double upperValue,
                                                       std::int32_t x0, std::int32_t right,
                                                       int maxIter) {
  if (x0 >= right) {
    VexelRaiseError(kv, "the specified initial point must be less than the right barrier.");
  }
  requireInRange(kv, p, lowerValue, upperValue);
  Point current{x0, F.Call(x0)};
  Point reference{right, F.Call(right)};
  requireBudget(kv, maxIter);
  if (reference.f >= p) {
    return STATS_DiscreteInterpolation_HW(kv, p, F, x0, right, maxIter);
  }
  int used = 0;
  do {
    const double slope = slopeThrough(current, reference);
    Point next{abscissaAt(lowerValue, current, slope), 0.0};
    if (next.x == current.x) {
      next.x -= next.x > Limits::min() ? 1 : 0;
    } else if (next.x > current.x) {
      VexelRaiseError(kv, kNotNondecreasing);
    }
    next.f = F.Call(next.x);
    if (next.f > current.f) {
      VexelRaiseError(kv, kNotNondecreasing);
    }
    if (next.f == current.f || ++used == maxIter) {
      VexelRaiseError(kv, kNotConverged);
    }
    reference = current;
    current = next;
  } while (reference.f < p);
  return STATS_DiscreteInterpolation_HW(kv, p, F, current.x, reference.x, maxIter - used);
}

std::int32_t STATS_DiscreteInterpolationHybridUnbound_HW(VKernelVector kv, double p,
                                                         STATS_VexelCallbackAdapter_HW& F,
                                                         double lowerValue, double upperValue,
                                                         std::int32_t initPoint1,
                                                         std::int32_t initPoint2, int maxIter) {
  requireInRange(kv, p, lowerValue, upperValue);
  if (initPoint1 == initPoint2) {
    VexelRaiseError(kv,
                    "DiscreteInterpolationHybridUnbound requires distinct initial points "
                    "(InitPoint1 != InitPoint2).");
  }
  // Points in descending order are not exchanged: both become the smaller one.
  const std::int32_t lo = initPoint1 > initPoint2 ? initPoint2 : initPoint1;
  const std::int32_t hi = initPoint2;
  const double flo = F.Call(lo);
  const double fhi = F.Call(hi);
  if (flo == p) {
    return lo;
  }
  if (fhi == p) {
    return hi;
  }
  return p <= flo ? STATS_DiscreteInterpolationHybridRight_HW(kv, p, F, lowerValue, upperValue, lo,
                                                              hi, maxIter)
                  : STATS_DiscreteInterpolationHybridLeft_HW(kv, p, F, lowerValue, upperValue, lo,
                                                             hi, maxIter);
}
