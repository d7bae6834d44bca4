// Newton-Raphson root finders: the safeguard is the classical one (Press, Teukolsky, Vetterling and
// Flannery, Numerical Recipes, 9.4), the barriers of the plain method are soft.
//
// The points at which f and df are called, and their order, are what hosts see of these functions;
// comparisons are written so that a NaN falls on the side it has always fallen on.

#include "kernels/rootfinding/newton_raphson.hpp"

#include <cmath>

#include "kernels/refusal.hpp"

namespace vexel::kernels {
namespace {

constexpr const char* kOutsideBarriers =
    "the specified initial point must be between the specified barriers";
constexpr const char* kPlainFailed = "NewtonRaphson root-finding method failed to converge.";
constexpr const char* kSafeFailed = "NewtonRaphsonSafe root-finding method failed to converge.";
constexpr const char* kHybridFailed = "NewtonRaphsonHybrid root-finding method failed to converge.";
constexpr const char* kNotNondecreasing = "specified function is not a nondecreasing function.";

// Distance of two points relative to their sizes; NaN when both are 0, which converges nowhere.
double relativeStep(double x, double y) { return std::abs(x - y) / (std::abs(y) + std::abs(x)); }

struct Barriers {
  bool hasLeft;
  double left;
  bool hasRight;
  double right;

  bool exclude(double x) const { return (hasLeft && x < left) || (hasRight && x > right); }

