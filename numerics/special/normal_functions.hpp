// The standard normal tail and quantile.
#pragma once

namespace nag2 {

// 1/sqrt(2 pi), the density at 0.
inline constexpr double inverseRootTwoPi = 0.39894228040143267794;

// P(Z <= x).
double normalLower(double x);
double normalLower(long double x);  // of an argument that no double holds
// x with normalLower(x) = p; infinite from 0 down and from 1 up.
double normalInverse(double p);

}  // namespace nag2
