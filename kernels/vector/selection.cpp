#include "kernels/vector/selection.hpp"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/vector/selection.cpp"
#include "kernels/vector/each_target.hpp"
#include "kernels/vector/eight.hpp"

HWY_BEFORE_NAMESPACE();
namespace vexel::kernels::HWY_NAMESPACE {
namespace {

HWY_INLINE void countOne(double x, double low, double high, BracketCounts& counts) {
  counts.belowLow += x < low;
  counts.toLow += x <= low;
  counts.belowHigh += x < high;
  counts.toHigh += x <= high;
}

#ifdef VEXEL_HAVE_HIGHWAY

using IntegerTag = hn::RebindToSigned<Tag>;

// The counts, in lanes.
struct Counters {
  hn::Vec<IntegerTag> belowLow = hn::Zero(IntegerTag());
  hn::Vec<IntegerTag> toLow = hn::Zero(IntegerTag());
  hn::Vec<IntegerTag> belowHigh = hn::Zero(IntegerTag());
  hn::Vec<IntegerTag> toHigh = hn::Zero(IntegerTag());

  HWY_INLINE Counters() {}
  // Counts, and tells which elements lie between.
  HWY_INLINE hn::Mask<Tag> take(Register x, Register low, Register high) {
    const auto isToLow = hn::Le(x, low);
    const auto isBelowHigh = hn::Lt(x, high);
    count(belowLow, hn::Lt(x, low));
    count(toLow, isToLow);
    count(belowHigh, isBelowHigh);
    count(toHigh, hn::Le(x, high));
    return hn::AndNot(isToLow, isBelowHigh);
  }
  HWY_INLINE void addTo(BracketCounts& counts) const {
    counts.belowLow += total(belowLow);
    counts.toLow += total(toLow);
    counts.belowHigh += total(belowHigh);
    counts.toHigh += total(toHigh);
  }

