#include "kernels/vector/column_order.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/vector/column_order.cpp"
#include "kernels/vector/each_target.hpp"
#include "kernels/vector/eight.hpp"

HWY_BEFORE_NAMESPACE();
namespace vexel::kernels::HWY_NAMESPACE {
namespace {

#ifdef VEXEL_HAVE_HIGHWAY

HWY_INLINE Register smaller(Register a, Register b) { return hn::Min(a, b); }
HWY_INLINE Register larger(Register a, Register b) { return hn::Max(a, b); }

struct Two {
  Register low;
  Register high;

  HWY_INLINE Two(const double* a, const double* b) : low(read(a)), high(read(b)) {}
  HWY_INLINE void store(double* a, double* b) const {
    write(low, a);
    write(high, b);
  }
};

HWY_INLINE void order(Two& x, Two& places) {
  const auto swap = hn::Or(hn::Gt(x.low, x.high),
                           hn::And(hn::Eq(x.low, x.high), hn::Gt(places.low, places.high)));
  const auto exchange = [&](Two& two) HWY_ATTR {
    const Register low = two.low;
    two.low = hn::IfThenElse(swap, two.high, low);
    two.high = hn::IfThenElse(swap, low, two.high);
  };
  exchange(x);
  exchange(places);
}

// Counts in ones, and returns x without NaN.
HWY_INLINE Register take(Register x, Register& missing, Register& negativeZeros) {
  const hn::RebindToSigned<Tag> bits;
  const Register one = broadcast(1.0);
  const auto isMissing = hn::IsNaN(x);
  const auto isNegativeZero =
      hn::RebindMask(Tag(), hn::Eq(hn::BitCast(bits, x), hn::BitCast(bits, broadcast(-0.0))));
  missing = add(missing, hn::IfThenElseZero(isMissing, one));
  negativeZeros = add(negativeZeros, hn::IfThenElseZero(isNegativeZero, one));
  return hn::IfThenElse(isMissing, broadcast(std::numeric_limits<double>::infinity()), x);
}

#else

inline double smaller(double a, double b) { return std::min(a, b); }
inline double larger(double a, double b) { return std::max(a, b); }

struct Two {
  double low;
  double high;

  Two(const double* a, const double* b) : low(*a), high(*b) {}
  void store(double* a, double* b) const {
    *a = low;
    *b = high;
  }
};

inline void order(Two& x, Two& places) {
  if (x.low > x.high || (x.low == x.high && places.low > places.high)) {
    std::swap(x.low, x.high);
    std::swap(places.low, places.high);
  }
}

inline double take(double x, double& missing, double& negativeZeros) {
  missing += std::isnan(x) ? 1.0 : 0.0;
  negativeZeros += x == 0.0 && std::signbit(x) ? 1.0 : 0.0;
  return std::isnan(x) ? std::numeric_limits<double>::infinity() : x;
}

#endif

void lookAtStrip(double* rows, std::size_t n, StripFacts& facts) {
  for (int part = 0; part < kParts; ++part) {
    Register missing = broadcast(0.0);
    Register negativeZeros = missing;
    double* at = rows + part * kLanes;
    for (std::size_t i = 0; i < n; ++i, at += stripWidth) {
      write(take(read(at), missing, negativeZeros), at);
    }
    write(missing, facts.missing + part * kLanes);
    write(negativeZeros, facts.negativeZeros + part * kLanes);
  }
}

void exchangeInStrip(double* rows, std::span<const Exchange> exchanges) {
  for (const Exchange& e : exchanges) {
    double* const low = rows + stripWidth * e.low;
    double* const high = rows + stripWidth * e.high;
    for (int part = 0; part < kParts; ++part) {
      const Register a = read(low + part * kLanes);
      const Register b = read(high + part * kLanes);
      write(smaller(a, b), low + part * kLanes);
      write(larger(a, b), high + part * kLanes);
    }
  }
}

void exchangeWithPlaces(double* rows, double* places, std::span<const Exchange> exchanges) {
  for (const Exchange& e : exchanges) {
    const std::size_t low = stripWidth * e.low;
    const std::size_t high = stripWidth * e.high;
    for (std::size_t part = 0; part < stripWidth; part += kLanes) {
      Two x(rows + low + part, rows + high + part);
      Two place(places + low + part, places + high + part);
      order(x, place);
      x.store(rows + low + part, rows + high + part);
      place.store(places + low + part, places + high + part);
    }
  }
}

}  // namespace
}  // namespace vexel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace vexel::kernels {

HWY_EXPORT(lookAtStrip);
HWY_EXPORT(exchangeInStrip);
HWY_EXPORT(exchangeWithPlaces);

void lookAtStrip(double* rows, std::size_t n, StripFacts& facts) {
  HWY_DYNAMIC_DISPATCH(lookAtStrip)(rows, n, facts);
}
void exchangeInStrip(double* rows, std::span<const Exchange> exchanges) {
  HWY_DYNAMIC_DISPATCH(exchangeInStrip)(rows, exchanges);
}
void exchangeWithPlaces(double* rows, double* places, std::span<const Exchange> exchanges) {
  HWY_DYNAMIC_DISPATCH(exchangeWithPlaces)(rows, places, exchanges);
}

}  // namespace vexel::kernels

#endif
