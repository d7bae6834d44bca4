// Sorting and ranks of many short variables at once, by networks of comparisons; to the bits of one
// after the other.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <type_traits>
#include <vector>

#include "functions/data/elements.hpp"
#include "functions/descriptive/column_strips.hpp"
#include "kernels/sorting/network.hpp"
#include "kernels/vector/row_copies.hpp"
#include "kernels/watch.hpp"
#include "numerics/sorting/vector_sort.hpp"
#include "vexel/columns.hpp"

namespace vexel {

namespace {

constexpr std::size_t kWidth = ColumnStrip::width;
// Longer ones are better sorted where they are.
constexpr std::size_t kLongest = std::size_t{1} << 17;
constexpr std::size_t kLongestByNetwork = 512;
constexpr std::size_t kLongestWithPlaces = 256;  // which take twice the work
// Where vectors sort: longer ones are sorted by a network each in place of one of all.
constexpr std::size_t kLongestTogether = 24;

template <typename T>
void scatter(std::span<const T> from, const ColumnsOut<T>& out, std::size_t j) {
  T* to = out.first + static_cast<std::ptrdiff_t>(j) * out.apart;
  for (const T x : from) {
    *to = x;
    to += out.stride;
  }
}

// Whether eight columns are sorted by a network of their rows, or else one after the other.
bool sortedTogether(std::size_t n) { return n <= kLongestTogether || !nag2::vectorSortServes(n); }

// The most elements of columns that are sorted eight at a time.
std::size_t longestInStrips(const Columns& columns, std::size_t byNetwork) {
  return ColumnStrip::serves(columns) ? byNetwork : 0;
}

// Eight columns, from rows of eight doubles or one after the other.
template <typename T>
class Writer {
 public:
  Writer(const ColumnsOut<T>& out, std::size_t n) : out_(out), n_(n) {}

  void writeRows(const double* rows, std::size_t begin, std::size_t columns) const {
    T* const to = lane(begin);
    for (std::size_t i = 0; i < n_; ++i) {
      for (std::size_t j = 0; j < columns; ++j) {
        to[static_cast<std::ptrdiff_t>(i) * out_.stride +
           static_cast<std::ptrdiff_t>(j) * out_.apart] = static_cast<T>(rows[i * kWidth + j]);
      }
    }
  }

  void writeLanes(const double* lanes, std::size_t begin, std::size_t columns) const {
    for (std::size_t j = 0; j < columns; ++j, lanes += n_) {
      std::transform(lanes, lanes + n_, lane(begin + j),
                     [](double x) { return static_cast<T>(x); });
    }
  }

 private:
  T* lane(std::size_t j) const { return out_.first + static_cast<std::ptrdiff_t>(j) * out_.apart; }

  const ColumnsOut<T>& out_;
  std::size_t n_;
};

template <typename T>
class Sorter {
 public:
  Sorter(const Columns& columns, const ColumnsOut<T>& out)
      : n_(columns.first().size()),
        together_(sortedTogether(n_)),
        inLanes_(out.stride == 1),
        strip_(columns),
        writer_(out, n_),
        lanes_(kWidth * n_) {
    if (together_) {
      network_ = kernels::sortingNetwork(n_);
    }
  }

  // The strip from column `begin` on.
  template <typename Alone>
  void sort(std::size_t begin, Alone alone) {
    strip_.moveTo(begin);
    if (together_) {
      strip_.exchange(network_);
    }
    if (!together_ || inLanes_) {
      kernels::copyRows(strip_.row(0), 1, kStride, kWidth, n_, n_, lanes_.data());
    }
    if (!together_) {
      for (std::size_t j = 0; j < strip_.columns(); ++j) {
        nag2::vectorSort(&lanes_[j * n_], n_);
      }
    }
    write(begin);
    for (std::size_t j = 0; j < strip_.columns(); ++j) {
      if (strip_.missing(j) > 0 || strip_.hasNegativeZero(j)) {
        alone(begin + j);
      }
    }
  }

 private:
  static constexpr auto kStride = static_cast<std::ptrdiff_t>(kWidth);

  void write(std::size_t begin) {
    if (inLanes_) {
      return writer_.writeLanes(lanes_.data(), begin, strip_.columns());
    }
    if (!together_) {
      kernels::copyRows(lanes_.data(), 1, static_cast<std::ptrdiff_t>(n_), n_, kWidth, kWidth,
                        strip_.row(0));
    }
    writer_.writeRows(strip_.row(0), begin, strip_.columns());
  }

  std::size_t n_;
  bool together_;
  bool inLanes_;
  ColumnStrip strip_;
  Writer<T> writer_;
  std::vector<double> lanes_;
  std::vector<kernels::Exchange> network_;
};

// strip(begin) for every eight columns of up to `longest` elements that doubles hold exactly;
// alone(j) for all others.
template <typename Strip, typename Alone>
void onStrips(const Columns& columns, std::size_t longest, Strip strip, Alone alone) {
  const std::size_t n = columns.first().size();
  const auto count = static_cast<double>(columns.count());
  const bool served = n > 0 && n <= longest && columns.first().element() != Element::int64;
  const std::size_t step = served ? kWidth : 1;
  const std::size_t some = (std::size_t{1} << 18) / (step * std::max(n, std::size_t{1})) + 1;
  std::size_t steps = 0;
  for (std::size_t j = 0; j < columns.count(); j += step) {
    if (served) {
      strip(j);
    } else {
      alone(j);
    }
    if (++steps % some == 0) {
      kernels::poll(static_cast<double>(j) / count);
    }
  }
}

// Some columns and where their elements were, in order.
class Ordered {
 public:
  explicit Ordered(const Columns& columns)
      : n_(columns.first().size()),
        strip_(columns),
        places_(kWidth * n_),
        network_(kernels::sortingNetwork(n_)) {}

