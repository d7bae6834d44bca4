// Poisson mixtures of the central gamma and beta laws, their first parameter raised by the index.
//
// With Poisson weights w(j) and the decrements d(j) of the central lower tail from j to j + 1, the
// lower tail is the sum of w(j) (d(j) + d(j + 1) + ...), the upper one the central law's plus the
// sum of d(j) (w(j + 1) + w(j + 2) + ...), the density one of w(j) d(j): all terms positive.  The
// sums begin above the largest product w(j) d(j), where everything is negligible or known, and go
// down by multiplications alone.
#pragma once

#include <cmath>

#include "kernels/lookout.hpp"
#include "numerics/laws/gamma_law.hpp"
#include "numerics/laws/wide_mixture.hpp"

namespace nag2 {

// Sum of mean^k / ((n + 1) ... (n + k)), k > 0: the weights above n over that at n.  A rough one is
// enough where the products there are no more than rounding.
inline double weightsAbove(double mean, double n, bool rough) {
  if (!rough) {
    return mean / (n + 1.0) * GammaLaw(n + 1.0).overWeight(mean, Tail::lower);
  }
  double sum = 0.0;
  double term = 1.0;
  do {
    n += 1.0;
    term *= mean / n;
    sum += term;
  } while (term > 1e-9 * sum);
  return sum;
}

// A family has shape(), the parameter a; offset(), which the weights' index is raised by (0 or
// 1/2); tailAt(j, which) and logTailAt, the central tails; peak(mean), the index of the largest
// product; curve(j), the negative second difference of its logarithm there; fall(), d(1) / d(0);
// growth(j) = d(j) / d(j + 1); decrement(j) as a Piece and logDecrement(j); lowerTerms(j), the
// lower tail at j over d(j).

// Where the sums begin: nine and a half standard deviations of the normal law of the products above
// the peak, and the skewness; few terms where they fall fast from the first one on.
template <typename Family>
double topIndex(const Family& family, double mean, double peak, double spread) {
  const double fall = mean * family.fall();
  return fall < 0.01 ? std::floor(1.0 - 45.0 / std::log(fall))
                     : std::floor(peak + 9.5 * spread + 12.0);
}

// Makes the product at the peak, atPeak as it was summed, the unit.
template <typename Family>
void scaleSums(const Family& family, double mean, double peak, const PowerPiece& poisson,
               double atPeak, bool asLog, MixtureSums* sums) {
  const double correction = 1.0 / atPeak;
  sums->tail *= correction;
  sums->density *= correction;
  const double excess = mean - (peak + family.offset());
  const Piece p = poisson.at(mean, excess);
  const Piece q = family.decrement(peak);
  const double exponent = p.exponent + q.exponent;
  sums->unit = p.factor * q.factor * std::exp(-exponent);
  if (asLog || !(sums->unit > 1e-290)) {
    sums->logUnit = poisson.logAt(mean, excess) + family.logDecrement(peak);
    sums->unit = asLog ? 0.0 : sums->unit;
  }
}

template <typename Family>
MixtureSums mixtureSums(const Family& family, double mean, Tail which, bool asLog) {
  const double offset = family.offset();
  const double peak = std::floor(family.peak(mean));
  const double spread = 1.0 / std::sqrt(family.curve(peak));
  if (peak > wideFrom) {
    const double index = peak + offset;
    if (!asLog &&
        PowerPiece(index).logAt(mean, mean - index) + family.logDecrement(peak) < -900.0) {
      return {1.0, 0.0, 0.0, 0.0, peak, false};  // the sums underflow
    }
    return wideSums(family, mean, which, peak, spread, asLog);
  }
  if (!(mean < 1e20)) {  // next to the weights' own factor nothing counts
    return {0.0, -mean, 1.0, 1.0, 0.0, true};
  }
  const double top = topIndex(family, mean, peak, spread);
  MixtureSums sums{0.0, 0.0, 0.0, 0.0, 0.0, false};
  const PowerPiece poisson(peak + offset);
  double w = 1.0;
  double d = 1.0;
  // Lower: the central tail at j; upper: the weights above j.
  double rest = which == Tail::lower ? family.lowerTerms(top)
                                     : weightsAbove(mean, top + offset, !family.belowMean(mean));
  if (!std::isfinite(rest)) {
    rest = 0.0;  // the law lies far below: this tail is nearly 1 and nobody's sum
  }
  const double inverse = 1.0 / mean;
  const double shape = family.shape();
  double moment = 0.0;
  double atPeak = 1.0;
  // What the rounding of the reciprocals adds in so many steps is taken away again.
  constexpr int stride = 16;
  const double weightDrift = 1.0 - stride * std::fma(inverse, mean, -1.0);
  const double growthDrift = 1.0 - stride * family.drift();
  // Of next to no shape the term of index 0 is larger than all before it.
  const double jump = shape < 1e-6 ? std::fmax(1.0, family.growth(0.0)) : 1.0;
  double j = top;
  constexpr int termCost = 10;  // operations, near enough
  vexel::kernels::Lookout lookout;
  for (int step = 1;; ++step) {
    const double product = w * d * (shape + j);
    sums.density += product;
    moment += product * j;
    const double term = (which == Tail::lower ? w : d) * rest;
    sums.tail += term;
    if (j <= 0.0 || (j < peak && term * jump * (1.0 + spread) < 1e-18 * sums.tail &&
                     product * (1.0 + spread) < 1e-18 * sums.density)) {
      break;
    }
    j -= 1.0;
    if (which == Tail::upper) {
      rest += w;
    }
    w *= (j + 1.0 + offset) * inverse;
    d *= family.growth(j);
    if (step == stride) {
      w *= weightDrift;
      d *= growthDrift;
      step = 0;
      lookout.done(std::int64_t{stride} * termCost);
    }
    if (which == Tail::lower) {
      rest += d;
    }
    if (j == peak) {
      atPeak = w * d;
    }
    // The product stays, its factors may drift apart.
    if (w > 1e150 || d > 1e150) {
      const double turn = w > d ? 1e-150 : 1e150;
      w *= turn;
      d /= turn;
      rest = which == Tail::lower ? rest / turn : rest * turn;
    }
  }
  sums.meanIndex = moment / sums.density;
  scaleSums(family, mean, peak, poisson, atPeak, asLog, &sums);
  return sums;
}

// sum * unit, where the unit alone may underflow.
inline double inUnits(double sum, const MixtureSums& sums) {
  if (sum == 0.0) {
    return 0.0;
  }
  return sums.unit > 1e-290 ? sum * sums.unit : std::exp(sums.logUnit + std::log(sum));
}

inline double logInUnits(double sum, const MixtureSums& sums) {
  return std::log(sum) + sums.logUnit;
}

// log(exp(x) + exp(y)).
inline double logSum(double x, double y) {
  const double high = std::fmax(x, y);
  return high == -HUGE_VAL ? high : high + std::log1p(std::exp(std::fmin(x, y) - high));
}

// The side whose sum is short; the density's terms are the same on both.
template <typename Family>
Tail shortSide(const Family& family, double mean) {
  return family.belowMean(mean) ? Tail::lower : Tail::upper;
}

// A tail, with the density times the argument and the mean index of its terms.
struct MixturePoint {
  double tail;
  double density;
  double meanIndex;
};

// For a small mean upwards from the index 0: the central upper tail and its decrement there, then
// additions alone.  False where terms are many or the first one underflows.
template <typename Family>
bool sumUpwards(const Family& family, double mean, MixturePoint* upper) {
  constexpr double mostUpward = 32.0;
  const double peak = family.peak(mean);
  if (!(mean < mostUpward && peak < 2.0 * mostUpward)) {
    return false;
  }
  const Piece first = family.decrement(0.0);
  double d = first.factor * std::exp(-first.exponent);
  if (!(d > 1e-250 && d < 1e250)) {
    return false;
  }
  double w = std::exp(-mean);
  double q = family.centralUpper();
  double moment = 0.0;
  *upper = {0.0, 0.0, 0.0};
  const double shape = family.shape();
  for (double j = 0.0; j < 300.0; j += 1.0) {
    const double product = w * d * (shape + j);
    upper->density += product;
    moment += product * j;
    const double term = w * q;
    upper->tail += term;
    if (j > peak && term < 1e-17 * upper->tail && product < 1e-17 * upper->density) {
      upper->meanIndex = moment / upper->density;
      return true;
    }
    q += d;
    w *= mean / (j + 1.0);
    d *= family.ratio(j);
  }
  return false;
}

// The sum of the smaller tail, and of the other where that has no digits left.
template <typename Family>
MixturePoint mixturePoint(const Family& family, double mean, Tail which) {
  // Only where the lower tail has digits left as a complement: tails then add up to 1.
  if (MixturePoint upper{};
      !family.farBelowMean(mean) && sumUpwards(family, mean, &upper) && upper.tail < 0.85) {
    if (which == Tail::lower) {
      upper.tail = 1.0 - upper.tail;
    }
    return upper;
  }
  const auto direct = [&](Tail side) {
    const MixtureSums sums = mixtureSums(family, mean, side, false);
    const double value = inUnits(sums.tail, sums);
    return MixturePoint{side == Tail::lower || sums.whole ? value : value + family.centralUpper(),
                        inUnits(sums.density, sums), sums.meanIndex};
  };
  const Tail small = shortSide(family, mean);
  MixturePoint point = direct(small);
  if (small == Tail::upper && family.longUpper() && point.tail > 0.3) {
    point.tail = 1.0 - direct(Tail::lower).tail;
  }
  if (small != which) {
    point.tail = point.tail < 0.7 ? 1.0 - point.tail : direct(which).tail;
  }
  return point;
}

template <typename Family>
double mixtureTail(const Family& family, double mean, Tail which) {
  return mixturePoint(family, mean, which).tail;
}

template <typename Family>
double logMixtureTail(const Family& family, double mean, Tail which) {
  const double other = mixtureTail(family, mean, which == Tail::lower ? Tail::upper : Tail::lower);
  if (other < 0.5) {
    return std::log1p(-other);
  }
  const MixtureSums sums = mixtureSums(family, mean, which, true);
  const double log = logInUnits(sums.tail, sums);
  return which == Tail::lower || sums.whole ? log : logSum(log, family.logCentralUpper());
}

}  // namespace nag2
