// Root finders without derivatives for f(x) = target: Brent's method on a bracket, and searches
// that find a bracket of a nondecreasing f by secant extrapolation first.
//
// lowerValue and upperValue bound the values of f, not x.  maxIter counts evaluations; search and
// Brent's method share it, and spending it is a host error.  Unordered comparisons are false
// except where a function says otherwise.
#pragma once

#include <vexelc/vexelc.h>

#include "kernel/callback_adapters.hpp"

// Brent's method on [a, b], in either order; the end residuals must not have the same strict sign.
// Stops when half the bracket is below tol (2|x| + 1/2).
double STATS_BrentMethod_HW(VKernelVector kv, double target, STATS_VexelCallbackAdapter_HW& f,
                            double a, double b, double tol, int maxIter);

// The root lies left of the barrier right; extends the search to the left of x0 < right.
double STATS_BrentMethodHybridRight_HW(VKernelVector kv, double target,
                                       STATS_VexelCallbackAdapter_HW& f, double lowerValue,
                                       double upperValue, double x0, double right, double tol,
                                       int maxIter);

// The root lies right of the barrier left; extends the search to the right of x0 > left.
double STATS_BrentMethodHybridLeft_HW(VKernelVector kv, double target,
                                      STATS_VexelCallbackAdapter_HW& f, double lowerValue,
                                      double upperValue, double left, double x0, double tol,
                                      int maxIter);

// No barrier, two distinct points to start from: one of the two searches above.
double STATS_BrentMethodHybridUnbound_HW(VKernelVector kv, double target,
                                         STATS_VexelCallbackAdapter_HW& f, double lowerValue,
                                         double upperValue, double initPoint1, double initPoint2,
                                         double tol, int maxIter);
