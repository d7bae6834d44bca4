#include "functions/data/rows.hpp"

#include <algorithm>
#include <cmath>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vexel/errors.hpp>

#include "functions/data/refusals.hpp"
#include "kernels/vector/presence.hpp"

namespace vexel {

namespace {

void requireSize(const char* function, const char* what, std::size_t size, std::size_t expected) {
  if (size != expected) {
    throw std::length_error(std::string(function) + ": " + what + " must have as many elements " +
                            "as the first variable, " + std::to_string(expected) + ", got " +
                            std::to_string(size));
  }
}

// Blocks for columns and the weights, made when they are needed.
class Blocks {
 public:
  explicit Blocks(std::size_t width) : columns_(width + 1) {}
  double* operator[](std::size_t j) {
    if (columns_[j] == nullptr) {
      columns_[j] = std::make_unique_for_overwrite<double[]>(Rows::block);
    }
    return columns_[j].get();
  }

 private:
  std::vector<std::unique_ptr<double[]>> columns_;
};

// As doubles in units of 2^exponent: where they lie, or in the block that buffer() gives.
template <typename Buffer>
const double* read(Data from, std::size_t begin, std::size_t n, int exponent, Buffer buffer) {
  if (exponent == 0) {
    return from.dense() ? asDoubles(from, begin, n, nullptr) : asDoubles(from, begin, n, buffer());
  }
  double* const to = buffer();
  const double* const x = asDoubles(from, begin, n, to);
  const double factor = std::ldexp(1.0, -exponent);
  for (std::size_t i = 0; i < n; ++i) {
    to[i] = x[i] * factor;
  }
  return to;
}

}  // namespace

Rows::Rows(const char* function, std::span<const Data> columns, Data weights, Missing missing)
    : function_(function),
      columns_(columns.begin(), columns.end()),
      weights_(weights),
      missing_(missing),
      exponents_(columns.size()) {
  for (const Data& column : columns_) {
    requireSize(function, "a variable", column.size(), size());
  }
  if (weighted()) {
    requireSize(function, "weights", weights.size(), size());
  }
}

void Rows::scale(std::vector<int> exponents, int wExponent) {
  for (int& e : exponents) {
    e = std::clamp(e, -1022, 1022);
  }
  exponents_ = std::move(exponents);
  wExponent_ = std::clamp(wExponent, -1022, 1022);
}

Sample::Presence Rows::present(const Use& use) const {
  const std::size_t k = width();
  Blocks buffers(k);
  std::vector<const double*> columns(k + 1);  // the last one: weights
  std::vector<const double*> kept(k);
  Blocks keep(k);
  std::size_t filled = 0;
  const auto useKept = [&](std::size_t n) {
    for (std::size_t j = 0; j < k; ++j) {
      kept[j] = keep[j];
    }
    use(kept.data(), weighted() ? keep[k] : nullptr, n);
  };
  Sample::Presence found;
  for (std::size_t begin = 0; begin < size(); begin += block) {
    if (begin % kernels::pollInterval == 0 && begin > 0) {
      kernels::poll(static_cast<double>(begin) / static_cast<double>(size()));
    }
    const std::size_t n = std::min(block, size() - begin);
    bool all = true;
    for (std::size_t j = 0; j < k; ++j) {
      columns[j] = read(columns_[j], begin, n, exponents_[j], [&] { return buffers[j]; });
      all = all && kernels::allPresent(columns[j], n);
    }
    columns[k] =
        weighted() ? read(weights_, begin, n, wExponent_, [&] { return buffers[k]; }) : nullptr;
    all = all && (!weighted() || kernels::allPresent(columns[k], columns[k], n));
    if (all && filled == 0) {
      found.points += n;
      found.pairs += n;
      use(columns.data(), columns[k], n);
      continue;
    }
    for (std::size_t i = 0; i < n; ++i) {
      const double weight = weighted() ? columns[k][i] : 1.0;
      if (weight < 0.0 || std::isinf(weight)) {
        refuseWeight(function_, begin + i, weight);
      }
      bool complete = true;
      for (std::size_t j = 0; j < k; ++j) {
        complete = complete && !std::isnan(columns[j][i]);
      }
      if (std::isnan(weight) || (!complete && weight > 0.0)) {
        if (missing_ == Missing::raise) {
          throw ElementError(std::string(function_) + ": row ", begin + i,
                             " has something missing");
        }
        ++found.missing;
        continue;
      }
      found.pairs += complete;
      if (weight > 0.0) {
        for (std::size_t j = 0; j < k; ++j) {
          keep[j][filled] = columns[j][i];
        }
        keep[k][filled] = weight;
        ++found.points;
        if (++filled == block) {
          useKept(block);
          filled = 0;
        }
      }
    }
  }
  if (filled > 0) {
    useKept(filled);
  }
  return found;
}

bool Rows::undefined(const Sample::Presence& found) const {
  if (found.missing > 0 && missing_ == Missing::propagate) {
    return true;
  }
  if (found.points == 0 && found.pairs > 0) {
    throw std::invalid_argument(std::string(function_) +
                                ": the total of the weights must be positive, it is 0");
  }
  return found.points == 0;
}

std::vector<bool> Rows::columnsMissing() const {
  std::vector<bool> missing(width());
  for (std::size_t j = 0; j < width(); ++j) {
    const Sample column(function_, columns_[j], weights_, missing_);
    missing[j] = column.look().missing > 0;
  }
  return missing;
}

Rows Rows::only(const std::vector<std::size_t>& columns) const {
  std::vector<Data> some;
  for (const std::size_t j : columns) {
    some.push_back(columns_[j]);
  }
  return Rows(function_, some, weights_, missing_);
}

Rows::Rough Rows::rough(std::size_t j) const {
  constexpr std::size_t points = 1024;
  const double factor = std::ldexp(1.0, -exponents_[j]);
  const std::size_t step = std::max(std::size_t{1}, size() / points);
  double count = 0.0;
  double mean = 0.0;
  double squares = 0.0;  // by updating: good enough for a rough value, and no overflow of sums
  for (std::size_t i = 0; i < size(); i += step) {
    const double x = columns_[j][i] * factor;
    if (std::isfinite(x) && !(weighted() && !(weights_[i] > 0.0))) {
      count += 1.0;
      const double before = x - mean;
      mean += before / count;
      squares += before * (x - mean);
    }
  }
  return {mean, count > 0.0 ? std::sqrt(squares / count) : 0.0};
}

}  // namespace vexel