  // use(j, column of the strip) for those of the strip from `begin` on without anything missing.
  template <typename Use, typename Alone>
  void order(std::size_t begin, Use use, Alone alone) {
    strip_.moveTo(begin);
    for (std::size_t i = 0; i < places_.size(); ++i) {
      places_[i] = static_cast<double>(i / kWidth);
    }
    strip_.exchange(network_, places_.data());
    for (std::size_t j = 0; j < strip_.columns(); ++j) {
      if (strip_.missing(j) == 0) {
        use(begin + j, j);
      } else {
        alone(begin + j);
      }
    }
  }
  std::size_t size() const { return n_; }
  double element(std::size_t i, std::size_t j) { return strip_.row(i)[j]; }
  std::ptrdiff_t place(std::size_t i, std::size_t j) const {
    return static_cast<std::ptrdiff_t>(places_[i * kWidth + j]);
  }

 private:
  std::size_t n_;
  ColumnStrip strip_;
  std::vector<double> places_;
  std::vector<kernels::Exchange> network_;
};

// The rank of tied elements begin to end - 1, the group-th run of them; of ordinal ones the first.
double rankOfTied(RankMethod method, std::size_t begin, std::size_t end, std::size_t group) {
  const auto before = static_cast<double>(begin);
  const auto size = static_cast<double>(end - begin);
  switch (method) {
    case RankMethod::max:
      return before + size;
    case RankMethod::dense:
      return static_cast<double>(group);
    case RankMethod::average:
      return before + (size + 1) / 2;
    default:
      return before + 1;
  }
}

void writeRanks(Ordered& ordered, std::size_t j, RankMethod method, double* to,
                std::ptrdiff_t stride) {
  const std::size_t n = ordered.size();
  std::size_t group = 0;
  for (std::size_t begin = 0; begin < n;) {
    std::size_t end = begin + 1;
    const double x = ordered.element(begin, j);
    while (end < n && method != RankMethod::ordinal && ordered.element(end, j) == x) {
      ++end;
    }
    const double rank = rankOfTied(method, begin, end, ++group);
    for (; begin < end; ++begin) {
      to[ordered.place(begin, j) * stride] = rank;
    }
  }
}

}  // namespace

template <DataElement T>
void sort(const Columns& columns, const ColumnsOut<T>& out, const SortOptions& options) {
  requireElement<T>(columns.first());
  const std::size_t n = columns.first().size();
  std::vector<T> one(out.stride == 1 ? 0 : n);
  const auto alone = [&](std::size_t j) {
    T* const lane = out.first + static_cast<std::ptrdiff_t>(j) * out.apart;
    const std::span<T> sorted = out.stride == 1 ? std::span(lane, n) : std::span(one);
    const std::size_t kept = sort<T>(columns[j], sorted, options);
    if constexpr (std::is_floating_point_v<T>) {
      std::fill(sorted.begin() + static_cast<std::ptrdiff_t>(kept), sorted.end(),
                std::numeric_limits<T>::quiet_NaN());
    }
    if (out.stride != 1) {
      scatter<T>(one, out, j);
    }
  };
  const bool together = sortedTogether(n);
  const bool inPlace = !together && out.stride == 1 && columns.first().stride() == 1;
  const std::size_t longest = together ? longestInStrips(columns, kLongestByNetwork) : kLongest;
  std::optional<Sorter<T>> sorter;
  onStrips(
      columns, inPlace ? 0 : longest,
      [&](std::size_t begin) {
        if (!sorter) {
          sorter.emplace(columns, out);
        }
        sorter->sort(begin, alone);
      },
      alone);
}
template void sort(const Columns&, const ColumnsOut<double>&, const SortOptions&);
template void sort(const Columns&, const ColumnsOut<float>&, const SortOptions&);
template void sort(const Columns&, const ColumnsOut<std::int32_t>&, const SortOptions&);
template void sort(const Columns&, const ColumnsOut<std::int64_t>&, const SortOptions&);

void argsort(const Columns& columns, const ColumnsOut<std::int64_t>& out,
             const SortOptions& options) {
  std::vector<std::int64_t> one(columns.first().size());
  const auto alone = [&](std::size_t j) {
    argsort(columns[j], one, options);
    scatter<std::int64_t>(one, out, j);
  };
  std::optional<Ordered> ordered;
  onStrips(
      columns, longestInStrips(columns, kLongestWithPlaces),
      [&](std::size_t begin) {
        if (!ordered) {
          ordered.emplace(columns);
        }
        ordered->order(
            begin,
            [&](std::size_t column, std::size_t j) {
              std::int64_t* to = out.first + static_cast<std::ptrdiff_t>(column) * out.apart;
              for (std::size_t i = 0; i < ordered->size(); ++i, to += out.stride) {
                *to = ordered->place(i, j);
              }
            },
            alone);
      },
      alone);
}

void rank(const Columns& columns, const ColumnsOut<double>& out, const RankOptions& options) {
  std::vector<double> one(columns.first().size());
  const auto alone = [&](std::size_t j) {
    rank(columns[j], one, options);
    scatter<double>(one, out, j);
  };
  std::optional<Ordered> ordered;
  onStrips(
      columns, longestInStrips(columns, kLongestWithPlaces),
      [&](std::size_t begin) {
        if (!ordered) {
          ordered.emplace(columns);
        }
        ordered->order(
            begin,
            [&](std::size_t column, std::size_t j) {
              writeRanks(*ordered, j, options.method,
                         out.first + static_cast<std::ptrdiff_t>(column) * out.apart, out.stride);
            },
            alone);
      },
      alone);
}

}  // namespace vexel
