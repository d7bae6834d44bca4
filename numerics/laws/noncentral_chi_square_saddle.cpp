// With q = 1 / (1 - 2 t), t the saddle point, x = nc q^2 + df q; in e = q - 1 the deviance is
// nc e^2 + df (e - log(1 + e)), without cancellation.
//
// O. E. Barndorff-Nielsen, Inference on full or partial parameters based on the standardized signed
// log likelihood ratio, Biometrika 73 (1986), for the root; H. E. Daniels, Saddlepoint
// approximations in statistics, Annals of Mathematical Statistics 25 (1954), for the density.

#include "numerics/laws/noncentral_chi_square_saddle.hpp"

#include <algorithm>
#include <cmath>

#include "numerics/special/normal_functions.hpp"
#include "numerics/special/special.hpp"

namespace nag2 {

NoncentralChiSquareSaddle::NoncentralChiSquareSaddle(double df, double nc)
    : df_(df), nc_(nc), share_(df / nc) {}

NoncentralChiSquareSaddle::Place NoncentralChiSquareSaddle::placeOf(double x) const {
  const double y = x / nc_;
  const double root = std::sqrt(y);
  // Of y / share where its square is nothing against it.
  const double q = 2.0 * root > 1e-9 * share_
                       ? 2.0 * root * (root / (share_ + std::hypot(share_, 2.0 * root)))
                       : x / df_;
  const double distance = (x - std::fmax(nc_, df_)) - std::fmin(nc_, df_);
  return {distance / nc_ / (q + 1.0 + share_), q};
}

// (1/2 - h) / e for h = (e - log(1 + e)) / e^2.
double NoncentralChiSquareSaddle::halfLess(Place at) const {
  const double e = at.e;
  if (std::fabs(e) > 0.02) {
    return (0.5 - (e - (at.q < 0.5 ? std::log(at.q) : std::log1p(e))) / (e * e)) / e;
  }
  double sum = 0.0;
  for (int k = 13; k >= 3; --k) {
    sum = 1.0 / k - e * sum;
  }
  return sum;
}

NoncentralChiSquareSaddle::Root NoncentralChiSquareSaddle::rootAt(Place at) const {
  const double e = at.e;
  const double less = halfLess(at);
  const double square = 1.0 + share_ * (0.5 - e * less);
  const double root = std::sqrt(nc_) * std::sqrt(square);
  const double growth = (1.0 + share_ * less) / square;
  const double turned = e == 0.0   ? growth
                        : e < -0.5 ? std::log((at.q + 0.5 * share_) / square) / e
                                   : std::log1p(e * growth) / e;
  return {e * root + 0.5 * turned / root, e * root,
          std::sqrt(nc_) * (1.0 + 0.5 * share_ / at.q) / std::sqrt(square)};
}

double NoncentralChiSquareSaddle::tail(double x, Tail which) const {
  const double z = rootAt(placeOf(x)).value;
  return normalLower(which == Tail::lower ? z : -z);
}

double NoncentralChiSquareSaddle::logTail(double x, Tail which) const {
  const double z = rootAt(placeOf(x)).value;
  return logNormalLower(which == Tail::lower ? z : -z);
}

double NoncentralChiSquareSaddle::logDensity(double x) const {
  const Place at = placeOf(x);
  const double q = at.q;
  const double w = rootAt(at).plain;
  // Cumulants over nc: 2^(r - 1) (r - 1)! q^r (df / nc + r q).
  const double weight = share_ + 2.0 * q;
  const double third = (share_ + 3.0 * q) / weight;
  const double fourth = (share_ + 4.0 * q) / weight;
  const double term = (1.5 * fourth - 5.0 / 3.0 * third * third) / (weight * nc_);
  const double logVariance = std::log(2.0 * weight) + 2.0 * std::log(q) + std::log(nc_);
  return std::log1p(std::fmax(term, -0.5)) - 0.5 * w * w - 0.5 * logVariance - logRootTwoPi;
}

// Newton's steps from the normal root, of which the first is within 1 / sqrt(nc).
double NoncentralChiSquareSaddle::quantile(double p, Tail which) const {
  const double z = which == Tail::lower ? normalInverse(p) : -normalInverse(p);
  double e = z / (std::sqrt(nc_) * std::sqrt(1.0 + 0.5 * share_));
  for (int i = 0; i < 6; ++i) {
    const Root root = rootAt({e, 1.0 + e});
    e -= (root.value - z) / root.slope;
  }
  return nc_ + (df_ + nc_ * (e * (2.0 + e + share_)));
}

}  // namespace nag2
