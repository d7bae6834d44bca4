// The stable order of machine numbers by sorting words that hold key and position.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>

#include "kernels/watch.hpp"
#include "radix_sort.hpp"
#include "sort_in_steps.hpp"
#include "sort_keys.hpp"
#include "vector_sort.hpp"

namespace nag2 {

// Sorts words; scratch has as much room, or is null when vector instructions do the work.
inline void sortWords(std::uint64_t* words, std::uint64_t* scratch, std::size_t n) {
  if (scratch != nullptr) {
    radixSortKeys(words, scratch, n);
  } else if (vexel::kernels::currentWatcher != nullptr && n > kSortStep) {
    // As signed integers of the same order.
    auto* const x = reinterpret_cast<std::int64_t*>(words);
    const auto turn = [](std::int64_t v) { return v ^ std::numeric_limits<std::int64_t>::min(); };
    SortProgress progress(n);
    std::transform(x, x + n, x, turn);
    vectorSortWatched(x, n, false, true, progress);
    std::transform(x, x + n, x, turn);
  } else if (vectorSortServes(n)) {
    vectorSort(words, n, false);
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
  using Key = KeyOf<T>;

  RankWords(const T* x, std::size_t n, bool descending)
      : x_(x), flip_(descending ? static_cast<Key>(~Key{0}) : Key{0}) {
    positionBits_ = static_cast<int>(std::bit_width(n - 1));
    int width = 8 * static_cast<int>(sizeof(Key));
    if (width + positionBits_ > 64) {
      Key largest = smallest_ = key(0);
      vexel::kernels::forEach(n, [&](std::size_t i) {
        smallest_ = std::min(smallest_, key(i));
        largest = std::max(largest, key(i));
      });
      width = static_cast<int>(std::bit_width(static_cast<Key>(largest - smallest_)));
    }
    lostBits_ = std::max(0, width + positionBits_ - 64);
  }

  bool loseBits() const { return lostBits_ > 0; }
  std::uint64_t word(std::size_t i) const {
    return (distance(i) >> lostBits_) << positionBits_ | i;
  }
  std::uint64_t positionMask() const { return lowBits(positionBits_); }
  std::size_t position(std::uint64_t word) const { return word & positionMask(); }
  bool agree(std::uint64_t a, std::uint64_t b) const { return (a ^ b) >> positionBits_ == 0; }
  // The word that orders element i among those that agree with it.
  std::uint64_t tieBreaker(std::size_t i) const {
    return (distance(i) & lowBits(lostBits_)) << positionBits_ | i;
  }

 private:
  static std::uint64_t lowBits(int bits) { return (std::uint64_t{1} << bits) - 1; }
  Key key(std::size_t i) const { return static_cast<Key>(ascendingKey(x_[i]) ^ flip_); }
  std::uint64_t distance(std::size_t i) const { return static_cast<Key>(key(i) - smallest_); }

  const T* x_;
  Key flip_;
  Key smallest_ = 0;
  int positionBits_;
  int lostBits_;
};

// The positions of equal elements, in their order.
class TiedPositions {
 public:
  TiedPositions(const std::uint64_t* words, std::size_t size, std::uint64_t mask)
      : words_(words), size_(size), mask_(mask) {}
  std::size_t size() const { return size_; }
  std::size_t operator[](std::size_t i) const { return words_[i] & mask_; }

 private:
  const std::uint64_t* words_;
  std::size_t size_;
  std::uint64_t mask_;
};

// Calls visit(first, TiedPositions) for each run of equal elements in sorted order, first being the
// number of elements before it.  NaNs are equal to one another and the largest.
template <typename T, typename Visit>
void visitSorted(const T* x, std::size_t n, bool descending, Visit visit) {
  if (n == 0) {
    return;
  }
  const RankWords<T> make(x, n, descending);
  const auto words = std::make_unique_for_overwrite<std::uint64_t[]>(n);
  const auto scratch =
      vectorSortServes(n) ? nullptr : std::make_unique_for_overwrite<std::uint64_t[]>(n);
  vexel::kernels::forEach(n, [&](std::size_t i) { words[i] = make.word(i); });
  vexel::kernels::poll(0);
  sortWords(words.get(), scratch.get(), n);
  const std::uint64_t mask = make.positionMask();
  for (std::size_t begin = 0, polled = 0; begin < n;) {
    if (begin - polled >= kSortStep) {
      vexel::kernels::poll(static_cast<double>(begin) / static_cast<double>(n));
      polled = begin;
    }
    std::uint64_t* const group = words.get() + begin;
    std::size_t size = 1;
    while (begin + size < n && make.agree(group[0], group[size])) {
      ++size;
    }
    if (size > 1 && make.loseBits()) {
      std::transform(group, group + size, group,
                     [&](std::uint64_t word) { return make.tieBreaker(make.position(word)); });
      if (!std::is_sorted(group, group + size)) {
        sortWords(group, scratch.get(), size);
      }
      for (std::size_t from = 0; from < size;) {
        std::size_t to = from + 1;
        while (to < size && make.agree(group[from], group[to])) {
          ++to;
        }
        visit(begin + from, TiedPositions(group + from, to - from, mask));
        from = to;
      }
    } else {
      visit(begin, TiedPositions(group, size, mask));
    }
    begin += size;
  }
}

}  // namespace nag2
