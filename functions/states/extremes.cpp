#include "vexel/states/extremes.hpp"

#include <algorithm>
#include <cmath>

#include "functions/data/sample.hpp"
#include "functions/states/exact.hpp"

namespace vexel {

Extremes::Extremes(Missing missing) : policy_(missing) {}

Extremes& Extremes::update(Data x, Data weights) {
  const Sample sample("Extremes", x, weights, policy_);
  Extremes next = *this;
  const auto found = sample.present([&](const double* p, const double*, std::size_t n) {
    const kernels::Range range = kernels::rangeOf(p, n);
    next.min_ = std::min(next.min_, range.min + 0.0);  // -0.0 counts as 0.0
    next.max_ = std::max(next.max_, range.max + 0.0);
  });
  next.count_ += static_cast<std::int64_t>(found.points);
  next.missing_ += static_cast<std::int64_t>(found.missing);
  *this = next;
  return *this;
}

Extremes& Extremes::merge(const Extremes& other) {
  min_ = std::min(min_, other.min_);
  max_ = std::max(max_, other.max_);
  count_ += other.count_;
  missing_ += other.missing_;
  return *this;
}

bool Extremes::undefined() const {
  return count_ == 0 || (policy_ == Missing::propagate && missing_ > 0);
}
double Extremes::min() const { return undefined() ? kNaN : min_; }
double Extremes::max() const { return undefined() ? kNaN : max_; }

std::vector<std::uint8_t> Extremes::to_bytes() const {
  ByteWriter to("extr", 1);
  return to.put(policy_).put(count_).put(missing_).put(min_).put(max_).finish();
}

Extremes Extremes::from_bytes(std::span<const std::uint8_t> bytes) {
  ByteReader from(bytes, "extr", 1, "Extremes");
  Extremes result(states::getPolicy(from));
  result.count_ = states::getCount(from);
  result.missing_ = states::getCount(from);
  const auto min = from.get<double>();
  const auto max = from.get<double>();
  const Extremes nothing;
  from.check(result.count_ > 0 ? min <= max : min == nothing.min_ && max == nothing.max_,
             "the extremes are out of order");
  result.min_ = min;
  result.max_ = max;
  from.finish();
  return result;
}

}  // namespace vexel
