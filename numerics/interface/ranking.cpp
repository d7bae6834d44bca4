// Stable ranks: of anything by a comparison callback (merge sort of positions) and of machine
// numbers by words (rank_words.hpp).
//
// The merge sort is our own because a comparison may be anything a user wrote: the library's sorts
// may leave their range when answers contradict one another, this one cannot.

#include <nag2/nag2.h>

#include <algorithm>
#include <cstdint>
#include <new>
#include <numeric>
#include <span>
#include <vector>

#include "kernels/lookout.hpp"
#include "numerics/interface/failure.hpp"
#include "numerics/sorting/rank_words.hpp"

namespace {

using Position = std::uint32_t;

// Runs this short are sorted by insertion before merging starts.
constexpr std::size_t kRun = 8;

bool acceptable(std::size_t n, int order, const char* function, NagError* fail) {
  if (order != Nag_Ascending && order != Nag_Descending) {
    nag2::setFailure(fail, NAG2_BAD_ORDER, function,
                     "the order code is neither ascending nor descending");
    return false;
  }
  if (n >= (std::size_t{1} << 31)) {
    nag2::setFailure(fail, NAG2_TOO_MANY_ELEMENTS, function,
                     "there are more than 2^31 - 1 elements to rank");
    return false;
  }
  return true;
}

template <typename Before>
void insertionSort(std::span<Position> run, Before before) {
  for (std::size_t j = 1; j < run.size(); ++j) {
    const Position moving = run[j];
    std::size_t i = j;
    for (; i > 0 && before(moving, run[i - 1]); --i) {
      run[i] = run[i - 1];
    }
    run[i] = moving;
  }
}

// Merges the sorted halves of from into to; equal elements of the left half come first.
template <typename Before>
void merge(std::span<const Position> from, std::size_t middle, Position* to, Before before) {
  std::size_t left = 0;
  std::size_t right = middle;
  if (right < from.size() && before(from[right], from[right - 1])) {
    while (left < middle && right < from.size()) {
      *to++ = before(from[right], from[left]) ? from[right++] : from[left++];
    }
    to = std::copy(from.begin() + static_cast<std::ptrdiff_t>(left),
                   from.begin() + static_cast<std::ptrdiff_t>(middle), to);
    std::copy(from.begin() + static_cast<std::ptrdiff_t>(right), from.end(), to);
  } else {
    std::copy(from.begin(), from.end(), to);  // the halves are in order already
  }
}

// The positions 0..n-1 in sorted order.
template <typename Before>
std::vector<Position> sortedPositions(std::size_t n, Before before) {
  std::vector<Position> from(n);
  std::vector<Position> to(n);
  std::iota(from.begin(), from.end(), Position{0});
  for (std::size_t begin = 0; begin < n; begin += kRun) {
    insertionSort(std::span(from).subspan(begin, std::min(kRun, n - begin)), before);
  }
  for (std::size_t width = kRun; width < n; width *= 2) {
    for (std::size_t begin = 0; begin < n; begin += 2 * width) {
      const std::size_t size = std::min(2 * width, n - begin);
      merge(std::span<const Position>(from).subspan(begin, size), std::min(width, size),
            to.data() + begin, before);
    }
    from.swap(to);
  }
  return from;
}

template <typename T>
void rankNumbers(const T* x, std::size_t n, bool descending, Position* ranks) {
  nag2::visitSortedAnywhere(
      x, n, descending,
      [=](std::size_t first, nag2::TiedPositions tied) __attribute__((always_inline)) {
        for (std::size_t i = 0; i < tied.size(); ++i) {
          ranks[tied[i]] = static_cast<Position>(first + i);
        }
      },
      [=](std::size_t i) { __builtin_prefetch(ranks + i, 1); });
}

}  // namespace

extern "C" void q70723(const void* data, size_t n, ptrdiff_t stride,
                       int (*compare)(const char* a, const char* b), int order, uint32_t* ranks,
                       NagError* fail) {
  if (!acceptable(n, order, "q70723", fail)) {
    return;
  }
  const auto at = [=](Position i) {
    return static_cast<const char*>(data) + static_cast<ptrdiff_t>(i) * stride;
  };
  // Only "below 0" is trusted, so a comparison that calls two NaNs different both ways is harmless.
  const bool descending = order == Nag_Descending;
  constexpr int kComparisonCost = 100;  // operations, near enough
  vexel::kernels::Lookout lookout;
  const auto before = [=, &lookout](Position i, Position j) {
    lookout.done(kComparisonCost);
    return descending ? compare(at(j), at(i)) < 0 : compare(at(i), at(j)) < 0;
  };
  try {
    const std::vector<Position> sorted = sortedPositions(n, before);
    for (std::size_t i = 0; i < n; ++i) {
      ranks[sorted[i]] = static_cast<Position>(i);
    }
  } catch (const std::bad_alloc&) {
    nag2::setFailure(fail, NAG2_NO_MEMORY, "q70723",
                     "there is not enough memory to rank the elements");
  }
}

extern "C" void nag2_rank_typed(const void* data, size_t n, int kind, int order, uint32_t* ranks,
                                NagError* fail) {
  constexpr const char* kName = "nag2_rank_typed";
  if (!acceptable(n, order, kName, fail)) {
    return;
  }
  const bool descending = order == Nag_Descending;
  try {
    switch (kind) {
      case NAG2_INT8:
        return rankNumbers(static_cast<const std::int8_t*>(data), n, descending, ranks);
      case NAG2_INT16:
        return rankNumbers(static_cast<const std::int16_t*>(data), n, descending, ranks);
      case NAG2_INT32:
        return rankNumbers(static_cast<const std::int32_t*>(data), n, descending, ranks);
      case NAG2_INT64:
        return rankNumbers(static_cast<const std::int64_t*>(data), n, descending, ranks);
      case NAG2_FLOAT64:
        return rankNumbers(static_cast<const double*>(data), n, descending, ranks);
      case NAG2_FLOAT32:
        return rankNumbers(static_cast<const float*>(data), n, descending, ranks);
      default:
        nag2::setFailure(fail, NAG2_DOMAIN, kName,
                         "the kind of the elements is none that can be ranked");
    }
  } catch (const std::bad_alloc&) {
    nag2::setFailure(fail, NAG2_NO_MEMORY, kName,
                     "there is not enough memory to rank the elements");
  }
}
