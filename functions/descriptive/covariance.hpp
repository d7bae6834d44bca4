// Sums of products of several variables.
#pragma once

#include <cstddef>
#include <vector>

#include "functions/data/rows.hpp"
#include "kernels/double_double.hpp"

namespace vexel {

// Covariances with divisor n, of column i and j in units of 2^(exponent i + exponent j).
struct Comoments {
  bool defined = false;  // false: all NaN
  kernels::DoubleDouble weight = {};
  std::vector<int> exponents = {};
  std::vector<bool> infinite = {};                 // columns with an infinite point
  std::vector<kernels::DoubleDouble> values = {};  // rows of the upper triangle

  // The place of i <= j among the values.
  std::size_t at(std::size_t i, std::size_t j) const {
    return i * exponents.size() - i * (i + 1) / 2 + j;
  }
};

// With diagonal false, of two columns: their covariance alone.
Comoments comoments(Rows& rows, bool diagonal);

}  // namespace vexel
