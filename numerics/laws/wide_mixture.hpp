// Poisson mixtures whose products are spread over many indices.
//
// There the terms are an analytic function of the index, wide against 1: their sum is its integral
// but for exp(-2 pi^2 spread^2), and so is the sum of every h-th one times h as long as h stays
// below half the spread.  Some fifty central tails serve whatever the mean.
#pragma once

#include <cmath>
#include <initializer_list>
#include <limits>

#include "numerics/laws/gamma_law.hpp"

namespace nag2 {

// Sums in units of exp(logUnit), the largest product, which may underflow.
struct MixtureSums {
  double unit;     // exp(logUnit), or 0
  double logUnit;  // only where unit is 0
  double tail;
  double density;    // sum of w d (a + j)
  double meanIndex;  // of the density's terms
  bool whole;        // the tail has the central law's upper one in it
};

inline constexpr double wideFrom = 2e3;  // the index of the largest product
inline constexpr double widest = 1e28;

// The terms of one mixture: Poisson weights over that at the centre, central tails and decrements;
// where these may underflow, over their values at the centre too.
template <typename Family>
class WideTerms {
 public:
  WideTerms(const Family& family, double mean, Tail which, double centre, bool asLog)
      : family_(family), mean_(mean), which_(which), atCentre_(logWeight(centre)), asLog_(asLog) {
    const double tail = family.tailAt(centre, which);
    if (!(atCentre_ > -600.0 && tail > 1e-250 && decrement(centre) > 1e-250)) {
      asLog_ = true;
    }
    reference_ = asLog_ ? family.logTailAt(centre, which) : 0.0;
  }

  struct Term {
    double tail;
    double density;
  };
  double rounding() const { return asLog_ ? 1e-15 * std::fabs(atCentre_ + reference_) : 0.0; }
  Term at(double j) const {
    const double weight = logWeight(j) - atCentre_;
    const double power = family_.shape() + j;
    if (asLog_) {
      return {std::exp(weight + (family_.logTailAt(j, which_) - reference_)),
              std::exp(weight + (family_.logDecrement(j) - reference_)) * power};
    }
    const double w = std::exp(weight);
    return {w * family_.tailAt(j, which_), w * decrement(j) * power};
  }
  // The unit of sums of every step-th term.
  void scale(double step, MixtureSums* sums) const {
    sums->logUnit = atCentre_ + reference_ + std::log(step);
    sums->unit = asLog_ ? 0.0 : std::exp(atCentre_) * step;
  }

 private:
  double logWeight(double j) const {
    const double index = j + family_.offset();
    return PowerPiece(index).logAt(mean_, mean_ - index);
  }
  double decrement(double j) const {
    const Piece piece = family_.decrement(j);
    return piece.factor * std::exp(-piece.exponent);
  }

  const Family& family_;
  double mean_;
  Tail which_;
  double atCentre_;
  bool asLog_;
  double reference_ = 0.0;
};

// The sums far from the mean, where logarithms of terms are too great to be summed: those of the
// normal law of the products about their peak, of which the tail is a slowly changing multiple.
// False where what is left out would be seen in the logarithm.
template <typename Family>
bool deepSums(const Family& family, double mean, Tail which, double peak, MixtureSums* sums) {
  if ((which == Tail::lower) != family.belowMean(mean)) {
    return false;
  }
  const double index = peak + family.offset();
  const double logProduct = PowerPiece(index).logAt(mean, mean - index) + family.logDecrement(peak);
  const double least = std::fmax(std::fmax(3e7, 1e14 / peak), 1e-20 * (family.shape() + mean));
  if (!(logProduct < -least)) {
    return false;
  }
  sums->unit = 0.0;
  sums->logUnit = logProduct - 0.5 * std::log(family.curve(peak)) + logRootTwoPi;
  // At least the decrement, and no more than so many of them as anyone sees.
  const double tail = family.logTailAt(peak, which) - family.logDecrement(peak);
  sums->tail = std::exp(std::fmin(std::fmax(tail, 0.0), 600.0));
  sums->density = family.shape() + peak;
  sums->meanIndex = peak;
  sums->whole = true;
  return std::isfinite(sums->logUnit);
}

// The sums with a step; false where every other term alone gives something else, or terms are too
// many.
template <typename Terms>
bool sumEvery(const Terms& terms, double centre, double step, MixtureSums* sums) {
  constexpr int mostNodes = 4000;
  double tails[2] = {0.0, 0.0};
  double densities[2] = {0.0, 0.0};
  double moment = 0.0;  // about the centre
  for (const double side : {1.0, -1.0}) {
    for (int k = side > 0.0 ? 0 : 1;; ++k) {
      const double shift = side * k * step;
      if (k > mostNodes) {
        return false;
      }
      if (centre + shift <= 0.0) {
        break;
      }
      const auto term = terms.at(centre + shift);
      tails[k & 1] += term.tail;
      densities[k & 1] += term.density;
      moment += term.density * shift;
      if (!(term.tail > 1e-18 * (tails[0] + tails[1]) ||
            term.density > 1e-18 * (densities[0] + densities[1]))) {
        break;
      }
    }
  }
  sums->tail = tails[0] + tails[1];
  sums->density = densities[0] + densities[1];
  sums->meanIndex = centre + moment / sums->density;
  // The full sum's error is its square; of a great logarithm the terms' own errors count less.
  const double near = 2e-8 + terms.rounding();
  return std::fabs(tails[0] - tails[1]) <= near * sums->tail &&
         std::fabs(densities[0] - densities[1]) <= near * sums->density;
}

// peak and spread: of the products.  NaN where nothing converges.
template <typename Family>
MixtureSums wideSums(const Family& family, double mean, Tail which, double peak, double spread,
                     bool asLog) {
  constexpr double nan = std::numeric_limits<double>::quiet_NaN();
  MixtureSums sums{1.0, 0.0, nan, nan, nan, true};
  if (asLog && deepSums(family, mean, which, peak, &sums)) {
    return sums;
  }
  if (!(peak < widest && mean < widest)) {
    sums.unit = nan;
    sums.logUnit = nan;
    return sums;
  }
  double step = std::exp2(std::floor(std::log2(0.5 * spread)));
  for (int attempt = 0; attempt < 5; ++attempt) {
    const double centre = std::floor(peak / step) * step;
    const WideTerms<Family> terms(family, mean, which, centre, asLog);
    if (sumEvery(terms, centre, step, &sums)) {
      terms.scale(step, &sums);
      return sums;
    }
    step *= 0.5;
  }
  sums.tail = sums.density = sums.meanIndex = nan;
  return sums;
}

}  // namespace nag2
