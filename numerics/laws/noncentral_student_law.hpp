// The non-central t law: density, both tails, quantiles from either tail, and their logarithms.
#pragma once

#include "numerics/laws/gamma_law.hpp"

namespace nag2 {

// (Z + delta) / sqrt(chi-square(nu) / nu), nu > 0 up to infinity, any finite delta.  Relative error
// of values and logarithms within 1e-14 max(1, k), k the largest of the condition numbers with
// respect to x and delta, up to |delta| = 1e3; 3.3e-14 with less than two degrees of freedom and
// |delta| > 20.  NaN beyond 1e13 with more than 1e8 degrees of freedom, and for some logarithms
// there (student_extremes.hpp).
class NoncentralStudentLaw {
 public:
  // A delta of less than 1e-17 moves nothing by more than a last place.
  NoncentralStudentLaw(double nu, double delta)
      : nu_(nu), delta_(delta < 1e-17 && delta > -1e-17 ? 0.0 : delta) {}

  double density(double x) const;
  double logDensity(double x) const;
  double tail(double x, Tail which) const;
  double logTail(double x, Tail which) const;
  double quantile(double p, Tail which) const;

 private:
  // For x > 0 and a delta of either sign.
  struct Point {
    double lower;
    double upper;
    double density;
    double bend;  // 1 + x f' / f
  };
  Point pointAt(double x, double delta, bool wantUpper) const;
  double positiveTail(double x, double delta, Tail which) const;
  double logPositiveTail(double x, double delta, Tail which) const;
  double positiveDensity(double x, double delta, bool log) const;
  double start(double p, Tail which) const;

  double nu_;
  double delta_;
};

}  // namespace nag2
