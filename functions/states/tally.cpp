#include "vexel/states/tally.hpp"

#include <algorithm>
#include <unordered_map>

#include "functions/states/totals_bytes.hpp"
#include "vexel/ordering.hpp"

namespace vexel {

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

  // (value, cell), ascending.
  std::vector<std::pair<double, std::size_t>> ascending() const {
    std::vector<std::pair<double, std::size_t>> all(cells.begin(), cells.end());
    std::sort(all.begin(), all.end());
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
    Levels& l = *levels_;
    const TallyResult<double> piece = tally(x, {.missing = l.policy});
    for (std::size_t i = 0; i < piece.values.size(); ++i) {
      l.totals.add(l.cell(piece.values[i]), piece.counts[i]);
    }
    l.missing += static_cast<std::int64_t>(piece.missing);
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
  for (const auto& [value, cell] : theirs->ascending()) {
    levels_->totals.merge(levels_->cell(value), theirs->totals, cell);
  }
  levels_->missing += theirs->missing;
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
