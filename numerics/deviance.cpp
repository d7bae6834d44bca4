// Prefixes of the gamma and beta families in saddle-point form.

#include "deviance.hpp"

#include <cmath>

namespace nag2 {

namespace {

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

}  // namespace

// From 16 on, ten terms of the asymptotic series: next one below 2e-18.
long double stirlingError(double z) {
  if (z < 16.0) {
    const long double w = z;
    return std::lgamma(w + 1.0L) - (w + 0.5L) * std::log(w) + w - 0.5L * std::log(twoPi);
  }
  // Bernoulli numbers B(2k) / (2k (2k - 1)).
  static constexpr long double coefficient[] = {
      1.0L / 12.0L,         -1.0L / 360.0L,        1.0L / 1260.0L, -1.0L / 1680.0L,
      1.0L / 1188.0L,       -691.0L / 360360.0L,   1.0L / 156.0L,  -3617.0L / 122400.0L,
      43867.0L / 244188.0L, -174611.0L / 125400.0L};
  const long double inverse = 1.0L / static_cast<long double>(z);
  const long double square = inverse * inverse;
  int k = z > 1e5 ? 3 : z > 200.0 ? 6 : 10;
  long double sum = 0.0L;
  while (k > 0) {
    sum = sum * square + coefficient[--k];
  }
  return sum * inverse;
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
  const long double exponent = stirlingError(a) + stirlingError(b) -
                               stirlingError(static_cast<double>(n)) +
                               deviance(p, n * x, difference) + deviance(q, n * y, -difference);
  return static_cast<double>(std::exp(-exponent) * std::sqrt(n / (twoPi * p * q)));
}

}  // namespace nag2
