// Inversion of a discrete law on 0, 1, 2, ... from the bottom: for means of a few tens at most.
//
// One variate adds up probabilities until they pass its uniform.  For many, the same sums are kept
// in a table, with a guide to where the search for a uniform begins (H.-C. Chen and Y. Asau, On
// generating random variates from an empirical distribution, 1974).  Both give the same values.
#pragma once

#include <cstdint>
#include <vector>

#include "kernels/variates/ziggurat.hpp"

namespace vexel::kernels {

// Terms: first() is the probability of 0, next(term, k) that of k from that of k - 1, mean() where
// terms no longer grow.
template <typename Terms>
class SequentialSearch {
 public:
  explicit SequentialSearch(const Terms& terms) : terms_(terms) {}

  void tabulate() {
    double term = terms_.first();
    double sum = term;
    sums_.push_back(sum);
    for (double k = 1; advance(term, sum, k); ++k) {
      sums_.push_back(sum);
    }
    guide_.resize(guideSize);
    std::uint32_t k = 0;
    for (std::uint32_t cell = 0; cell < guideSize; ++cell) {
      while (k + 1 < sums_.size() && sums_[k] <= static_cast<double>(cell) / guideSize) {
        ++k;
      }
      guide_[cell] = k;
    }
    sums_.back() = 1;  // above every uniform
  }

  template <typename Source>
  double operator()(Source& source) const {
    const std::uint64_t bits = source.bits();
    const double u = unitInterval(bits);
    if (!guide_.empty()) {
      std::uint32_t k = guide_[bits >> 54];
      while (u >= sums_[k]) {
        ++k;
      }
      return k;
    }
    double term = terms_.first();
    double sum = term;
    double k = 0;
    while (u >= sum && advance(term, sum, k + 1)) {
      ++k;
    }
    return k;
  }

 private:
  static constexpr std::uint32_t guideSize = 1024;

  // To the sum up to k; false when k and all behind it add nothing any more.
  bool advance(double& term, double& sum, double k) const {
    term = terms_.next(term, k);
    const double before = sum;
    sum += term;
    return sum != before || k < terms_.mean();
  }

  Terms terms_;
  std::vector<double> sums_;
  std::vector<std::uint32_t> guide_;
};

}  // namespace vexel::kernels
