// Guesses of equal bins, and the sums of products of densities on a grid.
//
// The first half of this file is compiled once for each set of instructions, in a namespace each;
// the second half picks among them at run time.  All give the same bits.
#include "kernels/binning.hpp"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/vector/binning.cpp"
#include "kernels/vector/each_target.hpp"

HWY_BEFORE_NAMESPACE();
namespace vexel::kernels::HWY_NAMESPACE {
namespace {

bool isSure(double t, double part, const BinGuess& g) {
  return (part > g.doubt) & (part < 1 - g.doubt) & (t >= 0) & (t < g.bins);
}

std::int32_t guessAll(const double* x, std::size_t n, const BinGuess& g, std::int32_t* bin) {
  std::size_t sureOnes = 0;
  std::size_t j = 0;
#ifdef VEXEL_HAVE_HIGHWAY
  namespace hn = hwy::HWY_NAMESPACE;
  const hn::ScalableTag<double> d;
  const hn::Rebind<std::int32_t, decltype(d)> integers;
  const auto low = hn::Set(d, g.low);
  const auto scale = hn::Set(d, g.scale);
  const auto least = hn::Set(d, g.doubt);
  const auto most = hn::Set(d, 1 - g.doubt);
  const auto last = hn::Set(d, g.bins);
  for (; j + hn::Lanes(d) <= n; j += hn::Lanes(d)) {
    const auto t = hn::Mul(hn::Sub(hn::LoadU(d, x + j), low), scale);
    const auto part = hn::Sub(t, hn::Floor(t));
    const auto sure = hn::And(hn::And(hn::Gt(part, least), hn::Lt(part, most)),
                              hn::And(hn::Ge(t, hn::Zero(d)), hn::Lt(t, last)));
    hn::StoreU(hn::DemoteTo(integers, hn::IfThenElse(sure, t, last)), integers, bin + j);
    sureOnes += hn::CountTrue(d, sure);
  }
#endif
  for (; j < n; ++j) {
    const double t = (x[j] - g.low) * g.scale;
    const bool sure = isSure(t, t - __builtin_floor(t), g);
    bin[j] = sure ? static_cast<std::int32_t>(t) : g.bins;
    sureOnes += static_cast<std::size_t>(sure);
  }
  return static_cast<std::int32_t>(n - sureOnes);
}

bool rangeOfAll(const double* x, std::size_t n, double* low, double* high) {
  constexpr std::size_t lanes = 32;
  double least[lanes];
  double most[lanes];
  double infinite[lanes];  // 0, or NaN where something is not finite
  for (std::size_t l = 0; l < lanes; ++l) {
    least[l] = most[l] = x[0];
    infinite[l] = 0;
  }
  const auto take = [&](std::size_t l, double v) __attribute__((always_inline)) {
    least[l] = v < least[l] ? v : least[l];
    most[l] = v > most[l] ? v : most[l];
    infinite[l] += v - v;
  };
  std::size_t i = 0;
  for (; i + lanes <= n; i += lanes) {
    for (std::size_t l = 0; l < lanes; ++l) {
      take(l, x[i + l]);
    }
  }
  for (std::size_t l = 0; i + l < n; ++l) {
    take(l, x[i + l]);
  }
  for (std::size_t l = 1; l < lanes; ++l) {
    take(0, least[l]);
    take(0, most[l]);
    infinite[0] += infinite[l];
  }
  if (infinite[0] != 0) {
    return false;
  }
  *low = least[0];
  *high = most[0];
  return true;
}

double dotAll(const double* a, const double* b, std::size_t n) {
  constexpr std::size_t lanes = 32;
  double sum[lanes] = {};
  std::size_t i = 0;
  for (; i + lanes <= n; i += lanes) {
    for (std::size_t l = 0; l < lanes; ++l) {
      sum[l] += a[i + l] * b[i + l];
    }
  }
  for (std::size_t l = 0; i + l < n; ++l) {
    sum[l] += a[i + l] * b[i + l];
  }
  for (std::size_t width = lanes / 2; width > 0; width /= 2) {
    for (std::size_t l = 0; l < width; ++l) {
      sum[l] += sum[l + width];
    }
  }
  return sum[0];
}

}  // namespace
}  // namespace vexel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vexel::kernels {

HWY_EXPORT(guessAll);
HWY_EXPORT(rangeOfAll);
HWY_EXPORT(dotAll);

std::int32_t guessBins(const double* x, std::size_t n, BinGuess guess, std::int32_t* bin) {
  return HWY_DYNAMIC_DISPATCH(guessAll)(x, n, guess, bin);
}

bool finiteRange(const double* x, std::size_t n, double* low, double* high) {
  return n > 0 && HWY_DYNAMIC_DISPATCH(rangeOfAll)(x, n, low, high);
}

double dot(const double* a, const double* b, std::size_t n) {
  return HWY_DYNAMIC_DISPATCH(dotAll)(a, b, n);
}

}  // namespace vexel::kernels
#endif
