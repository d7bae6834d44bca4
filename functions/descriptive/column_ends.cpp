#include "functions/descriptive/column_ends.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "functions/descriptive/column_tiles.hpp"
#include "kernels/vector/sums.hpp"
#include "kernels/watch.hpp"

namespace vexel {

namespace {

using kernels::End;

constexpr auto kAtATime = static_cast<std::size_t>(kernels::pollInterval);

double infinityOf(End end) {
  return end == End::least ? std::numeric_limits<double>::infinity()
                           : -std::numeric_limits<double>::infinity();
}

// The ends of some columns of one element type, as they are found.
template <typename T>
struct Ends {
  std::vector<T> values;
  std::vector<std::uint8_t> missing;

  Ends(End end, std::size_t n) : values(n, static_cast<T>(infinityOf(end))), missing(n) {}
};

template <typename T>
void takeLanes(End end, const T* x, std::ptrdiff_t apart, std::size_t n, Ends<T>& ends) {
  const std::size_t lanes = std::max(std::size_t{1}, kAtATime / n);
  for (std::size_t j = 0; j < ends.values.size(); j += lanes) {
    const std::size_t some = std::min(lanes, ends.values.size() - j);
    const T* const from = x + static_cast<std::ptrdiff_t>(j) * apart;
    for (std::size_t i = 0; i < n; i += kAtATime) {
      kernels::extremesOfLanes(end, from + i, apart, std::min(kAtATime, n - i), some,
                               &ends.values[j], &ends.missing[j]);
      kernels::poll();
    }
  }
}

template <typename T>
void takeRows(End end, const T* x, std::ptrdiff_t stride, std::size_t n, Ends<T>& ends) {
  const std::size_t width = ends.values.size();
  const std::size_t rows = std::max(std::size_t{8}, kAtATime / width);
  for (std::size_t i = 0; i < n; i += rows) {
    kernels::extremesOfRows(end, x + static_cast<std::ptrdiff_t>(i) * stride, stride,
                            std::min(rows, n - i), width, ends.values.data(), ends.missing.data());
    kernels::poll();
  }
}

// Rows without a gap: of short ones some are taken as one.
template <typename T>
void takeDenseRows(End end, const T* x, std::size_t n, Ends<T>& ends) {
  constexpr std::size_t wide = 128;
  const std::size_t width = ends.values.size();
  const std::size_t together = std::max(std::size_t{1}, std::min(n, wide / width));
  Ends<T> more(end, together * width);
  takeRows(end, x, static_cast<std::ptrdiff_t>(together * width), n / together, more);
  const std::size_t done = n / together * together;
  const auto stride = static_cast<std::ptrdiff_t>(width);
  takeRows(end, x + done * width, stride, n - done, ends);
  takeRows(end, static_cast<const T*>(more.values.data()), stride, together, ends);
  for (std::size_t k = 0; k < more.missing.size(); ++k) {
    ends.missing[k % width] |= more.missing[k];
  }
}

template <typename T>
bool hasNegativeZero(const T* x, std::ptrdiff_t stride, std::size_t n) {
  int found = 0;
  for (std::size_t i = 0; i < n; ++i, x += stride) {
    found |= static_cast<int>(*x == T{0}) & static_cast<int>(std::signbit(*x));
  }
  return found != 0;
}

// From place `at` on.
template <typename T>
void give(const Ends<T>& ends, std::size_t at, EndsFound& found) {
  std::copy(ends.values.begin(), ends.values.end(), &found.values[at]);
  std::copy(ends.missing.begin(), ends.missing.end(), &found.missing[at]);
}

template <typename T>
void findEndsOf(const Columns& columns, End end, std::size_t begin, EndsFound& found) {
  const Data& first = columns.first();
  const std::ptrdiff_t stride = first.stride();
  const std::ptrdiff_t apart = columns.apart();
  const std::size_t n = first.size();
  const T* const x =
      static_cast<const T*>(first.data()) + static_cast<std::ptrdiff_t>(begin) * apart;
  Ends<T> ends(end, found.values.size());
  if (apart == 1 && stride == static_cast<std::ptrdiff_t>(found.values.size())) {
    takeDenseRows(end, x, n, ends);
  } else if (apart == 1) {
    takeRows(end, x, stride, n, ends);
  } else {
    takeLanes(end, x, apart, n, ends);
  }
  give(ends, 0, found);
}

// Of elements of any type, wherever they are.
void findEndsOfCopies(const Columns& columns, End end, std::size_t begin, EndsFound& found) {
  ColumnTile tile(columns);
  for (std::size_t j = 0; j < found.values.size(); j += tile.most()) {
    const std::size_t width = std::min(tile.most(), found.values.size() - j);
    tile.moveTo(begin + j, width);
    Ends<double> ends(end, width);
    const std::size_t n = columns.first().size();
    for (std::size_t i = 0; i < n; i += kernels::sumBlock) {
      tile.forRows(i, std::min(n, i + kernels::sumBlock),
                   [&](ColumnTile::Rows rows, std::size_t some) {
                     kernels::extremesOfRows(end, rows.x, rows.stride, some, width,
                                             ends.values.data(), ends.missing.data());
                   });
      kernels::poll();
    }
    give(ends, j, found);
  }
}

bool hasNegativeZero(const Data& x) {
  if (x.element() == Element::float32) {
    return hasNegativeZero(static_cast<const float*>(x.data()), x.stride(), x.size());
  }
  return x.element() == Element::float64 &&
         hasNegativeZero(static_cast<const double*>(x.data()), x.stride(), x.size());
}

}  // namespace

void findEnds(const Columns& columns, End end, std::size_t begin, std::size_t n, EndsFound& found) {
  found.values.resize(n);
  found.missing.resize(n);
  found.doubtful.assign(n, 0);
  const Data& first = columns.first();
  const bool inPlace = columns.apart() == 1 || first.stride() == 1;
  if (inPlace && first.element() == Element::float64) {
    findEndsOf<double>(columns, end, begin, found);
  } else if (inPlace && first.element() == Element::float32) {
    findEndsOf<float>(columns, end, begin, found);
  } else {
    findEndsOfCopies(columns, end, begin, found);
  }
  std::uint8_t any = 0;
  std::uint8_t zero = 0;
  for (std::size_t j = 0; j < n; ++j) {
    any |= found.missing[j];
    zero |= static_cast<std::uint8_t>(found.values[j] == 0.0);
  }
  for (std::size_t j = 0; j < n && zero != 0; ++j) {
    if (found.values[j] == 0.0) {
      found.doubtful[j] = static_cast<std::uint8_t>(hasNegativeZero(columns[begin + j]));
      any |= found.doubtful[j];
    }
  }
  found.plain = any == 0;
}

}  // namespace vexel
