#include "kernels/vector/presence.hpp"

#include <algorithm>
#include <limits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/vector/presence.cpp"
#include "kernels/vector/each_target.hpp"
#include "kernels/vector/eight.hpp"

HWY_BEFORE_NAMESPACE();
namespace vexel::kernels::HWY_NAMESPACE {
namespace {

constexpr double kLargest = std::numeric_limits<double>::max();

bool isUsual(double x, double w) { return x == x && w > 0.0 && w <= kLargest; }

#ifdef VEXEL_HAVE_HIGHWAY

bool pointsPresent(const double* x, std::size_t n) {
  const Tag d;
  std::size_t i = 0;
  auto present = hn::Not(hn::FirstN(d, 0));
  for (; i + kLanes <= n; i += kLanes) {
    const auto v = read(x + i);
    present = hn::And(present, hn::Eq(v, v));
  }
  bool rest = true;
  for (; i < n; ++i) {
    rest &= x[i] == x[i];
  }
  return hn::AllTrue(d, present) && rest;
}

bool pairsUsual(const double* x, const double* w, std::size_t n) {
  const Tag d;
  const auto zero = hn::Zero(d);
  const auto largest = hn::Set(d, kLargest);
  std::size_t i = 0;
  auto usual = hn::Not(hn::FirstN(d, 0));
  for (; i + kLanes <= n; i += kLanes) {
    const auto v = read(x + i);
    const auto u = read(w + i);
    usual = hn::And(hn::And(usual, hn::Eq(v, v)), hn::And(hn::Lt(zero, u), hn::Le(u, largest)));
  }
  bool all = hn::AllTrue(d, usual);
  for (; i < n; ++i) {
    all &= isUsual(x[i], w[i]);
  }
  return all;
}

Range rangeOf(const double* x, std::size_t n) {
  const Tag d;
  auto low = hn::Set(d, x[0]);
  auto high = low;
  std::size_t i = 0;
  for (; i + kLanes <= n; i += kLanes) {
    const auto v = read(x + i);
    low = hn::Min(low, v);
    high = hn::Max(high, v);
  }
  Range range{hn::GetLane(hn::MinOfLanes(d, low)), hn::GetLane(hn::MaxOfLanes(d, high))};
  for (; i < n; ++i) {
    range = {std::min(range.min, x[i]), std::max(range.max, x[i])};
  }
  return range;
}

#else

bool pointsPresent(const double* x, std::size_t n) {
  return std::all_of(x, x + n, [](double v) { return v == v; });
}

bool pairsUsual(const double* x, const double* w, std::size_t n) {
  bool all = true;
  for (std::size_t i = 0; i < n; ++i) {
    all &= isUsual(x[i], w[i]);
  }
  return all;
}

Range rangeOf(const double* x, std::size_t n) {
  const auto [low, high] = std::minmax_element(x, x + n);
  return {*low, *high};
}

#endif

}  // namespace
}  // namespace vexel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace vexel::kernels {

HWY_EXPORT(pointsPresent);
HWY_EXPORT(pairsUsual);
HWY_EXPORT(rangeOf);

bool allPresent(const double* x, std::size_t n) {
  return HWY_DYNAMIC_DISPATCH(pointsPresent)(x, n);
}
bool allPresent(const double* x, const double* w, std::size_t n) {
  return HWY_DYNAMIC_DISPATCH(pairsUsual)(x, w, n);
}
Range rangeOf(const double* x, std::size_t n) { return HWY_DYNAMIC_DISPATCH(rangeOf)(x, n); }

}  // namespace vexel::kernels

#endif
