// What the laws need of the standard normal one beside its tail and quantile.
#pragma once

namespace vexel::detail {

// log P(Z > z), at any z.
double logNormalUpper(double z);
// P(|Z| < z) for z >= 0 and its inverse, from the probability p and its complement.
double normalCentral(double z);
double normalCentralInverse(double p, double complement);
// Mills' ratio R(z) = P(Z > z) / phi(z), and 1 - z R(z), for z >= 0.
struct Mills {
  double ratio;
  double rest;
};
Mills mills(double z);

}  // namespace vexel::detail
