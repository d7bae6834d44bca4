#include "vexel/states/covariance.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>

#include "functions/data/sample.hpp"
#include "functions/data/text.hpp"
#include "functions/states/exact.hpp"
#include "kernels/watch.hpp"

namespace vexel {

namespace {

using kernels::Scaled;
using kernels::Whole;
using states::Accumulator;

constexpr int kSum = 2;      // factors: weight and point
constexpr int kProduct = 3;  // and another point
constexpr std::size_t kMostVariables = 4096;

std::size_t requireVariables(std::size_t k) {
  if (k < 1 || k > kMostVariables) {
    throw std::domain_error("Covariance: k must be 1 to " + std::to_string(kMostVariables) +
                            ", got " + std::to_string(k));
  }
  return k;
}

// The place of i <= j in the rows of an upper triangle.
std::size_t place(std::size_t i, std::size_t j, std::size_t k) {
  return i * k - i * (i + 1) / 2 + j;
}

}  // namespace

Covariance::Covariance(std::size_t k, Missing missing)
    : policy_(missing), k_(requireVariables(k)), sums_(k), products_(k * (k + 1) / 2) {}

void Covariance::requireRows(std::span<const Data> columns, Data weights) const {
  if (columns.size() != k_) {
    throw std::length_error("Covariance: there must be " + std::to_string(k_) + " variables, got " +
                            std::to_string(columns.size()));
  }
  const std::size_t n = columns[0].size();
  for (std::size_t j = 0; j < k_; ++j) {
    if (columns[j].size() != n) {
      throw std::length_error("Covariance: variable " + std::to_string(j) + " must have " +
                              std::to_string(n) + " elements, as the first one, got " +
                              std::to_string(columns[j].size()));
    }
    Sample("Covariance", columns[j], weights, policy_).look();
  }
}

Covariance& Covariance::update(std::span<const Data> columns, Data weights) {
  requireRows(columns, weights);
  Covariance next = *this;
  std::vector<Accumulator> sums;
  std::vector<Accumulator> products;
  for (states::ExactSum& s : next.sums_) {
    sums.emplace_back(s, kSum);
  }
  for (states::ExactSum& p : next.products_) {
    products.emplace_back(p, kProduct);
  }
  Accumulator total(next.weight_, 1);
  std::vector<double> row(k_);
  for (std::size_t r = 0; r < columns[0].size(); ++r) {
    if (r % 4096 == 0) {
      kernels::poll(static_cast<double>(r) / static_cast<double>(columns[0].size()));
    }
    const double w = weights.given() ? weights[r] : 1.0;
    bool missing = std::isnan(w);
    for (std::size_t j = 0; j < k_; ++j) {
      row[j] = columns[j][r];
      missing = missing || (std::isnan(row[j]) && w > 0.0);
    }
    if (missing) {
      ++next.missing_;
      if (policy_ != Missing::propagate) {
        continue;
      }
      if (std::isnan(w)) {
        total.addSpecial(w);
        continue;
      }
    } else if (w == 0.0) {
      continue;
    }
    ++next.count_;
    total.add(w);
    for (std::size_t i = 0; i < k_; ++i) {
      if (!std::isfinite(row[i])) {
        sums[i].addSpecial(row[i]);
        continue;
      }
      states::Product first(w);
      first.multiply(row[i]);
      sums[i].add(first);
      for (std::size_t j = i; j < k_; ++j) {
        if (std::isfinite(row[j])) {
          states::Product both = first;
          both.multiply(row[j]);
          products[place(i, j, k_)].add(both);
        }
      }
    }
  }
  *this = std::move(next);
  return *this;
}

Covariance& Covariance::merge(const Covariance& other) {
  if (other.k_ != k_) {
    throw std::invalid_argument("Covariance: the other state must have " + std::to_string(k_) +
                                " variables, got " + std::to_string(other.k_));
  }
  Accumulator(weight_, 1).merge(other.weight_);
  for (std::size_t i = 0; i < k_; ++i) {
    Accumulator(sums_[i], kSum).merge(other.sums_[i]);
  }
  for (std::size_t i = 0; i < products_.size(); ++i) {
    Accumulator(products_[i], kProduct).merge(other.products_[i]);
  }
  count_ += other.count_;
  missing_ += other.missing_;
  return *this;
}

double Covariance::weight() const { return states::rounded(weight_, 1); }

std::vector<double> Covariance::mean() const {
  std::vector<double> result(k_, kNaN);
  for (std::size_t i = 0; i < k_; ++i) {
    if (count_ > 0 && states::isFinite(weight_)) {
      result[i] = states::isFinite(sums_[i]) ? states::exactly(sums_[i], kSum).scaled() /
                                                   states::exactly(weight_, 1).scaled()
                                             : states::rounded(sums_[i], kSum);
    }
  }
  return result;
}

// Fills a symmetric matrix with entry(S_ij) of the weight times the exact sum of products about the
// means, S_ij, and those of the diagonal.
template <typename Entry>
SquareMatrix Covariance::matrix(Entry entry) const {
  SquareMatrix result{k_, std::vector<double>(k_ * k_, kNaN)};
  if (count_ == 0 || !states::isFinite(weight_)) {
    return result;
  }
  const Whole weight = states::exactly(weight_, 1);
  std::vector<Whole> sums;
  for (const states::ExactSum& s : sums_) {
    sums.push_back(states::exactly(s, kSum));
  }
  const auto about = [&](std::size_t i, std::size_t j) {
    return weight * states::exactly(products_[place(i, j, k_)], kProduct) - sums[i] * sums[j];
  };
  std::vector<Whole> diagonal;
  for (std::size_t i = 0; i < k_; ++i) {
    diagonal.push_back(about(i, i));
  }
  for (std::size_t i = 0; i < k_; ++i) {
    for (std::size_t j = i; j < k_; ++j) {
      if (states::isFinite(sums_[i]) && states::isFinite(sums_[j])) {
        const double value = entry(about(i, j), diagonal[i], diagonal[j], weight);
        result.values[i * k_ + j] = value;
        result.values[j * k_ + i] = value;
      }
    }
  }
  return result;
}

SquareMatrix Covariance::cov() const {
  return matrix([](const Whole& product, const Whole&, const Whole&, const Whole& weight) {
    const Whole divisor = weight - Whole(1);
    return divisor.isZero() || divisor.negative() ? kNaN
                                                  : product.scaled() / (weight * divisor).scaled();
  });
}

SquareMatrix Covariance::corr() const {
  return matrix([](const Whole& product, const Whole& x, const Whole& y, const Whole&) {
    if (x.isZero() || y.isZero()) {
      return kNaN;
    }
    const Scaled square = (product * product).scaled();
    const Scaled most = (x * y).scaled();
    const int exponent = square.exponent - most.exponent;
    const double size = std::min(1.0, sqrt((square.value / most.value).timesTwoTo(exponent)).high);
    return product.negative() ? -size : size;
  });
}

std::vector<std::uint8_t> Covariance::to_bytes() const {
  ByteWriter to("cova", 1);
  to.put(policy_).put(static_cast<std::uint64_t>(k_)).put(count_).put(missing_);
  states::put(to, weight_, 1);
  for (const states::ExactSum& s : sums_) {
    states::put(to, s, kSum);
  }
  for (const states::ExactSum& p : products_) {
    states::put(to, p, kProduct);
  }
  return to.finish();
}

Covariance Covariance::from_bytes(std::span<const std::uint8_t> bytes) {
  ByteReader from(bytes, "cova", 1, "Covariance");
  const Missing policy = states::getPolicy(from);
  const auto k = from.get<std::uint64_t>();
  // Every sum takes some bytes.
  from.check(k >= 1 && k <= kMostVariables && k * (k + 1) / 2 < bytes.size(),
             "the number of variables is out of range");
  Covariance result(static_cast<std::size_t>(k), policy);
  result.count_ = states::getCount(from);
  result.missing_ = states::getCount(from);
  result.weight_ = states::getExactSum(from, 1);
  for (states::ExactSum& s : result.sums_) {
    s = states::getExactSum(from, kSum);
  }
  for (states::ExactSum& p : result.products_) {
    p = states::getExactSum(from, kProduct);
  }
  from.finish();
  return result;
}

}  // namespace vexel