  // A step from x to xn, halved toward a barrier that it crosses.
  double hold(double x, double xn) const {
    if (hasLeft && xn < left) {
      xn = (left + x) * 0.5;
    }
    if (hasRight && xn > right) {
      xn = (right + x) * 0.5;
    }
    return xn;
  }
};

// Leaves a point of zero derivative halfway toward a barrier; d becomes the derivative there.
double leaveFlatPoint(RealFunction df, const Barriers& barriers, double x, double& d) {
  if (barriers.hasLeft) {
    x = (x + barriers.left) * 0.5;
    d = df(x);
  }
  if (d == 0.0 && barriers.hasRight) {
    x = (x + barriers.right) * 0.5;
    d = df(x);
  }
  if (d == 0.0) {
    throw Refusal(kPlainFailed);
  }
  return x;
}

// The converged point, or the barrier that it has reached.
FoundRoot snapToBarrier(const Barriers& barriers, double x, double tol) {
  if (barriers.hasLeft && relativeStep(x, barriers.left) < tol) {
    return {barriers.left, RootEnd::atBarrier};
  }
  if (barriers.hasRight && relativeStep(x, barriers.right) < tol) {
    return {barriers.right, RootEnd::atBarrier};
  }
  return {x};
}

// A bracket with f below the target at xl and not below it at xh, and the current point in it.
struct Bracket {
  double xl;
  double xh;
  double x;
  double gx;  // residual at x
  double d;   // derivative at x
};

// At most passes of Newton or bisection.
FoundRoot polish(double target, RealFunction f, RealFunction df, Bracket b, double width,
                 double tol, int passes, const char* flatMessage) {
  double dx = width;
  double dxOld = width;
  for (int k = 0; k < passes; ++k) {
    const bool leavesBracket = ((b.x - b.xh) * b.d - b.gx) * ((b.x - b.xl) * b.d - b.gx) > 0.0;
    if (leavesBracket || std::abs(2.0 * b.gx) > std::abs(dxOld * b.d)) {
      dxOld = dx;
      dx = (b.xh - b.xl) * 0.5;
      b.x = b.xl + dx;
      if (b.x == b.xl) {
        return {b.x};
      }
    } else {
      if (b.d == 0.0) {
        if (b.gx == 0.0) {
          return {b.x};
        }
        throw Refusal(flatMessage);
      }
      dxOld = dx;
      dx = b.gx / b.d;
      const double previous = b.x;
      b.x = b.x - dx;
      if (b.x == previous) {
        return {b.x};
      }
    }
    if (std::abs(dx) < tol) {
      return {b.x};
    }
    b.gx = f(b.x) - target;
    b.d = df(b.x);
    (b.gx < 0.0 ? b.xl : b.xh) = b.x;
  }
  return {b.x, RootEnd::exhausted};
}

// The values of f, for the outward search.
struct ValueRange {
  double target;
  double lower;
  double upper;
};

// Steps outward from x with residual gx until both barriers of the bracket are set; returns the
// steps that did not bracket.
//
// After the first step the residual is taken against the far end of f's range instead of the
// target: the steps then overshoot, and few are needed.
int searchOutward(RealFunction f, RealFunction df, const ValueRange& range, double x, double gx,
                  bool rightward, Barriers& bracket, int maxIter) {
  for (int used = 0; used < maxIter; ++used) {
    const double d = df(x);
    if (d == 0.0) {
      throw Refusal(kHybridFailed);
    }
    const double xn = x - gx / d;
    if (rightward ? xn < x : xn > x) {
      throw Refusal(kNotNondecreasing);
    }
    const double fn = f(xn);
    if (fn > range.target) {
      bracket.right = xn;
      bracket.hasRight = true;
    } else if (fn < range.target) {
      bracket.left = xn;
      bracket.hasLeft = true;
    }
    if (bracket.hasLeft && bracket.hasRight) {
      return used;
    }
    gx = fn - (rightward ? range.upper : range.lower);
    x = xn;
  }
  throw Refusal(kHybridFailed);
}

}  // namespace

FoundRoot newtonRaphson(double target, RealFunction f, RealFunction df, double x0, bool hasLeft,
                        double left, bool hasRight, double right, double tol, int maxIter) {
  const Barriers barriers{hasLeft, left, hasRight, right};
  if (barriers.exclude(x0)) {
    throw Refusal(kOutsideBarriers);
  }
  double x = x0;
  double gx = f(x0) - target;
  double d = df(x0);
  if (maxIter < 1) {
    return {0.0, RootEnd::exhausted};  // not x0: hosts have always been given 0 here
  }
  for (int k = 1;; ++k) {
    if (d == 0.0) {
      x = leaveFlatPoint(df, barriers, x, d);
      gx = f(x);  // the target is left out: the step after a rescue aims at f = 0
    }
    const double xn = barriers.hold(x, x - gx / d);
    const double fn = f(xn);
    d = df(xn);
    if (relativeStep(xn, x) < tol) {
      return snapToBarrier(barriers, xn, tol);
    }
    if (k == maxIter) {
      return {xn, RootEnd::exhausted};
    }
    x = xn;
    gx = fn - target;
  }
}

FoundRoot newtonRaphsonSafe(double target, RealFunction f, RealFunction df, double x0, double lower,
                            double upper, double tol, int maxIter) {
  if (!(x0 >= lower) || !(x0 <= upper)) {  // a NaN is outside
    throw Refusal(kOutsideBarriers);
  }
  const double fl = f(lower) - target;
  const double fh = f(upper) - target;
  if ((fl > 0.0 && fh > 0.0) || (fl < 0.0 && fh < 0.0)) {
    throw Refusal("root must be bracketed by lower and upper barriers");
  }
  if (fl == 0.0) {
    return {lower};
  }
  if (fh == 0.0) {
    return {upper};
  }
  const double gx = f(x0) - target;
  const double d = df(x0);
  if (gx == 0.0) {
    return {x0};
  }
  const bool rising = fl < 0.0;
  const Bracket bracket{rising ? lower : upper, rising ? upper : lower, x0, gx, d};
  return polish(target, f, df, bracket, std::abs(upper - lower), tol, maxIter, kSafeFailed);
}

FoundRoot newtonRaphsonHybrid(double target, RealFunction f, RealFunction df, double x0,
                              double lowerValue, double upperValue, bool hasLeft, double left,
                              bool hasRight, double right, double tol, int maxIter) {
  Barriers bracket{hasLeft, left, hasRight, right};
  if (bracket.exclude(x0)) {
    throw Refusal(kOutsideBarriers);
  }
  if (target <= lowerValue || target >= upperValue) {
    throw Refusal(
        "the specified approximation point must be strictly between the specified "
        "bounds");
  }
  int used = 0;
  if (!(bracket.hasLeft && bracket.hasRight)) {
    const double gx = f(x0) - target;
    if (gx == 0.0) {
      return {x0};
    }
    // x0 becomes the barrier on its side of the root; a NaN residual counts as a root to the left.
    const bool rightward = gx < 0.0;
    if (rightward && (!bracket.hasLeft || x0 > bracket.left)) {
      bracket.left = x0;
      bracket.hasLeft = true;
    } else if (!rightward && (!bracket.hasRight || x0 < bracket.right)) {
      bracket.right = x0;
      bracket.hasRight = true;
    }
    if (!(bracket.hasLeft && bracket.hasRight)) {
      used = searchOutward(f, df, {target, lowerValue, upperValue}, x0, gx, rightward, bracket,
                           maxIter);
    }
  }
  Bracket b{bracket.left, bracket.right, (bracket.left + bracket.right) * 0.5, 0.0, 0.0};
  b.gx = f(b.x) - target;
  b.d = df(b.x);
  if (b.gx == 0.0) {
    return {b.x};
  }
  // used < maxIter after a search; without one an empty budget ends at the midpoint.
  return polish(target, f, df, b, std::abs(bracket.right - bracket.left), tol, maxIter - used,
                kHybridFailed);
}

}  // namespace vexel::kernels
