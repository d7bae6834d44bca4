// Variates by transformation and rejection from a source of uniforms; those by inversion are the
// quantile of one uniform.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

#include "kernels/classic/uniforms.hpp"
#include "kernels/classic/ziggurats.hpp"

namespace vexel::kernels::classic {

template <typename Uniforms>
double normal(Uniforms& uniforms, double mean, double deviation) {
  return NormalZiggurat::next(uniforms) * deviation + mean;
}

template <typename Uniforms>
double exponential(Uniforms& uniforms, double scale) {
  return ExponentialZiggurat::next(uniforms) * scale;
}

// Gamma variates: G. Marsaglia and W. W. Tsang, A Simple Method for Generating Gamma Variables, ACM
// Transactions on Mathematical Software 26, 2000; shapes below 1 by the power of one more uniform,
// shape 1 from the exponential ziggurat.  A NaN or negative shape gives NaN without a draw.
class Gamma {
 public:
  explicit Gamma(double shape) : shape_(shape) {
    if (shape != 1.0) {
      d_ = shape > 1.0 ? shape - kThird : shape + 1.0 - kThird;
      s_ = 1.0 / std::sqrt(9.0 * d_);
    }
  }

  template <typename Uniforms>
  double operator()(Uniforms& uniforms, double scale) const {
    if (!(shape_ >= 0.0)) {
      return std::numeric_limits<double>::quiet_NaN();
    }
    if (shape_ == 1.0) {
      return exponential(uniforms, scale);
    }
    if (shape_ > 1.0) {
      return cubedNormal(uniforms, scale);
    }
    // Of a shape that rounds to 1 the variate is exponential, as of 1 itself.
    const double g =
        shape_ + 1.0 == 1.0 ? exponential(uniforms, scale) : cubedNormal(uniforms, scale);
    const double u = uniforms.unit();
    return rootOf(u) * g;
  }

 private:
  // u^(1 / shape), out of line: a compiler that knows the shape would take a power of its own,
  // whose last bit is another.
  double rootOf(double u) const;

  static constexpr double kThird = 0.3333333333333333;

  // The cube of a normal, accepted in 95 % of the trials or more.  The uniform is drawn after the
  // normal, and only when the cube is positive.
  template <typename Uniforms>
  double cubedNormal(Uniforms& uniforms, double scale) const {
    for (;;) {
      const double z = normal(uniforms, 0.0, 1.0);
      double v = 1.0 + s_ * z;
      if (v <= 0.0) {
        continue;
      }
      v = v * v * v;
      const Unit u = uniforms.unit();
      const double squared = z * z;
      if (1.0 - 0.0331 * (squared * squared) > u) {
        return v * d_ * scale;
      }
      if (0.5 * squared + d_ * (1.0 - v + std::log(v)) > logarithm(u)) {
        return v * d_ * scale;
      }
    }
  }

  double shape_;
  double d_ = 0.0;
  double s_ = 0.0;
};

// Cauchy variates: J. H. Ahrens and U. Dieter, Efficient Table-Free Sampling Methods for the
// Exponential, Cauchy, and Normal Distributions, Communications of the ACM 31, 1988, with their
// constants.  One uniform in 99.8 % of the cases; otherwise pairs until one is accepted, the
// abscissa's uniform before the test's.
template <typename Uniforms>
double cauchy(Uniforms& uniforms, double location, double scale) {
  // The paper's names: the first hat, the second, and the test between the second and the density.
  constexpr double a = 0.6380631366077802;
  constexpr double b = 0.595948606052907;
  constexpr double q = 0.9339962957603656;
  constexpr double w = 0.2488702280083841;
  constexpr double A = 0.6366197723675813;
  constexpr double B = 0.5972997593539963;
  constexpr double H = 0.0214949004570452;
  constexpr double P = 4.9125013953033205;
  double u = uniforms.unit() - 0.5;
  double t = w - u * u;
  if (t > 0.0) {
    return u * (A / t + B) * scale + location;
  }
  for (;;) {
    u = uniforms.unit() - 0.5;
    t = 0.25 - u * u;
    const double x = u * (a / t + b);
    const double test = uniforms.unit();
    const double score = (x * x + 1.0) * (H * test + P);
    if (t * t * (score - q) + t <= 0.5) {
      return x * scale + location;
    }
  }
}

// Maxwell variates by Johnk's method: C. Walck, Hand-book on Statistical Distributions for
// Experimentalists, Stockholm 1996, chapter 25.  Draws one uniform, pairs until one lies in the
// quarter disc (1.27 pairs), one uniform.
template <typename Uniforms>
double maxwell(Uniforms& uniforms, double scale) {
  const double e = logarithm(uniforms.unit());
  for (;;) {
    const double v = uniforms.unit();
    const double w = uniforms.unit();
    const double s = v * v + w * w;
    if (s <= 1.0) {
      const double l = logarithm(uniforms.unit());
      const double y = -e - l * (v * v / s);
      return std::sqrt(2.0 * y) * scale;
    }
  }
}

// Moyal variates by rejection from a uniform angle: C. Walck, as above, chapter 26.  Two uniforms a
// trial, the angle's first; 2.9 trials a variate.
template <typename Uniforms>
double moyal(Uniforms& uniforms, double location, double scale, double pi) {
  const double k = std::sqrt(2.0 * pi);
  for (;;) {
    const double theta = uniforms.unit() * pi - 0.5 * pi;
    const double w = uniforms.unit();
    const double x = std::tan(theta);
    const double cosine = std::cos(theta);
    const double g = std::exp(-0.5 * (std::exp(-x) + x)) * (1.0 / k) / (cosine * cosine);
    if (g >= 0.912 * w) {
      return x * scale + location;
    }
  }
}

// Inverse Gaussian variates: J. R. Michael, W. R. Schucany and R. W. Haas, Generating Random
// Variates Using Transformations with Multiple Roots, The American Statistician 30, 1976.  A
// chi-square variate, then one uniform that chooses between the two roots.
template <typename Uniforms>
double inverseGaussian(Uniforms& uniforms, double mean, double shape) {
  const double y = Gamma(0.5)(uniforms, 2.0);
  const double m = mean * y;
  const double x = (2.0 * shape + m - std::sqrt(m * m + 4.0 * shape * m)) * (0.5 * mean / shape);
  const double u = uniforms.unit();
  return u * (mean + x) <= mean ? x : mean * mean / x;
}

}  // namespace vexel::kernels::classic
