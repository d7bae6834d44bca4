#include "vexel/states/moments.hpp"

#include <algorithm>
#include <stdexcept>
#include <string>

#include "functions/data/sample.hpp"
#include "functions/states/exact.hpp"
#include "kernels/power_sums.hpp"
#include "kernels/vector/power_columns.hpp"
#include "kernels/vector/presence.hpp"

namespace vexel {

namespace {

using kernels::Scaled;
using kernels::Whole;

constexpr int kHighestOrder = states::Product::mostFactors - 1;

// Sums of w x^k have a factor for the weight and k for the point.
constexpr int factorsOf(std::size_t k) { return static_cast<int>(k) + 1; }

// The sum of w (x - mean)^k times the k-th power of the total weight, exactly:
// sum over j of binomial(k, j) S_j (-S_1)^(k-j) S_0^j, over one S_0.
Whole centralSum(const std::vector<states::ExactSum>& powers, int k) {
  const Whole weight = states::exactly(powers[0], 1);
  const Whole minusFirst = -states::exactly(powers[1], 2);
  Whole sum;
  std::int64_t binomial = 1;
  for (int j = 0; j <= k; ++j) {
    Whole term = Whole(binomial) * states::exactly(powers[static_cast<std::size_t>(j)], j + 1);
    for (int i = 0; i < k; ++i) {
      term = term * (i < j ? weight : minusFirst);
    }
    sum = sum + term;
    binomial = binomial * (k - j) / (j + 1);
  }
  return sum;
}

Whole power(const Whole& x, int k) {
  Whole result(1);
  for (int i = 0; i < k; ++i) {
    result = result * x;
  }
  return result;
}

// A quotient whose square root is taken, for odd exponents too.
double squareRoot(const Scaled& a, const Scaled& b) {
  const int exponent = a.exponent - b.exponent;
  const auto quotient = (a.value / b.value).timesTwoTo(exponent % 2);
  return std::ldexp(sqrt(quotient).high, exponent / 2);
}

using Accumulators = std::vector<states::Accumulator>;

constexpr int kLowestNormal = -1022;
constexpr std::size_t kColumnBlock = 1024;

// Adds w x^k to the k-th sum, from the first on.
void addPowers(Accumulators& sums, double x, double w) {
  double special = 1.0;
  states::Product product(w);
  for (std::size_t k = 1; k < sums.size(); ++k) {
    if (std::isfinite(x)) {
      product.multiply(x);
      sums[k].add(product);
    } else {
      special *= x;
      sums[k].addSpecial(special);
    }
  }
}

// The same for a block of points without weights: together those of about the largest one's size.
// Gives how many points it took, from the first on.
std::size_t addColumns(Accumulators& sums, const double* x, std::size_t n, double largest) {
  const int unit = std::max(std::ilogb(largest), kLowestNormal) - 52 - kernels::PowerColumns::span;
  if (unit < kLowestNormal - 52) {
    return 0;  // numbers of the span may be subnormal
  }
  const auto order = static_cast<int>(sums.size()) - 1;
  kernels::PowerColumns columns;
  std::size_t done = 0;
  for (std::size_t took = 1; took > 0; done += took) {
    bool apart = false;
    took = kernels::addPowerColumns(x + done, std::min(kColumnBlock, n - done), order, unit,
                                    columns, &apart);
    for (std::size_t i = done; apart && i < done + took; ++i) {
      if (x[i] != 0.0 && !kernels::inPowerSpan(x[i], unit)) {
        addPowers(sums, x[i], 1.0);
      }
    }
  }
  for (int k = 1; k <= order; ++k) {
    for (int i = 0; i < 2 * k; ++i) {
      const std::int64_t sum = columns.column[k - 1][i];
      const auto size = static_cast<std::uint64_t>(sum);
      sums[static_cast<std::size_t>(k)].add(sum < 0 ? 0 - size : size,
                                            k * unit + kernels::PowerColumns::bits * i, sum < 0);
    }
  }
  return done;
}

template <int order>
void addPowers(Accumulators& sums, const double* x, std::size_t n, double largest) {
  const std::size_t done = addColumns(sums, x, n, largest);
  kernels::PowerSums<order> together(kernels::PowerSums<order>::unitFor(largest));
  for (std::size_t i = done; i < n; ++i) {
    if (!together.add(x[i]) && x[i] != 0.0) {
      addPowers(sums, x[i], 1.0);
    }
  }
  together.take([&](int k, std::uint64_t word, int exponent, bool negative) {
    sums[static_cast<std::size_t>(k)].add(word, exponent, negative);
  });
}

void addPowers(Accumulators& sums, const double* x, std::size_t n) {
  const kernels::Range range = kernels::rangeOf(x, n);
  const double largest = std::max(-range.min, range.max);
  if (std::isfinite(range.min) && std::isfinite(range.max)) {
    switch (sums.size() - 1) {
      case 1:
        return addPowers<1>(sums, x, n, largest);
      case 2:
        return addPowers<2>(sums, x, n, largest);
      case 3:
        return addPowers<3>(sums, x, n, largest);
      case 4:
        return addPowers<4>(sums, x, n, largest);
      default:
        break;
    }
  }
  for (std::size_t i = 0; i < n; ++i) {
    addPowers(sums, x[i], 1.0);
  }
}

}  // namespace

Moments::Moments(int order, Missing missing) : policy_(missing) {
  if (order < 1 || order > kHighestOrder) {
    throw std::domain_error("Moments: order must be 1 to " + std::to_string(kHighestOrder) +
                            ", got " + std::to_string(order));
  }
  powers_.resize(static_cast<std::size_t>(order) + 1);
}

Moments& Moments::update(Data x, Data weights) {
  const Sample sample("Moments", x, weights, policy_);
  Moments next = *this;
  Accumulators sums;
  for (std::size_t k = 0; k < next.powers_.size(); ++k) {
    sums.emplace_back(next.powers_[k], factorsOf(k));
  }
  const auto found = sample.present([&](const double* p, const double* w, std::size_t n) {
    if (w == nullptr) {
      sums[0].add(static_cast<double>(n));
      addPowers(sums, p, n);
      return;
    }
    sums[0].add(w, n);
    for (std::size_t i = 0; i < n; ++i) {
      addPowers(sums, p[i], w[i]);
    }
  });
  next.count_ += static_cast<std::int64_t>(found.points);
  next.missing_ += static_cast<std::int64_t>(found.missing);
  *this = std::move(next);
  return *this;
}

Moments& Moments::merge(const Moments& other) {
  if (other.order() != order()) {
    throw std::invalid_argument("Moments: the other state must have order " +
                                std::to_string(order()) + ", got " + std::to_string(other.order()));
  }
  for (std::size_t k = 0; k < powers_.size(); ++k) {
    states::Accumulator(powers_[k], factorsOf(k)).merge(other.powers_[k]);
  }
  count_ += other.count_;
  missing_ += other.missing_;
  return *this;
}

bool Moments::undefined() const {
  return count_ == 0 || (policy_ == Missing::propagate && missing_ > 0);
}

bool Moments::hasPowers(int k) const {
  if (k > order()) {
    throw std::domain_error("Moments: the state has moments up to order " +
                            std::to_string(order()) + ", got " + std::to_string(k));
  }
  return !undefined() && states::isFinite(powers_[1]);
}

double Moments::weight() const { return states::rounded(powers_[0], 1); }

double Moments::mean() const {
  if (undefined()) {
    return kNaN;
  }
  return states::isFinite(powers_[1])
             ? states::exactly(powers_[1], 2).scaled() / states::exactly(powers_[0], 1).scaled()
             : states::rounded(powers_[1], 2);
}

double Moments::moment(int k) const {
  if (k < 0) {
    throw std::domain_error("Moments: k must be at least 0, got " + std::to_string(k));
  }
  if (!hasPowers(k)) {
    return kNaN;
  }
  const Whole weight = states::exactly(powers_[0], 1);
  return k == 0 ? 1.0 : centralSum(powers_, k).scaled() / power(weight, k + 1).scaled();
}

double Moments::var() const {
  if (!hasPowers(2)) {
    return kNaN;
  }
  const Whole weight = states::exactly(powers_[0], 1);
  const Whole divisor = weight - Whole(1);
  if (divisor.isZero() || divisor.negative()) {
    return kNaN;
  }
  return centralSum(powers_, 2).scaled() / (weight * weight * divisor).scaled();
}

double Moments::std() const {
  if (!hasPowers(2)) {
    return kNaN;
  }
  const Whole weight = states::exactly(powers_[0], 1);
  const Whole divisor = weight - Whole(1);
  if (divisor.isZero() || divisor.negative()) {
    return kNaN;
  }
  return squareRoot(centralSum(powers_, 2).scaled(), (weight * weight * divisor).scaled());
}

// m3 / m2^(3/2), where both are over the third power of the weight and one weight more.
double Moments::skewness() const {
  if (!hasPowers(3)) {
    return kNaN;
  }
  const Whole second = centralSum(powers_, 2);
  if (second.isZero()) {
    return kNaN;
  }
  const Whole third = centralSum(powers_, 3);
  const Scaled square = (third * third * states::exactly(powers_[0], 1)).scaled();
  const double size = squareRoot(square, (second * second * second).scaled());
  return third.negative() ? -size : size;
}

double Moments::kurtosis() const {
  if (!hasPowers(4)) {
    return kNaN;
  }
  const Whole second = centralSum(powers_, 2);
  if (second.isZero()) {
    return kNaN;
  }
  const Whole square = second * second;
  const Whole excess = centralSum(powers_, 4) * states::exactly(powers_[0], 1) - Whole(3) * square;
  return excess.scaled() / square.scaled();
}

std::vector<std::uint8_t> Moments::to_bytes() const {
  ByteWriter to("mome", 1);
  to.put(policy_).put(count_).put(missing_).put(static_cast<std::int32_t>(order()));
  for (std::size_t k = 0; k < powers_.size(); ++k) {
    states::put(to, powers_[k], factorsOf(k));
  }
  return to.finish();
}

Moments Moments::from_bytes(std::span<const std::uint8_t> bytes) {
  ByteReader from(bytes, "mome", 1, "Moments");
  const Missing policy = states::getPolicy(from);
  const std::int64_t count = states::getCount(from);
  const std::int64_t missing = states::getCount(from);
  const auto order = from.get<std::int32_t>();
  from.check(order >= 1 && order <= kHighestOrder, "the order is out of range");
  Moments result(order, policy);
  result.count_ = count;
  result.missing_ = missing;
  for (std::size_t k = 0; k < result.powers_.size(); ++k) {
    result.powers_[k] = states::getExactSum(from, factorsOf(k));
  }
  from.finish();
  for (std::size_t k = 0; k < result.powers_.size(); k += 2) {
    from.check(!(states::rounded(result.powers_[k], factorsOf(k)) < 0), "an even sum is negative");
  }
  from.check(order < 2 || !states::isFinite(result.powers_[1]) ||
                 !centralSum(result.powers_, 2).negative(),
             "the variance is negative");
  return result;
}

}  // namespace vexel
