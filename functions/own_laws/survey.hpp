// Where a density has its mass: a first look, before the tables are built.
#pragma once

#include <vector>

#include "functions/own_laws/evaluator.hpp"

namespace vexel::own_laws {

struct Survey {
  double mode = 0;       // near the largest value found, exactly at an end it tends to
  double logPeak = 0;    // logarithm of that value
  double leftWidth = 0;  // to where the density is e times smaller, or to the end
  double rightWidth = 0;
  std::vector<double> breaks{};  // around other maxima that were seen
};

// About 300 values.  std::invalid_argument if all are 0.
Survey surveyed(DensityValues& f, double hint);

// Points spread over the support: evenly where it is finite, by powers of two from `center` (or the
// finite end) where it is not; ascending, inside the support, the hint with its neighbourhood among
// them.
std::vector<double> surveyPoints(Interval support, double hint);

}  // namespace vexel::own_laws
