// Parting of integers with vector instructions: what the Highway library offers, or nothing.
//
// The first half of this file is compiled once for each set of instructions, in a namespace each;
// the second half, once, picks among them at run time.

#include "numerics/sorting/vector_sort.hpp"

#ifdef NAG2_HAVE_HIGHWAY

#ifndef HWY_DISABLED_TARGETS
#define HWY_DISABLED_TARGETS \
  (HWY_SSSE3 | HWY_SSE4)  // vectorSortServes leaves them to the radix sorts
#endif
#include <hwy/targets.h>

#include <cmath>
#include <limits>

#include "numerics/sorting/sort_keys.hpp"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "numerics/sorting/vector_sort.cpp"
#include <hwy/foreach_target.h>
// After it, as it wants:
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace nag2::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

// An element, or a vector of them, as integers in their order, and whether these go before the
// pivot.
template <typename Integer>
class Sides {
 public:
  using Tag = hn::ScalableTag<Integer>;
  using Vector = hn::Vec<Tag>;

  explicit Sides(Parting<Integer> by) : by_(by) {}

  Integer integer(Integer bits) const { return by_.floats ? mirrorNegative(bits) : bits; }
  bool isBefore(Integer integer) const {
    return by_.descending ? by_.pivot < integer : integer < by_.pivot;
  }

  Vector integers(Vector bits) const {
    const Vector allButSign = hn::Set(Tag(), std::numeric_limits<Integer>::max());
    return by_.floats ? hn::Xor(bits, hn::And(hn::BroadcastSignBit(bits), allButSign)) : bits;
  }
  hn::Mask<Tag> areBefore(Vector integers) const {
    const Vector pivot = hn::Set(Tag(), by_.pivot);
    return by_.descending ? hn::Lt(pivot, integers) : hn::Lt(integers, pivot);
  }

 private:
  Parting<Integer> by_;
};

// The bits of infinity.
constexpr std::int32_t kInfinity32 = 0x7F800000;
constexpr std::int64_t kInfinity64 = 0x7FF0000000000000;

template <typename Integer>
BlockFacts<Integer> lookThroughAll(const Integer* x, std::size_t n, Parting<Integer> by) {
  const Sides<Integer> sides(by);
  const typename Sides<Integer>::Tag d;
  const Integer infinity = static_cast<Integer>(sizeof(Integer) == 4 ? kInfinity32 : kInfinity64);
  BlockFacts<Integer> facts{0, 0, false};
  const auto zero = hn::Zero(d);
  const auto allButSign = hn::Set(d, std::numeric_limits<Integer>::max());
  const auto negativeZero = hn::Set(d, std::numeric_limits<Integer>::min());
  const auto largest = hn::Set(d, infinity);
  auto before = zero;
  auto bits = zero;
  auto special = hn::FirstN(d, 0);
  std::size_t i = 0;
  for (; i + hn::Lanes(d) <= n; i += hn::Lanes(d)) {
    const auto v = hn::LoadU(d, x + i);
    const auto size = hn::And(v, allButSign);
    bits = hn::Or(bits, v);
    special = hn::Or(special, hn::Or(hn::Eq(v, negativeZero), hn::Lt(largest, size)));
    before = hn::Sub(before, hn::VecFromMask(d, sides.areBefore(sides.integers(v))));
  }
  for (; i < n; ++i) {
    const Integer size = x[i] & std::numeric_limits<Integer>::max();
    facts.bits |= x[i];
    facts.hasNegativeZeroOrNan |= x[i] == std::numeric_limits<Integer>::min() || infinity < size;
    facts.before += sides.isBefore(sides.integer(x[i]));
  }
  facts.before += static_cast<std::size_t>(hn::GetLane(hn::SumOfLanes(d, before)));
  facts.bits |= hn::AllFalse(d, hn::Lt(bits, zero)) ? 0 : std::numeric_limits<Integer>::min();
  facts.hasNegativeZeroOrNan |= !hn::AllFalse(d, special);
  return facts;
}

template <typename T>
bool copyLookingAtAll(const T* x, std::size_t n, T* out) {
  const hn::ScalableTag<T> d;
  const hn::RebindToSigned<decltype(d)> bits;
  using Integer = hn::TFromD<decltype(bits)>;
  const auto negativeZero = hn::Set(bits, std::numeric_limits<Integer>::min());
  auto special = hn::FirstN(d, 0);
  std::size_t i = 0;
  for (; i + hn::Lanes(d) <= n; i += hn::Lanes(d)) {
    const auto v = hn::LoadU(d, x + i);
    const auto isNegativeZero = hn::RebindMask(d, hn::Eq(hn::BitCast(bits, v), negativeZero));
    special = hn::Or(special, hn::Or(isNegativeZero, hn::IsNaN(v)));
    hn::StoreU(v, d, out + i);
  }
  bool found = !hn::AllFalse(d, special);
  for (; i < n; ++i) {
    found |= std::isnan(x[i]) || (x[i] == T{0} && std::signbit(x[i]));
    out[i] = x[i];
  }
  return found;
}

