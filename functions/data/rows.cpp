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
#include "kernels/vector/row_copies.hpp"

namespace vexel {

namespace {

void requireSize(const char* function, const char* what, std::size_t size, std::size_t expected) {
  if (size != expected) {
    throw std::length_error(std::string(function) + ": " + what + " must have as many elements " +
                            "as the first variable, " + std::to_string(expected) + ", got " +
                            std::to_string(size));
  }
}

// A block of doubles, made when it is needed.
class Block {
 public:
  double* get() {
    if (memory_ == nullptr) {
      memory_ = std::make_unique_for_overwrite<double[]>(Rows::block);
    }
    return memory_.get();
  }

 private:
  std::unique_ptr<double[]> memory_;
};

// As doubles in units of 2^exponent: where they lie, or in the block.
const double* read(Data from, std::size_t begin, std::size_t n, int exponent, Block& block) {
  if (exponent == 0) {
    return from.dense() ? asDoubles(from, begin, n, nullptr)
                        : asDoubles(from, begin, n, block.get());
  }
  double* const to = block.get();
  const double* const x = asDoubles(from, begin, n, to);
  const double factor = std::ldexp(1.0, -exponent);
  for (std::size_t i = 0; i < n; ++i) {
    to[i] = x[i] * factor;
  }
  return to;
}

// Columns a block at a time; those of a matrix whose rows lie one after the other together.
class ColumnReader {
 public:
  ColumnReader(std::span<const Data> columns, std::span<const int> exponents)
      : columns_(columns), exponents_(exponents), blocks_(columns.size()), read_(columns.size()) {
    if (isMatrixOf<double>(Element::float64) || isMatrixOf<float>(Element::float32)) {
      together_ = std::make_unique_for_overwrite<double[]>(columns.size() * Rows::block);
    }
  }

  const double* const* read(std::size_t begin, std::size_t n) {
    if (together_ != nullptr) {
      const Data& first = columns_[0];
      if (first.element() == Element::float64) {
        turnOver(static_cast<const double*>(first.data()), begin, n);
      } else {
        turnOver(static_cast<const float*>(first.data()), begin, n);
      }
    } else {
      for (std::size_t j = 0; j < columns_.size(); ++j) {
        read_[j] = vexel::read(columns_[j], begin, n, exponents_[j], blocks_[j]);
      }
    }
    return read_.data();
  }

 private:
  template <typename T>
  bool isMatrixOf(Element element) const {
    constexpr std::size_t few = 8;  // which go together in registers
    if (columns_.size() < few || columns_[0].element() != element || columns_[0].stride() == 1) {
      return false;
    }
    const T* at = static_cast<const T*>(columns_[0].data());
    return std::all_of(columns_.begin(), columns_.end(),
                       [&](const Data& column) {
                         return column.data() == at++ && column.element() == element &&
                                column.stride() == columns_[0].stride();
                       }) &&
           std::all_of(exponents_.begin(), exponents_.end(), [](int e) { return e == 0; });
  }

  template <typename T>
  void turnOver(const T* rows, std::size_t begin, std::size_t n) {
    const std::ptrdiff_t apart = columns_[0].stride();
    kernels::copyRows(rows + static_cast<std::ptrdiff_t>(begin) * apart, 1, apart, columns_.size(),
                      n, Rows::block, together_.get());
    for (std::size_t j = 0; j < read_.size(); ++j) {
      read_[j] = &together_[j * Rows::block];
    }
  }

  std::span<const Data> columns_;
  std::span<const int> exponents_;
  std::vector<Block> blocks_;
  std::unique_ptr<double[]> together_;
  std::vector<const double*> read_;
};

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
  ColumnReader reader(columns_, exponents_);
  Block weightBlock;
  std::vector<const double*> kept(k);
  std::vector<Block> keep(k + 1);  // the last one: weights
  std::size_t filled = 0;
  const auto useKept = [&](std::size_t n) {
    for (std::size_t j = 0; j < k; ++j) {
      kept[j] = keep[j].get();
    }
    use(kept.data(), weighted() ? keep[k].get() : nullptr, n);
  };
  Sample::Presence found;
  for (std::size_t begin = 0; begin < size(); begin += block) {
    if (begin % kernels::pollInterval == 0 && begin > 0) {
      kernels::poll(static_cast<double>(begin) / static_cast<double>(size()));
    }
    const std::size_t n = std::min(block, size() - begin);
    const double* const* const columns = reader.read(begin, n);
    const double* const weights =
        weighted() ? read(weights_, begin, n, wExponent_, weightBlock) : nullptr;
    const bool all = std::all_of(columns, columns + k,
                                 [&](const double* x) { return kernels::allPresent(x, n); }) &&
                     (!weighted() || kernels::allPresent(weights, weights, n));
    if (all && filled == 0) {
      found.points += n;
      found.pairs += n;
      use(columns, weights, n);
      continue;
    }
    for (std::size_t i = 0; i < n; ++i) {
      const double weight = weighted() ? weights[i] : 1.0;
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
          keep[j].get()[filled] = columns[j][i];
        }
        keep[k].get()[filled] = weight;
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
  if (!weighted()) {
    ColumnReader reader(columns_, exponents_);
    for (std::size_t begin = 0; begin < size(); begin += block) {
      if (begin % kernels::pollInterval == 0 && begin > 0) {
        kernels::poll();
      }
      const std::size_t n = std::min(block, size() - begin);
      const double* const* const columns = reader.read(begin, n);
      for (std::size_t j = 0; j < width(); ++j) {
        missing[j] = missing[j] || !kernels::allPresent(columns[j], n);
      }
    }
    return missing;
  }
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
