// Student's t: density, both tails, quantiles from either tail, and their logarithms.
#pragma once

#include "gamma_law.hpp"

namespace nag2 {

// Any nu > 0 up to infinity and any x.  Relative error of values and logarithms within 1e-14
// max(1, k), k the condition number with respect to x.
class StudentLaw {
 public:
  explicit StudentLaw(double nu);

  double density(double x) const;
  double logDensity(double x) const;
  double tail(double x, Tail which) const;
  double logTail(double x, Tail which) const;
  // x with the given tail p in [0, 1].
  double quantile(double p, Tail which) const;

 private:
  double power(double x) const;
  double timesPower(double x) const;
  double logPower(double x) const;
  bool nearCentre(double x) const;
  double central(double x) const;
  double outerFactor(double x) const;
  double outer(double x) const;
  double logOuter(double x) const;
  double positiveQuantile(double q) const;
  double hill(double q) const;

  double nu_;
  double peak_;  // density at 0
};

}  // namespace nag2
