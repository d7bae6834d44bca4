// A chunk of running sums in eight lanes.
//
// The first half of this file is compiled once for each set of instructions, in a namespace each;
// the second half picks among them at run time.  All give the same bits.
#include "kernels/running_sum.hpp"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/vector/running_sum.cpp"
#include "kernels/vector/each_target.hpp"
#include "kernels/vector/transpose.hpp"

HWY_BEFORE_NAMESPACE();
namespace vexel::kernels::HWY_NAMESPACE {
namespace {

constexpr int kLanes = 8;
constexpr int kSteps = 128;  // elements of a lane
static_assert(kLanes * kSteps == RunningSum::chunk);

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
