// The central laws whose Poisson mixtures the non-central ones are (noncentral_mixture.hpp).
#pragma once

#include "numerics/laws/beta_law.hpp"

namespace nag2 {

// Tails P(a + j, y) of the gamma law.
class GammaFamily {
 public:
  GammaFamily(double a, double y) : a_(a), y_(y), inverse_(1.0 / y) {}

  double shape() const { return a_; }
  static double offset() { return 0.0; }
  bool belowMean(double mean) const { return y_ < a_ + mean; }
  bool farBelowMean(double mean) const {
    const double below = a_ + mean - y_;
    return below > 0.0 && below * below > a_ + 2.0 * mean;
  }
  // j (a + j) = mean y.
  double peak(double mean) const {
    const double c = mean * y_;
    return 2.0 * c / (a_ + std::sqrt(a_ * a_ + 4.0 * c));
  }
  double curve(double j) const { return 1.0 / (j + 1.0) + 1.0 / (a_ + j + 1.0); }
  double fall() const { return y_ / (a_ + 1.0); }
  double growth(double j) const { return (a_ + j + 1.0) * inverse_; }
  double ratio(double j) const { return y_ / (a_ + j + 1.0); }
  double drift() const { return std::fma(inverse_, y_, -1.0); }
  Piece decrement(double j) const {
    const Piece p = PowerPiece(a_ + j).at(y_, y_ - (a_ + j));
    return {p.factor * (1.0 + lost(j)), p.exponent};
  }
  double logDecrement(double j) const {
    return PowerPiece(a_ + j).logAt(y_, y_ - (a_ + j)) + lost(j);
  }
  double lowerTerms(double j) const { return GammaLaw(a_ + j).overWeight(y_, Tail::lower); }
  double tailAt(double j, Tail which) const { return GammaLaw(a_ + j).tail(y_, which); }
  double logTailAt(double j, Tail which) const { return GammaLaw(a_ + j).logTail(y_, which); }
  double centralUpper() const { return GammaLaw(a_).upper(y_); }
  double logCentralUpper() const { return GammaLaw(a_).logTail(y_, Tail::upper); }
  double bend(double meanIndex) const { return a_ + meanIndex - y_; }
  static bool longUpper() { return false; }

 private:
  // What the rounding of a + j takes from the logarithm of d(j).
  double lost(double j) const {
    const double rounding = a_ - ((a_ + j) - j);
    return rounding == 0.0 ? 0.0 : rounding * std::log(y_ / (a_ + j + 0.5));
  }

  double a_;
  double y_;
  double inverse_;
};

// Tails I_x(a + j, b) of the beta law.
class BetaFamily {
 public:
  BetaFamily(double a, double b, UnitPair at, double offset = 0.0)
      : a_(a), b_(b), at_(at), offset_(offset), inverse_(1.0 / at.x) {}

  double shape() const { return a_; }
  double offset() const { return offset_; }
  bool belowMean(double mean) const { return at_.x * b_ < (a_ + mean) * at_.y; }
  bool farBelowMean(double mean) const {
    const double below = (a_ + mean) * at_.y - b_ * at_.x;
    return below > 0.0 && below * below > (a_ + 2.0 * mean) * (b_ / (a_ + mean + b_));
  }
  // j (a + j) = mean x (a + b + j).
  double peak(double mean) const {
    const double c = mean * at_.x;
    const double half = 0.5 * (a_ - c);
    const double square = half * half + c * (a_ + b_);
    const double root = square < 1e300 && square > 1e-290
                            ? std::sqrt(square)
                            : std::hypot(half, std::sqrt(c) * std::sqrt(a_ + b_));
    return half > 0.0 ? c * ((a_ + b_) / (half + root)) : root - half;
  }
  double curve(double j) const {
    return 1.0 / (j + 1.0) + b_ / (a_ + j + 1.0) / (a_ + b_ + j + 1.0);
  }
  // At most: below b = 1 the quotients of the decrements rise to x.
  double fall() const { return at_.x * std::fmax(1.0, (a_ + b_) / (a_ + 1.0)); }
  double growth(double j) const { return (a_ + j + 1.0) / (a_ + b_ + j) * inverse_; }
  double ratio(double j) const { return at_.x * (a_ + b_ + j) / (a_ + j + 1.0); }
  // Near 1 the complement knows x better than x itself.
  double drift() const {
    const double rest = at_.x > 0.5 ? (1.0 - at_.x) - at_.y : 0.0;
    return std::fma(inverse_, at_.x, -1.0) + rest;
  }
  Piece decrement(double j) const {
    const Piece p = BetaLaw(a_ + j, b_).weightPiece(at_);
    return {p.factor * (b_ / (a_ + j + b_)) * (1.0 + lost(j)), p.exponent};
  }
  double logDecrement(double j) const {
    return BetaLaw(a_ + j, b_).logWeight(at_) + std::log(b_ / (a_ + j + b_)) + lost(j);
  }
  double lowerTerms(double j) const { return BetaLaw(a_ + j, b_).lowerOverDecrement(at_); }
  double tailAt(double j, Tail which) const { return BetaLaw(a_ + j, b_).tail(at_, which); }
  double logTailAt(double j, Tail which) const { return BetaLaw(a_ + j, b_).logTail(at_, which); }
  // The upper sum has most of its digits from far below its peak.
  bool longUpper() const { return b_ < 0.5; }
  double centralUpper() const { return BetaLaw(a_, b_).tail(at_, Tail::upper); }
  double logCentralUpper() const { return BetaLaw(a_, b_).logTail(at_, Tail::upper); }

 private:
  // What the rounding of a + j takes from the logarithm of d(j).
  double lost(double j) const {
    const double rounding = a_ - ((a_ + j) - j);
    return rounding == 0.0 ? 0.0 : rounding * std::log(at_.x * ((a_ + b_ + j) / (a_ + j + 0.5)));
  }

  double a_;
  double b_;
  UnitPair at_;
  double offset_;
  double inverse_;
};

}  // namespace nag2
