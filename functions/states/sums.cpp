#include "vexel/states/sums.hpp"

#include "functions/data/sample.hpp"
#include "functions/states/exact.hpp"

namespace vexel {

namespace {

constexpr int kFactors = 2;  // weight and point
constexpr int kWeightFactors = 1;

}  // namespace

Sums::Sums(Missing missing) : policy_(missing) {}

Sums& Sums::update(Data x, Data weights) {
  const Sample sample("Sums", x, weights, policy_);
  Sums next = *this;
  states::Accumulator sum(next.sum_, kFactors);
  states::Accumulator weight(next.weight_, kWeightFactors);
  const auto found = sample.present([&](const double* p, const double* w, std::size_t n) {
    if (w == nullptr) {
      sum.add(p, n);
      weight.add(static_cast<double>(n));
      return;
    }
    weight.add(w, n);
    for (std::size_t i = 0; i < n; ++i) {
      if (std::isfinite(p[i])) {
        states::Product product(w[i]);
        product.multiply(p[i]);
        sum.add(product);
      } else {
        sum.addSpecial(p[i]);
      }
    }
  });
  next.count_ += static_cast<std::int64_t>(found.points);
  next.missing_ += static_cast<std::int64_t>(found.missing);
  *this = std::move(next);
  return *this;
}

Sums& Sums::merge(const Sums& other) {
  states::Accumulator(sum_, kFactors).merge(other.sum_);
  states::Accumulator(weight_, kWeightFactors).merge(other.weight_);
  count_ += other.count_;
  missing_ += other.missing_;
  return *this;
}

double Sums::sum() const {
  return policy_ == Missing::propagate && missing_ > 0 ? kNaN : states::rounded(sum_, kFactors);
}

double Sums::weight() const { return states::rounded(weight_, kWeightFactors); }

double Sums::mean() const {
  const double total = sum();
  if (std::isnan(total) || count_ == 0) {
    return kNaN;
  }
  return states::isFinite(sum_) ? states::exactly(sum_, kFactors).scaled() /
                                      states::exactly(weight_, kWeightFactors).scaled()
                                : total;
}

std::vector<std::uint8_t> Sums::to_bytes() const {
  ByteWriter to("sums", 1);
  to.put(policy_).put(count_).put(missing_);
  states::put(to, sum_, kFactors);
  states::put(to, weight_, kWeightFactors);
  return to.finish();
}

Sums Sums::from_bytes(std::span<const std::uint8_t> bytes) {
  ByteReader from(bytes, "sums", 1, "Sums");
  Sums result(states::getPolicy(from));
  result.count_ = states::getCount(from);
  result.missing_ = states::getCount(from);
  result.sum_ = states::getExactSum(from, kFactors);
  result.weight_ = states::getExactSum(from, kWeightFactors);
  from.finish();
  return result;
}

}  // namespace vexel
