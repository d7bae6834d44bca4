// The Shapiro-Wilk statistic and its significance level: P. Royston, 1995, Remark AS R94, Applied
// Statistics 44, 547-551, with the coefficients of P. Royston, 1992, Statistics and Computing 2,
// 117-119, for 3 <= n <= 5000.

#include <nag2/nag2.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <span>

#include "numerics/interface/failure.hpp"

namespace {

constexpr const char* kName = "q32554";

double polynomial(std::span<const double> c, double x) {
  double value = 0.0;
  for (std::size_t i = c.size(); i-- > 0;) {
    value = value * x + c[i];
  }
  return value;
}

// Blom's approximation to the expected i-th smallest of n standard normal variates.
double normalScore(int i, int n) {
  return nag2_normal_quantile(Nag_LowerTail, (i - 0.375) / (n + 0.25), nullptr);
}

// The coefficients of W, antisymmetric, ascending: the two outermost from their own polynomials in
// 1/sqrt(n), the rest proportional to the normal scores, of unit length altogether.
void fillCoefficients(std::span<double> a) {
  static constexpr double kOutermost[] = {0.0, 0.221157, -0.147981, -2.07119, 4.434685, -2.706056};
  static constexpr double kNext[] = {0.0, 0.042981, -0.293762, -1.752461, 5.682633, -3.582633};
  const int n = static_cast<int>(a.size());
  const std::size_t half = a.size() / 2;
  if (n == 3) {
    a[0] = -std::numbers::sqrt2 / 2.0;
    a[1] = 0.0;
    a[2] = -a[0];
    return;
  }
  double sumOfSquares = 0.0;
  for (std::size_t i = 0; i < half; ++i) {
    a[i] = normalScore(static_cast<int>(i) + 1, n);
    sumOfSquares += 2.0 * a[i] * a[i];
  }
  const double length = std::sqrt(sumOfSquares);
  const double inverseRoot = 1.0 / std::sqrt(static_cast<double>(n));
  const std::size_t own = n > 5 ? 2 : 1;  // coefficients from polynomials
  double scoresLeft = sumOfSquares;
  double lengthLeft = 1.0;
  double outer[2] = {};
  for (std::size_t i = 0; i < own; ++i) {
    outer[i] = a[i] / length - polynomial(i == 0 ? kOutermost : kNext, inverseRoot);
    scoresLeft -= 2.0 * a[i] * a[i];
    lengthLeft -= 2.0 * outer[i] * outer[i];
  }
  const double factor = std::sqrt(scoresLeft / lengthLeft);
  for (std::size_t i = 0; i < half; ++i) {
    a[i] = i < own ? outer[i] : a[i] / factor;
    a[a.size() - 1 - i] = -a[i];
  }
  if (n % 2 != 0) {
    a[half] = 0.0;
  }
}

// 1 - W: W is the squared correlation of sample and coefficients.  The sample is taken from its
// middle and in units of its range, so that neither its place nor its scale costs digits.
double oneMinusW(std::span<const double> x, std::span<const double> a) {
  // Only a range beyond the largest double needs halves; they would cost the smallest ones a digit.
  const double unit = std::isinf(x.back() - x.front()) ? 0.5 : 1.0;
  const double centre = unit * x[x.size() / 2];
  const double range = unit * x.back() - unit * x.front();
  const auto n = static_cast<double>(x.size());
  double meanX = 0.0;
  double meanA = 0.0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    meanX += (unit * x[i] - centre) / range;
    meanA += a[i];
  }
  meanX /= n;
  meanA /= n;
  double squaresA = 0.0;
  double squaresX = 0.0;
  double products = 0.0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    const double dx = (unit * x[i] - centre) / range - meanX;
    const double da = a[i] - meanA;
    squaresA += da * da;
    squaresX += dx * dx;
    products += da * dx;
  }
  const double root = std::sqrt(squaresA * squaresX);
  return std::max(0.0, (root - products) * (root + products) / (squaresA * squaresX));
}

// P(W' <= W) under normality, from 1 - W: exact for n = 3, else a normal approximation to a
// transform of log(1 - W).
double significance(double complement, int n) {
  static constexpr double kShift[] = {-2.273, 0.459};
  static constexpr double kSmallMean[] = {0.544, -0.39978, 0.025054, -6.714e-4};
  static constexpr double kSmallLogSd[] = {1.3822, -0.77857, 0.062767, -0.0020322};
  static constexpr double kLargeMean[] = {-1.5861, -0.31082, -0.083751, 0.0038915};
  static constexpr double kLargeLogSd[] = {-0.4803, -0.082676, 0.0030302};
  constexpr double kSmallest = 1e-99;  // what the published algorithm gives beyond its shift

  if (n == 3) {
    // W lies in [3/4, 1]; rounding must not make the probability negative.
    const double w = std::clamp(1.0 - complement, 0.75, 1.0);
    const double p =
        6.0 / std::numbers::pi * (std::asin(std::sqrt(w)) - std::asin(std::sqrt(0.75)));
    return std::clamp(p, 0.0, 1.0);
  }
  double y = std::log(complement);  // -infinity for W = 1, which gives 1
  double mean = 0.0;
  double sd = 0.0;
  if (n <= 11) {
    const double shift = polynomial(kShift, n);
    if (y >= shift) {
      return kSmallest;
    }
    y = -std::log(shift - y);
    mean = polynomial(kSmallMean, n);
    sd = std::exp(polynomial(kSmallLogSd, n));
  } else {
    const double logN = std::log(static_cast<double>(n));
    mean = polynomial(kLargeMean, logN);
    sd = std::exp(polynomial(kLargeLogSd, logN));
  }
  const double z = (y - mean) / sd;
  return std::isinf(z) ? 1.0 : nag2_normal_probability(Nag_UpperTail, z, nullptr);
}

// Sets the failure and returns false unless the sample is one that the algorithm is for.
bool acceptable(int n, const double* x, NagError* fail) {
  if (n < 3) {
    nag2::setFailure(fail, NAG2_TOO_FEW_ELEMENTS, kName,
                     "the Shapiro-Wilk test needs at least three elements");
    return false;
  }
  if (n > 5000) {
    nag2::setFailure(fail, NAG2_TOO_MANY_ELEMENTS, kName,
                     "the Shapiro-Wilk test takes at most 5000 elements");
    return false;
  }
  if (!std::all_of(x, x + n, [](double v) { return std::isfinite(v); })) {
    nag2::setFailure(fail, NAG2_DOMAIN, kName,
                     "the Shapiro-Wilk test takes no missing or infinite elements");
    return false;
  }
  if (!std::is_sorted(x, x + n)) {
    nag2::setFailure(fail, NAG2_NOT_SORTED, kName,
                     "the elements for the Shapiro-Wilk test are not in ascending order");
    return false;
  }
  if (x[0] == x[n - 1]) {
    nag2::setFailure(fail, NAG2_ZERO_RANGE, kName,
                     "all elements for the Shapiro-Wilk test are equal");
    return false;
  }
  return true;
}

}  // namespace

extern "C" void q32554(int n, const double* x, int compute_coefficients, double* a, double* w,
                       double* p, NagError* fail) {
  if (!acceptable(n, x, fail)) {
    return;
  }
  const auto size = static_cast<std::size_t>(n);
  if (compute_coefficients != 0) {
    fillCoefficients(std::span(a, size));
  }
  const double complement = oneMinusW(std::span(x, size), std::span<const double>(a, size));
  *w = 1.0 - complement;
  *p = significance(complement, n);
}
