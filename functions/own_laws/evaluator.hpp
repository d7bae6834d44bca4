// The caller's function: counted, checked, and brought to a scale that doubles can hold.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "vexel/interval.hpp"
#include "vexel/own_laws.hpp"

namespace vexel::own_laws {

inline constexpr std::size_t mostEvaluations = 2000;

// A density was found larger at `at` than anything before, beyond the scale.
struct HigherPeak {
  double at;
};

class DensityValues {
 public:
  DensityValues(FunctionOfSpans f, bool givesLogarithms, Interval support)
      : f_(std::move(f)), givesLogarithms_(givesLogarithms), support_(support) {}

  // Logarithms of f; -inf where it is 0.  std::invalid_argument for what is no density.
  void logarithms(std::span<const double> x, std::span<double> out);
  // f over the scale; HigherPeak if one is too large.
  void scaled(std::span<const double> x, std::span<double> out);
  // One value without count or check, for rejection.
  double scaledOnce(double x) const;
  double logarithmOnce(double x) const;
  // The slope of the logarithm, from the derivative of f and f over the scale.
  double logDerivative(double derivative, double scaledValue) const {
    return givesLogarithms_ ? derivative : derivative / scale_ / scaledValue;
  }

  void setScale(double logarithm);
  double logScale() const { return logScale_; }
  std::size_t count() const { return count_; }
  Interval support() const { return support_; }

 private:
  void call(std::span<const double> x, std::span<double> out);

  FunctionOfSpans f_;
  bool givesLogarithms_;
  Interval support_;
  double logScale_ = 0;
  double scale_ = 1;
  std::size_t count_ = 0;
};

class CumulativeValues {
 public:
  CumulativeValues(FunctionOfSpans f, Interval support) : f_(std::move(f)), support_(support) {}

  // std::invalid_argument for what is no probability.
  void operator()(std::span<const double> x, std::span<double> out);
  std::size_t count() const { return count_; }
  Interval support() const { return support_; }

 private:
  FunctionOfSpans f_;
  Interval support_;
  std::size_t count_ = 0;
};

}  // namespace vexel::own_laws
