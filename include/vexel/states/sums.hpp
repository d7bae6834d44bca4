// Sums: total, count and weight of data that come in pieces.
#pragma once

#include <cstdint>
#include <span>
#include <vector>
#include <vexel/data.hpp>
#include <vexel/export.hpp>
#include <vexel/states/exact.hpp>

namespace vexel {

class Sums {
 public:
  // What update does with missing pairs: the sum is NaN from then on (propagate), they are left out
  // and counted (omit), or nothing of the piece is taken and std::invalid_argument thrown (raise).
  VEXEL_API explicit Sums(Missing missing = Missing::propagate);
  VEXEL_API Sums& update(Data x, Data weights = {});
  VEXEL_API Sums& merge(const Sums& other);

  VEXEL_API double sum() const;     // of weight * point, rounded once
  VEXEL_API double weight() const;  // total; the count where there are no weights
  VEXEL_API double mean() const;
  std::int64_t count() const { return count_; }      // points taken
  std::int64_t missing() const { return missing_; }  // missing pairs

  VEXEL_API std::vector<std::uint8_t> to_bytes() const;
  VEXEL_API static Sums from_bytes(std::span<const std::uint8_t> bytes);

 private:
  Missing policy_;
  std::int64_t count_ = 0;
  std::int64_t missing_ = 0;
  states::ExactSum sum_;
  states::ExactSum weight_;
};

}  // namespace vexel
