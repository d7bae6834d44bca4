// Newton-Raphson root finders for f(x) = target with a derivative df: plain with soft barriers,
// safeguarded by bisection inside a bracket, and a hybrid that finds its bracket first.
//
// All three evaluate f before df at every point, throw a Refusal where there is nothing to find,
// and return the last iterate of an exhausted budget.
#pragma once

#include "kernels/rootfinding/real_function.hpp"

namespace vexel::kernels {

enum class RootEnd {
  converged,
  atBarrier,  // the root was so close to a barrier that the barrier is returned
  exhausted,  // the last iterate of a spent budget
};

struct FoundRoot {
  double x;
  RootEnd end = RootEnd::converged;
};

// Plain Newton iteration from x0, tol relative to |x| + |xNew|.
//
// A step across a barrier is halved toward it, and a root within tol of a barrier is returned as
// the barrier itself.  x0 outside the barriers is refused; a zero derivative moves halfway to a
// barrier, or is refused without one.  maxIter < 1 gives 0.0.
FoundRoot newtonRaphson(double target, RealFunction f, RealFunction df, double x0, bool hasLeft,
                        double left, bool hasRight, double right, double tol, int maxIter);

// Newton iteration inside [lower, upper], bisecting where a Newton step would leave the bracket or
// not halve it; tol is the absolute length of the last step.
//
// f may rise or fall; its end values must enclose the target.  x0 must lie in the bracket.
FoundRoot newtonRaphsonSafe(double target, RealFunction f, RealFunction df, double x0, double lower,
                            double upper, double tol, int maxIter);

// For nondecreasing f with values strictly between lowerValue and upperValue (bounds of f, not of
// x): outward Newton steps until a bracket is found on the side without a barrier, then the
// safeguarded iteration from the bracket's midpoint; both share the budget maxIter.
FoundRoot newtonRaphsonHybrid(double target, RealFunction f, RealFunction df, double x0,
                              double lowerValue, double upperValue, bool hasLeft, double left,
                              bool hasRight, double right, double tol, int maxIter);

}  // namespace vexel::kernels
