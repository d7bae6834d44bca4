// Whole numbers of any size, times a power of 2^32: for the few operations that turn exact sums
// into results with one rounding.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "kernels/exact_sum.hpp"

namespace vexel::kernels {

class Whole {
 public:
  Whole() = default;
  Whole(std::int64_t x) : negative_(x < 0) {
    auto size = static_cast<std::uint64_t>(x);
    for (size = negative_ ? 0 - size : size; size != 0; size >>= 32) {
      digits_.push_back(static_cast<std::uint32_t>(size));
    }
  }
  // Of digits from the least significant on, in units of 2^(32 exponent).
  Whole(bool negative, int exponent, std::vector<std::uint32_t> digits)
      : negative_(negative), exponent_(exponent), digits_(std::move(digits)) {
    trim();
  }

  bool isZero() const { return digits_.empty(); }
  bool negative() const { return negative_; }
  int exponent() const { return exponent_; }
  const std::vector<std::uint32_t>& digits() const { return digits_; }

  friend Whole operator-(Whole a) {
    a.negative_ = !a.isZero() && !a.negative_;
    return a;
  }
  friend Whole operator+(const Whole& a, const Whole& b) {
    if (a.isZero() || b.isZero()) {
      return a.isZero() ? b : a;
    }
    const int exponent = std::min(a.exponent_, b.exponent_);
    const int top = std::max(a.top(), b.top()) + 1;
    std::vector<std::int64_t> cells(static_cast<std::size_t>(top - exponent) + 1);
    for (const Whole* const x : {&a, &b}) {
      std::int64_t* to = cells.data() + (x->exponent_ - exponent);
      for (const std::uint32_t d : x->digits_) {
        *to++ += x->negative_ ? -static_cast<std::int64_t>(d) : static_cast<std::int64_t>(d);
      }
    }
    return fromCells(cells, exponent);
  }
  friend Whole operator-(const Whole& a, const Whole& b) { return a + -b; }
  friend Whole operator*(const Whole& a, const Whole& b) {
    std::vector<std::uint32_t> product(a.digits_.size() + b.digits_.size());
    for (std::size_t i = 0; i < a.digits_.size(); ++i) {
      std::uint64_t carry = 0;
      for (std::size_t j = 0; j < b.digits_.size(); ++j) {
        carry += std::uint64_t{a.digits_[i]} * b.digits_[j] + product[i + j];
        product[i + j] = static_cast<std::uint32_t>(carry);
        carry >>= 32;
      }
      product[i + b.digits_.size()] = static_cast<std::uint32_t>(carry);
    }
    return {a.negative_ != b.negative_, a.exponent_ + b.exponent_, std::move(product)};
  }

  // Of cells as FixedPoint has them, cell 0 counting 2^(32 exponent).
  static Whole fromCells(std::span<const std::int64_t> from, int exponent) {
    std::vector<std::int64_t> cells(from.begin(), from.end());
    FixedPoint number(cells, 0);
    number.carry();
    const bool negative = !cells.empty() && cells.back() < 0;
    if (negative) {
      for (std::int64_t& c : cells) {
        c = -c;
      }
      number.carry();
    }
    return {negative, exponent, std::vector<std::uint32_t>(cells.begin(), cells.end())};
  }

  // To 2^-100.
  Scaled scaled() const {
    std::vector<std::int64_t> cells(digits_.begin(), digits_.end());
    cells.push_back(0);
    Scaled result = FixedPoint::inTwo(FixedPoint(cells, 32 * exponent_).leading());
    result.value = negative_ ? -result.value : result.value;
    return result;
  }

 private:
  int top() const { return exponent_ + static_cast<int>(digits_.size()); }
  void trim() {
    while (!digits_.empty() && digits_.back() == 0) {
      digits_.pop_back();
    }
    const auto first = std::find_if(digits_.begin(), digits_.end(), [](auto d) { return d != 0; });
    exponent_ += static_cast<int>(first - digits_.begin());
    digits_.erase(digits_.begin(), first);
    if (digits_.empty()) {
      exponent_ = 0;
      negative_ = false;
    }
  }

  bool negative_ = false;
  int exponent_ = 0;
  std::vector<std::uint32_t> digits_;
};

}  // namespace vexel::kernels
