// Inversion of a distribution function by safeguarded Newton iteration.
#pragma once

#include "kernels/rootfinding/real_function.hpp"

namespace vexel::kernels {

// The x in [lower, upper] where cdf is p; tol is the absolute length of the last step.  Never
// fails: an impossible p gives a point of the interval, and the 100th step ends the search wherever
// it is.  cdf is evaluated before pdf at every point.
double invert(RealFunction cdf, RealFunction pdf, double p, double lower, double upper, double tol);

}  // namespace vexel::kernels
