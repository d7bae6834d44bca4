// Sums of products, many results at a time.
//
// T. Ogita, S. M. Rump and S. Oishi, Accurate sum and dot product (2005): the errors of products
// and sums are added up beside them.  Where taps are many, they and the elements are cut in
// two first, at places so high that the products of upper parts and their sums are exact (K. Ozaki,
// T. Ogita, S. Oishi and S. M. Rump, Error-free transformations of matrix multiplication, 2012);
// the rest is so small that it may be rounded.  What comes out far below the largest sum possible
// is added up the first way after all.  The first half of this file is compiled once for each set
// of instructions, in a namespace each; the second half picks among them at run time.  All give the
// same bits: a fused multiply-add serves only where its result is exact.
#include "kernels/filter.hpp"

#include <algorithm>
#include <cmath>
#include <vector>

#include "kernels/exact_product.hpp"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/vector/filter.cpp"
#include "kernels/vector/each_target.hpp"
#include "kernels/vector/eight.hpp"

#ifndef VEXEL_FILTER_PARTS
#define VEXEL_FILTER_PARTS
namespace vexel::kernels {
namespace {

// A tap and its parts.
struct CutTap {
  double whole;
  double upper;
  double lower;
};

// A stretch of a series and its parts; each reaches back as far as the taps do.
struct CutSeries {
  const double* x;
  const double* upper;
  const double* lower;
};

}  // namespace
}  // namespace vexel::kernels
#endif

HWY_BEFORE_NAMESPACE();
namespace vexel::kernels::HWY_NAMESPACE {
namespace {

constexpr std::size_t kWide = 32;  // results in registers at a time

// kCount results; x points at the first one's own element.
template <std::size_t kCount>
inline __attribute__((always_inline)) void results(const double* x, const double* taps,
                                                   std::size_t count, double* out) {
  double sum[kCount] = {};
  double error[kCount] = {};
  for (std::size_t k = 0; k < count; ++k) {
    const double tap = taps[k];
    const double* const from = x - k;
    for (std::size_t l = 0; l < kCount; ++l) {
      const double product = tap * from[l];
      const double lost = __builtin_fma(tap, from[l], -product);
      const double next = sum[l] + product;
      const double part = next - sum[l];
      error[l] += ((sum[l] - (next - part)) + (product - part)) + lost;
      sum[l] = next;
    }
  }
  for (std::size_t l = 0; l < kCount; ++l) {
    const double value = sum[l] + error[l];
    // Infinities and overflow make the errors NaN, but not the plain sum.
    out[l] = value == value ? value : sum[l];
  }
}

// A product added to a sum, where that is exact.
HWY_INLINE Register addExactly(Register a, Register b, Register sum) {
#if defined(VEXEL_HAVE_HIGHWAY) && HWY_NATIVE_FMA
  return hn::MulAdd(a, b, sum);
#else
  return add(mul(a, b), sum);
#endif
}

constexpr std::size_t kCutWide = 4 * static_cast<std::size_t>(kLanes);

// kCutWide results, of the parts' arrays.
HWY_INLINE void cutResults(const double* upper, const double* lower, const CutTap* taps,
                           std::size_t count, double* out) {
  Register sum[4];
  Register rest[4];
  for (int j = 0; j < 4; ++j) {
    sum[j] = rest[j] = broadcast(0.0);
  }
  for (std::size_t k = 0; k < count; ++k, --upper, --lower) {
    const Register tap = broadcast(taps[k].whole);
    const Register tapUpper = broadcast(taps[k].upper);
    const Register tapLower = broadcast(taps[k].lower);
    for (int j = 0; j < 4; ++j) {
      const Register x = read(upper + j * kLanes);
      sum[j] = addExactly(tapUpper, x, sum[j]);
      rest[j] = add(rest[j], add(mul(tap, read(lower + j * kLanes)), mul(tapLower, x)));
    }
  }
  for (int j = 0; j < 4; ++j) {
    write(add(sum[j], rest[j]), out + j * kLanes);
  }
}

// The upper parts are multiples of what the last bit of `shift` counts.
void cutAll(const double* x, std::size_t n, double shift, double* upper, double* lower) {
  for (std::size_t i = 0; i < n; ++i) {
    upper[i] = (x[i] + shift) - shift;
    lower[i] = x[i] - upper[i];
  }
}

double largestOf(const double* x, std::size_t n) {
  constexpr std::size_t lanes = 32;
  double most[lanes] = {};
  double infinite[lanes] = {};  // 0, or NaN where something is not finite
  std::size_t i = 0;
  for (; i + lanes <= n; i += lanes) {
    for (std::size_t l = 0; l < lanes; ++l) {
      const double size = __builtin_fabs(x[i + l]);
      most[l] = size > most[l] ? size : most[l];
      infinite[l] += size - size;
    }
  }
  for (std::size_t l = 0; i + l < n; ++l) {
    const double size = __builtin_fabs(x[i + l]);
    most[l] = size > most[l] ? size : most[l];
    infinite[l] += size - size;
  }
  double largest = 0;
  for (std::size_t l = 0; l < lanes; ++l) {
    largest = most[l] > largest ? most[l] : largest;
    infinite[0] += l > 0 ? infinite[l] : 0;
  }
  return largest + infinite[0];
}

// n is a multiple of 32.  Results below `least` are made again from x.
void filterCut(const CutSeries& series, std::size_t n, const CutTap* taps, std::size_t count,
               const double* plainTaps, double least, double* out) {
  for (std::size_t i = 0; i < n; i += kCutWide) {
    cutResults(series.upper + i, series.lower + i, taps, count, out + i);
  }
  for (std::size_t i = 0; i < n; i += 32) {
    int sure = 0;
    for (std::size_t l = 0; l < 32; ++l) {
      sure += static_cast<int>(__builtin_fabs(out[i + l]) >= least);
    }
    for (std::size_t l = 0; l < 32 && sure < 32; ++l) {
      if (!(__builtin_fabs(out[i + l]) >= least)) {
        results<1>(series.x + i + l, plainTaps, count, out + i + l);
      }
    }
  }
}

void filterAll(const double* x, std::size_t n, const double* taps, std::size_t count, double* out) {
  std::size_t i = 0;
  for (; i + kWide <= n; i += kWide) {
    results<kWide>(x + i, taps, count, out + i);
  }
  for (; i < n; ++i) {
    results<1>(x + i, taps, count, out + i);
  }
}

}  // namespace
}  // namespace vexel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vexel::kernels {

