// What the states of cells share: exact totals in bytes, and the pairs that are there.
#pragma once

#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

#include "functions/data/bytes.hpp"
#include "functions/data/elements.hpp"
#include "kernels/exact_totals.hpp"
#include "kernels/watch.hpp"

namespace vexel {

// A number in bytes of 7 bits, least significant first, all but the last with the high bit.
inline void putShort(Bytes& to, std::uint64_t value) {
  for (; value >= 0x80; value >>= 7) {
    to.push_back(static_cast<std::uint8_t>(value | 0x80));
  }
  to.push_back(static_cast<std::uint8_t>(value));
}

// What putShort and append wrote; a complaint for anything that they would not have written.
class ShortReader {
 public:
  ShortReader(const ByteReader& in, const Bytes& bytes) : in_(in), bytes_(bytes) {}

  bool atEnd() const { return at_ == bytes_.size(); }
  std::uint64_t number() {
    std::uint64_t value = 0;
    for (int shift = 0;; shift += 7) {
      in_.check(at_ < bytes_.size() && shift < 64, "the totals do not fit together");
      const std::uint64_t byte = bytes_[at_++];
      const std::uint64_t bits = byte & 0x7F;
      in_.check(bits << shift >> shift == bits && (byte != 0 || shift == 0),
                "a total is not as it was written");
      value |= bits << shift;
      if (byte < 0x80) {
        return value;
      }
    }
  }
  double part() {
    in_.check(bytes_.size() - at_ >= sizeof(double), "the totals do not fit together");
    at_ += sizeof(double);
    return bytes::taken<double>(bytes_.data() + at_ - sizeof(double));
  }

 private:
  const ByteReader& in_;
  const Bytes& bytes_;
  std::size_t at_ = 0;
};

inline constexpr std::uint32_t totalsVersion = 2;  // of every state that holds totals

// The totals that are not 0, the same bytes for the same totals: how many cells on from the one
// before; then twice the total where it is a whole number below 2^53, as counts are, else twice
// the number of its parts and 1, and the parts.
inline void putTotals(ByteWriter& out, const kernels::ExactTotals& totals) {
  Bytes content;
  std::size_t next = 0;
  totals.forEach(0, totals.size(), [&](std::size_t i) {
    putShort(content, i - next);
    next = i + 1;
    const double total = totals.total(i);
    if (totals.isOne(i) && total < 0x1p53 && total == std::floor(total)) {
      putShort(content, 2 * static_cast<std::uint64_t>(total));
      return true;
    }
    const std::vector<double> parts = totals.parts(i);
    putShort(content, 2 * parts.size() + 1);
    for (const double part : parts) {
      bytes::append(content, part);
    }
    return true;
  });
  out.put(static_cast<std::uint64_t>(totals.size())).put(content);
}

namespace states {

// One total of its parts, each the rounded rest of those before.
template <typename Part>
void addParts(const ByteReader& in, kernels::ExactTotals& totals, std::size_t cell,
              std::uint64_t count, Part part) {
  in.check(count > 0, "the totals do not fit together");
  double last = 0;
  for (std::uint64_t p = 0; p < count; ++p) {
    const double next = part();
    in.check(p > 0 || next > 0, "a total is not positive");
    in.check(!std::isnan(next) && (p == 0 || std::abs(next) < std::abs(last)),
             "a total is not as it was written");
    totals.add(cell, next);
    last = next;
  }
}

// As version 1 wrote them.
inline kernels::ExactTotals getFirstTotals(ByteReader& in, std::size_t size) {
  const auto cells = in.getVector<std::uint64_t>();
  const auto counts = in.getVector<std::uint8_t>();
  const auto parts = in.getVector<double>();
  in.check(cells.size() == counts.size(), "the totals do not fit together");
  kernels::ExactTotals totals(size);
  std::size_t at = 0;
  for (std::size_t c = 0; c < cells.size(); ++c) {
    in.check(cells[c] < size && (c == 0 || cells[c - 1] < cells[c]), "the totals are out of order");
    in.check(counts[c] <= parts.size() - at, "the totals do not fit together");
    addParts(in, totals, static_cast<std::size_t>(cells[c]), counts[c],
             [&] { return parts[at++]; });
  }
  in.check(at == parts.size(), "the totals do not fit together");
  return totals;
}

}  // namespace states

// size: how many cells there have to be.
inline kernels::ExactTotals getTotals(ByteReader& in, std::size_t size) {
  in.check(in.get<std::uint64_t>() == size, "the number of totals is wrong");
  if (in.version() == 1) {
    return states::getFirstTotals(in, size);
  }
  const auto content = in.getVector<std::uint8_t>();
  ShortReader from(in, content);
  kernels::ExactTotals totals(size);
  for (std::uint64_t next = 0; !from.atEnd(); ++next) {
    const std::uint64_t skipped = from.number();
    in.check(skipped < size - next, "the totals are out of order");
    next += skipped;
    const std::uint64_t what = from.number();
    if (what % 2 == 0) {
      in.check(what > 0 && what >> 54 == 0, "a total is not as it was written");
      totals.add(static_cast<std::size_t>(next), static_cast<double>(what / 2));
    } else {
      states::addParts(in, totals, static_cast<std::size_t>(next), what / 2,
                       [&] { return from.part(); });
    }
  }
  return totals;
}

inline Missing getMissing(ByteReader& in) {
  const auto policy = in.get<std::uint8_t>();
  in.check(policy <= static_cast<std::uint8_t>(Missing::raise), "there is no such missing policy");
  return static_cast<Missing>(policy);
}

inline std::int64_t getCount(ByteReader& in) {
  const auto count = in.get<std::int64_t>();
  in.check(count >= 0 && count >> 53 == 0, "a count is out of range");
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
    throwMissing("update");
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
