// Student's t: density, both tails, quantiles from either tail, and their logarithms.
#pragma once

#include "numerics/laws/gamma_law.hpp"

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

  // For many finite x at a time: the tail beyond |x| as outer(place, factor, value), where value is
  // betaSeries(seriesA(place), seriesN(), argument), or at the place between
  // betaFraction(0.5 nu, 0.5, argument, excess); the normal law has neither.
  enum class Place { centre, between, far, normal };
  struct Parts {
    double argument;
    double excess;
    double factor;
  };
  Place partsAt(double x, Parts& parts) const;
  double seriesA(Place place) const { return place == Place::centre ? 0.5 : 0.5 * nu_; }
  double seriesN() const { return 0.5 * nu_ + 0.5; }
  double outer(Place place, double factor, double value) const;
  // The tail at x from the one beyond |x|.
  static double tailFrom(double beyond, double x, Tail which) {
    return (which == Tail::lower) == (x < 0.0) ? beyond : 1.0 - beyond;
  }

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
