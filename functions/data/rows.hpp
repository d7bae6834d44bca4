// Several variables side by side, read as sample.hpp reads one: in blocks of doubles, without the
// rows in which something is missing.
#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <vector>

#include "functions/data/sample.hpp"
#include "vexel/data.hpp"

namespace vexel {

class Rows {
 public:
  static constexpr std::size_t block = Sample::block;

  // Throws std::length_error unless all columns and the weights are of one size.
  Rows(const char* function, std::span<const Data> columns, Data weights, Missing missing);

  std::size_t size() const { return columns_.empty() ? 0 : columns_[0].size(); }
  std::size_t width() const { return columns_.size(); }
  bool weighted() const { return weights_.given(); }
  const char* function() const { return function_; }

  // From now on column j comes multiplied by 2^-exponents[j]; the weights by 2^-wExponent.
  void scale(std::vector<int> exponents, int wExponent);
  int wExponent() const { return wExponent_; }
  int exponent(std::size_t j) const { return exponents_[j]; }

  // The present rows of positive weight; use(columns, w, n), otherwise as Sample::present.
  using Use = std::function<void(const double* const* columns, const double* w, std::size_t n)>;
  Sample::Presence present(const Use& use) const;
  bool undefined(const Sample::Presence& found) const;

  // Which columns have something missing that counts, in a row of positive weight; all of them
  // where a weight is missing.
  std::vector<bool> columnsMissing() const;
  // Those columns alone, in their order.
  Rows only(const std::vector<std::size_t>& columns) const;

  // Mean and standard deviation of some finite points of column j, at equal distances.
  struct Rough {
    double mean;
    double deviation;
  };
  Rough rough(std::size_t j) const;

 private:
  const char* function_;
  std::vector<Data> columns_;
  Data weights_;
  Missing missing_;
  std::vector<int> exponents_;
  int wExponent_ = 0;
};

}  // namespace vexel
