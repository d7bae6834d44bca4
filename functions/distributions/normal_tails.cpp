// What the laws need of the standard normal one beside its tail and quantile.
#include "functions/distributions/normal_tails.hpp"

#include <cmath>
#include <numbers>

#include "functions/distributions/precise.hpp"
#include "numerics/special/normal_functions.hpp"

namespace vexel::detail {

double logNormalUpper(double z) {
  if (z < 0.0) {
    return std::log1p(-nag2::normalLower(z));
  }
  if (z < 30.0) {
    return std::log(nag2::normalLower(-z));
  }
  // R(z) = (1 - 1/z^2 + 3/z^4 - 15/z^6 + ...) / z.
  const double r = 1.0 / (z * z);
  const double series = -r * (1.0 - r * (3.0 - r * (15.0 - r * (105.0 - r * 945.0))));
  return -0.5 * z * z - (std::log(z) + logRootTwoPi) + std::log1p(series);
}

double normalCentral(double z) { return std::erf(z * (0.5 * std::numbers::sqrt2)); }

// Newton's steps on the smaller of p and its complement.
double normalCentralInverse(double p, double complement) {
  if (complement < 0.5) {
    return -nag2::normalInverse(0.5 * complement);
  }
  double z = p < 0.1 ? p * (0.5 * rootTwoPi) : nag2::normalInverse(0.5 + 0.5 * p);
  for (int i = 0; i < (p < 1e-9 ? 0 : 3); ++i) {
    z -= (normalCentral(z) - p) * (0.5 * rootTwoPi) * std::exp(0.5 * z * z);
  }
  return z;
}

// Laplace's continued fraction R = 1 / (z + K), K = 1 / (z + 2 / (z + 3 / ...)), so that
// 1 - z R = K R.
Mills mills(double z) {
  if (z < 1.5) {
    const double ratio = rootTwoPi * std::exp(0.5 * z * z) * nag2::normalLower(-z);
    return {ratio, 1.0 - z * ratio};
  }
  double k = 0.0;
  for (double n = std::ceil(12.0 + 400.0 / (z * z)); n > 0.0; n -= 1.0) {
    k = n / (z + k);
  }
  const double ratio = 1.0 / (z + k);
  return {ratio, k * ratio};
}

}  // namespace vexel::detail
