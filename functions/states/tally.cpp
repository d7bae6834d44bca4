#include "vexel/states/tally.hpp"

#include <unordered_map>

#include "functions/states/totals_bytes.hpp"
#include "kernels/watch.hpp"
#include "numerics/sorting/radix_sort.hpp"
#include "numerics/sorting/sort_keys.hpp"
#include "vexel/ordering.hpp"

namespace vexel {

namespace {

// Of levels, between two looks at the watch; an update of fewer has none and needs no copy.
constexpr std::size_t kStep = std::size_t{1} << 14;

void lookEvery(std::size_t i) {
  if (i % kStep == kStep - 1) {
    kernels::poll();
  }
}

}  // namespace

struct Tally::Levels {
  Missing policy = Missing::propagate;
  std::int64_t missing = 0;
  std::unordered_map<double, std::size_t> cells;
  kernels::ExactTotals totals;

  std::size_t cell(double value) {
    const auto [found, isNew] = cells.try_emplace(value + 0.0, totals.size());
    if (isNew) {
      totals.resize(totals.size() + 1);
    }
    return found->second;
  }

  // So many levels, new ones perhaps: the table grows at once where it would grow in steps.
  void expect(std::size_t levels) {
    if (levels > kStep && levels > cells.size()) {
      cells.reserve(cells.size() + levels);
    }
  }

  struct Entry {
    double value;
    std::size_t cell;
  };
  std::vector<Entry> ascending() const {
    std::vector<Entry> all;
    all.reserve(cells.size());
    for (const auto& [value, cell] : cells) {
      lookEvery(all.size());
      all.push_back({value, cell});
    }
    std::vector<Entry> scratch(all.size());
    nag2::radixSort(all.data(), scratch.data(), all.size(), false,
                    [](const Entry& e) { return nag2::ascendingKey(e.value); });
    return all;
  }
};

Tally::Tally(Missing missing) : levels_(std::make_shared<Levels>()) { levels_->policy = missing; }
Tally::Tally(const Tally& other) : levels_(std::make_shared<Levels>(*other.levels_)) {}
Tally& Tally::operator=(const Tally& other) {
  levels_ = std::make_shared<Levels>(*other.levels_);
  return *this;
}

Tally& Tally::update(Data x, Data weights) {
  if (!weights.given()) {
    const TallyResult<double> piece = tally(x, {.missing = levels_->policy});
    const auto take = [&](Levels& l) {
      l.expect(piece.values.size());
      for (std::size_t i = 0; i < piece.values.size(); ++i) {
        lookEvery(i);
        l.totals.add(l.cell(piece.values[i]), piece.counts[i]);
      }
      l.missing += static_cast<std::int64_t>(piece.missing);
    };
    if (piece.values.size() <= kStep) {
      take(*levels_);
    } else {
      changeAll(levels_, take);
    }
    return *this;
  }
  changeAll(levels_, [&](Levels& l) {
    l.missing += takePairs(x, weights, l.policy,
                           [&](double value, double w) { l.totals.add(l.cell(value), w); });
  });
  return *this;
}

Tally& Tally::merge(const Tally& other) {
  const auto theirs = other.levels_;  // which may be this one's
  const auto take = [&](Levels& l) {
    l.expect(theirs->cells.size());
    std::size_t i = 0;
    for (const auto& [value, cell] : theirs->ascending()) {
      lookEvery(i++);
      l.totals.merge(l.cell(value), theirs->totals, cell);
    }
    l.missing += theirs->missing;
  };
  if (theirs->cells.size() <= kStep) {
    take(*levels_);
  } else {
    changeAll(levels_, take);
  }
  return *this;
}

std::vector<double> Tally::values() const {
  std::vector<double> out;
  for (const auto& [value, cell] : levels_->ascending()) {
    out.push_back(value);
  }
  return out;
}

std::vector<double> Tally::counts() const {
  std::vector<double> out;
  for (const auto& [value, cell] : levels_->ascending()) {
    out.push_back(levels_->totals.total(cell));
  }
  return out;
}

std::int64_t Tally::missing() const { return levels_->missing; }

std::vector<std::uint8_t> Tally::to_bytes() const {
  kernels::ExactTotals ordered;
  std::vector<double> values;
  for (const auto& [value, cell] : levels_->ascending()) {
    lookEvery(values.size());
    values.push_back(value);
    ordered.resize(values.size());
    ordered.merge(values.size() - 1, levels_->totals, cell);
  }
  ByteWriter out("taly", totalsVersion);
  out.put(static_cast<std::uint8_t>(levels_->policy)).put(levels_->missing).put(values);
  putTotals(out, ordered);
  return out.finish();
}

Tally Tally::from_bytes(std::span<const std::uint8_t> bytes) {
  ByteReader in(bytes, "taly", totalsVersion, "Tally");
  Tally t(getMissing(in));
  t.levels_->missing = getCount(in);
  const auto values = in.getVector<double>();
  for (std::size_t i = 0; i < values.size(); ++i) {
    in.check(!std::isnan(values[i]) && (i == 0 || values[i - 1] < values[i]),
             "the values do not rise");
    t.levels_->cells.emplace(values[i], i);
  }
  t.levels_->totals = getTotals(in, values.size());
  in.finish();
  return t;
}

}  // namespace vexel
