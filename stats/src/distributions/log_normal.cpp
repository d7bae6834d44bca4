// Log-normal distribution: the logarithm is normal with mean mu and standard deviation sigma.
//
// Method  The normal distribution of a logarithm that is taken as a distance from mu.
// Source  Johnson, Kotz and Balakrishnan, Continuous Univariate Distributions, volume 1, 2nd
//         edition (1994), chapter 14.
// Draws   One normal variate.
// Error   Probability below 0.02 at 22 points, in units of 1e-14 max(1, condition)
//         (tests/reference/data/closed_forms.txt).

#include <cmath>

#include "distributions/families.hpp"

namespace {

// log(x) - mu as the logarithm of x / exp(mu), so that a large mu does not magnify the rounding of
// log(x); near exp(mu) it is taken of the relative distance from there.
double logDistance(double x, double mu) {
  const double center = std::exp(mu);
  const double distance = (x - center) / center;
  if (std::fabs(distance) < 0.5) {
    return std::log1p(distance);
  }
  const double ratio = x / center;
  return std::isnormal(center) && std::isnormal(ratio) ? std::log(ratio) : std::log(x) - mu;
}

}  // namespace

double STATS_LogNormalProbability_HW(VKernelVector kv, double x, double mu, double sigma) {
  return STATS_NormalProbability_HW(kv, logDistance(x, mu), 0.0, sigma);
}

// exp(mu + sigma z), the rounding error of the sum carried into the result.
double STATS_LogNormalDeviate_HW(VKernelVector kv, double p, double mu, double sigma) {
  const double t = STATS_NormalDeviate_HW(kv, p, 0.0, sigma);
  const double sum = t + mu;
  const double value = std::exp(sum);
  const double rest = (mu - (sum - t)) + (t - (sum - (sum - t)));
  return std::isfinite(value) && std::isfinite(rest) ? value + value * rest : value;
}

double STATS_LogNormalRandomVariate_HW(VKernelVector kv, double mu, double sigma) {
  return std::exp(STATS_NormalRandomVariate_HW(kv, mu, sigma));
}
