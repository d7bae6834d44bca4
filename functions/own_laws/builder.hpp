// Cuts the support into segments until each is one polynomial, to the error that is asked for.
#pragma once

#include <functional>
#include <span>
#include <vector>

#include "functions/own_laws/segment.hpp"
#include "vexel/interval.hpp"

namespace vexel::own_laws {

struct Plan {
  Interval support;
  double mode;       // segments go out from here
  double leftWidth;  // length of the first one to each side; 0: none
  double rightWidth;
  std::vector<double> breaks;
  double tolerance;         // of a segment, as a share of the mass
  double negligible;        // what may be left out in a tail, as a share of the mass
  std::size_t evaluations;  // how many values may be taken
  bool cumulative;          // values are of a distribution function, not of a density
};

struct Built {
  std::vector<Segment> segments;  // ascending; masses as they come
  double mass = 0;
  double error = 0;  // estimate, as a share of the mass
};

using Values = std::function<void(std::span<const double> x, std::span<double> y)>;

// std::invalid_argument for a mass that is infinite.  What remains unresolved when the evaluations
// are used up shows in the error.
Built build(const Values& values, const Plan& plan);

}  // namespace vexel::own_laws
