// Running sums in twice the working precision.
#pragma once

#include <cmath>
#include <cstddef>

#include "kernels/exact_product.hpp"

namespace vexel::kernels {

// The sum so far.  A sum that passes the largest double is kept in units of 2^70 from there on, so
// that it may come back; infinities and NaN stay.
class RunningSum {
 public:
  static constexpr std::size_t chunk = 1024;

  void add(double x) {
    if (!std::isfinite(x)) {
      special_ += x;
      return;
    }
    if (!scaled_) {
      const double high = high_;
      const double low = low_;
      take(x);
      if (std::isfinite(high_)) {
        return;
      }
      high_ = high * kUnit;
      low_ = low * kUnit;
      scaled_ = true;
    }
    take(x * kUnit);
  }
  // w x, w finite.
  void addProduct(double w, double x) {
    const double product = w * x;
    if (!std::isfinite(product) && std::isfinite(x)) {
      high_ *= scaled_ ? 1 : kUnit;
      low_ *= scaled_ ? 1 : kUnit;
      scaled_ = true;
      take(w * (x * kUnit));
      return;
    }
    add(product);
    if (std::isfinite(product)) {
      low_ += exactProductError(w, x, product) * (scaled_ ? kUnit : 1);
    }
  }

  double value() const {
    if (special_ != 0) {
      return special_;
    }
    return scaled_ ? (high_ + low_) / kUnit : high_ + low_;
  }

  // Writes the sums up to each of x[0 .. chunk-1], added to what is there: by eight lanes, each
  // with an eighth of the chunk.  The same bits on every machine.
  void addChunk(const double* x, double* out);

 private:
  static constexpr double kUnit = 0x1p-70;

  // The pair stays normalized: each step is off by a few 2^-106 of the sum.
  void take(double x) {
    const double sum = high_ + x;
    const double part = sum - high_;
    const double rest = low_ + ((high_ - (sum - part)) + (x - part));
    high_ = sum + rest;
    low_ = rest - (high_ - sum);
  }

  double high_ = 0;
  double low_ = 0;
  double special_ = 0;
  bool scaled_ = false;
};

}  // namespace vexel::kernels
