// Sums of products, many results at a time.
//
// T. Ogita, S. M. Rump and S. Oishi, Accurate sum and dot product (2005): the errors of products
// and sums are added up beside them.  In blocks, taps and elements are cut in two first, in columns
// of eight stretches side by side, at places so high that the products of upper parts and their
// sums are exact (K. Ozaki, T. Ogita, S. Oishi and S. M. Rump, Error-free transformations of matrix
// multiplication, 2012); the rest is so small that it may be rounded.  What comes out far below the
// largest sum possible is added up the first way after all.  The first half of this file is
// compiled once for each set of instructions, in a namespace each; the second half picks among them
// at run time.  All give the same bits: a fused multiply-add serves only where its result is exact.
#include "kernels/filter.hpp"

#include <algorithm>
#include <cmath>
#include <vector>

#include "kernels/exact_product.hpp"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/vector/filter.cpp"
#include "kernels/vector/each_target.hpp"
#include "kernels/vector/eight.hpp"
#include "kernels/vector/transpose.hpp"

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

// Taps and their parts; `fine` where some lower part is not 0.
struct CutTaps {
  const CutTap* cut;
  const double* whole;
  std::size_t count;
  bool fine;
};

constexpr std::size_t kSteps = 128;         // results of a lane
constexpr std::size_t kBlock = 8 * kSteps;  // results that share a cut

// Columns of a block's parts: column j holds element j of every lane's stretch.
constexpr std::size_t columnRoom(std::size_t taps) { return 8 * (kSteps + taps - 1); }

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

// Four columns of results from the columns of parts of their own elements.  kFineSeries and
// kFineTaps tell whether there are lower parts other than 0.
template <bool kFineSeries, bool kFineTaps>
HWY_INLINE void cutResults(const double* upper, const double* lower, const CutTaps& taps,
                           Eight* out) {
  for (int p = 0; p < kParts; ++p) {
    Register sum[4];
    Register rest[4];
    for (int j = 0; j < 4; ++j) {
      sum[j] = rest[j] = broadcast(0.0);
    }
    const double* u = upper + p * kLanes;
    const double* v = lower + p * kLanes;
    for (std::size_t k = 0; k < taps.count; ++k, u -= 8, v -= 8) {
      const Register tap = broadcast(taps.cut[k].whole);
      const Register tapUpper = broadcast(taps.cut[k].upper);
      const Register tapLower = broadcast(taps.cut[k].lower);
      for (int j = 0; j < 4; ++j) {
        const Register x = read(u + 8 * j);
        sum[j] = addExactly(tapUpper, x, sum[j]);
        if (kFineSeries && kFineTaps) {
          rest[j] = add(rest[j], add(mul(tap, read(v + 8 * j)), mul(tapLower, x)));
        } else if (kFineSeries) {
          rest[j] = add(rest[j], mul(tap, read(v + 8 * j)));
        } else if (kFineTaps) {
          rest[j] = add(rest[j], mul(tapLower, x));
        }
      }
    }
    for (int j = 0; j < 4; ++j) {
      double made[kLanes];
      write(add(sum[j], rest[j]), made);
      __builtin_memcpy(reinterpret_cast<double*>(out + j) + p * kLanes, made, sizeof made);
    }
  }
}

template <bool kFineSeries, bool kFineTaps>
HWY_INLINE void cutBlock(const double* upper, const double* lower, const CutTaps& taps,
                         double* out) {
  for (std::size_t j = 0; j < kSteps; j += 8) {
    Eight tile[8];
    cutResults<kFineSeries, kFineTaps>(upper + 8 * j, lower + 8 * j, taps, tile);
    cutResults<kFineSeries, kFineTaps>(upper + 8 * (j + 4), lower + 8 * (j + 4), taps, tile + 4);
    transpose(tile);
    for (std::size_t l = 0; l < 8; ++l) {
      __builtin_memcpy(out + l * kSteps + j, &tile[l], sizeof(Eight));
    }
  }
}

using EightBits = std::int64_t __attribute__((vector_size(64)));

