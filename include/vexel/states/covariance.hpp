// Covariance: means and covariances of k variables that come in pieces.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <vector>
#include <vexel/data.hpp>
#include <vexel/descriptive.hpp>
#include <vexel/export.hpp>
#include <vexel/states/exact.hpp>

namespace vexel {

class Covariance {
 public:
  // 1 <= k <= 4096.  omit leaves out a row with something missing; propagate makes what the
  // variable takes part in NaN.
  VEXEL_API explicit Covariance(std::size_t k, Missing missing = Missing::propagate);
  VEXEL_API Covariance& update(std::span<const Data> columns, Data weights = {});
  Covariance& update(std::initializer_list<Data> columns, Data weights = {}) {
    return update(std::span<const Data>(columns.begin(), columns.size()), weights);
  }
  VEXEL_API Covariance& merge(const Covariance& other);  // of as many variables

  VEXEL_API std::vector<double> mean() const;
  VEXEL_API SquareMatrix cov() const;  // ddof 1
  VEXEL_API SquareMatrix corr() const;
  VEXEL_API double weight() const;
  std::size_t variables() const { return k_; }
  std::int64_t count() const { return count_; }
  std::int64_t missing() const { return missing_; }

  VEXEL_API std::vector<std::uint8_t> to_bytes() const;
  VEXEL_API static Covariance from_bytes(std::span<const std::uint8_t> bytes);

 private:
  void requireRows(std::span<const Data> columns, Data weights) const;
  template <typename Entry>
  SquareMatrix matrix(Entry entry) const;

  Missing policy_;
  std::size_t k_;
  std::int64_t count_ = 0;
  std::int64_t missing_ = 0;
  states::ExactSum weight_;
  std::vector<states::ExactSum> sums_;      // of w x_i
  std::vector<states::ExactSum> products_;  // of w x_i x_j, i <= j
};

}  // namespace vexel
