// A chunk of running sums in eight lanes.
//
// The first half of this file is compiled once for each set of instructions, in a namespace each;
// the second half picks among them at run time.  All give the same bits.
#include "kernels/running_sum.hpp"

#ifdef VEXEL_HAVE_HIGHWAY
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/vector/running_sum.cpp"
#include <hwy/foreach_target.h>
// After it, as it wants:
#include <hwy/highway.h>
#else
#define HWY_BEFORE_NAMESPACE() static_assert(true)
#define HWY_AFTER_NAMESPACE() static_assert(true)
#define HWY_NAMESPACE plain
#define HWY_ONCE 1
#define HWY_EXPORT(f) static_assert(true)
#define HWY_DYNAMIC_DISPATCH(f) plain::f
#endif

HWY_BEFORE_NAMESPACE();
namespace vexel::kernels::HWY_NAMESPACE {
namespace {

// Eight doubles, split by the compiler where the machine's vectors are narrower.
using Eight = double __attribute__((vector_size(64)));

constexpr int kLanes = 8;
constexpr int kSteps = 128;  // elements of a lane
static_assert(kLanes * kSteps == RunningSum::chunk);

// Rows become columns.
inline __attribute__((always_inline)) void transpose(Eight* v) {
  Eight pairs[8];
  for (int i = 0; i < 8; i += 2) {
    pairs[i] = __builtin_shufflevector(v[i], v[i + 1], 0, 8, 2, 10, 4, 12, 6, 14);
    pairs[i + 1] = __builtin_shufflevector(v[i], v[i + 1], 1, 9, 3, 11, 5, 13, 7, 15);
  }
  Eight fours[8];
  for (int i = 0; i < 8; i += 4) {
    for (int j = 0; j < 2; ++j) {
      const Eight a = pairs[i + j];
      const Eight b = pairs[i + j + 2];
      fours[i + j] = __builtin_shufflevector(a, b, 0, 1, 8, 9, 4, 5, 12, 13);
      fours[i + j + 2] = __builtin_shufflevector(a, b, 2, 3, 10, 11, 6, 7, 14, 15);
    }
  }
  for (int j = 0; j < 4; ++j) {
    const Eight a = fours[j];
    const Eight b = fours[j + 4];
    v[j] = __builtin_shufflevector(a, b, 0, 1, 2, 3, 8, 9, 10, 11);
    v[j + 4] = __builtin_shufflevector(a, b, 4, 5, 6, 7, 12, 13, 14, 15);
  }
}

// sum += x, and what that loses to error.
inline __attribute__((always_inline)) void accumulate(Eight& sum, Eight& error, const Eight& x) {
  const Eight next = sum + x;
  const Eight part = next - sum;
  error += (sum - (next - part)) + (x - part);
  sum = next;
}

// high + low before each lane's part: from the sums of the lanes.  Leaves in *high and *low what
// follows the chunk.
inline void lanesStart(const Eight& sums, const Eight& errors, Eight& highs, Eight& lows,
                       double* high, double* low) {
  for (int l = 0; l < kLanes; ++l) {
    highs[l] = *high;
    lows[l] = *low;
    const double sum = *high + sums[l];
    const double part = sum - *high;
    const double rest = (*low + errors[l]) + ((*high - (sum - part)) + (sums[l] - part));
    *high = sum + rest;
    *low = rest - (*high - sum);
  }
}

// False, with out in no particular state, where something is not finite.
bool runChunk(const double* x, double* out, double* high, double* low) {
  Eight columns[kSteps];
  Eight sums = {};
  Eight errors = {};
  for (int k = 0; k < kSteps; k += 8) {
    Eight* const v = columns + k;
    for (int l = 0; l < kLanes; ++l) {
      __builtin_memcpy(&v[l], x + l * kSteps + k, sizeof(Eight));
      // The next chunk in order: its lanes are too many streams for the machine to foresee.
      __builtin_prefetch(x + kLanes * kSteps + (k + l) * kLanes);
      __builtin_prefetch(out + kLanes * kSteps + (k + l) * kLanes, 1);
    }
    transpose(v);
    for (int j = 0; j < 8; ++j) {
      accumulate(sums, errors, v[j]);
    }
  }
  Eight highs = {};
  Eight lows = {};
  lanesStart(sums, errors, highs, lows, high, low);
  for (int k = 0; k < kSteps; k += 8) {
    Eight* const v = columns + k;
    for (int j = 0; j < 8; ++j) {
      accumulate(highs, lows, v[j]);
      v[j] = highs + lows;
    }
    transpose(v);
    for (int l = 0; l < kLanes; ++l) {
      __builtin_memcpy(out + l * kSteps + k, &v[l], sizeof(Eight));
    }
  }
  const Eight bad = (highs - highs) + (lows - lows);  // 0 or NaN
  double all = *high - *high;
  for (int l = 0; l < kLanes; ++l) {
    all += bad[l];
  }
  return all == 0;
}

}  // namespace
}  // namespace vexel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vexel::kernels {

HWY_EXPORT(runChunk);

void RunningSum::addChunk(const double* x, double* out) {
  if (!scaled_ && special_ == 0) {
    double high = high_;
    double low = low_;
    if (HWY_DYNAMIC_DISPATCH(runChunk)(x, out, &high, &low)) {
      high_ = high;
      low_ = low;
      return;
    }
  }
  for (std::size_t i = 0; i < chunk; ++i) {
    add(x[i]);
    out[i] = value();
  }
}

}  // namespace vexel::kernels
#endif
