// The hypergeometric law: point probabilities and both tails, with their logarithms.
#pragma once

#include "numerics/laws/gamma_law.hpp"

namespace nag2 {

// Whole numbers up to 2^53: population n, marked m, drawn l.  Relative errors within 1e-14 max(1,
// k), k the condition with respect to the argument; a tail takes a time in proportion to the
// standard deviation.
class HypergeometricLaw {
 public:
  HypergeometricLaw(double n, double m, double l);

  // For k in the support; tails are P(X <= k) and P(X > k).
  double probability(double k) const;
  double logProbability(double k) const;
  double tail(double k, Tail which) const;
  double logTail(double k, Tail which) const;

 private:
  // The table of a draw: marked and drawn, marked not drawn, drawn not marked, neither.
  struct Cells {
    double k;
    double bare;
    double plain;
    double rest;
  };
  Cells cells(double k) const { return {k, m_ - k, l_ - k, (n_ - m_) - (l_ - k)}; }
  static bool belowMean(const Cells& c) { return c.k * c.rest <= c.bare * c.plain; }
  double probability(const Cells& c) const;
  double logProbability(const Cells& c) const;

  double n_;
  double m_;
  double l_;
};

}  // namespace nag2
