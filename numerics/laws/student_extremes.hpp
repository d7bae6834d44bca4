// The non-central t law where its mixtures end: far tails, and great noncentralities.
#pragma once

#include "numerics/laws/gamma_law.hpp"

namespace nag2 {

// The upper tail at x as  A x^-nu (1 - k / x^2), whatever the sign of delta, where what follows is
// below rounding.
class StudentPowerTail {
 public:
  StudentPowerTail(double x, double nu, double delta);

  // Whether x is that far.
  static bool reached(double x, double nu, double delta);
  double upper() const;
  double logUpper() const { return logScale_ + std::log1p(-less_); }
  // P(0 < T <= x), which for few degrees of freedom is small.
  static double inside(double x, double nu, double delta);
  double density() const;
  double logDensity() const;

 private:
  double x_;
  double nu_;
  double less_;  // k / x^2
  double scale_;
  double logScale_;
};

// delta > 0 so great that T is delta over its chi variable but for rounding: P(T <= x) is the upper
// tail of a gamma law.
class StudentDistant {
 public:
  static constexpr double from = 1e13;
  // With more degrees of freedom the normal variable counts: all is NaN.
  static constexpr double mostFreedom = 1e8;

  StudentDistant(double nu, double delta) : nu_(nu), delta_(delta), gamma_(0.5 * nu) {}
  double tail(double x, Tail which) const;
  double logTail(double x, Tail which) const;
  double density(double x) const;
  double logDensity(double x) const;
  double quantile(double p, Tail which) const;

 private:
  double argument(double x) const;
  double plainLogDensity(double x) const;
  // Whether the normal variable counts at x, which only logarithms feel.
  bool close(double x) const;

  double nu_;
  double delta_;
  GammaLaw gamma_;
};

}  // namespace nag2