// The parts of eight stretches that begin kSteps apart, in columns.  The upper parts are multiples
// of what the last bit of `shift` counts.  Whether some lower part is not 0.
bool cutColumns(const double* x, std::size_t columns, double shift, double* upper, double* lower) {
  EightBits some = {};
  const auto cut = [&](const Eight& v, std::size_t j) __attribute__((always_inline)) {
    const Eight high = (v + shift) - shift;
    const Eight low = v - high;
    __builtin_memcpy(upper + 8 * j, &high, sizeof high);
    __builtin_memcpy(lower + 8 * j, &low, sizeof low);
    some |= reinterpret_cast<EightBits>(low);
  };
  std::size_t j = 0;
  for (; j + 8 <= columns; j += 8) {
    Eight tile[8];
    for (std::size_t l = 0; l < 8; ++l) {
      __builtin_memcpy(&tile[l], x + l * kSteps + j, sizeof(Eight));
    }
    transpose(tile);
    for (std::size_t i = 0; i < 8; ++i) {
      cut(tile[i], j + i);
    }
  }
  for (; j < columns; ++j) {
    Eight v;
    for (std::size_t l = 0; l < 8; ++l) {
      v[l] = x[l * kSteps + j];
    }
    cut(v, j);
  }
  std::int64_t any = 0;
  for (std::size_t l = 0; l < 8; ++l) {
    any |= some[l] << 1;  // zeros have either sign
  }
  return any != 0;
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

// kBlock results, of which n are wanted.  Those below `least` are made again from x.
void filterCut(const double* x, std::size_t n, const CutTaps& taps, double shift, double least,
               double* room, double* out) {
  const std::size_t reach = taps.count - 1;
  double* const upper = room;
  double* const lower = room + columnRoom(taps.count);
  const bool fine = cutColumns(x - reach, kSteps + reach, shift, upper, lower);
  const double* const ownUpper = upper + 8 * reach;
  const double* const ownLower = lower + 8 * reach;
  if (fine && taps.fine) {
    cutBlock<true, true>(ownUpper, ownLower, taps, out);
  } else if (fine) {
    cutBlock<true, false>(ownUpper, ownLower, taps, out);
  } else if (taps.fine) {
    cutBlock<false, true>(ownUpper, ownLower, taps, out);
  } else {
    cutBlock<false, false>(ownUpper, ownLower, taps, out);
    return;  // exact
  }
  for (std::size_t i = 0; i < n; i += 32) {
    const std::size_t some = n - i < 32 ? n - i : 32;
    std::size_t sure = 0;
    for (std::size_t l = 0; l < some; ++l) {
      sure += static_cast<std::size_t>(__builtin_fabs(out[i + l]) >= least);
    }
    for (std::size_t l = 0; l < some && sure < some; ++l) {
      if (!(__builtin_fabs(out[i + l]) >= least)) {
        results<1>(x + i + l, taps.whole, taps.count, out + i + l);
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
HWY_EXPORT(largestOf);

namespace {

constexpr std::size_t kFewestTaps = 4;  // fewer take less time without
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
      fine_ |= tap != upper;
    }
    room_.resize(2 * columnRoom(taps.size()) + 8);
  }

  // At most kBlock results.  A short block is lengthened where that costs less than its own way.
  void block(const double* x, std::size_t n, double* out) {
    const std::size_t reach = taps_.size() - 1;
    const bool cuttable = !cut_.empty() && n > kBlock / 4;
    const double most = cuttable ? HWY_DYNAMIC_DISPATCH(largestOf)(x - reach, n + reach) : 0.0;
    if (!usable(most)) {
      HWY_DYNAMIC_DISPATCH(filterAll)(x, n, taps_.data(), taps_.size(), out);
    } else if (n == kBlock) {
      cutBlock(x, n, most, out);
    } else {
      std::vector<double> longer(reach + kBlock);
      std::copy(x - reach, x + n, longer.begin());
      std::vector<double> made(kBlock);
      cutBlock(longer.data() + reach, n, most, made.data());
      std::copy_n(made.begin(), n, out);
    }
  }

 private:
  // Products of its size, and of parts of its last bits, are in the range of doubles.
  static bool usable(double largest) { return largest > 0x1p-300 && largest < 0x1p300; }

  void cutBlock(const double* x, std::size_t n, double most, double* out) {
    // The rest's rounding errors are below count^2 2^(-52 - bits) of largest products, 2^-74.
    const double least = most * largest_ * static_cast<double>(taps_.size()) * 0x1p-18;
    const CutTaps taps = {cut_.data(), taps_.data(), taps_.size(), fine_};
    const std::size_t off = (64 - reinterpret_cast<std::size_t>(room_.data()) % 64) % 64;
    HWY_DYNAMIC_DISPATCH(filterCut)
    (x, n, taps, shiftFor(most, bits_), least, room_.data() + off / sizeof(double), out);
  }

  std::span<const double> taps_;
  std::vector<CutTap> cut_;
  std::vector<double> room_;
  double largest_ = 0.0;
  int bits_ = 0;
  bool fine_ = false;
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
