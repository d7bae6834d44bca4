#include "functions/ordering/binning.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <string>
#include <vexel/errors.hpp>

#include "kernels/binning.hpp"
#include "kernels/watch.hpp"

namespace vexel {

std::vector<double> equalEdges(Interval range, std::size_t bins) {
  std::vector<double> edges(bins + 1);
  // Halves keep a range beyond the largest double finite.
  const bool wide = std::isinf(range.high - range.low);
  const double step = wide ? 2 * ((range.high / 2 - range.low / 2) / static_cast<double>(bins))
                           : (range.high - range.low) / static_cast<double>(bins);
  for (std::size_t i = 0; i < bins; ++i) {
    edges[i] = range.low + static_cast<double>(i) * step;
    if (std::isinf(edges[i])) {
      edges[i] = (range.low / 4 + static_cast<double>(i) * (step / 4)) * 4;
    }
  }
  edges[bins] = range.high;
  return edges;
}

std::vector<double> checkedEdges(Data edges, const char* parameter) {
  std::vector<double> checked(edges.size());
  for (std::size_t i = 0; i < checked.size(); ++i) {
    checked[i] = edges[i];
    if (isMissing(checked[i]) || (i > 0 && checked[i] < checked[i - 1])) {
      throw ElementError(std::string(parameter) + " must be edges that do not fall, element ", i,
                         " is " + number(checked[i]));
    }
  }
  if (checked.size() < 2) {
    throw std::length_error(mustBe(parameter, "at least two", std::to_string(edges.size())));
  }
  return checked;
}

Binning::Binning(std::span<const double> edges, bool equal)
    : edges_(edges), bins_(edges.size() - 1), equal_(equal) {
  low_ = edges.front();
  const double high = edges.back();
  scale_ = static_cast<double>(bins_) / (high - low_);
  equal_ = equal && std::isfinite(scale_) && scale_ > 0;
  if (equal_) {
    // The guess, the edges and a large integer's conversion are off by a few roundings each.
    const double size = std::max(std::abs(low_), std::abs(high));
    doubt_ = 8 * std::numeric_limits<double>::epsilon() *
             (size * scale_ + static_cast<double>(bins_) + 1);
  }
}

namespace {

constexpr std::size_t kBlock = 512;

template <typename T>
const double* asDoubles(const T* x, std::size_t n, double* room) {
  if constexpr (std::is_same_v<T, double>) {
    return x;
  } else {
    for (std::size_t i = 0; i < n; ++i) {
      room[i] = static_cast<double>(x[i]);
    }
    return room;
  }
}

}  // namespace

Binning::BinsOfCells Binning::binsOfCells(std::size_t elements) const {
  constexpr std::size_t kMostCells = std::size_t{1} << 14;  // what the nearest cache holds
  constexpr std::size_t kCellsOfABin = 32;
  const std::size_t count = std::min(kMostCells, std::bit_ceil(kCellsOfABin * bins_));
  const double low = edges_[0];
  const double scale = static_cast<double>(count) / (edges_[bins_] - low);
  if (elements < 4 * count || !std::isfinite(scale) || scale <= 0 || !std::isfinite(low)) {
    return {};
  }
  // The cell of an edge by the operations that find the cell of an element: since they do not fall,
  // an element of a cell without edges lies between the same two edges as all of that cell.
  std::vector<std::size_t> edgesIn(count + 1);
  for (const double edge : edges_) {
    ++edgesIn[static_cast<std::size_t>(std::min((edge - low) * scale, static_cast<double>(count)))];
  }
  BinsOfCells result{{low, scale, 0.0, static_cast<std::int32_t>(count)}, {}};
  const auto none = static_cast<std::int32_t>(bins_);
  std::size_t below = 0;
  std::size_t settled = 0;
  for (std::size_t cell = 0; cell <= count; ++cell) {
    const bool sure = edgesIn[cell] == 0 && cell < count;
    result.bin.push_back(sure ? static_cast<std::int32_t>(below) - 1 : none);
    below += edgesIn[cell];
    settled += static_cast<std::size_t>(sure);
  }
  // Edges crowded in a few cells leave most elements to the search.
  return 2 * settled < count ? BinsOfCells{} : result;
}

// Four tables, since an increment waits for the one before it in its place.
template <typename T>
std::size_t Binning::count(std::span<const T> x, std::span<std::uint64_t> counts) const {
  constexpr std::size_t kMostGuessed = std::size_t{1} << 20;
  std::size_t missing = 0;
  const bool guessed = equal_ && bins_ < kMostGuessed && doubt_ < 0.25 && x.size() >= bins_;
  const BinsOfCells uneven = guessed ? BinsOfCells() : binsOfCells(x.size());
  if (!guessed && uneven.bin.empty()) {
    for (std::size_t i = 0; i < x.size(); ++i) {
      if (i % kernels::pollInterval == 0) {
        kernels::poll(static_cast<double>(i) / static_cast<double>(x.size()));
      }
      const std::size_t bin = (*this)(x[i]);
      if (bin != outside) {
        ++counts[bin];
      } else {
        missing += static_cast<std::size_t>(isMissing(x[i]));
      }
    }
    return missing;
  }
  const std::size_t cells = bins_ + 1;  // the last one for the doubtful
  const std::size_t tables = cells <= 2048 ? 4 : 1;
  std::vector<std::uint64_t> all(cells * tables);
  std::array<std::uint64_t*, 4> table;
  for (std::size_t t = 0; t < 4; ++t) {
    table[t] = all.data() + (t % tables) * cells;
  }
  std::array<std::int32_t, kBlock> bin;
  const auto none = static_cast<std::int32_t>(bins_);
  std::array<double, kBlock> converted;
  const kernels::BinGuess guess =
      guessed ? kernels::BinGuess{low_, scale_, doubt_, none} : uneven.cells;
  for (std::size_t start = 0; start < x.size(); start += kBlock) {
    if (start % kernels::pollInterval == 0) {
      kernels::poll(static_cast<double>(start) / static_cast<double>(x.size()));
    }
    const std::size_t n = std::min(kBlock, x.size() - start);
    const T* const block = x.data() + start;
    std::int32_t doubtful =
        kernels::guessBins(asDoubles(block, n, converted.data()), n, guess, bin.data());
    for (std::size_t j = 0; !guessed && j < n; ++j) {
      bin[j] = uneven.bin[static_cast<std::size_t>(bin[j])];
      doubtful += static_cast<std::int32_t>(bin[j] == none);
    }
    std::fill(bin.begin() + static_cast<std::ptrdiff_t>(n), bin.end(), none);
    for (std::size_t j = 0; j < kBlock; j += 4) {
      for (std::size_t t = 0; t < 4; ++t) {
        ++table[t][bin[j + t]];
      }
    }
    for (std::size_t j = 0; doubtful > 0 && j < n; ++j) {
      if (bin[j] == none) {
        const std::size_t exact = (*this)(block[j]);
        if (exact != outside) {
          ++table[0][exact];
        } else {
          missing += static_cast<std::size_t>(isMissing(block[j]));
        }
      }
    }
  }
  for (std::size_t t = 0; t < tables; ++t) {
    for (std::size_t b = 0; b < bins_; ++b) {
      counts[b] += table[t][b];
    }
  }
  return missing;
}
template std::size_t Binning::count(std::span<const double>, std::span<std::uint64_t>) const;
template std::size_t Binning::count(std::span<const float>, std::span<std::uint64_t>) const;
template std::size_t Binning::count(std::span<const std::int32_t>, std::span<std::uint64_t>) const;
template std::size_t Binning::count(std::span<const std::int64_t>, std::span<std::uint64_t>) const;

}  // namespace vexel
