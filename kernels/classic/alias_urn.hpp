// Indices with given weights in constant time: Walker's alias method (A. J. Walker, An efficient
// method for generating discrete random variables with general distributions, 1977), its tables
// laid out as by Vose's two worklists.
#pragma once

#include <cstdint>
#include <vector>

#include "kernels/classic/uniforms.hpp"

namespace vexel::kernels::classic {

// An urn of m cells for n <= m weights; cells beyond the n-th are padding of weight 0.
//
// Weights are not checked.  Impossible ones (negative, NaN, all zero) make odd laws, but every
// index drawn lies in the urn.
class AliasUrn {
 public:
  AliasUrn() = default;
  AliasUrn(int m, int n, const double* weights) { reset(m, n, weights); }

  // Builds the tables anew from n weights, which are not kept.  m = 0 leaves the urn without cells.
  void reset(int m, int n, const double* weights);

  // One index of an urn that has cells.  Draws integers until one is a cell, then a uniform unless
  // the cell is padding.
  template <typename Uniforms>
  int next(Uniforms& uniforms) const {
    const std::uint32_t k = indexUpTo(uniforms, static_cast<std::uint32_t>(m_) - 1U, shift_);
    const Cell& cell = cells_[k];
    if (k >= static_cast<std::uint32_t>(n_)) [[unlikely]] {
      return cell.alias;
    }
    // Without a branch: which of the two it is cannot be predicted.
    const auto own = static_cast<std::int32_t>(k);
    const bool other = !(cell.cutoff >= uniforms.unit());
    return own ^ ((own ^ cell.alias) & -static_cast<std::int32_t>(other));
  }

  // A cell keeps its own index with probability cutoff and gives alias otherwise.
  struct Cell {
    double cutoff;
    std::int32_t alias;
  };
  const std::vector<Cell>& cells() const { return cells_; }

 private:
  std::int32_t n_ = 0;
  std::int32_t m_ = 0;
  int shift_ = 31;
  std::vector<Cell> cells_;
};

}  // namespace vexel::kernels::classic
