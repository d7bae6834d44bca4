// Loops over blocks of numbers on their way into words of key and position (rank_words.hpp), with
// vector instructions where this build and this machine have them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "numerics/sorting/sort_keys.hpp"

namespace nag2 {

struct KeyRange {
  std::uint64_t smallest;
  std::uint64_t largest;
};

// How a word is made: the key's distance from the smallest in the high bits, without its last
// `lostBits`, and the position in the low `positionBits`.  `flip` turns the order round.
struct WordShape {
  std::uint64_t flip = 0;
  std::uint64_t smallest = 0;
  int lostBits = 0;
  int positionBits = 0;

  std::uint64_t word(std::uint64_t distance, std::size_t i) const {
    return (distance >> lostBits) << positionBits | i;
  }
};

template <typename T>
constexpr std::uint64_t keyAsWord(T x, std::uint64_t flip) {
  return static_cast<KeyOf<T>>(ascendingKey(x) ^ static_cast<KeyOf<T>>(flip));
}

// The loops themselves.  Inlined, so that they are compiled for the instructions of whoever calls
// them.
template <typename T>
[[gnu::always_inline]] inline KeyRange rangeOfKeysHere(const T* x, std::size_t n,
                                                       std::uint64_t flip) {
  KeyRange range{~std::uint64_t{0}, 0};
  for (std::size_t i = 0; i < n; ++i) {
    const std::uint64_t key = keyAsWord(x[i], flip);
    range.smallest = std::min(range.smallest, key);
    range.largest = std::max(range.largest, key);
  }
  return range;
}
template <typename T>
[[gnu::always_inline]] inline std::size_t countKeysBelowHere(const T* x, std::size_t n,
                                                             std::uint64_t flip,
                                                             std::uint64_t pivot) {
  std::size_t below = 0;
  for (std::size_t i = 0; i < n; ++i) {
    below += static_cast<std::size_t>(keyAsWord(x[i], flip) < pivot);
  }
  return below;
}
template <typename T>
[[gnu::always_inline]] inline void makeWordsHere(const T* x, std::size_t n, std::size_t first,
                                                 WordShape shape, std::uint64_t* words) {
  for (std::size_t i = 0; i < n; ++i) {
    words[i] = shape.word(keyAsWord(x[i], shape.flip) - shape.smallest, first + i);
  }
}

// The smallest and largest key; (all ones, 0) of none.
template <typename T>
KeyRange rangeOfKeys(const T* x, std::size_t n, std::uint64_t flip) {
  return rangeOfKeysHere(x, n, flip);
}
KeyRange rangeOfKeys(const double* x, std::size_t n, std::uint64_t flip);
KeyRange rangeOfKeys(const std::int64_t* x, std::size_t n, std::uint64_t flip);

template <typename T>
std::size_t countKeysBelow(const T* x, std::size_t n, std::uint64_t flip, std::uint64_t pivot) {
  return countKeysBelowHere(x, n, flip, pivot);
}
std::size_t countKeysBelow(const double* x, std::size_t n, std::uint64_t flip, std::uint64_t pivot);
std::size_t countKeysBelow(const std::int64_t* x, std::size_t n, std::uint64_t flip,
                           std::uint64_t pivot);

// The words of elements that have the positions `first` and on.
template <typename T>
void makeWords(const T* x, std::size_t n, std::size_t first, WordShape shape,
               std::uint64_t* words) {
  makeWordsHere(x, n, first, shape, words);
}
void makeWords(const double* x, std::size_t n, std::size_t first, WordShape shape,
               std::uint64_t* words);
void makeWords(const std::int64_t* x, std::size_t n, std::size_t first, WordShape shape,
               std::uint64_t* words);

// Puts the words below the pivot to front, the others to back, memory of its own each; gives the
// number of those below.
std::size_t partWords(const std::uint64_t* words, std::size_t n, std::uint64_t pivot,
                      std::uint64_t* front, std::uint64_t* back);

}  // namespace nag2
