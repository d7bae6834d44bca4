#include "builtins/tables/keys.hpp"

#include <algorithm>
#include <cmath>
#include <unordered_map>

#include "mathematics/elementwise.hpp"
#include "values/dates.hpp"
#include "values/frames.hpp"
#include "values/numbers.hpp"
#include "values/text.hpp"

namespace vexel {

namespace {

// The numbers that distinct values have when they are sorted.
template <typename T, typename Before>
std::vector<std::int64_t> ranked(std::span<const T> values, Before before) {
  std::vector<std::int64_t> at(values.size());
  for (std::size_t i = 0; i < at.size(); ++i) {
    at[i] = static_cast<std::int64_t>(i);
  }
  const auto value = [&](std::int64_t i) -> const T& {
    return values[static_cast<std::size_t>(i)];
  };
  std::size_t compared = 0;
  std::sort(at.begin(), at.end(), [&](std::int64_t a, std::int64_t b) {
    if (++compared % 4096 == 0) {
      lookAtInterrupt();
    }
    return before(value(a), value(b));
  });
  std::vector<std::int64_t> keys(values.size());
  std::int64_t key = 0;
  for (std::size_t i = 0; i < at.size(); ++i) {
    key += i > 0 && before(value(at[i - 1]), value(at[i])) ? 1 : 0;
    keys[static_cast<std::size_t>(at[i])] = key;
  }
  return keys;
}

// long double holds every integer[8] and every float[8].
std::vector<std::int64_t> machineKeys(std::span<const ALGEB> columns) {
  std::vector<long double> values;
  for (const ALGEB column : columns) {
    const ArrayObject& array = arrayOf(column);
    double room[1] = {};
    for (std::int64_t i = 0; i < array.count; ++i) {
      values.push_back(
          array.type == RTABLE_INTEGER64
              ? static_cast<long double>(static_cast<const std::int64_t*>(array.data)[i])
              : *doublesOf(array, i, 1, room));
    }
  }
  // NaN last, all of them equal.
  std::vector<std::int64_t> keys =
      ranked(std::span<const long double>(values),
             [](long double a, long double b) { return std::isnan(b) ? !std::isnan(a) : a < b; });
  for (std::size_t i = 0; i < values.size(); ++i) {
    keys[i] = std::isnan(values[i]) ? kMissingKey : keys[i];
  }
  return keys;
}

int kindOf(ALGEB x) {
  return isReal(x) ? 0 : isDate(x) ? 1 : is(x, Tag::string) ? 2 : is(x, Tag::boolean) ? 3 : 4;
}

}  // namespace

bool cellComesBefore(State& state, ALGEB a, ALGEB b) {
  const int kind = kindOf(a);
  if (kind != kindOf(b)) {
    return kind < kindOf(b);
  }
  switch (kind) {
    case 0:
      return compare(state, a, b) == std::partial_ordering::less;
    case 1:
      return daysOf(a) < daysOf(b);
    case 2:
      return text(a) < text(b);
    case 3:
      return a != b && b == state.trueValue;
    default:
      return sourceText(state, a, kMessageArguments) < sourceText(state, b, kMessageArguments);
  }
}

std::vector<std::int64_t> keysOf(State& state, std::span<const ALGEB> columns) {
  if (std::all_of(columns.begin(), columns.end(), isMachineArray)) {
    return machineKeys(columns);
  }
  Handles distinct(state);
  std::unordered_map<ALGEB, std::size_t> places;
  std::vector<std::int64_t> cells;  // the place of each among the distinct ones
  for (const ALGEB column : columns) {
    for (std::int64_t i = 0; i < arrayOf(column).count; ++i) {
      lookAtInterrupt();
      const ALGEB cell = cellOf(state, column, i);
      if (isMissing(state, cell)) {
        cells.push_back(kMissingKey);
        continue;
      }
      const auto [found, isNew] = places.emplace(cell, distinct.size());
      if (isNew) {
        distinct.push(cell);
      }
      cells.push_back(static_cast<std::int64_t>(found->second));
    }
  }
  const std::vector<std::int64_t> keys = ranked(
      distinct.span(), [&](ALGEB a, ALGEB b) { return a != b && cellComesBefore(state, a, b); });
  for (std::int64_t& cell : cells) {
    cell = cell == kMissingKey ? cell : keys[static_cast<std::size_t>(cell)];
  }
  return cells;
}

std::vector<std::int64_t> combinedKeys(std::span<const std::int64_t> first,
                                       std::span<const std::int64_t> second, bool joinable) {
  std::vector<std::pair<std::int64_t, std::int64_t>> pairs;
  for (std::size_t i = 0; i < first.size(); ++i) {
    pairs.emplace_back(first[i], second[i]);
  }
  using Pair = std::pair<std::int64_t, std::int64_t>;
  std::vector<std::int64_t> keys =
      ranked(std::span<const Pair>(pairs), [](const Pair& a, const Pair& b) { return a < b; });
  for (std::size_t i = 0; joinable && i < pairs.size(); ++i) {
    if (pairs[i].first == kMissingKey || pairs[i].second == kMissingKey) {
      keys[i] = kMissingKey;
    }
  }
  return keys;
}

}  // namespace vexel
