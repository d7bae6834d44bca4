// The smaller tail, as a multiple of the law's weight: by the hypergeometric series of positive
// terms, a finite sum for a small whole parameter, or the continued fraction; its complement where
// that has digits left, else 1 - x^a / (a B(a, b)) and the rest of the series.  Two parameters from
// 1e7 on: the first two terms of the uniform expansion; one that is 1e17 times the other: the gamma
// law that is the limit.
//
// A. R. DiDonato and A. H. Morris, Significant Digit Computation of the Incomplete Beta Function
// Ratios, ACM TOMS 18 (1992), equation 9.

#include "numerics/laws/beta_law.hpp"

#include <algorithm>
#include <limits>

#include "numerics/special/normal_functions.hpp"

namespace nag2 {

namespace {

constexpr double epsilon = std::numeric_limits<double>::epsilon();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double hugeParameter = 1e7;
constexpr double hugeRatio = 1e17;
constexpr double leastProduct = 1e-290;
constexpr int maxTerms = 200000;  // a guard

Tail other(Tail which) { return which == Tail::lower ? Tail::upper : Tail::lower; }

}  // namespace

double betaSeries(double a, double n, double x) {
  double sum = 1.0;
  double term = 1.0;
  double k = 0.0;
  for (int i = 0; i < maxTerms; ++i) {
    const double r1 = x * ((n + k) / (a + 1.0 + k));
    const double r2 = r1 * (x * ((n + k + 1.0) / (a + 2.0 + k)));
    sum += term * (r1 + r2);
    term *= r2;
    k += 2.0;
    if (term < 0.1 * epsilon * sum) {
      return sum;
    }
  }
  return nan;
}

// Convergents by their recurrence, which needs no division; two steps a round.
double betaFraction(double a, double b, double x, double e) {
  const double n = a + b;
  double inverse = 1.0 / (a + 1.0);  // 1 / (a + 2 m + 1)
  double top = a * (e + 1.0) * inverse;
  double lastTop = 1.0;
  double bottom = 1.0;
  double lastBottom = 0.0;
  const double e1 = e + 1.0;
  const double slope = 2.0 - x;
  double m = 1.0;
  const auto step = [&] {
    const double last = inverse;
    inverse = 1.0 / (a + 2.0 * m + 1.0);
    const double rest = m * (b - m) * (x * last);
    const double am = ((a + m - 1.0) * last) * ((n + m - 1.0) * x) * rest;
    const double bm = m + rest + (a + m) * (e1 + m * slope) * inverse;
    const double nextTop = bm * top + am * lastTop;
    const double nextBottom = bm * bottom + am * lastBottom;
    lastTop = top;
    lastBottom = bottom;
    top = nextTop;
    bottom = nextBottom;
    m += 1.0;
  };
  for (int i = 0; i < maxTerms; ++i) {
    step();
    step();
    const double cross = top * lastBottom;
    if (std::fabs(cross - lastTop * bottom) <= epsilon * std::fabs(cross)) {
      return bottom / top;
    }
    if (const double size = std::max(std::fabs(top), std::fabs(bottom)); size > 1e100) {
      const double scale = 1.0 / size;
      if (!std::isfinite(size) || scale == 0.0) {
        return nan;
      }
      top *= scale;
      bottom *= scale;
      lastTop *= scale;
      lastBottom *= scale;
    }
  }
  return nan;
}

BetaLaw::BetaLaw(double a, double b)
    : a_(a),
      b_(b),
      n_(a + b),
      first_(a),
      second_(b),
      both_(a + b),
      ordinary_(a >= 1.0 && b >= 1.0 && std::min(a, b) < hugeParameter && std::max(a, b) < 1e15),
      scale_(ordinary_ ? std::sqrt(n_ / a / b) / rootTwoPi : 0.0) {}

BetaLaw BetaLaw::mirrored() const {
  BetaLaw law = *this;
  std::swap(law.a_, law.b_);
  std::swap(law.first_, law.second_);
  return law;
}

// a y - b x, from the smaller of x and y.
double BetaLaw::excess(UnitPair at) const { return at.x <= at.y ? a_ - n_ * at.x : n_ * at.y - b_; }

namespace {

// The power's piece at n x, which may underflow where a small power of it does not.
Piece pieceAt(const PowerPiece& power, double z, double n, double x, double difference) {
  const double m = n * x;
  return m > leastProduct || z >= 1.0 ? power.at(m, difference)
                                      : Piece{std::pow(n, z) * std::pow(x, z) * power.scale(), m};
}

double logPieceAt(const PowerPiece& power, double z, double n, double x, double difference) {
  const double m = n * x;
  return m > leastProduct || z == 0.0
             ? power.logAt(m, difference)
             : z * (std::log(n) + std::log(x)) + power.logAt(1.0, 1.0 - z) + 1.0;
}

}  // namespace

Piece BetaLaw::weightPiece(UnitPair at) const {
  const double e = excess(at);
  const double nx = n_ * at.x;
  const double ny = n_ * at.y;
  if (ordinary_ && nx > 0.05 * a_ && ny > 0.05 * b_) {
    return {scale_, (first_.rest() + second_.rest() - both_.rest()) +
                        (devianceOf(a_, nx, -e) + devianceOf(b_, ny, e))};
  }
  const Piece p = pieceAt(first_, a_, n_, at.x, -e);
  const Piece q = pieceAt(second_, b_, n_, at.y, e);
  const Piece n = both_.atPeak();
  const double quotient = q.factor / n.factor;
  const double factor =
      std::isfinite(quotient) ? p.factor * quotient : p.factor * q.factor / n.factor;
  return {factor, p.exponent + q.exponent - n.exponent};
}

double BetaLaw::weight(UnitPair at) const {
  const Piece p = weightPiece(at);
  return p.factor * std::exp(-p.exponent);
}

double BetaLaw::logWeight(UnitPair at) const {
  const double e = excess(at);
  return logPieceAt(first_, a_, n_, at.x, -e) + logPieceAt(second_, b_, n_, at.y, e) -
         both_.logAtPeak();
}

namespace {

// Whether the lower tail at or below the mean comes from the series, else from the fraction.
bool seriesServes(double a, double b, double n, double x) {
  // The ratio of the series' first terms.
  const double ratio = x * (n / (a + 1.0));
  return x < 0.3 ? ratio < 0.9 : x <= 0.9 && (ratio < 0.5 || (a <= 1.0 && b <= 1.0));
}

// The lower tail over the weight, at or below the mean; n = a + b.
double tailOverWeight(double a, double b, double n, double x, double excess) {
  if (seriesServes(a, b, n, x)) {
    return b / n * betaSeries(a, n, x);
  }
  return a / n * b * betaFraction(a, b, x, excess);
}

}  // namespace

bool BetaLaw::partsAt(UnitPair at, Parts& parts) const {
  if (!(ordinary_ && at.x > 0.0 && at.y > 0.0)) {
    return false;
  }
  const double e = excess(at);
  parts.weight = weight(at);
  parts.above = e < 0.0;
  parts.argument = parts.above ? at.y : at.x;
  parts.excess = parts.above ? -e : e;
  parts.series = parts.above ? seriesServes(b_, a_, n_, at.y) : seriesServes(a_, b_, n_, at.x);
  return true;
}

double BetaLaw::tailFrom(const Parts& parts, double value, Tail which) const {
  const double a = parts.above ? b_ : a_;
  const double b = parts.above ? a_ : b_;
  const double outer = (parts.series ? b / n_ : a / n_ * b) * value;
  const double tail = parts.weight == 0.0 ? 0.0 : std::min(1.0, parts.weight * outer);
  return parts.above == (which == Tail::lower) ? 1.0 - tail : tail;
}

double BetaLaw::outerFactor(UnitPair at) const {
  return tailOverWeight(a_, b_, n_, at.x, excess(at));
}

double BetaLaw::ordinaryTail(UnitPair at, Tail which) const {
  const double w = weight(at);
  const double e = excess(at);
  const bool above = e < 0.0;
  const double outer =
      above ? tailOverWeight(b_, a_, n_, at.y, -e) : tailOverWeight(a_, b_, n_, at.x, e);
  const double tail = w == 0.0 ? 0.0 : std::min(1.0, w * outer);
  return above == (which == Tail::lower) ? 1.0 - tail : tail;
}

double BetaLaw::lowerOverDecrement(UnitPair at) const {
  if (excess(at) >= 0.0 && !complementSeries(at)) {
    return outerFactor(at) * (n_ / b_);
  }
  return tail(at, Tail::lower) / (weight(at) * (b_ / n_));
}

// Near x = 1 with a small b the fraction loses digits; the mirrored series has none to lose.
bool BetaLaw::complementSeries(UnitPair at) const {
  return at.x > 0.7 && b_ < 1.0 && (a_ <= 1.0 ? at.x > 0.9 : b_ < 0.5 && a_ * at.y <= 0.7);
}

double BetaLaw::outer(UnitPair at) const {
  if (complementSeries(at)) {
    return mirrored().seriesComplement({at.y, at.x});
  }
  const double w = weight(at);
  return w == 0.0 ? 0.0 : std::min(1.0, w * outerFactor(at));
}

double BetaLaw::logOuter(UnitPair at) const {
  if (complementSeries(at)) {
    return std::log(mirrored().seriesComplement({at.y, at.x}));
  }
  return std::min(0.0, logWeight(at) + std::log(outerFactor(at)));
}

// 1 - I_x(a, b) where a is at most 1 and most mass lies below x; the complement of outer.
double BetaLaw::inner(UnitPair at, double outer) const {
  if (!(outer > 0.7) || a_ > 1.0) {
    return 1.0 - outer;
  }
  if (at.y < 0.95) {
    const BetaLaw law = mirrored();
    const UnitPair turned{at.y, at.x};
    if (turned.x <= 0.9) {
      return law.weight(turned) * (a_ / n_) * betaSeries(b_, n_, turned.x);
    }
  }
  return seriesComplement(at);
}

// 1 - I_x(a, b) for a <= 1 and small x: 1 - exp(L) (1 + S) with L = log(x^a / (a B(a, b))), and S
// the rest of the series, both relative to themselves.
double BetaLaw::seriesComplement(UnitPair at) const {
  double sum = 0.0;
  double term = 1.0;
  for (int n = 1; n < 400; ++n) {
    term *= (n - b_) / n * at.x;
    const double part = term * (a_ / (a_ + n));
    sum += part;
    if (std::fabs(part) <= 0.1 * epsilon * std::fabs(sum)) {
      break;
    }
  }
  const double log = a_ * std::log(at.x) + logGammaQuotient(a_, b_) - logGamma1p(a_);
  return -std::expm1(log) - std::exp(log) * sum;
}

// Both parameters huge: normal tail at the signed root of the deviance, and the next term.
double BetaLaw::uniformOuter(UnitPair at, bool log) const {
  const double e = excess(at);  // >= 0
  const double exponent = devianceOf(a_, n_ * at.x, -e) + devianceOf(b_, n_ * at.y, e);
  const double deviation = std::sqrt(a_ / n_ * b_);
  const double z = std::sqrt(2.0 * exponent);
  // 1/z - 1/u with u = e / deviation, negative sides; nearer to the mean it is its limit.
  const double skew = (b_ - a_) / (3.0 * n_ * deviation);
  const double correction = z > 1e-5 ? deviation / e - 1.0 / z : skew;
  const double factor = millsRatio(z) + correction;
  const double value =
      log ? std::log(factor) - exponent - logRootTwoPi : factor / rootTwoPi * std::exp(-exponent);
  return value;
}

double BetaLaw::gammaLimit(UnitPair at, Tail which, bool log) const {
  const double reduced = -b_ * (at.x < 0.5 ? std::log1p(-at.x) : std::log(at.y));
  const GammaLaw law(a_);
  return log ? law.logTail(reduced, which) : law.tail(reduced, which);
}

bool BetaLaw::aboveMean(UnitPair at) const {
  return a_ >= hugeRatio * std::max(1.0, b_) ||
         (b_ < hugeRatio * std::max(1.0, a_) && excess(at) < 0.0);
}

bool BetaLaw::degenerate(UnitPair at, Tail which, double* value) const {
  bool below = false;  // all mass at or below x
  if (std::isnan(at.x) || std::isnan(at.y)) {
    *value = nan;
    return true;
  }
  if (at.x <= 0.0 || at.y <= 0.0) {
    below = at.x > 0.0;
  } else if (std::isinf(a_) || std::isinf(b_)) {  // mass at 1, at 0 or, both infinite, at 1/2
    below = !(std::isinf(a_) && (!std::isinf(b_) || at.x < 0.5));
  } else {
    return false;
  }
  *value = below == (which == Tail::lower) ? 1.0 : 0.0;
  return true;
}

double BetaLaw::tail(UnitPair at, Tail which) const {
  if (ordinary_ && at.x > 0.0 && at.y > 0.0) {
    return ordinaryTail(at, which);
  }
  if (double value = 0.0; degenerate(at, which, &value)) {
    return value;
  }
  if (aboveMean(at)) {
    return mirrored().tail({at.y, at.x}, other(which));
  }
  if (b_ >= hugeRatio * std::max(1.0, a_)) {
    return gammaLimit(at, which, false);
  }
  const double lower = std::min(a_, b_) >= hugeParameter ? uniformOuter(at, false) : outer(at);
  return which == Tail::lower ? lower : inner(at, lower);
}

double BetaLaw::logTail(UnitPair at, Tail which) const {
  if (double value = 0.0; degenerate(at, which, &value)) {
    return std::log(value);
  }
  if (aboveMean(at)) {
    return mirrored().logTail({at.y, at.x}, other(which));
  }
  if (b_ >= hugeRatio * std::max(1.0, a_)) {
    return gammaLimit(at, which, true);
  }
  const bool uniform = std::min(a_, b_) >= hugeParameter;
  const double lower = uniform ? uniformOuter(at, false) : outer(at);
  if (which == Tail::upper) {
    return lower < 0.5 ? std::log1p(-lower) : std::log(inner(at, lower));
  }
  return lower > 0.7 ? std::log1p(-inner(at, lower))
         : uniform   ? uniformOuter(at, true)
                     : logOuter(at);
}

}  // namespace nag2
