// Powers in integers of columns, a number in each lane.
//
// The first half of this file is compiled once for each set of instructions, in a namespace each;
// the second half picks among them at run time.  Nothing here rounds.
#include "kernels/vector/power_columns.hpp"

#include <bit>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/vector/power_columns.cpp"
#include "kernels/vector/each_target.hpp"

HWY_BEFORE_NAMESPACE();
namespace vexel::kernels::HWY_NAMESPACE {
namespace {

#if defined(VEXEL_HAVE_HIGHWAY) && HWY_TARGET != HWY_SCALAR

namespace hn = hwy::HWY_NAMESPACE;
using Words = hn::CappedTag<std::uint64_t, 8>;
using Halves = hn::Repartition<std::uint32_t, Words>;
using Integers = hn::Rebind<std::int64_t, Words>;
using Word = hn::Vec<Words>;

// Of the lower halves.
HWY_INLINE Word product(Word a, Word b) {
  return hn::MulEven(hn::BitCast(Halves(), a), hn::BitCast(Halves(), b));
}
HWY_INLINE Word lower(Word a) {
  return hn::And(a, hn::Set(Words(), (std::uint64_t{1} << PowerColumns::bits) - 1));
}
HWY_INLINE Word upper(Word a) { return hn::ShiftRight<PowerColumns::bits>(a); }

// Sums by column.  Of odd powers a negative one is added with all bits turned, which is one less
// than its negative.
struct ColumnSums {
  Word column[8];

