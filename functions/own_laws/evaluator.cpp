#include "functions/own_laws/evaluator.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>

#include "functions/data/text.hpp"

namespace vexel::own_laws {

void DensityValues::call(std::span<const double> x, std::span<double> out) {
  count_ += x.size();
  f_(x, out);
  for (std::size_t i = 0; i < x.size(); ++i) {
    const char* wrong = std::isnan(out[i]) ? "not a number"
                        : out[i] == std::numeric_limits<double>::infinity()
                            ? "infinite: an infinite value may lie at an end of the support only"
                        : !givesLogarithms_ && out[i] < 0 ? "negative"
                                                          : nullptr;
    if (wrong != nullptr) {
      throw std::invalid_argument("the density at " + number(x[i]) + " is " + wrong);
    }
  }
}

void DensityValues::logarithms(std::span<const double> x, std::span<double> out) {
  call(x, out);
  if (!givesLogarithms_) {
    std::transform(out.begin(), out.end(), out.begin(), [](double y) { return std::log(y); });
  }
}

void DensityValues::scaled(std::span<const double> x, std::span<double> out) {
  call(x, out);
  for (std::size_t i = 0; i < x.size(); ++i) {
    out[i] = givesLogarithms_ ? std::exp(out[i] - logScale_) : out[i] / scale_;
    if (std::isinf(out[i])) {
      throw HigherPeak{x[i]};
    }
  }
}

double DensityValues::scaledOnce(double x) const {
  double y = 0;
  f_(std::span(&x, 1), std::span(&y, 1));
  return givesLogarithms_ ? std::exp(y - logScale_) : y / scale_;
}

double DensityValues::logarithmOnce(double x) const {
  double y = 0;
  f_(std::span(&x, 1), std::span(&y, 1));
  return givesLogarithms_ ? y : std::log(y);
}

void DensityValues::setScale(double logarithm) {
  logScale_ = logarithm;
  scale_ = givesLogarithms_ ? 1 : std::exp(logarithm);
  if (!givesLogarithms_) {
    // A power of two, so that dividing by it rounds nothing.
    scale_ = std::ldexp(1.0, std::clamp(std::ilogb(scale_), -1020, 1020));
    logScale_ = std::log(scale_);
  }
}

void CumulativeValues::operator()(std::span<const double> x, std::span<double> out) {
  constexpr double slack = 1e-9;
  count_ += x.size();
  f_(x, out);
  for (std::size_t i = 0; i < x.size(); ++i) {
    if (!(out[i] >= -slack && out[i] <= 1 + slack)) {
      throw std::invalid_argument("the distribution function must be in [0, 1]; at " +
                                  number(x[i]) + " it is " + number(out[i]));
    }
    out[i] = std::clamp(out[i], 0.0, 1.0);
  }
}

}  // namespace vexel::own_laws
