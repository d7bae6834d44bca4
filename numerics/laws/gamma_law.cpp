// Regions: the power series below the mean and Legendre's continued fraction above it; from shape
// 20 on Temme's uniform expansion around the mean, good to 1e-16 there; the upper tail of a shape
// below 1 near 0 from 1 - x^a / Gamma(a + 1) without cancellation.
//
// N. M. Temme, The asymptotic expansion of the incomplete gamma functions, SIAM J. Math. Anal. 10
// (1979); A. R. DiDonato and A. H. Morris, Computation of the Incomplete Gamma Function Ratios and
// their Inverse, ACM TOMS 12 (1986).

#include "numerics/laws/gamma_law.hpp"

#include <algorithm>
#include <array>
#include <iterator>
#include <limits>

#include "numerics/special/normal_functions.hpp"

namespace nag2 {

namespace {

constexpr double epsilon = std::numeric_limits<double>::epsilon();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double leastUniformShape = 20.0;
constexpr double mostSummed = 24.0;
constexpr int maxTerms = 100000;  // a guard: the regions end where sums would be long

// 1 or the other tail.
double turned(double p, bool turn) { return turn ? 1.0 - p : p; }

// Temme's double series at shape 1/u, the rows that matter at this shape.
double temmeSum(double eta, double u) {
  const int rows = u < 1e-6 ? 3 : u < 1e-3 ? 5 : u < 1e-2 ? 8 : 11;
  constexpr int all = static_cast<int>(std::size(temmeLengths));
  double row[all];
  const double* c = temmeSeries;
  for (int k = 0; k < std::min(rows, all); ++k) {
    const int n = temmeLengths[k];
    double sum = c[n - 1];
    for (int i = n - 2; i >= 0; --i) {
      sum = sum * eta + c[i];
    }
    row[k] = sum;
    c += n;
  }
  double sum = 0.0;
  for (int k = std::min(rows, all) - 1; k >= 0; --k) {
    sum = sum * u + row[k];
  }
  return sum;
}

}  // namespace

GammaLaw::GammaLaw(double shape) : a_(shape), power_(shape) {}

double GammaLaw::weight(double x) const {
  const Piece p = power_.at(x, x - a_);
  return p.factor * std::exp(-p.exponent);
}

double GammaLaw::logWeight(double x) const { return power_.logAt(x, x - a_); }

double GammaLaw::density(double x) const {
  if (!(x >= 0.0) || std::isinf(x)) {
    return std::isnan(x) ? nan : 0.0;
  }
  if (x == 0.0) {
    return a_ < 1.0 ? infinity : a_ == 1.0 ? 1.0 : 0.0;
  }
  if (a_ == 1.0) {
    return std::exp(-x);
  }
  const double w = weight(x);
  if (w > 1e-280 || a_ < 1.0) {
    const double value = w * (a_ / x);
    return std::isnan(value) ? std::exp(logDensity(x)) : value;
  }
  const Piece p = PowerPiece(a_ - 1.0).at(x, x - a_ + 1.0);
  return p.factor * std::exp(-p.exponent);
}

double GammaLaw::logDensity(double x) const {
  if (!(x > 0.0) || std::isinf(x)) {
    return std::isnan(x) ? nan : x == 0.0 ? std::log(density(0.0)) : -infinity;
  }
  if (a_ < 1.0) {
    return (a_ - 1.0) * std::log(x) - x + std::log(a_) - logGamma1p(a_);
  }
  return PowerPiece(a_ - 1.0).logAt(x, x - a_ + 1.0);
}

// Sum of x^n / ((a + 1) ... (a + n)): the lower tail over the weight.  Four terms a round, so that
// the divisions overlap.
double GammaLaw::series(double x) const {
  double sum = 1.0;
  double term = 1.0;
  double n = a_;
  for (int i = 0; i < maxTerms; ++i) {
    const double r1 = x / (n + 1.0);
    const double r2 = r1 * (x / (n + 2.0));
    const double s = x / (n + 3.0);
    const double r3 = r2 * s;
    const double r4 = r2 * (s * (x / (n + 4.0)));
    sum += term * ((r1 + r2) + (r3 + r4));
    term *= r4;
    n += 4.0;
    if (term < 0.25 * epsilon * sum) {
      return sum;
    }
  }
  return nan;
}

// The upper tail over the weight, by Legendre's continued fraction x + 1 - a - 1 (1 - a) / (x + 3 -
// a - ...), convergents by their recurrence.
double GammaLaw::fraction(double x) const {
  double b = x + 1.0 - a_;
  if (std::fabs(a_ - 1.0) < 1e-17 * b * b) {
    return a_ / b;
  }
  double top = b;
  double lastTop = 1.0;
  double bottom = 1.0;
  double lastBottom = 0.0;
  for (int i = 1; i < maxTerms; ++i) {
    const double n = i;
    const double c = n * (a_ - n);
    b += 2.0;
    const double nextTop = b * top + c * lastTop;
    const double nextBottom = b * bottom + c * lastBottom;
    lastTop = top;
    lastBottom = bottom;
    top = nextTop;
    bottom = nextBottom;
    if (std::fabs(top) > 1e140) {
      top *= 1e-140;
      bottom *= 1e-140;
      lastTop *= 1e-140;
      lastBottom *= 1e-140;
    }
    const double cross = top * lastBottom;
    if (std::fabs(cross - lastTop * bottom) <= epsilon * std::fabs(cross)) {
      return a_ * (bottom / top);
    }
  }
  return nan;
}

// The upper tail for a whole shape: exp(-x) times the exponential series' first terms.
double GammaLaw::wholeUpper(double x) const {
  static constexpr auto reciprocals = [] {
    std::array<double, static_cast<std::size_t>(mostSummed) + 1> all{};
    for (std::size_t k = 1; k < all.size(); ++k) {
      all[k] = 1.0 / static_cast<double>(k);
    }
    return all;
  }();
  double sum = 1.0;
  double term = 1.0;
  const auto count = static_cast<std::size_t>(a_);
  for (std::size_t k = 1; k < count; ++k) {
    term *= x * reciprocals[k];
    sum += term;
  }
  return std::exp(-x) * sum;
}

// Q(a, x) for a < 1 and x to 1.5: 1 - x^a / Gamma(a + 1) and the rest of the series of the lower
// tail, either of them without cancellation.
double GammaLaw::smallUpper(double x) const {
  double sum = 0.0;
  double term = 1.0;
  for (int n = 1; n < 60; ++n) {
    term *= -x / n;
    const double part = term / (a_ + n);
    sum -= part;
    if (std::fabs(part) < 0.25 * epsilon * std::fabs(sum)) {
      break;
    }
  }
  const double log = a_ * std::log(x) - logGamma1p(a_);
  return -std::expm1(log) + std::exp(log) * a_ * sum;
}

GammaLaw::Part GammaLaw::direct(double x) const {
  if (x < a_ + 1.0) {
    return {series(x), Tail::lower};
  }
  return {fraction(x), Tail::upper};
}

bool GammaLaw::uniform(double x) const {
  return a_ >= leastUniformShape && std::fabs(x - a_) < 0.4 * a_;
}

// sum over k of C_k a^-k; half the square of eta times the shape is the deviance.
double GammaLaw::uniformSum(double x, double* exponent) const {
  const double t = (x - a_) / a_;
  const double half = minusLog1pmx(t);
  *exponent = a_ * half;
  return temmeSum(std::copysign(std::sqrt(2.0 * half), t), 1.0 / a_);
}

double GammaLaw::uniformTail(double x, Tail which) const {
  double exponent = 0.0;
  const double sum = uniformSum(x, &exponent);
  const bool upperSide = x >= a_;
  // The tail on x's own side, then the one asked for.
  const double correction = power_.scale() * std::exp(-exponent) * (upperSide ? sum : -sum);
  const double tail = 0.5 * std::erfc(std::sqrt(exponent)) + correction;
  return turned(tail, upperSide != (which == Tail::upper));
}

double GammaLaw::logUniformTail(double x, Tail which) const {
  const bool outer = (x >= a_) == (which == Tail::upper);
  if (!outer) {
    return std::log1p(-uniformTail(x, which == Tail::upper ? Tail::lower : Tail::upper));
  }
  double exponent = 0.0;
  const double sum = uniformSum(x, &exponent);
  if (exponent < 600.0) {
    return std::log(uniformTail(x, which));
  }
  const double factor =
      power_.scale() * (x >= a_ ? sum : -sum) + millsRatio(std::sqrt(2.0 * exponent)) / rootTwoPi;
  return std::log(factor) - exponent;
}

double GammaLaw::tail(double x, Tail which) const {
  if (std::isnan(x)) {
    return nan;
  }
  const bool upper = which == Tail::upper;
  if (x <= 0.0 || std::isinf(x) || std::isinf(a_)) {
    return ((x <= 0.0 || (std::isinf(a_) && !std::isinf(x))) == upper) ? 1.0 : 0.0;
  }
  if (uniform(x)) {
    return uniformTail(x, which);
  }
  if (a_ < 1.0 && x < 1.5 && upper) {
    return smallUpper(x);
  }
  if (a_ <= mostSummed && x < 600.0 && a_ == std::floor(a_)) {
    const double q = wholeUpper(x);
    if (upper || q < 0.7) {
      return upper ? std::min(q, 1.0) : 1.0 - q;
    }
  }
  const double w = weight(x);
  if (w == 0.0) {
    return turned(0.0, (x < a_) == upper);
  }
  const Part part = direct(x);
  return turned(std::min(1.0, w * part.factor), part.which != which);
}

double GammaLaw::logTail(double x, Tail which) const {
  if (std::isnan(x)) {
    return nan;
  }
  const bool upper = which == Tail::upper;
  if (x <= 0.0 || std::isinf(x) || std::isinf(a_)) {
    return std::log(tail(x, which));
  }
  if (uniform(x)) {
    return logUniformTail(x, which);
  }
  if (a_ < 1.0 && x < 1.5) {
    const double below = weight(x) * series(x);
    const double beyond = smallUpper(x);
    return upper ? (below < 0.5 ? std::log1p(-below) : std::log(beyond))
                 : (beyond < 0.5 ? std::log1p(-beyond) : logWeight(x) + std::log(series(x)));
  }
  const Part part = direct(x);
  if (part.which == which) {
    const double factor = part.factor > 0.0 ? std::log(part.factor) : std::log(a_) - std::log(x);
    return std::min(0.0, logWeight(x) + factor);
  }
  return std::log1p(-std::min(1.0, weight(x) * part.factor));
}

double GammaLaw::overWeight(double x, Tail which) const {
  if (uniform(x) && (x >= a_) == (which == Tail::upper)) {
    double exponent = 0.0;
    const double sum = uniformSum(x, &exponent);
    const double tails = millsRatio(std::sqrt(2.0 * exponent)) / (rootTwoPi * power_.scale());
    return (tails + (which == Tail::upper ? sum : -sum)) * std::exp(power_.rest());
  }
  if (!uniform(x)) {
    if (const Part part = direct(x); part.which == which) {
      return part.factor;
    }
  }
  return tail(x, which) / weight(x);
}

}  // namespace nag2
