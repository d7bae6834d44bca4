// The regularised incomplete gamma and beta functions, both tails, and their inverses.
#pragma once

namespace nag2 {

// Lower and upper tail of the gamma distribution with unit scale; a > 0, x >= 0.
double gammaLower(double a, double x);
double gammaUpper(double a, double x);
// x with gammaLower(a, x) = p, found from the smaller tail; upperTail: with gammaUpper(a, x) = p.
double gammaInverse(double a, double p, bool upperTail = false);

// A point of the unit interval with its complement, either of them exact when it is small.
struct UnitPoint {
  long double x;
  long double y;
};

// I_x(a, b) and its complement.
double betaLower(double a, double b, UnitPoint at);
double betaUpper(double a, double b, UnitPoint at);
// The point where I_x(a, b) = p; upperTail: where the complement is p.
UnitPoint betaInverse(double a, double b, double p, bool upperTail);

}  // namespace nag2
