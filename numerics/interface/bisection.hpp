// Inverting a monotone tail probability.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>

namespace nag2 {

struct Bracket {
  double low;   // >= 0
  double high;  // finite
};

// x in the bracket where tail(x) = target, tail monotone (falling or rising) with |tail'| =
// density.
//
// Newton steps from start; if they do not settle, halving of the bracket in the ordering of the
// doubles, which takes at most 64 evaluations.  A root outside the bracket gives the nearer end.
template <typename Tail, typename Density>
double invertTail(Tail tail, Density density, double target, bool falling, double start,
                  Bracket bracket) {
  const double sign = falling ? -1.0 : 1.0;
  double x = start;
  double lastStep = INFINITY;
  for (int i = 0; i < 6 && x > bracket.low && x <= bracket.high; ++i) {
    const double step = sign * (tail(x) - target) / density(x);
    if (!std::isfinite(step) || std::fabs(step) > 0.5 * x) {
      break;
    }
    x -= step;
    // Quadratic convergence: after a step of relative size 1e-9 the next one would be below
    // epsilon.
    if (std::fabs(step) < 1e-9 * x || (std::fabs(step) >= lastStep && std::fabs(step) < 1e-7 * x)) {
      return x > bracket.high ? bracket.high : x;
    }
    lastStep = std::fabs(step);
  }
  auto low = std::bit_cast<std::uint64_t>(bracket.low);
  auto high = std::bit_cast<std::uint64_t>(bracket.high);
  while (high - low > 1) {
    const std::uint64_t middle = low + (high - low) / 2;
    const double difference = sign * (tail(std::bit_cast<double>(middle)) - target);
    if (difference < 0.0) {
      low = middle;
    } else {
      high = middle;
    }
  }
  // A root below the least positive double is 0.
  return high == 1 ? 0.0 : std::bit_cast<double>(high);
}

}  // namespace nag2
