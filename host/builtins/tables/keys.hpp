// The order and the equality of cells, for sorting, grouping and joining.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

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

// Texts, dates and other cells in that order.
bool cellComesBefore(State& state, ALGEB a, ALGEB b);

}  // namespace vexel