  HWY_INLINE ColumnSums() {
    for (Word& c : column) {
      c = hn::Zero(Words());
    }
  }
  HWY_INLINE void add(int i, Word v) { column[i] = hn::Add(column[i], v); }
  HWY_INLINE void add(int i, Word v, Word sign) { add(i, hn::Xor(v, sign)); }
  HWY_INLINE void addTo(std::int64_t* sums, int columns, std::uint64_t negatives) const {
    for (int i = 0; i < columns; ++i) {
      const std::uint64_t sum = hn::GetLane(hn::SumOfLanes(Words(), column[i]));
      sums[i] += static_cast<std::int64_t>(sum + negatives);
    }
  }
};

// The sizes in units of those that fit, 0 for the others; what is not 0 among these goes to
// `outside`.
HWY_INLINE Word sizes(Word bits, int unit, Word& outside) {
  const Words d;
  const Integers s;
  const Word fraction = hn::Set(d, (std::uint64_t{1} << 52) - 1);
  const Word leading = hn::Set(d, std::uint64_t{1} << 52);
  const Word withoutSign = hn::Add(bits, bits);
  // Subnormal numbers are outside: units are above theirs.
  const auto shift = hn::Sub(hn::BitCast(s, hn::ShiftRight<53>(withoutSign)),
                             hn::Set(s, std::int64_t{unit} + 1075));
  const auto fits =
      hn::And(hn::Gt(shift, hn::Set(s, -1)), hn::Gt(hn::Set(s, PowerColumns::span + 1), shift));
  const Word those = hn::BitCast(d, hn::VecFromMask(s, fits));
  outside = hn::Or(outside, hn::AndNot(those, withoutSign));
  const Word mantissa = hn::Or(hn::And(bits, fraction), leading);
  return hn::And(those, hn::Shl(mantissa, hn::And(hn::BitCast(d, shift), hn::Set(d, 15))));
}

HWY_INLINE void addSquares(ColumnSums& sums, Word a0, Word a1, Word* s) {
  const Word cross = product(a0, a1);
  const Word c0 = product(a0, a0);
  const Word c1 = hn::Add(upper(c0), hn::Add(cross, cross));
  const Word c2 = hn::Add(upper(c1), product(a1, a1));
  s[0] = lower(c0);
  s[1] = lower(c1);
  s[2] = lower(c2);
  s[3] = upper(c2);
  for (int i = 0; i < 4; ++i) {
    sums.add(i, s[i]);
  }
}

HWY_INLINE void addCubes(ColumnSums& sums, Word a0, Word a1, const Word* s, Word sign) {
  const Word t0 = product(s[0], a0);
  const Word t1 = hn::Add(product(s[0], a1), product(s[1], a0));
  const Word t2 = hn::Add(product(s[1], a1), product(s[2], a0));
  const Word t3 = hn::Add(product(s[2], a1), product(s[3], a0));
  const Word t4 = product(s[3], a1);
  sums.add(0, lower(t0), sign);
  sums.add(1, hn::Add(upper(t0), lower(t1)), sign);
  sums.add(2, hn::Add(upper(t1), lower(t2)), sign);
  sums.add(3, hn::Add(upper(t2), lower(t3)), sign);
  sums.add(4, hn::Add(upper(t3), lower(t4)), sign);
  sums.add(5, upper(t4), sign);
}

HWY_INLINE void addFourths(ColumnSums& sums, const Word* s) {
  const Word twice0 = hn::Add(s[0], s[0]);
  const Word twice1 = hn::Add(s[1], s[1]);
  const Word twice2 = hn::Add(s[2], s[2]);
  const Word q0 = product(s[0], s[0]);
  const Word q1 = product(twice0, s[1]);
  const Word q2 = hn::Add(product(twice0, s[2]), product(s[1], s[1]));
  const Word q3 = hn::Add(product(twice0, s[3]), product(twice1, s[2]));
  const Word q4 = hn::Add(product(twice1, s[3]), product(s[2], s[2]));
  const Word q5 = product(twice2, s[3]);
  const Word q6 = product(s[3], s[3]);
  sums.add(0, lower(q0));
  sums.add(1, hn::Add(upper(q0), lower(q1)));
  sums.add(2, hn::Add(upper(q1), lower(q2)));
  sums.add(3, hn::Add(upper(q2), lower(q3)));
  sums.add(4, hn::Add(upper(q3), lower(q4)));
  sums.add(5, hn::Add(upper(q4), lower(q5)));
  sums.add(6, hn::Add(upper(q5), lower(q6)));
  sums.add(7, upper(q6));
}

template <int kOrder>
HWY_INLINE std::size_t addColumns(const double* x, std::size_t n, int unit, PowerColumns& sums,
                                  bool* apart) {
  const Words d;
  ColumnSums first;
  ColumnSums second;
  ColumnSums third;
  ColumnSums fourth;
  Word negatives = hn::Zero(d);
  Word outside = hn::Zero(d);
  std::size_t i = 0;
  for (; i + hn::Lanes(d) <= n; i += hn::Lanes(d)) {
    const Word bits = hn::BitCast(d, hn::LoadU(hn::Rebind<double, Words>(), x + i));
    const Word sign = hn::BitCast(d, hn::BroadcastSignBit(hn::BitCast(Integers(), bits)));
    const Word size = sizes(bits, unit, outside);
    const Word a0 = lower(size);
    const Word a1 = upper(size);
    negatives = hn::Sub(negatives, sign);
    first.add(0, a0, sign);
    first.add(1, a1, sign);
    Word squares[4];
    if (kOrder >= 2) {
      addSquares(second, a0, a1, squares);
    }
    if (kOrder >= 3) {
      addCubes(third, a0, a1, squares, sign);
    }
    if (kOrder >= 4) {
      addFourths(fourth, squares);
    }
  }
  const std::uint64_t missing = hn::GetLane(hn::SumOfLanes(d, negatives));
  first.addTo(sums.column[0], 2, missing);
  second.addTo(sums.column[1], kOrder >= 2 ? 4 : 0, 0);
  third.addTo(sums.column[2], kOrder >= 3 ? 6 : 0, missing);
  fourth.addTo(sums.column[3], kOrder >= 4 ? 8 : 0, 0);
  *apart = !hn::AllTrue(d, hn::Eq(outside, hn::Zero(d)));
  return i;
}

std::size_t addPowerColumns(const double* x, std::size_t n, int order, int unit, PowerColumns& sums,
                            bool* apart) {
  switch (order) {
    case 1:
      return addColumns<1>(x, n, unit, sums, apart);
    case 2:
      return addColumns<2>(x, n, unit, sums, apart);
    case 3:
      return addColumns<3>(x, n, unit, sums, apart);
    default:
      return addColumns<4>(x, n, unit, sums, apart);
  }
}

#else

std::size_t addPowerColumns(const double*, std::size_t, int, int, PowerColumns&, bool* apart) {
  *apart = false;
  return 0;
}

#endif

}  // namespace
}  // namespace vexel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vexel::kernels {

HWY_EXPORT(addPowerColumns);

std::size_t addPowerColumns(const double* x, std::size_t n, int order, int unit, PowerColumns& sums,
                            bool* apart) {
  return HWY_DYNAMIC_DISPATCH(addPowerColumns)(x, n, order, unit, sums, apart);
}

bool inPowerSpan(double x, int unit) {
  const auto biased = static_cast<int>(std::bit_cast<std::uint64_t>(x) >> 52) & 0x7FF;
  const int shift = biased - 1075 - unit;
  return shift >= 0 && shift <= PowerColumns::span;
}

}  // namespace vexel::kernels
#endif
