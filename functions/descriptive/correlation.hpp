// Correlations by rank.
#pragma once

#include <cstddef>
#include <functional>
#include <vector>

#include "functions/data/rows.hpp"
#include "functions/descriptive/covariance.hpp"

namespace vexel {

// Entry (i, j) of a matrix of correlations.
using CorrelationEntry = std::function<double(std::size_t i, std::size_t j)>;

// Of columns i and j.
double pearsonOf(const Comoments& all, std::size_t i, std::size_t j);
double spearman(const Rows& rows, std::size_t i, std::size_t j);
double kendall(const Rows& rows, std::size_t i, std::size_t j);

// A copy of the rows in which nothing is missing, which every pair of columns then shares.
class CompleteRows {
 public:
  explicit CompleteRows(const Rows& rows);
  Rows rows() const;

 private:
  const char* function_;
  std::vector<std::vector<double>> columns_;
  std::vector<double> weights_;  // none without weights
};

}  // namespace vexel
