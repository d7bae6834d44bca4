// Central moments of E^h for a standard exponential E, in units of the mean's powers.
#pragma once

namespace vexel::detail {

struct WeibullMoments {
  double second;
  double third;
  double fourth;
};

// h > 0, the inverse of the Weibull law's shape.
WeibullMoments weibullMoments(double h);

}  // namespace vexel::detail
