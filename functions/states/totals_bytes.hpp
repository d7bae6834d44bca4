// What the states of cells share: exact totals in bytes, and the pairs that are there.
#pragma once

#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

#include "functions/bytes.hpp"
#include "functions/elements.hpp"
#include "kernels/exact_totals.hpp"
#include "kernels/watch.hpp"

namespace vexel {

// The parts of each total, one after the other: the same bytes for the same totals.
inline void putTotals(ByteWriter& out, const kernels::ExactTotals& totals) {
  std::vector<std::uint64_t> cells;
  std::vector<std::uint8_t> counts;
  std::vector<double> parts;
  for (std::size_t i = 0; i < totals.size(); ++i) {
    if (totals.isZero(i)) {
      continue;
    }
    const std::vector<double> of = totals.parts(i);
    cells.push_back(i);
    counts.push_back(static_cast<std::uint8_t>(of.size()));
    parts.insert(parts.end(), of.begin(), of.end());
  }
  out.put(static_cast<std::uint64_t>(totals.size())).put(cells).put(counts).put(parts);
}

// size: how many cells there have to be.
inline kernels::ExactTotals getTotals(ByteReader& in, std::size_t size) {
  in.check(in.get<std::uint64_t>() == size, "the number of totals is wrong");
  const auto cells = in.getVector<std::uint64_t>();
  const auto counts = in.getVector<std::uint8_t>();
  const auto parts = in.getVector<double>();
  in.check(cells.size() == counts.size(), "the totals do not fit together");
  kernels::ExactTotals totals(size);
  std::size_t at = 0;
  for (std::size_t c = 0; c < cells.size(); ++c) {
    in.check(cells[c] < size && (c == 0 || cells[c - 1] < cells[c]), "the totals are out of order");
    in.check(counts[c] > 0 && counts[c] <= parts.size() - at, "the totals do not fit together");
    in.check(parts[at] > 0, "a total is not positive");
    for (std::size_t p = 0; p < counts[c]; ++p, ++at) {
      in.check(!std::isnan(parts[at]) && (p == 0 || std::abs(parts[at]) < std::abs(parts[at - 1])),
               "a total is not as it was written");
      totals.add(static_cast<std::size_t>(cells[c]), parts[at]);
    }
  }
  in.check(at == parts.size(), "the totals do not fit together");
  return totals;
}

inline Missing getMissing(ByteReader& in) {
  const auto policy = in.get<std::uint8_t>();
  in.check(policy <= static_cast<std::uint8_t>(Missing::raise), "there is no such missing policy");
  return static_cast<Missing>(policy);
}

inline std::int64_t getCount(ByteReader& in) {
  const auto count = in.get<std::int64_t>();
  in.check(count >= 0, "a count is negative");
  return count;
}

// Calls change(state); one that throws on the way leaves the state as it was.  Only a watcher can
// interrupt after the checks, so only under one is the state copied.
template <typename State, typename Change>
void changeAll(std::shared_ptr<State>& state, Change change) {
  if (kernels::currentWatcher == nullptr) {
    change(*state);
    return;
  }
  const auto changed = std::make_shared<State>(*state);
  change(*changed);
  state = changed;
}

// take(x, w) for the pairs that are there; returns how many are missing, which raise throws for
// before anything is taken.
template <typename Take>
std::int64_t takePairs(Data x, Data weights, Missing policy, Take take) {
  requireWeights(weights, x.size());
  const Doubles points(x);
  const auto weight = [&](std::size_t i) { return weights.given() ? weights[i] : 1; };
  std::int64_t missing = 0;
  for (std::size_t i = 0; i < points.size(); ++i) {
    missing +=
        static_cast<std::int64_t>(weight(i) != 0 && (isMissing(points[i]) || isMissing(weight(i))));
  }
  if (policy == Missing::raise && missing > 0) {
    throwMissing("x or weights");
  }
  for (std::size_t i = 0; i < points.size(); ++i) {
    if (i % kernels::pollInterval == 0) {
      kernels::poll(static_cast<double>(i) / static_cast<double>(points.size()));
    }
    const double w = weight(i);
    if (w > 0 && !isMissing(points[i])) {
      take(points[i], w);
    }
  }
  return missing;
}

}  // namespace vexel
