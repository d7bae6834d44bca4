// Moving sums from running sums of numbers cut in two, at places so high that the sums of either
// part are exact: what is added can be taken away again.  Eight stretches side by side.
//
// Included after Highway's headers, once for each set of instructions; hence the guard.
#if defined(VEXEL_KERNELS_VECTOR_WINDOWS) == defined(HWY_TARGET_TOGGLE)
#ifdef VEXEL_KERNELS_VECTOR_WINDOWS
#undef VEXEL_KERNELS_VECTOR_WINDOWS
#else
#define VEXEL_KERNELS_VECTOR_WINDOWS
#endif

#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "kernels/moving_sums.hpp"

HWY_BEFORE_NAMESPACE();
namespace vexel::kernels::HWY_NAMESPACE {
namespace {

// (high + low) divided by the window if it is not to be the sum: the quotient by the reciprocal,
// then what it leaves, exactly, divided too; off by 2^-100 before the one rounding.
inline __attribute__((always_inline)) void scale(Eight& high, const Eight& low,
                                                 const WindowFactor& by) {
  const Eight sum = high + low;
  if (by.one) {
    high = sum;
    return;
  }
  const Eight rest = low - (sum - high);
  const Eight quotient = sum * by.high;
  // As arrays, which the compiler makes vectors of: it has no fused multiply-add of its own.
  double left[8];
  double quotients[8];
  __builtin_memcpy(left, &sum, sizeof sum);
  __builtin_memcpy(quotients, &quotient, sizeof quotient);
  for (int l = 0; l < 8; ++l) {
    left[l] = __builtin_fma(-quotients[l], by.window, left[l]);
  }
  Eight remainder;
  __builtin_memcpy(&remainder, left, sizeof remainder);
  high = quotient + (remainder + rest) * by.high;
}

using EightBits = std::int64_t __attribute__((vector_size(64)));

// Numbers below 2^exponent cut in two, at places so high that sums of `window` upper parts are
// exact, and so are those of the lower ones.  What is below both is lost.
struct Cut {
  double upper;
  double lower;
};

struct Parts {
  Eight upper;
  Eight lower;
};

inline __attribute__((always_inline)) void cutInTwo(const Eight& x, const Cut& by, Parts& parts,
                                                    EightBits& lost) {
  parts.upper = (x + by.upper) - by.upper;
  const Eight rest = x - parts.upper;
  parts.lower = (rest + by.lower) - by.lower;
  lost |= reinterpret_cast<EightBits>(rest - parts.lower);
}

// Columns j to j + 7 of lanes that lie `length` apart.
inline __attribute__((always_inline)) void loadTile(const double* x, std::size_t length,
                                                    Eight* tile) {
  for (std::size_t l = 0; l < 8; ++l) {
    __builtin_memcpy(&tile[l], x + l * length, sizeof(Eight));
  }
  transpose(tile);
}

// 8 length results of running sums, a lane each for `length` of them; room for 2 window vectors.
// Whether something was lost.
bool runningSums(const double* x, std::size_t length, std::size_t window, const Cut& cut,
                 const WindowFactor& by, Eight* room, double* out) {
  auto* const ring = reinterpret_cast<Parts*>(room);
  Parts sum = {};
  EightBits lost = {};
  for (std::size_t j = 0; j + 1 < window; ++j) {
    Eight own;
    for (std::size_t l = 0; l < 8; ++l) {
      own[l] = x[l * length + j];
    }
    cutInTwo(own, cut, ring[j], lost);
    sum.upper += ring[j].upper;
    sum.lower += ring[j].lower;
  }
  ring[window - 1] = Parts{};  // leaves with the first result
  std::size_t next = window - 1;
  const double* const from = x + window - 1;
  const auto step = [&](Eight & v) __attribute__((always_inline)) {
    Parts parts;
    cutInTwo(v, cut, parts, lost);
    Parts& first = ring[next];  // leaves the window before this result
    sum.upper += parts.upper - first.upper;
    sum.lower += parts.lower - first.lower;
    first = parts;
    next = next + 1 == window ? 0 : next + 1;
    v = sum.upper;
    scale(v, sum.lower, by);
  };
  std::size_t j = 0;
  for (; j + 8 <= length; j += 8) {
    Eight tile[8];
    loadTile(from + j, length, tile);
    for (std::size_t l = 0; l < 8; ++l) {  // what comes after these results
      __builtin_prefetch(from + 8 * (length + j + l));
    }
    for (auto& v : tile) {
      step(v);
    }
    transpose(tile);
    for (std::size_t l = 0; l < 8; ++l) {
      __builtin_memcpy(out + l * length + j, &tile[l], sizeof(Eight));
    }
  }
  for (; j < length; ++j) {
    Eight v;
    for (std::size_t l = 0; l < 8; ++l) {
      v[l] = from[l * length + j];
    }
    step(v);
    for (std::size_t l = 0; l < 8; ++l) {
      out[l * length + j] = v[l];
    }
  }
  std::int64_t any = 0;
  for (std::size_t l = 0; l < 8; ++l) {
    any |= lost[l] << 1;  // zeros have either sign
  }
  return any != 0;
}

// The largest size, infinite or NaN where something is: sizes are in the order of their bits.
double largestSize(const double* x, std::size_t n) {
  constexpr std::int64_t withoutSign = std::numeric_limits<std::int64_t>::max();
  EightBits most[4] = {};
  std::size_t i = 0;
  for (; i + 32 <= n; i += 32) {
    for (std::size_t k = 0; k < 4; ++k) {
      EightBits bits;
      __builtin_memcpy(&bits, x + i + 8 * k, sizeof bits);
      bits &= withoutSign;
      most[k] = bits > most[k] ? bits : most[k];
    }
  }
  std::int64_t largest = 0;
  for (; i < n; ++i) {
    const std::int64_t bits = std::bit_cast<std::int64_t>(x[i]) & withoutSign;
    largest = bits > largest ? bits : largest;
  }
  for (const EightBits& bits : most) {
    for (std::size_t l = 0; l < 8; ++l) {
      largest = bits[l] > largest ? bits[l] : largest;
    }
  }
  return std::bit_cast<double>(largest);
}

// Results of as many groups as fit running sums, from the first on: true, or false where they are
// not for this: they have to be finite, and far above what gets lost.
bool runningGroups(const double* x, std::size_t groups, std::size_t window, const WindowFactor& by,
                   Eight* room, double* out) {
  constexpr std::size_t most = 4096;
  const std::size_t length = groups * window;
  const double largest = largestSize(x, 8 * length + window - 1);
  if (window > most || !(largest > 0x1p-700 && largest < 0x1p900)) {
    return false;
  }
  const int exponent = __builtin_ilogb(largest) + 1;
  const int bits = __builtin_ilogb(static_cast<double>(window)) + 2;
  const Cut cut = {__builtin_ldexp(1.5, exponent + bits),
                   __builtin_ldexp(1.5, exponent + 2 * bits - 53)};
  if (!runningSums(x, length, window, cut, by, room, out)) {
    return true;
  }
  // At most 2^(exponent + 3 bits - 106) of a sum is lost.
  const double least = __builtin_ldexp(by.one ? 1.0 : by.high, exponent + 3 * bits - 50);
  int small = 0;
  for (std::size_t i = 0; i < 8 * length; ++i) {
    small += static_cast<int>(!(__builtin_fabs(out[i]) >= least));
  }
  return small == 0;
}

}  // namespace
}  // namespace vexel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
