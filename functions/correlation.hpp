// Correlations by rank.
#pragma once

#include <cstddef>
#include <functional>

#include "functions/covariance.hpp"
#include "functions/rows.hpp"

namespace vexel {

// Entry (i, j) of a matrix of correlations.
using CorrelationEntry = std::function<double(std::size_t i, std::size_t j)>;

// Of columns i and j.
double pearsonOf(const Comoments& all, std::size_t i, std::size_t j);
double spearman(const Rows& rows, std::size_t i, std::size_t j);
double kendall(const Rows& rows, std::size_t i, std::size_t j);

}  // namespace vexel
