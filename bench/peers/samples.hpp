// The samples that the jobs are run on.
#pragma once

#include <cstddef>
#include <random>
#include <vector>

#include "stopwatch.hpp"

using Doubles = std::vector<double>;

inline Doubles normals(std::size_t n) {
  std::mt19937_64 random(1);
  std::normal_distribution<double> normal(10.0, 2.0);
  Doubles x(n);
  for (double& v : x) {
    v = normal(random);
  }
  return x;
}

// Runs f on fresh copies; the copy is part of the time for every peer that works in place, as it is
// part of what the entry points do.
template <typename F>
auto onCopy(const Doubles& x, F f) {
  return [&x, f] {
    Doubles copy = x;
    f(copy);
    keep(copy.data());
  };
}
