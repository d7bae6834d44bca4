// Stable ranks: of anything by a comparison callback (merge sort of positions) and of machine
// numbers by sorting words that hold key and position.
//
// The merge sort is our own because a comparison may be anything a user wrote: the library's sorts
// may leave their range when answers contradict one another, this one cannot.

#include <nag2/nag2.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <memory>
#include <new>
#include <numeric>
#include <span>
#include <vector>

#include "failure.hpp"
#include "radix_sort.hpp"
#include "sort_keys.hpp"
#include "vector_sort.hpp"

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

// Sorts words; scratch has as much room, or is null when vector instructions do the work.
void sortWords(std::uint64_t* words, std::uint64_t* scratch, std::size_t n) {
  if (scratch != nullptr) {
    nag2::radixSortKeys(words, scratch, n);
  } else if (nag2::vectorSortServes(n)) {
    nag2::vectorSort(words, n, false);
  } else {
    std::sort(words, words + n);
  }
}

// Numbers as words to sort: the key's distance from the smallest in the high bits, the position in
// the low ones, which makes any sort stable.  Where the two need more than 64 bits the distance
// loses its last bits, at most as many as a position has; they decide among the words that agree in
// the rest.
template <typename T>
class RankWords {
 public:
  using Key = nag2::KeyOf<T>;

  RankWords(const T* x, std::size_t n, bool descending)
      : x_(x), flip_(descending ? static_cast<Key>(~Key{0}) : Key{0}) {
    positionBits_ = static_cast<int>(std::bit_width(n - 1));
    int width = 8 * static_cast<int>(sizeof(Key));
    if (width + positionBits_ > 64) {
      Key largest = smallest_ = key(0);
      for (std::size_t i = 1; i < n; ++i) {
        smallest_ = std::min(smallest_, key(i));
        largest = std::max(largest, key(i));
      }
      width = static_cast<int>(std::bit_width(static_cast<Key>(largest - smallest_)));
    }
    lostBits_ = std::max(0, width + positionBits_ - 64);
  }

  bool loseBits() const { return lostBits_ > 0; }
  std::uint64_t word(std::size_t i) const {
    return (distance(i) >> lostBits_) << positionBits_ | i;
  }
  std::size_t position(std::uint64_t word) const { return word & lowBits(positionBits_); }
  bool agree(std::uint64_t a, std::uint64_t b) const { return (a ^ b) >> positionBits_ == 0; }
  // The word that orders element i among those that agree with it.
  std::uint64_t tieBreaker(std::size_t i) const {
    return (distance(i) & lowBits(lostBits_)) << positionBits_ | i;
  }

 private:
  static std::uint64_t lowBits(int bits) { return (std::uint64_t{1} << bits) - 1; }
  Key key(std::size_t i) const { return static_cast<Key>(nag2::ascendingKey(x_[i]) ^ flip_); }
  std::uint64_t distance(std::size_t i) const { return static_cast<Key>(key(i) - smallest_); }

  const T* x_;
  Key flip_;
  Key smallest_ = 0;
  int positionBits_;
  int lostBits_;
};

template <typename T>
void rankNumbers(const T* x, std::size_t n, bool descending, Position* ranks) {
  if (n == 0) {
    return;
  }
  const RankWords<T> make(x, n, descending);
  const auto words = std::make_unique_for_overwrite<std::uint64_t[]>(n);
  const auto scratch =
      nag2::vectorSortServes(n) ? nullptr : std::make_unique_for_overwrite<std::uint64_t[]>(n);
  for (std::size_t i = 0; i < n; ++i) {
    words[i] = make.word(i);
  }
  sortWords(words.get(), scratch.get(), n);
  for (std::size_t begin = 0; make.loseBits() && begin < n;) {
    std::size_t end = begin + 1;
    while (end < n && make.agree(words[begin], words[end])) {
      ++end;
    }
    if (end - begin > 1) {
      std::uint64_t* const tied = words.get() + begin;
      std::transform(tied, words.get() + end, tied,
                     [&](std::uint64_t word) { return make.tieBreaker(make.position(word)); });
      if (!std::is_sorted(tied, words.get() + end)) {
        sortWords(tied, scratch.get(), end - begin);
      }
    }
    begin = end;
  }
  for (std::size_t i = 0; i < n; ++i) {
    ranks[make.position(words[i])] = static_cast<Position>(i);
  }
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
  const auto before = [=](Position i, Position j) {
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
