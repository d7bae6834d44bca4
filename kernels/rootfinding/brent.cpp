// Brent's method (Brent 1973, Algorithms for Minimization without Derivatives, chapter 4) with a
// tolerance relative to the root, and bracket searches by secant extrapolation to the end of f's
// range.

#include "kernels/rootfinding/brent.hpp"

#include <algorithm>
#include <cmath>

#include "kernels/refusal.hpp"

namespace vexel::kernels {
namespace {

constexpr const char* kNotNondecreasing = "specified function is not a nondecreasing function.";
constexpr const char* kNotConverged =
    "BrentMethodHybrid was not able to converge on the specified root.";

bool sameStrictSign(double u, double v) { return (u > 0.0 && v > 0.0) || (u < 0.0 && v < 0.0); }

struct Point {
  double x;
  double f;  // in Brent's method the residual, in the searches the value
};

// The next step from the best point b and the step before it.
struct Step {
  double d = 0.0;
  double e = 0.0;

  // Secant or inverse quadratic interpolation through a, b and the contrapoint z if it is
  // trustworthy, else the bisection step xm.
  void choose(const Point& a, const Point& b, const Point& z, double xm, double tol1) {
    if (std::abs(e) >= tol1 && std::abs(a.f) > std::abs(b.f)) {
      const double s = b.f / a.f;
      double p;
      double q;
      if (a.x == z.x) {
        p = 2.0 * xm * s;
        q = 1.0 - s;
      } else {
        q = a.f / z.f;
        const double r = b.f / z.f;
        p = s * (2.0 * xm * q * (q - r) - (b.x - a.x) * (r - 1.0));
        q = (q - 1.0) * (r - 1.0) * (s - 1.0);
      }
      if (p > 0.0) {
        q = -q;
      }
      p = std::abs(p);
      const double min1 = 3.0 * xm * q - std::abs(tol1 * q);
      const double min2 = std::abs(e * q);
      if (2.0 * p < std::min(min1, min2)) {
        e = d;
        d = p / q;
        return;
      }
    }
    d = xm;
    e = d;
  }
};

void requireInRange(double target, double lowerValue, double upperValue) {
  if (target < lowerValue || target > upperValue) {
    throw Refusal("the specified approximation point must be between function bounds.");
  }
}

}  // namespace

double brent(double target, RealFunction f, double aStart, double bStart, double tol, int maxIter) {
  constexpr const char* kExhausted = "maximum number of iterations exceeded in Brent root finding.";
  Point a{aStart, f(aStart) - target};
  Point b{bStart, f(bStart) - target};
  if (sameStrictSign(a.f, b.f)) {
    throw Refusal("root must be bracketed by lower and upper boundaries.");
  }
  Point z = b;
  Step step;
  for (int k = 0; k < maxIter; ++k) {
    if (sameStrictSign(b.f, z.f)) {
      z = a;
      step.d = b.x - a.x;
      step.e = step.d;
    }
    if (std::abs(z.f) < std::abs(b.f)) {
      a = b;
      b = z;
      z = a;
    }
    // The relative part is the caller's tolerance, not the machine's.
    const double tol1 = 2.0 * tol * std::abs(b.x) + 0.5 * tol;
    const double xm = 0.5 * (z.x - b.x);
    if (std::abs(xm) < tol1 || b.f == 0.0) {
      return b.x;
    }
    step.choose(a, b, z, xm, tol1);
    a = b;
    b.x += std::abs(step.d) > tol1 ? step.d : (xm < 0.0 ? -tol1 : tol1);
    b.f = f(b.x) - target;
  }
  throw Refusal(kExhausted);
}

double brentLeftOf(double target, RealFunction f, double lowerValue, double upperValue, double x0,
                   double right, double tol, int maxIter) {
  if (!(x0 < right)) {  // a NaN too
    throw Refusal("the specified initial point must be less than the right barrier.");
  }
  requireInRange(target, lowerValue, upperValue);
  Point current{x0, f(x0)};
  if (maxIter < 1) {
    throw Refusal(kNotConverged);
  }
  if (target >= current.f) {
    return brent(target, f, x0, right, tol, maxIter);
  }
  // The barrier pairs with the top of f's range, whatever f is there.
  Point reference{right, upperValue};
  for (int used = 1;; ++used) {
    const double slope = (reference.f - current.f) / (reference.x - current.x);
    Point next{(lowerValue - (current.f - current.x * slope)) / slope, 0.0};
    if (next.x > current.x) {
      throw Refusal(kNotNondecreasing);
    }
    next.f = f(next.x);
    if (next.f > current.f) {
      throw Refusal(kNotNondecreasing);
    }
    if (next.f == current.f || used == maxIter) {
      throw Refusal(kNotConverged);
    }
    if (target >= next.f) {
      return brent(target, f, next.x, current.x, tol, maxIter - used);
    }
    reference = current;
    current = next;
  }
}

double brentRightOf(double target, RealFunction f, double lowerValue, double upperValue,
                    double left, double x0, double tol, int maxIter) {
  if (!(x0 > left)) {  // a NaN too
    throw Refusal("the specified initial point must be greater than the left barrier.");
  }
  requireInRange(target, lowerValue, upperValue);
  Point current{x0, f(x0)};
  if (maxIter < 1) {
    throw Refusal(kNotConverged);
  }
  if (current.f >= target) {
    return brent(target, f, left, x0, tol, maxIter);
  }
  Point reference{left, lowerValue};
  for (int used = 1;; ++used) {
    const double slope = (current.f - reference.f) / (current.x - reference.x);
    Point next{(upperValue - (reference.f - slope * reference.x)) / slope, 0.0};
    if (next.x < current.x) {
      throw Refusal(kNotNondecreasing);
    }
    next.f = f(next.x);
    if (next.f < current.f) {
      throw Refusal(kNotNondecreasing);
    }
    if (next.f == current.f || used == maxIter) {
      throw Refusal(kNotConverged);
    }
    if (next.f >= target) {
      return brent(target, f, current.x, next.x, tol, maxIter - used);
    }
    reference = current;
    current = next;
  }
}

double brentFromTwo(double target, RealFunction f, double lowerValue, double upperValue,
                    double initPoint1, double initPoint2, double tol, int maxIter) {
  if (initPoint1 == initPoint2) {
    throw Refusal(
        "BrentMethodHybridUnbound requires distinct initial points (InitPoint1 != InitPoint2).");
  }
  const auto [lo, hi] = std::minmax(initPoint2, initPoint1);  // in this order for a NaN
  const double flo = f(lo);
  const double fhi = f(hi);
  if (flo == target) {
    return lo;
  }
  if (fhi == target) {
    return hi;
  }
  // The value at the far point takes the place of the range's end, so that the first extrapolation
  // is the secant through both points.
  if (target > flo) {
    return brentRightOf(target, f, flo, upperValue, lo, hi, tol, maxIter);
  }
  return brentLeftOf(target, f, lowerValue, fhi, lo, hi, tol, maxIter);
}

}  // namespace vexel::kernels
