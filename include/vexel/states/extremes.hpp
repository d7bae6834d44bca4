// Extremes: smallest and largest of data that come in pieces.
#pragma once

#include <cstdint>
#include <limits>
#include <span>
#include <vector>
#include <vexel/data.hpp>
#include <vexel/export.hpp>

namespace vexel {

class Extremes {
 public:
  VEXEL_API explicit Extremes(Missing missing = Missing::propagate);
  VEXEL_API Extremes& update(Data x, Data weights = {});  // a point of weight 0 is not there
  VEXEL_API Extremes& merge(const Extremes& other);

  VEXEL_API double min() const;
  VEXEL_API double max() const;
  std::int64_t count() const { return count_; }
  std::int64_t missing() const { return missing_; }

  VEXEL_API std::vector<std::uint8_t> to_bytes() const;
  VEXEL_API static Extremes from_bytes(std::span<const std::uint8_t> bytes);

 private:
  bool undefined() const;

  Missing policy_;
  std::int64_t count_ = 0;
  std::int64_t missing_ = 0;
  double min_ = std::numeric_limits<double>::infinity();
  double max_ = -std::numeric_limits<double>::infinity();
};

}  // namespace vexel
