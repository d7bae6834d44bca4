// Inversion of a discrete law from its mode outwards: for spreads of about ten at most.
//
// One variate adds up probabilities, of the mode, one above, one below, two above and so on, until
// they pass its uniform.  For many, the same sums are kept in a table, with a guide to where the
// search for a uniform begins (H.-C. Chen and Y. Asau, On generating random variates from an
// empirical distribution, 1974).  Both give the same values.
#pragma once

#include <cstdint>
#include <vector>

#include "kernels/variates/ziggurat.hpp"

namespace vexel::kernels {

// Terms of a law on 0 .. high(): first() is the probability of mode(), above(p, k) that of k from
// p, that of k - 1, and below(p, k) that of k from p, that of k + 1.  The walk begins at mode(),
// which may be any value at hand; from peak() on probabilities fall.
template <typename Terms>
class ModeSearch {
 public:
  explicit ModeSearch(const Terms& terms) : terms_(terms) {}

  void tabulate() {
    Walk walk(terms_);
    do {
      if (sums_.empty() || walk.sum > sums_.back()) {
        sums_.push_back(walk.sum);
        values_.push_back(walk.k);
      }
    } while (walk.advance(terms_));
    sums_.push_back(2);  // above every uniform
    values_.push_back(walk.k);
    guide_.resize(guideSize);
    std::uint32_t j = 0;
    for (std::uint32_t cell = 0; cell < guideSize; ++cell) {
      while (sums_[j] <= static_cast<double>(cell) / guideSize) {
        ++j;
      }
      guide_[cell] = j;
    }
  }

  template <typename Source>
  double operator()(Source& source) const {
    const std::uint64_t bits = source.bits();
    const double u = unitInterval(bits);
    if (!guide_.empty()) {
      std::uint32_t j = guide_[bits >> 54];
      while (u >= sums_[j]) {
        ++j;
      }
      return values_[j];
    }
    Walk walk(terms_);
    while (u >= walk.sum && walk.advance(terms_)) {
    }
    return walk.k;
  }

 private:
  static constexpr std::uint32_t guideSize = 1024;

  struct Walk {
    explicit Walk(const Terms& terms)
        : mode(terms.mode()),
          k(mode),
          sum(terms.first()),
          highest(mode),
          lowest(mode),
          pHighest(sum),
          pLowest(sum) {}

    // To the next value; back to the mode, and false, when neither side adds anything any more.
    bool advance(const Terms& terms) {
      const double before = sum;
      if (upwards) {
        ++highest;
        pHighest = highest <= terms.high() ? terms.above(pHighest, highest) : 0;
        sum += pHighest;
        k = highest;
      } else {
        --lowest;
        pLowest = lowest >= 0 ? terms.below(pLowest, lowest) : 0;
        sum += pLowest;
        k = lowest;
      }
      upwards = !upwards;
      idle = sum == before && highest > terms.peak() ? idle + 1 : 0;
      if (idle == 2) {
        k = mode;
        return false;
      }
      return true;
    }

    double mode;
    double k;
    double sum;  // of the probabilities up to that of k, in the order of the walk
    double highest;
    double lowest;
    double pHighest;
    double pLowest;
    bool upwards = true;
    int idle = 0;
  };

  Terms terms_;
  std::vector<double> sums_;
  std::vector<double> values_;
  std::vector<std::uint32_t> guide_;
};

}  // namespace vexel::kernels
