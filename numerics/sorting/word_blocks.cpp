// The loops of word_blocks.hpp, compiled once for each set of vector instructions; the second half
// of this file picks among them at run time.

#include "numerics/sorting/word_blocks.hpp"

#ifdef NAG2_HAVE_HIGHWAY

#ifndef HWY_DISABLED_TARGETS
#define HWY_DISABLED_TARGETS (HWY_SSSE3 | HWY_SSE4)  // no better than plain code here
#endif
#include <hwy/targets.h>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "numerics/sorting/word_blocks.cpp"
#include <hwy/foreach_target.h>
// After it, as it wants:
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace nag2::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

KeyRange rangeOfDoubles(const double* x, std::size_t n, std::uint64_t flip) {
  return rangeOfKeysHere(x, n, flip);
}
KeyRange rangeOfIntegers(const std::int64_t* x, std::size_t n, std::uint64_t flip) {
  return rangeOfKeysHere(x, n, flip);
}
std::size_t countDoubles(const double* x, std::size_t n, std::uint64_t flip, std::uint64_t pivot) {
  return countKeysBelowHere(x, n, flip, pivot);
}
std::size_t countIntegers(const std::int64_t* x, std::size_t n, std::uint64_t flip,
                          std::uint64_t pivot) {
  return countKeysBelowHere(x, n, flip, pivot);
}
void wordsOfDoubles(const double* x, std::size_t n, std::size_t first, WordShape shape,
                    std::uint64_t* words) {
  makeWordsHere(x, n, first, shape, words);
}
void wordsOfIntegers(const std::int64_t* x, std::size_t n, std::size_t first, WordShape shape,
                     std::uint64_t* words) {
  makeWordsHere(x, n, first, shape, words);
}

std::size_t partAllWords(const std::uint64_t* words, std::size_t n, std::uint64_t pivot,
                         std::uint64_t* front, std::uint64_t* back) {
  // Compared as signed integers of the same order.
  const hn::ScalableTag<std::int64_t> d;
  constexpr std::uint64_t turn = std::uint64_t{1} << 63;
  const auto turned = hn::Set(d, static_cast<std::int64_t>(turn));
  const auto by = hn::Set(d, static_cast<std::int64_t>(pivot ^ turn));
  const std::uint64_t* const start = front;
  std::size_t i = 0;
  for (; i + hn::Lanes(d) <= n; i += hn::Lanes(d)) {
    const auto v = hn::LoadU(d, reinterpret_cast<const std::int64_t*>(words + i));
    const auto below = hn::Lt(hn::Xor(v, turned), by);
    front += hn::CompressBlendedStore(v, below, d, reinterpret_cast<std::int64_t*>(front));
    back += hn::CompressBlendedStore(v, hn::Not(below), d, reinterpret_cast<std::int64_t*>(back));
  }
  for (; i < n; ++i) {
    *(words[i] < pivot ? front : back)++ = words[i];
  }
  return static_cast<std::size_t>(front - start);
}

}  // namespace
}  // namespace nag2::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace nag2 {

namespace {

HWY_EXPORT(rangeOfDoubles);
HWY_EXPORT(rangeOfIntegers);
HWY_EXPORT(countDoubles);
HWY_EXPORT(countIntegers);
HWY_EXPORT(wordsOfDoubles);
HWY_EXPORT(wordsOfIntegers);
HWY_EXPORT(partAllWords);

}  // namespace

KeyRange rangeOfKeys(const double* x, std::size_t n, std::uint64_t flip) {
  return HWY_DYNAMIC_DISPATCH(rangeOfDoubles)(x, n, flip);
}
KeyRange rangeOfKeys(const std::int64_t* x, std::size_t n, std::uint64_t flip) {
  return HWY_DYNAMIC_DISPATCH(rangeOfIntegers)(x, n, flip);
}
std::size_t countKeysBelow(const double* x, std::size_t n, std::uint64_t flip,
                           std::uint64_t pivot) {
  return HWY_DYNAMIC_DISPATCH(countDoubles)(x, n, flip, pivot);
}
std::size_t countKeysBelow(const std::int64_t* x, std::size_t n, std::uint64_t flip,
                           std::uint64_t pivot) {
  return HWY_DYNAMIC_DISPATCH(countIntegers)(x, n, flip, pivot);
}
void makeWords(const double* x, std::size_t n, std::size_t first, WordShape shape,
               std::uint64_t* words) {
  HWY_DYNAMIC_DISPATCH(wordsOfDoubles)(x, n, first, shape, words);
}
void makeWords(const std::int64_t* x, std::size_t n, std::size_t first, WordShape shape,
               std::uint64_t* words) {
  HWY_DYNAMIC_DISPATCH(wordsOfIntegers)(x, n, first, shape, words);
}
std::size_t partWords(const std::uint64_t* words, std::size_t n, std::uint64_t pivot,
                      std::uint64_t* front, std::uint64_t* back) {
  return HWY_DYNAMIC_DISPATCH(partAllWords)(words, n, pivot, front, back);
}

}  // namespace nag2

#endif  // HWY_ONCE

#else

namespace nag2 {

KeyRange rangeOfKeys(const double* x, std::size_t n, std::uint64_t flip) {
  return rangeOfKeysHere(x, n, flip);
}
KeyRange rangeOfKeys(const std::int64_t* x, std::size_t n, std::uint64_t flip) {
  return rangeOfKeysHere(x, n, flip);
}
std::size_t countKeysBelow(const double* x, std::size_t n, std::uint64_t flip,
                           std::uint64_t pivot) {
  return countKeysBelowHere(x, n, flip, pivot);
}
std::size_t countKeysBelow(const std::int64_t* x, std::size_t n, std::uint64_t flip,
                           std::uint64_t pivot) {
  return countKeysBelowHere(x, n, flip, pivot);
}
void makeWords(const double* x, std::size_t n, std::size_t first, WordShape shape,
               std::uint64_t* words) {
  makeWordsHere(x, n, first, shape, words);
}
void makeWords(const std::int64_t* x, std::size_t n, std::size_t first, WordShape shape,
               std::uint64_t* words) {
  makeWordsHere(x, n, first, shape, words);
}
std::size_t partWords(const std::uint64_t* words, std::size_t n, std::uint64_t pivot,
                      std::uint64_t* front, std::uint64_t* back) {
  const std::uint64_t* const start = front;
  for (std::size_t i = 0; i < n; ++i) {
    *(words[i] < pivot ? front : back)++ = words[i];
  }
  return static_cast<std::size_t>(front - start);
}

}  // namespace nag2

#endif
