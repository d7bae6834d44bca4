// The standard normal tail and quantile.
#pragma once

namespace nag2 {

// P(Z <= x).
double normalLower(double x);
double normalLower(long double x);  // of an argument that no double holds
// x with normalLower(x) = p; infinite from 0 down and from 1 up.
double normalInverse(double p);

}  // namespace nag2