template <typename Integer>
std::size_t partAll(const Integer* x, std::size_t n, Parting<Integer> by, Integer* front,
                    Integer* back) {
  const Integer* const start = front;
  const Sides<Integer> sides(by);
  const typename Sides<Integer>::Tag d;
  std::size_t i = 0;
  for (; i + hn::Lanes(d) <= n; i += hn::Lanes(d)) {
    const auto v = sides.integers(hn::LoadU(d, x + i));
    const auto before = sides.areBefore(v);
    front += hn::CompressBlendedStore(v, before, d, front);
    back += hn::CompressBlendedStore(v, hn::Not(before), d, back);
  }
  for (; i < n; ++i) {
    const Integer v = sides.integer(x[i]);
    *(sides.isBefore(v) ? front : back)++ = v;
  }
  return static_cast<std::size_t>(front - start);
}

BlockFacts<std::int32_t> lookThrough32(const std::int32_t* x, std::size_t n,
                                       Parting<std::int32_t> by) {
  return lookThroughAll(x, n, by);
}
BlockFacts<std::int64_t> lookThrough64(const std::int64_t* x, std::size_t n,
                                       Parting<std::int64_t> by) {
  return lookThroughAll(x, n, by);
}
bool copyLooking32(const float* x, std::size_t n, float* out) {
  return copyLookingAtAll(x, n, out);
}
bool copyLooking64(const double* x, std::size_t n, double* out) {
  return copyLookingAtAll(x, n, out);
}
std::size_t part32(const std::int32_t* x, std::size_t n, Parting<std::int32_t> by,
                   std::int32_t* front, std::int32_t* back) {
  return partAll(x, n, by, front, back);
}
std::size_t part64(const std::int64_t* x, std::size_t n, Parting<std::int64_t> by,
                   std::int64_t* front, std::int64_t* back) {
  return partAll(x, n, by, front, back);
}

}  // namespace
}  // namespace nag2::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace nag2 {

namespace {

bool haveWideVectors() {
  static const bool have = (hwy::SupportedTargets() & (HWY_AVX2 | HWY_AVX3 | HWY_AVX3_DL)) != 0;
  return have;
}

HWY_EXPORT(lookThrough32);
HWY_EXPORT(lookThrough64);
HWY_EXPORT(copyLooking32);
HWY_EXPORT(copyLooking64);
HWY_EXPORT(part32);
HWY_EXPORT(part64);

}  // namespace

bool vectorSortServes(std::size_t n) {
  constexpr std::size_t kFew = 16;  // done at once by any sort
  return n >= kFew && haveWideVectors();
}

BlockFacts<std::int32_t> lookThrough(const std::int32_t* x, std::size_t n,
                                     Parting<std::int32_t> by) {
  return HWY_DYNAMIC_DISPATCH(lookThrough32)(x, n, by);
}
BlockFacts<std::int64_t> lookThrough(const std::int64_t* x, std::size_t n,
                                     Parting<std::int64_t> by) {
  return HWY_DYNAMIC_DISPATCH(lookThrough64)(x, n, by);
}
bool copyLooking(const float* x, std::size_t n, float* out) {
  return HWY_DYNAMIC_DISPATCH(copyLooking32)(x, n, out);
}
bool copyLooking(const double* x, std::size_t n, double* out) {
  return HWY_DYNAMIC_DISPATCH(copyLooking64)(x, n, out);
}
std::size_t part(const std::int32_t* x, std::size_t n, Parting<std::int32_t> by,
                 std::int32_t* front, std::int32_t* back) {
  return HWY_DYNAMIC_DISPATCH(part32)(x, n, by, front, back);
}
std::size_t part(const std::int64_t* x, std::size_t n, Parting<std::int64_t> by,
                 std::int64_t* front, std::int64_t* back) {
  return HWY_DYNAMIC_DISPATCH(part64)(x, n, by, front, back);
}

}  // namespace nag2

#endif  // HWY_ONCE

#else

namespace nag2 {

bool vectorSortServes(std::size_t) { return false; }
BlockFacts<std::int32_t> lookThrough(const std::int32_t*, std::size_t, Parting<std::int32_t>) {
  return {};
}
BlockFacts<std::int64_t> lookThrough(const std::int64_t*, std::size_t, Parting<std::int64_t>) {
  return {};
}
bool copyLooking(const float*, std::size_t, float*) { return false; }
bool copyLooking(const double*, std::size_t, double*) { return false; }
std::size_t part(const std::int32_t*, std::size_t, Parting<std::int32_t>, std::int32_t*,
                 std::int32_t*) {
  return 0;
}
std::size_t part(const std::int64_t*, std::size_t, Parting<std::int64_t>, std::int64_t*,
                 std::int64_t*) {
  return 0;
}

}  // namespace nag2

#endif
