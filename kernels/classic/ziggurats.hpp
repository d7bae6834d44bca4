// The ziggurats of the standard normal and exponential distributions: G. Marsaglia and W. W. Tsang,
// The Ziggurat Method for Generating Random Variables, Journal of Statistical Software 5(8), 2000,
// with 256 layers.
//
// Oddities that every stored sample depends on: a refused wedge comes back to its first abscissa
// and layer where a textbook ziggurat starts over, and the exponential one accepts every negative
// integer without a test.  Laws (by quadrature): the normal one is within 4.2e-6 of the
// distribution function, its variance 0.99997; the exponential one is off by up to 9.5e-4 (at
// 0.19), its mean 1.0020, its variance 1.0129.
#pragma once

#include <cmath>
#include <cstdint>

#include "kernels/classic/uniforms.hpp"

namespace vexel::kernels::classic {

struct ZigguratTables {
  static constexpr int kLayers = 256;
  std::int32_t K[kLayers];  // quick-acceptance thresholds
  double W[kLayers];        // from a 32-bit integer to an abscissa
  double F[kLayers];        // density at the layer's right edge
};

class NormalZiggurat {
 public:
  static constexpr double kEdge = 3.654152885361009;  // right edge r of the base layer
  static constexpr double kArea = 0.00492867323399;   // of every layer
  static const ZigguratTables tables;

  // 98.5 % of the variates cost one integer, one comparison and one product.
  template <typename Uniforms>
  static double next(Uniforms& uniforms) {
    const std::int32_t h = uniforms.integer();
    const int layer = h & 255;
    if (wrappingAbs(h) < tables.K[layer]) [[likely]] {
      return h * tables.W[layer];
    }
    return rare(uniforms, h);
  }

 private:
  // |h| in two's complement: -2^31 stays negative, so it is below every threshold.
  static std::int32_t wrappingAbs(std::int32_t h) {
    const auto sign = static_cast<std::uint32_t>(h >> 31);
    return static_cast<std::int32_t>((static_cast<std::uint32_t>(h) ^ sign) - sign);
  }

  // Beyond the last edge r: Marsaglia (1964), with the uniform for x drawn before the one for y.
  template <typename Uniforms>
  static double tail(Uniforms& uniforms, bool negative) {
    for (;;) {
      const double x = -logarithm(uniforms.unit()) / kEdge;
      const double y = -logarithm(uniforms.unit());
      if (x * x <= 2.0 * y) {
        return negative ? -kEdge - x : kEdge + x;
      }
    }
  }

  // What the quick test refuses.  After a refused wedge the next integer serves the quick test
  // only.
  template <typename Uniforms>
  [[gnu::noinline]] static double rare(Uniforms& uniforms, std::int32_t h) {
    const int layer = h & 255;
    if (layer == 0) {
      return tail(uniforms, h <= 0);
    }
    const double x = h * tables.W[layer];
    const double f = std::exp(-0.5 * x * x);
    for (;;) {
      const double u = uniforms.unit();
      if (f > tables.F[layer] + u * (tables.F[layer - 1] - tables.F[layer])) {
        return x;
      }
      const std::int32_t retry = uniforms.integer();
      if (wrappingAbs(retry) < tables.K[retry & 255]) {
        return retry * tables.W[retry & 255];
      }
    }
  }
};

class ExponentialZiggurat {
 public:
  static constexpr double kEdge = 7.69711747013105;
  static constexpr double kArea = 0.003949659822581557;
  static const ZigguratTables tables;

  template <typename Uniforms>
  static double next(Uniforms& uniforms) {
    const std::int32_t h = uniforms.integer();
    const int layer = h & 255;
    if (h < tables.K[layer]) [[likely]] {
      return std::fabs(h * tables.W[layer]);
    }
    return rare(uniforms, h);
  }

 private:
  // The 1.1 % that the quick test refuses, h >= 0.  Only the tail restarts the law at r.
  template <typename Uniforms>
  [[gnu::noinline]] static double rare(Uniforms& uniforms, std::int32_t h) {
    const int layer = h & 255;
    if (layer == 0) {
      return kEdge - logarithm(uniforms.unit());
    }
    const double x = h * tables.W[layer];
    const double f = std::exp(-x);
    for (;;) {
      const double u = uniforms.unit();
      if (f > tables.F[layer] + u * (tables.F[layer - 1] - tables.F[layer])) {
        return x;
      }
      const std::int32_t retry = uniforms.integer();
      if (retry < tables.K[retry & 255]) {
        return std::fabs(retry * tables.W[retry & 255]);
      }
    }
  }
};

}  // namespace vexel::kernels::classic
