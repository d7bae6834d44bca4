// With q = 1 / (1 - 2 t), t the saddle point, x = nc q^2 + df q; in e = q - 1 the deviance is
// nc e^2 + df (e - log(1 + e)), without cancellation.
//
// O. E. Barndorff-Nielsen, Inference on full or partial parameters based on the standardized signed
// log likelihood ratio, Biometrika 73 (1986), for the root; H. E. Daniels, Saddlepoint
// approximations in statistics, Annals of Mathematical Statistics 25 (1954), for the density.

#include "noncentral_chi_square_saddle.hpp"

#include <algorithm>
#include <cmath>

#include "normal_functions.hpp"
#include "special.hpp"

namespace nag2 {

NoncentralChiSquareSaddle::NoncentralChiSquareSaddle(double df, double nc)
    : df_(df), nc_(nc), share_(df / nc) {}

double NoncentralChiSquareSaddle::excess(double x) const {
  const double y = x / nc_;
  const double q = 2.0 * y / (share_ + std::hypot(share_, 2.0 * std::sqrt(y)));
  const double distance = (x - std::fmax(nc_, df_)) - std::fmin(nc_, df_);
  return distance / nc_ / (q + 1.0 + share_);
}

// (1/2 - h) / e for h = (e - log(1 + e)) / e^2.
double NoncentralChiSquareSaddle::halfLess(double e) const {
  if (std::fabs(e) > 0.02) {
    return (0.5 - (e - std::log1p(e)) / (e * e)) / e;
  }
  double sum = 0.0;
  for (int k = 13; k >= 3; --k) {
    sum = 1.0 / k - e * sum;
  }
  return sum;
}

NoncentralChiSquareSaddle::Root NoncentralChiSquareSaddle::rootAt(double e) const {
  const double less = halfLess(e);
  const double square = 1.0 + share_ * (0.5 - e * less);
  const double root = std::sqrt(nc_) * std::sqrt(square);
  const double growth = (1.0 + share_ * less) / square;
  const double turned = e == 0.0 ? growth : std::log1p(std::fmax(-1.0, e * growth)) / e;
  return {e * root + 0.5 * turned / root, e * root,
          std::sqrt(nc_) * (1.0 + 0.5 * share_ / (1.0 + e)) / std::sqrt(square)};
}

double NoncentralChiSquareSaddle::tail(double x, Tail which) const {
  const double z = rootAt(excess(x)).value;
  return normalLower(which == Tail::lower ? z : -z);
}

double NoncentralChiSquareSaddle::logTail(double x, Tail which) const {
  const double z = rootAt(excess(x)).value;
  return logNormalLower(which == Tail::lower ? z : -z);
}

double NoncentralChiSquareSaddle::logDensity(double x) const {
  const double e = excess(x);
  const double q = 1.0 + e;
  const double w = rootAt(e).plain;
  // Cumulants over nc: 2^(r - 1) (r - 1)! q^r (df / nc + r q).
  const double second = 2.0 * q * q * (share_ + 2.0 * q);
  const double third = 8.0 * q * q * q * (share_ + 3.0 * q);
  const double fourth = 48.0 * q * q * q * q * (share_ + 4.0 * q);
  const double term =
      (fourth / (second * second) / 8.0 - 5.0 / 24.0 * third * third / (second * second * second)) /
      nc_;
  return std::log1p(term) - 0.5 * w * w - 0.5 * (std::log(second) + std::log(nc_)) - logRootTwoPi;
}

// Newton's steps from the normal root, of which the first is within 1 / sqrt(nc).
double NoncentralChiSquareSaddle::quantile(double p, Tail which) const {
  const double z = which == Tail::lower ? normalInverse(p) : -normalInverse(p);
  double e = z / (std::sqrt(nc_) * std::sqrt(1.0 + 0.5 * share_));
  for (int i = 0; i < 6; ++i) {
    const Root root = rootAt(e);
    e -= (root.value - z) / root.slope;
  }
  return nc_ + (df_ + nc_ * (e * (2.0 + e + share_)));
}

}  // namespace nag2
