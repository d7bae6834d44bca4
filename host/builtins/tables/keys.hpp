// The order and the equality of cells, for sorting, grouping and joining.
#pragma once

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <span>
#include <vector>

#include "values/errors.hpp"
#include "values/kernel_state.hpp"

namespace vexel {

// Numbers of the rows' keys: equal keys have one number, and a smaller key a smaller one.  Numbers
// come before dates, dates before texts (by code point), these before anything else.
inline constexpr std::int64_t kMissingKey = INT64_MAX;

// Of the cells of columns one behind the other; undefined and NULL are kMissingKey.
std::vector<std::int64_t> keysOf(State& state, std::span<const ALGEB> columns);

// Of rows with two keys each: ordered by the first, then the second.  A key with a missing part is
// behind those without; with joinable, it is missing itself.
std::vector<std::int64_t> combinedKeys(std::span<const std::int64_t> first,
                                       std::span<const std::int64_t> second, bool joinable);

// The places 0 ... n - 1 in the order of before(place, place); equal ones keep theirs.
template <typename Before>
std::vector<std::int64_t> placesInOrder(std::size_t n, Before before) {
  std::vector<std::int64_t> places(n);
  std::iota(places.begin(), places.end(), 0);
  std::size_t compared = 0;
  std::stable_sort(places.begin(), places.end(), [&](std::int64_t a, std::int64_t b) {
    if (++compared % 4096 == 0) {
      lookAtInterrupt();
    }
    return before(static_cast<std::size_t>(a), static_cast<std::size_t>(b));
  });
  return places;
}

// Texts, dates and other cells in that order.
bool cellComesBefore(State& state, ALGEB a, ALGEB b);

}  // namespace vexel
