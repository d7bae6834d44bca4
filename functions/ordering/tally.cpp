// Tallies: how often each distinct value occurs, or its total weight.
//
// Integers of a narrow range are counted by value; anything else in a hash table of ordered keys
// while there are few levels, and by sorting where there are many.
#include <algorithm>
#include <array>
#include <bit>
#include <limits>
#include <memory>

#include "functions/data/elements.hpp"
#include "functions/ordering/levels.hpp"
#include "kernels/exact_totals.hpp"
#include "kernels/large_pages.hpp"
#include "kernels/watch.hpp"
#include "numerics/sorting/rank_words.hpp"
#include "vexel/ordering.hpp"

namespace vexel {

namespace {

constexpr std::size_t kBlock = kernels::pollInterval;

// f(begin, end) for blocks of 0 .. n-1, with a poll before each.
template <typename F>
void inBlocks(std::size_t n, F f) {
  for (std::size_t begin = 0; begin < n; begin += kBlock) {
    kernels::poll(static_cast<double>(begin) / static_cast<double>(n));
    f(begin, std::min(n, begin + kBlock));
  }
}

template <typename T>
TallyResult<T> tallyBySorting(std::span<const T> x) {
  const auto place = std::make_unique_for_overwrite<T[]>(x.size());
  const std::span<T> sorted(place.get(), x.size());
  kernels::useLargePages(place.get(), sorted.size_bytes());
  TallyResult<T> result;
  result.missing = x.size() - sort(Data(x), sorted, {.missing = Missing::omit});
  const std::size_t n = x.size() - result.missing;
  const auto isLast = [&](std::size_t i) {
    return static_cast<std::size_t>(i + 1 == n || sorted[i + 1] != sorted[i]);
  };
  std::size_t runs = 0;
  kernels::forEach(n, [&](std::size_t i) { runs += isLast(i); });
  result.values.reserve(runs);
  result.counts.reserve(runs);
  kernels::useLargePages(result.values.data(), runs * sizeof(T));
  kernels::useLargePages(result.counts.data(), runs * sizeof(double));
  // The last element of a run stays, and how many there are up to it.
  std::size_t run = 0;
  kernels::inStretches(n, [&](std::size_t begin, std::size_t end) {
    const std::size_t most = std::min(runs, run + (end - begin));
    result.values.resize(most);
    result.counts.resize(most);
    for (std::size_t i = begin; i < end; ++i) {
      result.values[run] = sorted[i] + T{0};
      result.counts[run] = static_cast<double>(i + 1);
      run += isLast(i);
    }
  });
  for (run = runs; run-- > 1;) {
    result.counts[run] -= result.counts[run - 1];
  }
  return result;
}

// Integers with at most a few times as many values from smallest to largest as there are elements.
// Neighbours count in tables of their own: an increment waits for the one before it in its place.
template <typename T>
bool tallyByValue(std::span<const T> x, TallyResult<T>& result) {
  T smallest = x[0];
  T largest = x[0];
  for (const T v : x) {
    smallest = std::min(smallest, v);
    largest = std::max(largest, v);
  }
  const auto base = static_cast<std::uint64_t>(std::int64_t{smallest});
  const std::uint64_t range = static_cast<std::uint64_t>(std::int64_t{largest}) - base;
  if (range > 2 * x.size()) {
    return false;
  }
  const auto cells = static_cast<std::size_t>(range) + 1;
  const std::size_t tables = cells <= 4096 ? 4 : 1;
  std::vector<std::uint64_t> counts(cells * tables);
  std::array<std::uint64_t*, 4> table;
  for (std::size_t t = 0; t < 4; ++t) {
    table[t] = counts.data() + (t % tables) * cells;
  }
  const auto cell = [&](T v) {
    return static_cast<std::size_t>(static_cast<std::uint64_t>(std::int64_t{v}) - base);
  };
  inBlocks(x.size(), [&](std::size_t begin, std::size_t end) {
    std::size_t i = begin;
    for (; i + 4 <= end; i += 4) {
      ++table[0][cell(x[i])];
      ++table[1][cell(x[i + 1])];
      ++table[2][cell(x[i + 2])];
      ++table[3][cell(x[i + 3])];
    }
    for (; i < end; ++i) {
      ++table[0][cell(x[i])];
    }
  });
  for (std::size_t c = 0; c < cells; ++c) {
    std::uint64_t count = 0;
    for (std::size_t t = 0; t < tables; ++t) {
      count += table[t][c];
    }
    if (count > 0) {
      result.values.push_back(static_cast<T>(static_cast<std::int64_t>(base + c)));
      result.counts.push_back(static_cast<double>(count));
    }
  }
  return true;
}

// Equal for equal elements: the bits of numbers, of one NaN, of one zero.
template <typename T>
std::uint64_t levelKey(T x) {
  if constexpr (std::is_floating_point_v<T>) {
    return std::bit_cast<nag2::KeyOf<T>>(x == x ? x + T{0} : std::numeric_limits<T>::quiet_NaN());
  } else {
    return static_cast<nag2::KeyOf<T>>(x);
  }
}
template <typename T>
T fromLevelKey(std::uint64_t key) {
  return std::bit_cast<T>(static_cast<nag2::KeyOf<T>>(key));
}

template <typename T>
std::vector<Levels::Slot> ascending(const Levels& levels) {
  return levels.ascending([](const Levels::Slot& a, const Levels::Slot& b) {
    return nag2::ascendingKey(fromLevelKey<T>(a.key)) < nag2::ascendingKey(fromLevelKey<T>(b.key));
  });
}

template <typename T>
bool tallyByHash(std::span<const T> x, TallyResult<T>& result) {
  Levels levels;
  bool few = true;
  inBlocks(x.size(), [&](std::size_t begin, std::size_t end) {
    for (std::size_t i = few ? begin : end; i < end; ++i) {
      Levels::Slot* const slot = levels.find(levelKey(x[i]));
      if (slot == nullptr) [[unlikely]] {
        few = false;
        return;
      }
      ++slot->value;
    }
  });
  if (!few) {
    return false;
  }
  for (const Levels::Slot& slot : ascending<T>(levels)) {
    const T value = fromLevelKey<T>(slot.key);
    if (isMissing(value)) {
      result.missing = slot.value;
    } else {
      result.values.push_back(value);
      result.counts.push_back(static_cast<double>(slot.value));
    }
  }
  return true;
}

// Whether nearly all of some elements at equal distances differ, so that a table of levels would
// only be filled in vain.
template <typename T>
bool seemDistinct(std::span<const T> x) {
  std::array<std::uint64_t, 1024> room;
  const std::size_t most = x.size() < 8 * room.size() ? 64 : room.size();
  const std::span<std::uint64_t> some(room.data(), std::min(most, x.size()));
  const std::size_t step = x.size() / some.size();
  for (std::size_t i = 0; i < some.size(); ++i) {
    some[i] = levelKey(x[i * step]);
  }
  std::sort(some.begin(), some.end());
  const auto distinct = std::unique(some.begin(), some.end()) - some.begin();
  return 20 * static_cast<std::size_t>(distinct) > 19 * some.size();
}

template <typename T>
TallyResult<T> tallyCounts(std::span<const T> x) {
  TallyResult<T> result;
  if (x.empty()) {
    return result;
  }
  if constexpr (std::is_integral_v<T>) {
    if (tallyByValue(x, result)) {
      return result;
    }
  }
  return !seemDistinct(x) && tallyByHash(x, result) ? result : tallyBySorting(x);
}

// The pairs that are there: neither missing nor of weight 0.
template <typename T>
struct Pairs {
  std::vector<T> points;
  std::vector<double> weights;
  std::size_t missing = 0;