 private:
  static HWY_INLINE void count(hn::Vec<IntegerTag>& to, hn::Mask<Tag> which) {
    const IntegerTag d;
    to = hn::Sub(to, hn::VecFromMask(d, hn::RebindMask(d, which)));  // true is -1
  }
  static HWY_INLINE std::int64_t total(hn::Vec<IntegerTag> v) {
    return hn::GetLane(hn::SumOfLanes(IntegerTag(), v));
  }
};

std::size_t countAndCollect(const double* x, std::size_t n, double low, double high,
                            BracketCounts& counts, double* between) {
  const Tag d;
  const Register lows = broadcast(low);
  const Register highs = broadcast(high);
  Counters counters;
  double* to = between;
  std::size_t i = 0;
  constexpr std::size_t stretch = 4 * kLanes;
  for (; i + stretch <= n; i += stretch) {
    const Register a = read(x + i);
    const Register b = read(x + i + kLanes);
    const Register c = read(x + i + 2 * kLanes);
    const Register e = read(x + i + 3 * kLanes);
    const auto inA = counters.take(a, lows, highs);
    const auto inB = counters.take(b, lows, highs);
    const auto inC = counters.take(c, lows, highs);
    const auto inE = counters.take(e, lows, highs);
    if (!hn::AllFalse(d, hn::Or(hn::Or(inA, inB), hn::Or(inC, inE)))) {
      // Never beyond the room: no more was collected than read.
      to += hn::CompressStore(a, inA, d, to);
      to += hn::CompressStore(b, inB, d, to);
      to += hn::CompressStore(c, inC, d, to);
      to += hn::CompressStore(e, inE, d, to);
    }
  }
  for (; i < n; ++i) {
    countOne(x[i], low, high, counts);
    if (x[i] > low && x[i] < high) {
      *to++ = x[i];
    }
  }
  counters.addTo(counts);
  return static_cast<std::size_t>(to - between);
}

HWY_INLINE void takeBetween(EightSums& sums, Counters& counters, const double* x, int part,
                            Register low, Register high) {
  const Register v = read(x + part * kLanes);
  sums.take(part, hn::IfThenElseZero(counters.take(v, low, high), v));
}

void sumBetween(const double* x, std::size_t n, double low, double high, BracketCounts& counts,
                double* lanes) {
  const Register lows = broadcast(low);
  const Register highs = broadcast(high);
  Counters counters;
  EightSums a;
  EightSums b;
  const std::size_t whole = n / 16 * 16;
  for (std::size_t i = 0; i < whole; i += 16) {
    for (int k = 0; k < kParts; ++k) {
      takeBetween(a, counters, x + i, k, lows, highs);
      takeBetween(b, counters, x + i + 8, k, lows, highs);
    }
  }
  double rest[16] = {};
  for (std::size_t i = whole; i < n; ++i) {
    countOne(x[i], low, high, counts);
    rest[i - whole] = x[i] > low && x[i] < high ? x[i] : 0.0;
  }
  for (int k = 0; k < kParts; ++k) {
    a.take(k, read(rest + k * kLanes));
    b.take(k, read(rest + 8 + k * kLanes));
  }
  counters.addTo(counts);
  a.store(lanes);
  b.store(lanes + 16);
}

void cellsOf(const double* x, std::size_t n, double base, double scale, std::int32_t cells,
             std::int32_t* to) {
  const Register bases = broadcast(base);
  const Register scales = broadcast(scale);
  const Register last = broadcast(static_cast<double>(cells - 1));
  const Register zero = broadcast(0.0);
  const hn::Rebind<std::int32_t, Tag> integers;
  std::size_t i = 0;
  for (; i + kLanes <= n; i += kLanes) {
    const Register place = mul(sub(read(x + i), bases), scales);
    hn::StoreU(hn::DemoteTo(integers, hn::Min(hn::Max(place, zero), last)), integers, to + i);
  }
  for (; i < n; ++i) {
    const double place = std::min(std::max((x[i] - base) * scale, 0.0), cells - 1.0);
    to[i] = static_cast<std::int32_t>(place);
  }
}

#else

std::size_t countAndCollect(const double* x, std::size_t n, double low, double high,
                            BracketCounts& counts, double* between) {
  double* to = between;
  for (std::size_t i = 0; i < n; ++i) {
    countOne(x[i], low, high, counts);
    *to = x[i];
    to += (x[i] > low) & (x[i] < high);
  }
  return static_cast<std::size_t>(to - between);
}

void sumBetween(const double* x, std::size_t n, double low, double high, BracketCounts& counts,
                double* lanes) {
  EightSums sums[2];
  for (std::size_t i = 0; i < n; ++i) {
    countOne(x[i], low, high, counts);
    sums[i / 8 % 2].take(static_cast<int>(i % 8), x[i] > low && x[i] < high ? x[i] : 0.0);
  }
  sums[0].store(lanes);
  sums[1].store(lanes + 16);
}

void cellsOf(const double* x, std::size_t n, double base, double scale, std::int32_t cells,
             std::int32_t* to) {
  for (std::size_t i = 0; i < n; ++i) {
    const double place = std::min(std::max((x[i] - base) * scale, 0.0), cells - 1.0);
    to[i] = static_cast<std::int32_t>(place);
  }
}

#endif

}  // namespace
}  // namespace vexel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace vexel::kernels {

HWY_EXPORT(countAndCollect);
HWY_EXPORT(sumBetween);
HWY_EXPORT(cellsOf);

std::size_t countAndCollect(const double* x, std::size_t n, double low, double high,
                            BracketCounts& counts, double* between) {
  return HWY_DYNAMIC_DISPATCH(countAndCollect)(x, n, low, high, counts, between);
}
void sumBetween(const double* x, std::size_t n, double low, double high, BracketCounts& counts,
                double* lanes) {
  HWY_DYNAMIC_DISPATCH(sumBetween)(x, n, low, high, counts, lanes);
}
void cellsOf(const double* x, std::size_t n, double base, double scale, std::int32_t cells,
             std::int32_t* to) {
  HWY_DYNAMIC_DISPATCH(cellsOf)(x, n, base, scale, cells, to);
}

}  // namespace vexel::kernels

#endif
