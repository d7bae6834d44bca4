// Root finders without derivatives for f(x) = target: Brent's method on a bracket, and searches
// that find a bracket of a nondecreasing f by secant extrapolation first.
//
// lowerValue and upperValue bound the values of f, not x.  maxIter counts evaluations; search and
// Brent's method share it, and spending it is refused.  Unordered comparisons are false
// except where a function says otherwise.
#pragma once

#include "kernels/rootfinding/real_function.hpp"

namespace vexel::kernels {

// Brent's method on [a, b], in either order; the end residuals must not have the same strict sign.
// Stops when half the bracket is below tol (2|x| + 1/2).
double brent(double target, RealFunction f, double a, double b, double tol, int maxIter);

// The root lies left of the barrier right; extends the search to the left of x0 < right.
double brentLeftOf(double target, RealFunction f, double lowerValue, double upperValue, double x0,
                   double right, double tol, int maxIter);

// The root lies right of the barrier left; extends the search to the right of x0 > left.
double brentRightOf(double target, RealFunction f, double lowerValue, double upperValue,
                    double left, double x0, double tol, int maxIter);

// No barrier, two distinct points to start from: one of the two searches above.
double brentFromTwo(double target, RealFunction f, double lowerValue, double upperValue,
                    double initPoint1, double initPoint2, double tol, int maxIter);

}  // namespace vexel::kernels
