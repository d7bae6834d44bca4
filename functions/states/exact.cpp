#include "functions/states/exact.hpp"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <vector>

#include "kernels/vector/sums.hpp"

namespace vexel::states {

namespace {

// The smallest double is 2^-1074, the largest is below 2^1024; sums of 2^63 fit.
constexpr int kLowest = -1088;
constexpr int kDigitsOfFactor = (1024 - kLowest) / 32;

std::size_t cellCount(int factors) {
  return static_cast<std::size_t>(kDigitsOfFactor * factors) + 5;
}

}  // namespace

void Product::multiply(double x) {
  const auto bits = std::bit_cast<std::uint64_t>(x);
  const auto biased = static_cast<int>(bits >> 52) & 0x7FF;
  std::uint64_t mantissa = bits & ((std::uint64_t{1} << 52) - 1);
  mantissa |= std::uint64_t{biased != 0} << 52;
  if (mantissa == 0 || size_ == 0) {
    size_ = 0;
    return;
  }
  const int zeros = std::countr_zero(mantissa);  // whole numbers stay short
  mantissa >>= zeros;
  exponent_ += std::max(biased, 1) - 1075 + zeros;
  negative_ ^= std::signbit(x);
  unsigned __int128 carry = 0;
  for (int i = 0; i < size_; ++i) {
    carry += static_cast<unsigned __int128>(words_[i]) * mantissa;
    words_[i] = static_cast<std::uint64_t>(carry);
    carry >>= 64;
  }
  if (carry != 0) {
    words_[size_++] = static_cast<std::uint64_t>(carry);
  }
}

void Product::addTo(kernels::FixedPoint& sum) const {
  for (int i = 0; i < size_; ++i) {
    sum.add(words_[i], exponent_ + 64 * i, negative_);
  }
}

Accumulator::Accumulator(ExactSum& sum, int factors) : sum_(sum), lowest_(kLowest * factors) {
  if (sum_.cells.empty()) {
    sum_.cells.resize(cellCount(factors));
  }
}

void Accumulator::count(int summands) {
  sum_.pending += summands;
  if (sum_.pending >= kernels::FixedPoint::mostPending) {
    fixed().carry();
    sum_.pending = 1;
  }
}

void Accumulator::add(const Product& product) {
  count(2);  // neighbouring words share a cell
  kernels::FixedPoint to = fixed();
  product.addTo(to);
}

void Accumulator::add(std::uint64_t word, int exponent, bool negative) {
  count(1);
  fixed().add(word, exponent, negative);
}

void Accumulator::add(double x) {
  if (!std::isfinite(x)) {
    addSpecial(x);
    return;
  }
  count(1);
  fixed().add(x);
}

void Accumulator::add(const double* x, std::size_t n) {
  double lanes[kernels::sumLanes];
  if (n > kernels::sumLanes && kernels::sumInLanesExactly(x, n, lanes) &&
      std::all_of(lanes, lanes + kernels::sumLanes, [](double s) { return std::isfinite(s); })) {
    n = kernels::sumLanes;
    x = lanes;
  }
  for (std::size_t i = 0; i < n; ++i) {
    add(x[i]);
  }
}

void Accumulator::addSpecial(double x) {
  sum_.nan |= std::isnan(x);
  sum_.plusInfinity |= std::isinf(x) && x > 0.0;
  sum_.minusInfinity |= std::isinf(x) && x < 0.0;
}

void Accumulator::merge(const ExactSum& other) {
  sum_.nan |= other.nan;
  sum_.plusInfinity |= other.plusInfinity;
  sum_.minusInfinity |= other.minusInfinity;
  if (other.cells.empty()) {
    return;
  }
  ExactSum carried = other;
  kernels::FixedPoint(carried.cells, lowest_).carry();
  count(1);
  for (std::size_t i = 0; i < sum_.cells.size(); ++i) {
    sum_.cells[i] += carried.cells[i];
  }
}

bool isFinite(const ExactSum& sum) { return !sum.nan && !sum.plusInfinity && !sum.minusInfinity; }

double rounded(const ExactSum& sum, int factors) {
  if (sum.nan || (sum.plusInfinity && sum.minusInfinity)) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  if (sum.plusInfinity || sum.minusInfinity) {
    return sum.plusInfinity ? std::numeric_limits<double>::infinity()
                            : -std::numeric_limits<double>::infinity();
  }
  if (sum.cells.empty()) {
    return 0.0;
  }
  std::vector<std::int64_t> cells = sum.cells;
  return kernels::FixedPoint::rounded(kernels::FixedPoint(cells, kLowest * factors).leading());
}

kernels::Whole exactly(const ExactSum& sum, int factors) {
  return kernels::Whole::fromCells(sum.cells, kLowest / 32 * factors);
}

void put(ByteWriter& to, const ExactSum& sum, int factors) {
  const kernels::Whole number = exactly(sum, factors);
  to.put(sum.nan).put(sum.plusInfinity).put(sum.minusInfinity).put(number.negative());
  to.put(static_cast<std::int32_t>(number.exponent())).put(number.digits());
}

ExactSum getExactSum(ByteReader& from, int factors) {
  ExactSum sum;
  sum.nan = from.get<bool>();
  sum.plusInfinity = from.get<bool>();
  sum.minusInfinity = from.get<bool>();
  const auto negative = from.get<bool>();
  const auto exponent = from.get<std::int32_t>();
  const auto digits = from.getVector<std::uint32_t>();
  if (digits.empty()) {
    from.check(exponent == 0 && !negative, "a sum is not in its shortest form");
    return sum;
  }
  const std::int64_t first = std::int64_t{exponent} - kLowest / 32 * factors;
  sum.cells.resize(cellCount(factors));
  from.check(first >= 0 && first + static_cast<std::int64_t>(digits.size()) <
                               static_cast<std::int64_t>(sum.cells.size()),
             "a sum is out of range");
  from.check(digits.front() != 0 && digits.back() != 0, "a sum is not in its shortest form");
  for (std::size_t i = 0; i < digits.size(); ++i) {
    const auto digit = static_cast<std::int64_t>(digits[i]);
    sum.cells[static_cast<std::size_t>(first) + i] = negative ? -digit : digit;
  }
  sum.pending = 1;
  return sum;
}

Missing getPolicy(ByteReader& from) {
  const auto policy = from.get<std::uint8_t>();
  from.check(policy <= static_cast<std::uint8_t>(Missing::raise), "the policy is out of range");
  return static_cast<Missing>(policy);
}

std::int64_t getCount(ByteReader& from) {
  const auto count = from.get<std::int64_t>();
  from.check(count >= 0 && count >> 53 == 0, "a count is out of range");
  return count;
}

}  // namespace vexel::states
