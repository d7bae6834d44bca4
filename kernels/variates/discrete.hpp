// Variates of discrete laws from a source of 64 random bits: by inversion where the spread is
// small, by rejection against exact probabilities otherwise.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "kernels/variates/continuous.hpp"
#include "kernels/variates/mass_functions.hpp"
#include "kernels/variates/mode_search.hpp"

namespace vexel::kernels {

// Variances up to here by search.
inline constexpr double searched = 100;

// Poisson.  Large means: W. Hörmann, The transformed rejection method for generating Poisson random
// variables, Insurance: Mathematics and Economics 12, 1993 (PTRS).
class PoissonVariates {
 public:
  explicit PoissonVariates(double mean) : mean_(mean), search_(Terms{mean}) {
    if (mean > searched) {
      const double root = std::sqrt(mean);
      b_ = 0.931 + 2.53 * root;
      a_ = -0.059 + 0.02483 * b_;
      logInverseAlpha_ = std::log(1.1239 + 1.1328 / (b_ - 3.4));
      quick_ = 0.9277 - 3.6224 / (b_ - 2);
    }
  }

  void tabulate() {
    if (mean_ <= searched) {
      search_.tabulate();
    }
  }

  template <typename Source>
  double operator()(Source& source) const {
    if (mean_ <= searched) {
      return search_(source);
    }
    for (;;) {
      const double u = uniformVariate(source) - 0.5;
      const double v = uniformVariate(source);
      const double edge = 0.5 - std::abs(u);
      const double k = std::floor((2 * a_ / edge + b_) * u + mean_ + 0.43);
      if (edge >= 0.07 && v <= quick_) {
        return k;
      }
      if (k < 0 || (edge < 0.013 && v > edge)) {
        continue;
      }
      if (std::log(v) + logInverseAlpha_ - std::log(a_ / (edge * edge) + b_) <=
          logPoisson(k, mean_)) {
        return k;
      }
    }
  }

 private:
  struct Terms {
    double mean;
    double high() const { return std::numeric_limits<double>::infinity(); }
    double peak() const { return mean; }
    // From 0 where the way is short: its probability is quickly found.
    double mode() const { return mean < 10 ? 0 : std::floor(mean); }
    double first() const { return mean == 0 ? 1 : std::exp(logPoisson(mode(), mean)); }
    double above(double p, double k) const { return p * (mean / k); }
    double below(double p, double k) const { return p * ((k + 1) / mean); }
  };

  double mean_;
  double a_ = 0;
  double b_ = 0;
  double logInverseAlpha_ = 0;
  double quick_ = 0;
  ModeSearch<Terms> search_;
};

// Binomial.  Large means: W. Hörmann, The generation of binomial random variates, Journal of
// Statistical Computation and Simulation 46, 1993 (BTRS).  p above 1/2 counts the failures.
class BinomialVariates {
 public:
  BinomialVariates(double n, double p)
      : n_(n), p_(p > 0.5 ? 1 - p : p), mirrored_(p > 0.5), search_(Terms{n, p_}) {
    if (!isSearched()) {
      const double spread = std::sqrt(n * p_ * (1 - p_));
      b_ = 1.15 + 2.53 * spread;
      a_ = -0.0873 + 0.0248 * b_ + 0.01 * p_;
      quick_ = 0.92 - 4.2 / b_;
      const double mode = std::floor((n + 1) * p_);
      logTop_ = logBinomial(mode, n, p_, 1 - p_) + std::log((2.83 + 5.1 / b_) * spread);
    }
  }

  void tabulate() {
    if (isSearched()) {
      search_.tabulate();
    }
  }

  template <typename Source>
  double operator()(Source& source) const {
    const double k = isSearched() ? search_(source) : rejected(source);
    return mirrored_ ? n_ - k : k;
  }

 private:
  struct Terms {
    double n;
    double p;
    double high() const { return n; }
    double peak() const { return mode(); }
    double mode() const { return std::floor((n + 1) * p); }
    double first() const { return p == 0 ? 1 : std::exp(logBinomial(mode(), n, p, 1 - p)); }
    double above(double term, double k) const { return term * ((n - k + 1) / k * (p / (1 - p))); }
    double below(double term, double k) const { return term * ((k + 1) / (n - k) * ((1 - p) / p)); }
  };

  bool isSearched() const { return n_ * p_ * (1 - p_) <= searched; }