  Pairs(std::span<const T> x, Data w) {
    points.reserve(x.size());
    weights.reserve(x.size());
    kernels::forEach(x.size(), [&](std::size_t i) {
      const double weight = w[i];
      if (weight == 0) {
        return;
      }
      if (isMissing(x[i]) || isMissing(weight)) {
        ++missing;
      } else {
        points.push_back(x[i]);
        weights.push_back(weight);
      }
    });
  }
};

template <typename T>
bool weighByHash(const Pairs<T>& pairs, TallyResult<T>& result) {
  Levels levels;
  kernels::ExactTotals totals;
  for (std::size_t i = 0; i < pairs.points.size(); ++i) {
    if (i % kBlock == 0) {
      kernels::poll();
    }
    Levels::Slot* const slot = levels.find(levelKey(pairs.points[i]));
    if (slot == nullptr) {
      return false;
    }
    if (slot->value == 0) {
      totals.resize(totals.size() + 1);
      slot->value = totals.size();
    }
    totals.add(slot->value - 1, pairs.weights[i]);
  }
  for (const Levels::Slot& slot : ascending<T>(levels)) {
    result.values.push_back(fromLevelKey<T>(slot.key));
    result.counts.push_back(totals.total(slot.value - 1));
  }
  return true;
}

template <typename T>
TallyResult<T> tallyWeights(std::span<const T> x, Data weights) {
  const Pairs<T> pairs(x, weights);
  TallyResult<T> result;
  result.missing = pairs.missing;
  if (weighByHash(pairs, result)) {
    return result;
  }
  const std::vector<T>& points = pairs.points;
  nag2::visitSorted(points.data(), points.size(), false,
                    [&](std::size_t, nag2::TiedPositions tied) {
                      if (result.counts.size() % (kBlock / 16) == 0) {
                        kernels::poll();
                      }
                      kernels::ExactTotals total(1);
                      for (std::size_t i = 0; i < tied.size(); ++i) {
                        total.add(0, pairs.weights[tied[i]]);
                      }
                      result.values.push_back(points[tied[0]] + T{0});
                      result.counts.push_back(total.total(0));
                    });
  return result;
}

}  // namespace

template <DataElement T>
TallyResult<T> tallyOf(Data x, const TallyOptions& options) {
  requireElement<T>(x);
  requireWeights(options.weights, x.size());
  const auto elements = [&](std::span<const T> points) {
    TallyResult<T> result =
        options.weights.given() ? tallyWeights(points, options.weights) : tallyCounts(points);
    if (options.missing == Missing::raise && result.missing > 0) {
      requireNoneMissing("tally", x, options.weights);
    }
    return result;
  };
  return onElements(x, [&]<typename E>(std::span<const E> points) {
    if constexpr (std::is_same_v<E, T>) {
      return elements(points);
    } else {
      std::vector<T> converted(points.size());
      std::transform(points.begin(), points.end(), converted.begin(),
                     [](E v) { return static_cast<T>(v); });
      return elements(std::span<const T>(converted));
    }
  });
}
template TallyResult<double> tallyOf(Data, const TallyOptions&);
template TallyResult<float> tallyOf(Data, const TallyOptions&);
template TallyResult<std::int32_t> tallyOf(Data, const TallyOptions&);
template TallyResult<std::int64_t> tallyOf(Data, const TallyOptions&);

double mode(Data x, const TallyOptions& options) {
  return onElements(x, [&]<typename T>(std::span<const T> points) {
    const TallyResult<T> t = tallyOf<T>(Data(points), {.weights = options.weights});
    if (options.missing == Missing::raise && t.missing > 0) {
      requireNoneMissing("mode", points, options.weights);
    }
    requireSomeWeight("mode", points, options.weights);
    if (t.values.empty() || (options.missing == Missing::propagate && t.missing > 0)) {
      return std::numeric_limits<double>::quiet_NaN();
    }
    const auto most = std::max_element(t.counts.begin(), t.counts.end()) - t.counts.begin();
    return static_cast<double>(t.values[static_cast<std::size_t>(most)]);
  });
}

}  // namespace vexel
