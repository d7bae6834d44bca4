// Functions of whole lists and arrays: joining, reversing, choosing, and sums and extremes of
// machine numbers without making objects of them.

#include <algorithm>
#include <cmath>
#include <unordered_set>

#include "builtins/builtins.hpp"
#include "builtins/collections.hpp"
#include "mathematics/elementwise.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"

namespace vexel {

namespace {

constexpr std::int64_t kBlock = 1024;

// f(doubles, n) for blocks of a machine array.
template <typename F>
void forBlocks(ALGEB x, F f) {
  double room[kBlock];
  const std::int64_t count = arrayOf(x).count;
  for (std::int64_t first = 0; first < count; first += kBlock) {
    lookAtInterrupt();
    const std::int64_t n = std::min(kBlock, count - first);
    f(doublesOf(arrayOf(x), first, n, room), n);
  }
}

double sumOfDoubles(ALGEB x) {
  double sum = 0;
  double compensation = 0;
  double plain = 0;
  forBlocks(x, [&](const double* block, std::int64_t n) {
    for (std::int64_t i = 0; i < n; ++i) {
      const double next = sum + block[i];
      compensation +=
          std::abs(sum) >= std::abs(block[i]) ? (sum - next) + block[i] : (block[i] - next) + sum;
      sum = next;
      plain += block[i];
    }
  });
  return std::isfinite(plain) ? sum + compensation : plain;
}

// The exact sum of 64-bit integers.
ALGEB sumOfIntegers(State& s, const ArrayObject& array) {
  const auto* const x = static_cast<const std::int64_t*>(array.data);
  __int128 total = 0;
  for (std::int64_t i = 0; i < array.count; ++i) {
    total += x[i];
  }
  const auto high = static_cast<std::int64_t>(total >> 40);
  const auto low = static_cast<std::int64_t>(total & ((std::int64_t{1} << 40) - 1));
  return add(s, multiply(s, newInteger(s, high), newInteger(s, std::int64_t{1} << 40)),
             newInteger(s, low));
}

bool isJoinable(ALGEB x) { return isList(x) || (isArray(x) && arrayOf(x).dimensions == 1); }

// The arguments, each of them a list or a one-dimensional array.
void requireContainers(State& s, ALGEB args, const char* message) {
  const std::size_t n = isNull(args) ? 0 : argumentCount(args);
  for (std::size_t i = 1; i <= n; ++i) {
    if (!isJoinable(argument(s, args, i))) {
      raise(s, message, args);
    }
  }
  if (n == 0) {
    raise(s, message, args);
  }
}

// A one-dimensional array 1..n of x's type, or a list where x is one.
ALGEB containerLike(State& s, ALGEB x, std::span<const ALGEB> elements) {
  if (isList(x)) {
    return newList(s, elements);
  }
  const RTableSettings settings{arrayOf(x).type, RTABLE_RECTANGULAR, arrayOf(x).order, 1, 0};
  const V_INT bounds[] = {1, static_cast<V_INT>(elements.size())};
  const ALGEB result = newArray(s, settings, nullptr, bounds);
  for (std::size_t i = 0; i < elements.size(); ++i) {
    setElementAt(result, static_cast<std::int64_t>(i),
                 objectToElement(s, arrayOf(result).type, elements[i]));
  }
  return result;
}

ALGEB append(State& s, ALGEB args) {
  if (isNull(args) || argumentCount(args) < 2) {
    raise(s, "append expects a list or array and what to add, received: %1", args);
  }
  const ALGEB x = argument(s, args, 1);
  if (!isJoinable(x)) {
    raise(s, "append expects a list or array and what to add, received: %1", args);
  }
  Handles all(s);
  elementsOf(s, x, all);
  for (std::size_t i = 2; i <= argumentCount(args); ++i) {
    all.push(argument(s, args, i));
  }
  return containerLike(s, x, all.span());
}

ALGEB concat(State& s, ALGEB args) {
  requireContainers(s, args, "concat expects lists or one-dimensional arrays, received: %1");
  Handles all(s);
  for (std::size_t i = 1; i <= argumentCount(args); ++i) {
    elementsOf(s, argument(s, args, i), all);
  }
  return containerLike(s, argument(s, args, 1), all.span());
}

ALGEB reverse(State& s, ALGEB args) {
  requireContainers(s, args, "reverse expects a list or array, received: %1");
  const ALGEB x = oneArgument(s, args, "reverse expects a list or array, received: %1");
  Handles all(s);
  elementsOf(s, x, all);
  Handles reversed(s);
  for (std::size_t i = all.size(); i > 0; --i) {
    reversed.push(all[i - 1]);
  }
  return containerLike(s, x, reversed.span());
}

// Each element once, in the order of first appearance; equal numbers are one object.
ALGEB unique(State& s, ALGEB args) {
  requireContainers(s, args, "unique expects a list or array, received: %1");
  const ALGEB x = oneArgument(s, args, "unique expects a list or array, received: %1");
  Handles all(s);
  elementsOf(s, x, all);
  std::unordered_set<ALGEB> seen;
  Handles first(s);
  for (const ALGEB e : all.span()) {
    if (seen.insert(e).second) {
      first.push(e);
    }
  }
  return containerLike(s, x, first.span());
}

// An array of host objects of the shape of another, from elements row by row.
ALGEB shapedLike(State& s, ALGEB shape, std::span<const ALGEB> elements) {
  const ALGEB result = arrayLike(s, shape, RTABLE_DAG);
  const ArrayObject& array = arrayOf(result);
  std::vector<V_INT> index = firstIndex(array);
  for (const ALGEB e : elements) {
    RTableData data{};
    data.dag = e;
    setElementAt(result, position(s, result, index.data()), data);
    advance(array, index);
  }
  return result;
}

// where(mask): the positions of true, which select in what has the mask's bounds; where(mask, a,
// b): a or b, element by element.
ALGEB where(State& s, ALGEB args) {
  const std::size_t n = isNull(args) ? 0 : argumentCount(args);
  const ALGEB mask = n == 0 ? args : maskOf(s, argument(s, args, 1));
  Handles kept(s);
  kept.push(mask);
  if ((n != 1 && n != 3) || !isContainer(mask)) {
    raise(s,
          "where expects a list or array of true and false, or that and two values, received: %1",
          args);
  }
  Handles all(s);
  elementsOf(s, mask, all);
  Handles results(s);
  const bool isVector = isArray(mask) && arrayOf(mask).dimensions == 1;
  const V_INT lower = isVector ? arrayOf(mask).lower(0) : 1;
  Handles choices[2] = {Handles(s), Handles(s)};
  for (std::size_t k = 0; n == 3 && k < 2; ++k) {
    const ALGEB from = argument(s, args, k + 2);
    if (isContainer(from)) {
      elementsOf(s, from, choices[k]);
      if (choices[k].size() != all.size()) {
        raise(s, "where expects as many values as there are true and false, received: %1", from);
      }
    }
  }
  for (std::size_t i = 0; i < all.size(); ++i) {
    lookAtInterrupt();
    const bool chosen = truth(s, all[i]);
    if (n == 1) {
      if (chosen) {
        results.push(newInteger(s, lower + static_cast<V_INT>(i)));
      }
    } else {
      const Handles& from = choices[chosen ? 0 : 1];
      results.push(from.empty() ? argument(s, args, chosen ? 2 : 3) : from[i]);
    }
  }
  const bool isTable = n == 3 && isArray(mask) && arrayOf(mask).dimensions > 1;
  return isTable ? shapedLike(s, mask, results.span()) : newList(s, results.span());
}

void defineQuantifier(State& state, const char* name, bool settles) {
  defineFunction(state, name, [settles](State& s, ALGEB args) {
    const ALGEB x =
        maskOf(s, oneArgument(s, args, "expected a list or array of true and false, received: %1"));
    if (!isContainer(x)) {
      raise(s, "expected a list or array of true and false, received: %1", x);
    }
    Handles all(s);
    elementsOf(s, x, all);
    for (const ALGEB e : all.span()) {
      if (truth(s, e) == settles) {
        return boolean(s, settles);
      }
    }
    return boolean(s, !settles);
  });
}

}  // namespace

ALGEB machineSum(State& s, ALGEB x) {
  if (arrayOf(x).type == RTABLE_INTEGER64) {
    return sumOfIntegers(s, arrayOf(x));
  }
  const bool whole = arrayOf(x).type != RTABLE_FLOAT64 && arrayOf(x).type != RTABLE_FLOAT32;
  if (whole) {  // of 32 bits at most, so that doubles hold the sum of a block
    __int128 total = 0;
    forBlocks(x, [&](const double* block, std::int64_t n) {
      double sum = 0;
      for (std::int64_t i = 0; i < n; ++i) {
        sum += block[i];
      }
      total += static_cast<std::int64_t>(sum);
    });
    return newInteger(s, static_cast<std::int64_t>(total));
  }
  return newFloat(s, sumOfDoubles(x));
}

ALGEB machineExtreme(State& s, ALGEB x, bool largest) {
  const auto& array = arrayOf(x);
  if (array.type == RTABLE_INTEGER64) {
    const auto* const from = static_cast<const std::int64_t*>(array.data);
    const auto* const end = from + array.count;
    return newInteger(s, largest ? *std::max_element(from, end) : *std::min_element(from, end));
  }
  double best = largest ? -HUGE_VAL : HUGE_VAL;
  bool missing = false;
  forBlocks(x, [&](const double* block, std::int64_t n) {
    double blockBest = best;
    bool blockMissing = false;
    for (std::int64_t i = 0; i < n; ++i) {
      blockMissing |= block[i] != block[i];
      blockBest = (largest ? block[i] > blockBest : block[i] < blockBest) ? block[i] : blockBest;
    }
    best = blockBest;
    missing |= blockMissing;
  });
  if (missing) {
    return s.undefined;
  }
  const bool whole = array.type != RTABLE_FLOAT64 && array.type != RTABLE_FLOAT32;
  return whole ? newInteger(s, static_cast<std::int64_t>(best)) : newFloat(s, best);
}

void defineCollectionFunctions(State& state) {
  defineFunction(state, "append", append);
  defineFunction(state, "concat", concat);
  defineFunction(state, "reverse", reverse);
  defineFunction(state, "unique", unique);
  defineFunction(state, "where", where);
  defineQuantifier(state, "any", true);
  defineQuantifier(state, "all", false);
}

}  // namespace vexel
