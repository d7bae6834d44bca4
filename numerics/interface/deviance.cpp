// Prefixes of the gamma and beta families in saddle-point form.

#include "numerics/interface/deviance.hpp"

#include <cmath>

#include "numerics/special/normal_functions.hpp"
#include "numerics/special/special.hpp"
#include "numerics/special/stirling_tables.hpp"

namespace nag2 {

namespace {

// Below this exponent plain doubles are exact enough: their rounding then costs some 1e-15.
constexpr double plainExponent = 5.0;

constexpr long double twoPi = 6.283185307179586476925286766559L;

// t - log(1 + t) for t > -1, without cancellation at small t: with r = t / (2 + t),
// log(1 + t) = 2 artanh r.
long double minusLog1pmx(long double t) {
  const long double r = t / (2.0L + t);
  const long double square = r * r;
  long double sum = 0.0L;
  long double power = 1.0L;
  for (int k = 3; k < 60; k += 2) {
    const long double term = power / static_cast<long double>(k);
    sum += term;
    if (term < 1e-20L * sum) {
      break;
    }
    power *= square;
  }
  return r * (t - 2.0L * square * sum);
}

// deviance() in double, for results of moderate size.
double plainDeviance(double a, double m, double difference) {
  const double t = difference / a;
  return std::fabs(t) < 0.4 ? a * nag2::minusLog1pmx(t) : difference - a * std::log(m / a);
}

long double stirlingErrorByFit(double z) {
  const double u = 1.0 / z;
  const int piece = z < 2.0 ? 0 : z < 4.0 ? 1 : 2;
  const double t = piece == 0   ? 4.0 * u - 3.0
                   : piece == 1 ? 8.0 * u - 3.0
                                : (u - 0.15625) / 0.09375;
  const double* c = stirlingFits[piece];
  double sum = 0.0;
  for (int k = 14; k > 0; --k) {
    sum = sum * t + c[k];
  }
  return (static_cast<long double>(sum * t) + c[0]) / static_cast<long double>(z);
}

}  // namespace

// From 16 on, ten terms of the asymptotic series: next one below 2e-18.
long double stirlingError(double z) {
  if (z < 16.0) {
    if (const double twice = 2.0 * z; twice >= 1.0 && twice == std::floor(twice)) {
      return stirlingOfHalves[static_cast<int>(twice) - 1];
    }
    if (z >= 1.0) {
      return stirlingErrorByFit(z);
    }
    const long double w = z;
    return std::lgamma(w + 1.0L) - (w + 0.5L) * std::log(w) + w - 0.5L * std::log(twoPi);
  }
  // Bernoulli numbers B(2k) / (2k (2k - 1)), k > 1; only the first term needs more than a double.
  static constexpr double coefficient[] = {
      -1.0 / 360.0, 1.0 / 1260.0,       -1.0 / 1680.0,      1.0 / 1188.0,        -691.0 / 360360.0,
      1.0 / 156.0,  -3617.0 / 122400.0, 43867.0 / 244188.0, -174611.0 / 125400.0};
  const double square = 1.0 / z / z;
  int k = z > 1e5 ? 2 : z > 200.0 ? 5 : 9;
  double sum = 0.0;
  while (k > 0) {
    sum = sum * square + coefficient[--k];
  }
  return (1.0L / 12.0L + sum * square) / static_cast<long double>(z);
}

long double deviance(long double a, long double m, long double difference) {
  const long double t = difference / a;
  if (std::fabs(t) < 0.4L) {
    return a * minusLog1pmx(t);
  }
  // The quotient overflows or underflows only where the two logarithms are exact enough apart.
  const long double quotient = m / a;
  return difference - a * std::log(quotient);
}

double poissonWeight(double a, double x) {
  if (x == 0.0 || a == 0.0) {
    return a == 0.0 ? std::exp(-x) : 0.0;
  }
  if (std::isinf(x) || std::isinf(a)) {
    return 0.0;
  }
  const long double mean = x;
  const long double shape = a;
  const auto stirling = static_cast<double>(stirlingError(a));
  const auto excess = static_cast<double>(mean - shape);
  if (const double plain = stirling + plainDeviance(a, x, excess);
      plain < plainExponent && std::fabs(excess) < 20.0 * plainExponent) {
    return std::exp(-plain) * (inverseRootTwoPi / std::sqrt(a));
  }
  const long double exponent = stirlingError(a) + deviance(shape, mean, mean - shape);
  return static_cast<double>(std::exp(-exponent) / std::sqrt(twoPi * shape));
}

double binomialWeight(double a, double b, long double x, long double y) {
  const long double p = a;
  const long double q = b;
  if (a == 0.0 || b == 0.0) {
    const long double rest = a == 0.0 ? q : p;
    const long double base = a == 0.0 ? y : x;
    const long double other = a == 0.0 ? x : y;
    if (rest == 0.0L) {
      return 1.0;
    }
    return static_cast<double>(
        std::exp(rest * (other < 0.5L ? std::log1p(-other) : std::log(base))));
  }
  if (x <= 0.0L || y <= 0.0L) {
    return 0.0;
  }
  const long double n = p + q;
  const long double difference = q * x - p * y;  // n x - a
  const long double stirling =
      stirlingError(a) + stirlingError(b) - stirlingError(static_cast<double>(n));
  const auto gap = static_cast<double>(difference);
  const auto total = static_cast<double>(n);
  if (const double plain = static_cast<double>(stirling) +
                           plainDeviance(a, static_cast<double>(n * x), gap) +
                           plainDeviance(b, static_cast<double>(n * y), -gap);
      plain < plainExponent && std::fabs(gap) < 20.0 * plainExponent) {
    return std::exp(-plain) * inverseRootTwoPi * std::sqrt(total / a / b);
  }
  const long double exponent =
      stirling + deviance(p, n * x, difference) + deviance(q, n * y, -difference);
  return static_cast<double>(std::exp(-exponent) * std::sqrt(n / (twoPi * p * q)));
}

}  // namespace nag2
