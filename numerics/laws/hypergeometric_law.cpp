// Point probabilities of populations to 170 from factorials, of larger ones as the product of four
// Poisson probabilities, at the cells' expectations, over those of the margins.  Tails are sums of
// point probabilities away from the mode.

#include "numerics/laws/hypergeometric_law.hpp"

#include <array>
#include <limits>

#include "kernels/watch.hpp"

namespace nag2 {

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr int mostFactorials = 170;

constexpr auto factorials = [] {
  std::array<double, mostFactorials + 1> all{};
  // In two parts, so that each is rounded once.
  double high = 1.0;
  double low = 0.0;
  all[0] = 1.0;
  for (int k = 1; k <= mostFactorials; ++k) {
    constexpr double splitter = 134217729.0;  // 2^27 + 1
    const double factor = k;
    // Past 1e280 splitting would overflow; by then the parts are scaled down.
    const double scale = high > 1e250 ? 1e-100 : 1.0;
    const double scaled = high * scale;
    const double wide = splitter * scaled;
    const double top = wide - (wide - scaled);
    const double bottom = scaled - top;
    const double product = high * factor;
    const double error = ((top * factor - product * scale) + bottom * factor) / scale;
    low = low * factor + error;
    high = product + low;
    low -= high - product;
    all[static_cast<std::size_t>(k)] = high;
  }
  return all;
}();

double factorial(double k) { return factorials[static_cast<std::size_t>(k)]; }

// n over k.
double choose(double n, double k, double rest) {
  return factorial(n) / (factorial(k) * factorial(rest));
}

// Sum of the point probabilities at k, k - 1, ... over the one at k.
double fallingSum(double k, double bare, double plain, double rest) {
  constexpr int most = 1'000'000'000;
  double sum = 1.0;
  double term = 1.0;
  for (int i = 0; i < most; ++i) {
    if (i % 65536 == 65535) {
      vexel::kernels::poll();
    }
    term *= (k * rest) / ((bare + 1.0) * (plain + 1.0));
    if (!(term > 1e-17 * sum)) {
      return sum;
    }
    sum += term;
    k -= 1.0;
    rest -= 1.0;
    bare += 1.0;
    plain += 1.0;
  }
  return nan;
}

}  // namespace

HypergeometricLaw::HypergeometricLaw(double n, double m, double l) : n_(n), m_(m), l_(l) {}

double HypergeometricLaw::probability(const Cells& c) const {
  if (n_ <= mostFactorials) {
    return choose(m_, c.k, c.bare) * choose(n_ - m_, c.plain, c.rest) / choose(n_, l_, n_ - l_);
  }
  // The cells' common distance from their expectations, k rest - bare plain over n.
  const double first = c.k * c.rest;
  const double second = c.bare * c.plain;
  const double difference =
      (first - second) + (std::fma(c.k, c.rest, -first) - std::fma(c.bare, c.plain, -second));
  const double d = difference / n_;
  const double share = l_ / n_;
  const double other = (n_ - l_) / n_;
  const double unmarked = n_ - m_;
  const Piece p1 = PowerPiece(c.k).at(m_ * share, -d);
  const Piece p2 = PowerPiece(c.bare).at(m_ * other, d);
  const Piece p3 = PowerPiece(c.plain).at(unmarked * share, d);
  const Piece p4 = PowerPiece(c.rest).at(unmarked * other, -d);
  const Piece q1 = PowerPiece(m_).atPeak();
  const Piece q2 = PowerPiece(unmarked).atPeak();
  const Piece q3 = PowerPiece(l_).atPeak();
  const Piece q4 = PowerPiece(n_ - l_).atPeak();
  const Piece q = PowerPiece(n_).atPeak();
  return (p1.factor * p2.factor / q1.factor) * (p3.factor * p4.factor / q2.factor) /
         (q3.factor * q4.factor / q.factor) *
         std::exp(-((p1.exponent + p2.exponent - q1.exponent) +
                    (p3.exponent + p4.exponent - q2.exponent) -
                    (q3.exponent + q4.exponent - q.exponent)));
}

double HypergeometricLaw::logProbability(const Cells& c) const {
  if (const double value = probability(c); value > 1e-290) {
    return std::log(value);
  }
  const double d = c.k / n_ * c.rest - c.bare / n_ * c.plain;
  const double share = l_ / n_;
  const double other = (n_ - l_) / n_;
  const double unmarked = n_ - m_;
  return (PowerPiece(c.k).logAt(m_ * share, -d) + PowerPiece(c.bare).logAt(m_ * other, d) -
          PowerPiece(m_).logAtPeak()) +
         (PowerPiece(c.plain).logAt(unmarked * share, d) +
          PowerPiece(c.rest).logAt(unmarked * other, -d) - PowerPiece(unmarked).logAtPeak()) -
         (PowerPiece(l_).logAtPeak() + PowerPiece(n_ - l_).logAtPeak() -
          PowerPiece(n_).logAtPeak());
}

double HypergeometricLaw::probability(double k) const { return probability(cells(k)); }
double HypergeometricLaw::logProbability(double k) const { return logProbability(cells(k)); }

// The tail on k's side of the mean is summed; the one above k is that below it of the mirrored
// table.
double HypergeometricLaw::tail(double k, Tail which) const {
  const Cells c = cells(k);
  if (belowMean(c)) {
    const double lower = probability(c) * fallingSum(c.k, c.bare, c.plain, c.rest);
    return which == Tail::lower ? std::fmin(1.0, lower) : std::fmax(0.0, 1.0 - lower);
  }
  if (c.bare == 0.0 || c.plain == 0.0) {
    return which == Tail::lower ? 1.0 : 0.0;
  }
  const Cells next{k + 1.0, c.bare - 1.0, c.plain - 1.0, c.rest + 1.0};
  const double upper = probability(next) * fallingSum(next.bare, next.k, next.rest, next.plain);
  return which == Tail::upper ? std::fmin(1.0, upper) : std::fmax(0.0, 1.0 - upper);
}

double HypergeometricLaw::logTail(double k, Tail which) const {
  const Cells c = cells(k);
  const bool below = belowMean(c);
  if (below != (which == Tail::lower)) {
    return std::log1p(-tail(k, below ? Tail::lower : Tail::upper));
  }
  if (below) {
    return std::fmin(0.0, logProbability(c) + std::log(fallingSum(c.k, c.bare, c.plain, c.rest)));
  }
  if (c.bare == 0.0 || c.plain == 0.0) {
    return -std::numeric_limits<double>::infinity();
  }
  const Cells next{k + 1.0, c.bare - 1.0, c.plain - 1.0, c.rest + 1.0};
  return std::fmin(
      0.0, logProbability(next) + std::log(fallingSum(next.bare, next.k, next.rest, next.plain)));
}

}  // namespace nag2
