// Moments: mean, variance, skewness, kurtosis and central moments of data that come in pieces.
#pragma once

#include <cstdint>
#include <span>
#include <vector>
#include <vexel/data.hpp>
#include <vexel/export.hpp>
#include <vexel/states/exact.hpp>

namespace vexel {

class Moments {
 public:
  // 1 <= order <= 8: the highest moment that can be asked for; the others throw std::domain_error.
  VEXEL_API explicit Moments(int order = 4, Missing missing = Missing::propagate);
  VEXEL_API Moments& update(Data x, Data weights = {});
  VEXEL_API Moments& merge(const Moments& other);  // of the same order

  VEXEL_API double mean() const;
  VEXEL_API double var() const;  // ddof 1
  VEXEL_API double std() const;
  VEXEL_API double skewness() const;
  VEXEL_API double kurtosis() const;     // excess
  VEXEL_API double moment(int k) const;  // about the mean
  VEXEL_API double weight() const;
  int order() const { return static_cast<int>(powers_.size()) - 1; }
  std::int64_t count() const { return count_; }
  std::int64_t missing() const { return missing_; }

  VEXEL_API std::vector<std::uint8_t> to_bytes() const;
  VEXEL_API static Moments from_bytes(std::span<const std::uint8_t> bytes);

 private:
  bool undefined() const;
  bool hasPowers(int k) const;  // and all of them finite

  Missing policy_;
  std::int64_t count_ = 0;
  std::int64_t missing_ = 0;
  std::vector<states::ExactSum> powers_;  // sums of w x^k
};

}  // namespace vexel