HWY_EXPORT(filterAll);
HWY_EXPORT(filterCut);
HWY_EXPORT(cutAll);
HWY_EXPORT(largestOf);

namespace {

constexpr std::size_t kBlock = 2048;     // results that share a cut
constexpr std::size_t kFewestTaps = 32;  // less is not worth it
constexpr std::size_t kMostTaps = 1024;

// Numbers up to `largest` cut by what this gives have upper parts of so many bits at most.
double shiftFor(double largest, int bits) {
  int exponent = 0;
  std::frexp(largest, &exponent);
  return std::ldexp(1.5, exponent - bits + 52);
}

// Cuts of a filter's taps and, block by block, of a series.
class CutFilter {
 public:
  explicit CutFilter(std::span<const double> taps) : taps_(taps) {
    if (taps.size() < kFewestTaps || taps.size() > kMostTaps) {
      return;
    }
    largest_ = HWY_DYNAMIC_DISPATCH(largestOf)(taps.data(), taps.size());
    if (!usable(largest_)) {
      return;
    }
    int log = 0;
    while (std::size_t{1} << log < taps.size()) {
      ++log;
    }
    bits_ = (53 - log) / 2;
    const double shift = shiftFor(largest_, bits_);
    for (const double tap : taps) {
      const double upper = (tap + shift) - shift;
      cut_.push_back({tap, upper, tap - upper});
    }
    room_.resize(2 * (kBlock + taps.size() - 1));
  }

  void block(const double* x, std::size_t n, double* out) {
    const std::size_t reach = taps_.size() - 1;
    const std::size_t whole = cut_.empty() ? 0 : n / 32 * 32;
    const double most =
        whole == 0 ? 0.0 : HWY_DYNAMIC_DISPATCH(largestOf)(x - reach, whole + reach);
    std::size_t done = 0;
    if (usable(most)) {
      double* const upper = room_.data();
      double* const lower = upper + kBlock + reach;
      HWY_DYNAMIC_DISPATCH(cutAll)(x - reach, whole + reach, shiftFor(most, bits_), upper, lower);
      // The rest's rounding errors are below count^2 2^(-52 - bits) of largest products, 2^-74.
      const double least = most * largest_ * static_cast<double>(taps_.size()) * 0x1p-18;
      HWY_DYNAMIC_DISPATCH(filterCut)
      ({x, upper + reach, lower + reach}, whole, cut_.data(), taps_.size(), taps_.data(), least,
       out);
      done = whole;
    }
    HWY_DYNAMIC_DISPATCH(filterAll)(x + done, n - done, taps_.data(), taps_.size(), out + done);
  }

 private:
  // Products of its size, and of parts of its last bits, are in the range of doubles.
  static bool usable(double largest) { return largest > 0x1p-300 && largest < 0x1p300; }

  std::span<const double> taps_;
  std::vector<CutTap> cut_;
  std::vector<double> room_;
  double largest_ = 0.0;
  int bits_ = 0;
};

}  // namespace

void filterStretch(const double* x, std::size_t n, std::span<const double> taps, double* out) {
  CutFilter filter(taps);
  for (std::size_t i = 0; i < n; i += kBlock) {
    filter.block(x + i, std::min(kBlock, n - i), out + i);
  }
}

double recursiveStep(double x, std::span<const double> taps, const double* latest) {
  double sum = x;
  double error = 0;
  for (std::size_t k = 0; k < taps.size(); ++k) {
    const double y = *(latest - k);
    const double product = taps[k] * y;
    const double lost = exactProductError(taps[k], y, product);
    const double next = sum + product;
    const double part = next - sum;
    error += ((sum - (next - part)) + (product - part)) + lost;
    sum = next;
  }
  const double value = sum + error;
  return value == value ? value : sum;
}

}  // namespace vexel::kernels
#endif
