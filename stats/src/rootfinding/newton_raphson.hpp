// Newton-Raphson root finders for f(x) = target with a derivative df: plain with soft barriers,
// safeguarded by bisection inside a bracket, and a hybrid that finds its bracket first.
//
// All three evaluate f before df at every point, raise host errors through kv, and report an
// exhausted budget as user information (channel "hints", level 2) while returning the last iterate.
#pragma once

#include <vexelc/vexelc.h>

#include "kernel/callback_adapters.hpp"

// Plain Newton iteration from x0, tol relative to |x| + |xNew|.
//
// A step across a barrier is halved toward it, and a root within tol of a barrier is returned as
// the barrier itself.  x0 outside the barriers raises; a zero derivative moves halfway to a
// barrier, or raises without one.  maxIter < 1 gives 0.0.
double STATS_NewtonRaphson_HW(VKernelVector kv, double target, STATS_VexelCallbackAdapter_HW& f,
                              STATS_VexelCallbackAdapter_HW& df, double x0, int hasLeft,
                              double left, int hasRight, double right, double tol, int maxIter);

// Newton iteration inside [lower, upper], bisecting where a Newton step would leave the bracket or
// not halve it; tol is the absolute length of the last step.
//
// f may rise or fall; its end values must enclose the target.  x0 must lie in the bracket.
double STATS_NewtonRaphsonSafe_HW(VKernelVector kv, double target, STATS_VexelCallbackAdapter_HW& f,
                                  STATS_VexelCallbackAdapter_HW& df, double x0, double lower,
                                  double upper, double tol, int maxIter);

// For nondecreasing f with values strictly between lowerValue and upperValue (bounds of f, not of
// x): outward Newton steps until a bracket is found on the side without a barrier, then the
// safeguarded iteration from the bracket's midpoint; both share the budget maxIter.
double STATS_NewtonRaphsonHybrid_HW(VKernelVector kv, double target,
                                    STATS_VexelCallbackAdapter_HW& f,
                                    STATS_VexelCallbackAdapter_HW& df, double x0, double lowerValue,
                                    double upperValue, int hasLeft, double left, int hasRight,
                                    double right, double tol, int maxIter);