  template <typename Source>
  double rejected(Source& source) const {
    for (;;) {
      const double u = uniformVariate(source) - 0.5;
      const double v = uniformVariate(source);
      const double edge = 0.5 - std::abs(u);
      const double k = std::floor((2 * a_ / edge + b_) * u + n_ * p_ + 0.5);
      if (edge >= 0.07 && v <= quick_) {
        return k;
      }
      if (k < 0 || k > n_) {
        continue;
      }
      if (std::log(v / (a_ / (edge * edge) + b_)) <= logBinomial(k, n_, p_, 1 - p_) - logTop_) {
        return k;
      }
    }
  }

  double n_;
  double p_;
  bool mirrored_;
  double a_ = 0;
  double b_ = 0;
  double quick_ = 0;
  double logTop_ = 0;
  ModeSearch<Terms> search_;
};

// Hypergeometric.  Large means: E. Stadlober, The ratio of uniforms approach for generating
// discrete random variates, Journal of Computational and Applied Mathematics 31, 1990 (HRUA).  Of
// marked and unmarked, and of drawn and left, the smaller ones are looked at.
class HypergeometricVariates {
 public:
  HypergeometricVariates(double population, double marked, double drawn)
      : population_(population),
        marked_(std::min(marked, population - marked)),
        drawn_(std::min(drawn, population - drawn)),
        fewMarked_(marked_ == marked),
        fewDrawn_(drawn_ == drawn),
        givenMarked_(marked),
        givenDrawn_(drawn),
        mean_(population == 0 ? 0 : drawn_ * (marked_ / population)),
        variance_(population < 2 ? 0
                                 : mean_ * ((population - marked_) / population) *
                                       ((population - drawn_) / (population - 1))),
        search_(Terms{population_, marked_, drawn_}) {
    if (variance_ > searched) {
      constexpr double perSpread = 1.7155277699214135;  // 2 sqrt(2 / e)
      constexpr double least = 0.8989161620588988;      // 3 - 2 sqrt(3 / e)
      width_ = perSpread * std::sqrt(variance_ + 0.5) + least;
      const double mode = Terms{population_, marked_, drawn_}.mode();
      logTop_ = logHypergeometricRatio(mode, population_, marked_, drawn_);
    }
  }

  void tabulate() {
    if (variance_ <= searched) {
      search_.tabulate();
    }
  }

  template <typename Source>
  double operator()(Source& source) const {
    double k = variance_ <= searched ? search_(source) : rejected(source);
    if (!fewDrawn_) {
      k = marked_ - k;  // of the smaller kind, those not left
    }
    return fewMarked_ ? k : givenDrawn_ - k;
  }

 private:
  struct Terms {
    double population;
    double marked;
    double drawn;
    double high() const { return std::min(marked, drawn); }
    double peak() const { return mode(); }
    double mode() const { return std::floor((drawn + 1) * ((marked + 1) / (population + 2))); }
    double first() const {
      return high() == 0 ? 1 : std::exp(logHypergeometric(mode(), population, marked, drawn));
    }
    double above(double p, double k) const {
      return p * ((marked - k + 1) / k * ((drawn - k + 1) / (population - marked - drawn + k)));
    }
    double below(double p, double k) const {
      return p * ((k + 1) / (marked - k) * ((population - marked - drawn + k + 1) / (drawn - k)));
    }
  };

  template <typename Source>
  double rejected(Source& source) const {
    for (;;) {
      const double u = uniformVariate(source);
      const double v = uniformVariate(source);
      const double k = std::floor(mean_ + 0.5 + width_ * (v - 0.5) / u);
      if (k < 0 || k > std::min(marked_, drawn_)) {
        continue;
      }
      const double t = logHypergeometricRatio(k, population_, marked_, drawn_) - logTop_;
      // u^2 <= exp(t), by way of bounds of the logarithm.
      if (u * (4 - u) - 3 <= t) {
        return k;
      }
      if (u * (u - t) < 1 && 2 * std::log(u) <= t) {
        return k;
      }
    }
  }

  double population_;
  double marked_;
  double drawn_;
  bool fewMarked_;
  bool fewDrawn_;
  double givenMarked_;
  double givenDrawn_;
  double mean_;
  double variance_;
  double width_ = 0;
  double logTop_ = 0;
  ModeSearch<Terms> search_;
};

// Failures before the first success: the whole part of an exponential, for every p.
class GeometricVariates {
 public:
  explicit GeometricVariates(double p) : scale_(p == 1 ? 0 : -1 / std::log1p(-p)) {}

  template <typename Source>
  double operator()(Source& source) const {
    return std::floor(exponentialVariate(source) * scale_);
  }

 private:
  double scale_;
};

}  // namespace vexel::kernels
