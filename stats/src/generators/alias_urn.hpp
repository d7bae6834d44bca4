// Indices with given weights in constant time: Walker's alias method (A. J. Walker, An efficient
// method for generating discrete random variables with general distributions, 1977), its tables
// laid out as by Vose's two worklists.
#pragma once

#include <cstdint>
#include <vector>

#include "distributions/uniform_source.hpp"

// An urn of m cells for n <= m weights; cells beyond the n-th are padding of weight 0.
//
// Weights are not checked.  Impossible ones (negative, NaN, all zero) make odd laws, but every
// index drawn lies in the urn.
class STATS_AliasUrnGenerator_HW {
 public:
  STATS_AliasUrnGenerator_HW() = default;
  STATS_AliasUrnGenerator_HW(int m, int n, const double* weights) { Reset(m, n, weights); }

  // Builds the tables anew from n weights, which are not kept.  m = 0 leaves the urn without cells.
  void Reset(int m, int n, const double* weights);

  // One index.  Draws integers until one is a cell, then a uniform unless the cell is padding.  An
  // urn without cells raises a host error.
  int Next() {
    const auto cells = static_cast<std::uint32_t>(m_);
    if (cells == 0) {
      raiseNoCells();
    }
    std::uint32_t k;
    do {
      k = static_cast<std::uint32_t>(STATS_VexelRandomStream_HW::NextInteger()) >> shift_;
    } while (k >= cells);
    if (k < static_cast<std::uint32_t>(n_) &&
        cutoff_[k] >= STATS_VexelRandomStream_HW::NextDouble()) {
      return static_cast<int>(k);
    }
    return alias_[k];
  }

  // The tables, for inspection: cell k keeps its own index with probability cutoffs()[k] and gives
  // aliases()[k] otherwise.
  const std::vector<double>& cutoffs() const { return cutoff_; }
  const std::vector<std::int32_t>& aliases() const { return alias_; }

 private:
  [[noreturn]] static void raiseNoCells();

  std::int32_t n_ = 0;
  std::int32_t m_ = 0;
  int shift_ = 31;
  std::vector<std::int32_t> alias_;
  std::vector<double> cutoff_;
};
