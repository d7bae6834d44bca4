// Logarithms of discrete probabilities for rejection: absolute error a few 1e-15 wherever a variate
// may fall.
//
// C. Loader, Fast and accurate computation of binomial probabilities, 2000: what cancels in the
// logarithms of factorials is left out from the start.
#pragma once

#include <cmath>

namespace vexel::kernels {

// log k! - log(sqrt(2 pi k) (k / e)^k) for whole k >= 0; 0 for 0.
inline double stirlingError(double k) {
  constexpr double first[16] = {0.0,
                                0.081061466795327258,
                                0.041340695955409294,
                                0.027677925684998339,
                                0.020790672103765093,
                                0.016644691189821192,
                                0.013876128823070748,
                                0.01189670994589177,
                                0.010411265261972096,
                                0.0092554621827127329,
                                0.0083305634333628713,
                                0.0075736754879518408,
                                0.0069428401072095299,
                                0.0064089941880042071,
                                0.0059513701127588477,
                                0.0055547335519628014};
  if (k < 16) {
    return first[static_cast<int>(k)];
  }
  const double s = 1 / (k * k);
  return (1.0 / 12 - s * (1.0 / 360 - s * (1.0 / 1260 - s * (1.0 / 1680)))) / k;
}

// x log(x / m) + m - x for x > 0, m > 0.
inline double devianceFrom(double x, double m) {
  const double difference = x - m;
  if (std::abs(difference) < 0.1 * (x + m)) {
    const double v = difference / (x + m);
    double sum = difference * v;
    double term = 2 * x * v;
    for (int j = 3; j < 100; j += 2) {
      term *= v * v;
      const double next = sum + term / j;
      if (next == sum) {
        break;
      }
      sum = next;
    }
    return sum;
  }
  return x * std::log(x / m) + m - x;
}

inline constexpr double twoPi = 6.283185307179586;

inline double logPoisson(double k, double mean) {
  if (k == 0) {
    return -mean;
  }
  return -stirlingError(k) - devianceFrom(k, mean) - 0.5 * std::log(twoPi * k);
}

// p and q = 1 - p are both given, so that neither needs to be near 0.
inline double logBinomial(double k, double n, double p, double q) {
  if (k == 0) {
    return n == 0 ? 0 : p < 0.5 ? n * std::log1p(-p) : n * std::log(q);
  }
  if (k == n) {
    return q < 0.5 ? n * std::log1p(-q) : n * std::log(p);
  }
  return stirlingError(n) - stirlingError(k) - stirlingError(n - k) - devianceFrom(k, n * p) -
         devianceFrom(n - k, n * q) - 0.5 * std::log(twoPi * k * ((n - k) / n));
}

// The part that depends on k.
inline double logHypergeometricRatio(double k, double population, double marked, double drawn) {
  const double p = drawn / population;
  const double q = (population - drawn) / population;
  return logBinomial(k, marked, p, q) + logBinomial(drawn - k, population - marked, p, q);
}

inline double logHypergeometric(double k, double population, double marked, double drawn) {
  return logHypergeometricRatio(k, population, marked, drawn) -
         logBinomial(drawn, population, drawn / population, (population - drawn) / population);
}

}  // namespace vexel::kernels
