// Moving sums in eight lanes.
//
// Short windows are added up each on its own.  Longer ones are running sums where parts of the
// numbers can be added exactly (windows_of_parts.hpp).  Of others, eight blocks of the window's
// length lie side by side, a lane each: every window is the end of a block and the beginning of the
// next one, so nothing is ever subtracted (M. van Herk, 1992, A fast algorithm for local minimum
// and maximum filters, for sums).  The first half of this file is compiled once for each set of
// instructions, in a namespace each; the second half picks among them at run time.  All give the
// same bits.
#include "kernels/moving_sums.hpp"

#include <cmath>
#include <vector>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/vector/moving_sums.cpp"
#include "kernels/vector/each_target.hpp"
#include "kernels/vector/transpose.hpp"
#include "kernels/vector/windows_of_parts.hpp"

HWY_BEFORE_NAMESPACE();
namespace vexel::kernels::HWY_NAMESPACE {
namespace {

// 8 kCount windows, each on its own; several vectors at a time, since each waits for its last sum.
template <int kCount>
inline __attribute__((always_inline)) void ownWindows(const double* x, std::size_t window,
                                                      const WindowFactor& by, double* out) {
  Eight sum[kCount] = {};
  Eight error[kCount] = {};
  for (std::size_t k = 0; k < window; ++k) {
    for (int i = 0; i < kCount; ++i) {
      Eight v;
      __builtin_memcpy(&v, x + k + 8 * i, sizeof v);
      accumulate(sum[i], error[i], v);
    }
  }
  for (int i = 0; i < kCount; ++i) {
    scale(sum[i], error[i], by);
    __builtin_memcpy(out + 8 * i, &sum[i], sizeof(Eight));
  }
}

// Whether all n are finite.
bool finite(const double* x, std::size_t n) {
  double bad[8] = {};  // 0 or NaN
  for (std::size_t i = 0; i + 8 <= n; i += 8) {
    for (std::size_t l = 0; l < 8; ++l) {
      bad[l] += x[i + l] - x[i + l];
    }
  }
  for (std::size_t i = n - n % 8; i < n; ++i) {
    bad[i % 8] += x[i] - x[i];
  }
  for (std::size_t l = 1; l < 8; ++l) {
    bad[0] += bad[l];
  }
  return bad[0] == 0;
}

// Whether all results are finite.
bool shortWindows(const double* x, std::size_t results, std::size_t window, const WindowFactor& by,
                  double* out) {
  std::size_t j = 0;
  for (; j + 32 <= results; j += 32) {
    ownWindows<4>(x + j, window, by, out + j);
  }
  for (; j + 8 <= results; j += 8) {
    ownWindows<1>(x + j, window, by, out + j);
  }
  if (j < results) {
    double last[8 + 16] = {};
    double made[8];
    for (std::size_t i = 0; j + i < results + window - 1; ++i) {
      last[i] = x[j + i];
    }
    ownWindows<1>(last, window, by, made);
    for (std::size_t i = 0; j + i < results; ++i) {
      out[j + i] = made[i];
    }
  }
  return finite(out, results);
}

// Lane l holds the elements of block l.
inline void loadColumns(const double* x, std::size_t window, Eight* columns) {
  std::size_t j = 0;
  for (; j + 8 <= window; j += 8) {
    for (std::size_t l = 0; l < 8; ++l) {
      __builtin_memcpy(&columns[j + l], x + l * window + j, sizeof(Eight));
    }
    transpose(columns + j);
  }
  for (; j < window; ++j) {
    for (std::size_t l = 0; l < 8; ++l) {
      columns[j][l] = x[l * window + j];
    }
  }
}

// 8 window results from 9 window - 1 elements; room for 3 window vectors.
void blocks(const double* x, std::size_t window, const WindowFactor& by, Eight* room, double* out) {
  constexpr std::size_t often = 64;  // errors are gathered in the sum after so many steps
  Eight* const columns = room;
  Eight* const ends = room + window;
  Eight* const endErrors = room + 2 * window;
  loadColumns(x, window, columns);
  Eight sum = {};
  Eight error = {};
  for (std::size_t j = window; j-- > 0;) {
    accumulate(sum, error, columns[j]);
    ends[j] = sum;
    endErrors[j] = error;
    if (j % often == 0) {
      const Eight whole = sum + error;
      error -= whole - sum;
      sum = whole;
    }
  }
  sum = Eight{};
  error = Eight{};
  const double* const after = x + 8 * window;
  for (std::size_t j = 0; j < window; ++j) {
    Eight high = ends[j];
    Eight low = endErrors[j] + error;
    accumulate(high, low, sum);
    const Eight own = columns[j];
    scale(high, low, by);
    columns[j] = high;  // done with: now the result
    if (j + 1 < window) {
      Eight next = __builtin_shufflevector(own, own, 1, 2, 3, 4, 5, 6, 7, 7);
      next[7] = after[j];
      accumulate(sum, error, next);
      if (j % often == 0) {
        const Eight whole = sum + error;
        error -= whole - sum;
        sum = whole;
      }
    }
    if (j % 8 == 7) {
      Eight* const v = columns + j - 7;
      transpose(v);
      for (std::size_t l = 0; l < 8; ++l) {
        __builtin_memcpy(out + l * window + j - 7, &v[l], sizeof(Eight));
      }
    }
  }
  for (std::size_t j = window - window % 8; j < window; ++j) {
    for (std::size_t l = 0; l < 8; ++l) {
      out[l * window + j] = columns[j][l];
    }
  }
}

// Whether all results are finite.
bool allBlocks(const double* x, std::size_t groups, std::size_t window, const WindowFactor& by,
               double* memory, double* out) {
  constexpr std::size_t together = 8;
  bool good = true;
  auto* const room = reinterpret_cast<Eight*>(memory);
  for (std::size_t g = 0; g < groups; g += together) {
    const std::size_t some = groups - g < together ? groups - g : together;
    const std::size_t group = 8 * window;
    if (runningGroups(x + g * group, some, window, by, room, out + g * group)) {
      continue;
    }
    for (std::size_t k = g; k < g + some; ++k) {
      blocks(x + k * group, window, by, room, out + k * group);
    }
    good = good && finite(out + g * group, some * group);  // those of running sums are
  }
  return good;
}

// error += a b - p, p the rounded product.  As arrays, which the compiler makes vectors of: it has
// no fused multiply-add of its own.
inline __attribute__((always_inline)) void addProductError(const Eight& a, const Eight& b,
                                                           const Eight& p, Eight& error) {
  double as[8];
  double bs[8];
  double ps[8];
  __builtin_memcpy(as, &a, sizeof a);
  __builtin_memcpy(bs, &b, sizeof b);
  __builtin_memcpy(ps, &p, sizeof p);
  for (int l = 0; l < 8; ++l) {
    ps[l] = __builtin_fma(as[l], bs[l], -ps[l]);
  }
  Eight errors;
  __builtin_memcpy(&errors, ps, sizeof errors);
  error += errors;
}

// Sums of deviations and of their squares, with what they lose.
struct Deviations {
  Eight sum;
  Eight sumError;
  Eight squares;
  Eight squaresError;
};

inline __attribute__((always_inline)) void takeDeviation(Deviations& s, const Eight& d) {
  accumulate(s.sum, s.sumError, d);
  const Eight square = d * d;
  addProductError(d, d, square, s.squaresError);
  accumulate(s.squares, s.squaresError, square);
}

// The sums keep what fits, the errors the rest.
inline __attribute__((always_inline)) void normalize(Eight& sum, Eight& error) {
  const Eight whole = sum + error;
  error -= whole - sum;
  sum = whole;
}

// (squares - sum^2 / window) / (window - 1)
inline __attribute__((always_inline)) void varianceOf(Deviations& s, const VarianceFactors& by,
                                                      Eight* result) {
  normalize(s.sum, s.sumError);
  const Eight square = s.sum * s.sum;
  Eight squareError = 2.0 * s.sum * s.sumError;
  addProductError(s.sum, s.sum, square, squareError);
  const Eight high = {by.byWindow.high, by.byWindow.high, by.byWindow.high, by.byWindow.high,
                      by.byWindow.high, by.byWindow.high, by.byWindow.high, by.byWindow.high};
  const Eight share = square * high;
  Eight shareError = squareError * high + square * by.byWindow.low;
  addProductError(square, high, share, shareError);
  accumulate(s.squares, s.squaresError, -share);
  *result = (s.squares + (s.squaresError - shareError)) * by.byLess;
}

// As blocks(), for variances; room for 5 window vectors.  Adds to *doubt how many deviations are
// too small for their squares.
void varianceBlocks(const double* x, std::size_t window, const VarianceFactors& by, Eight* room,
                    double* out, int* doubt) {
  constexpr std::size_t often = 64;
  constexpr double smallest = 0x1p-480;
  Eight* const columns = room;
  auto* const ends = reinterpret_cast<Deviations*>(room + window);
  loadColumns(x, window, columns);
  const Eight centre = columns[window - 1];  // in every window of the block
  Deviations s = {};
  int small = 0;
  for (std::size_t j = window; j-- > 0;) {
    const Eight d = columns[j] - centre;
    takeDeviation(s, d);
    ends[j] = s;
    if (j % often == 0) {
      normalize(s.sum, s.sumError);
      normalize(s.squares, s.squaresError);
    }
    for (int l = 0; l < 8; ++l) {
      small += static_cast<int>((d[l] != 0) & (d[l] < smallest) & (d[l] > -smallest));
    }
  }
  s = Deviations{};
  const double* const after = x + 8 * window;
  for (std::size_t j = 0; j < window; ++j) {
    Deviations whole = ends[j];
    whole.sumError += s.sumError;
    whole.squaresError += s.squaresError;
    accumulate(whole.sum, whole.sumError, s.sum);
    accumulate(whole.squares, whole.squaresError, s.squares);
    const Eight own = columns[j];
    varianceOf(whole, by, &columns[j]);  // done with: now the result
    if (j + 1 < window) {
      Eight next = __builtin_shufflevector(own, own, 1, 2, 3, 4, 5, 6, 7, 7);
      next[7] = after[j];
      const Eight d = next - centre;
      takeDeviation(s, d);
      for (int l = 0; l < 8; ++l) {
        small += static_cast<int>((d[l] != 0) & (d[l] < smallest) & (d[l] > -smallest));
      }
      if (j % often == 0) {
        normalize(s.sum, s.sumError);
        normalize(s.squares, s.squaresError);
      }
    }
  }
  for (std::size_t j = 0; j < window; ++j) {
    for (std::size_t l = 0; l < 8; ++l) {
      out[l * window + j] = columns[j][l];
    }
  }
  *doubt += small;
}

void allVarianceBlocks(const double* x, std::size_t groups, std::size_t window,
                       const VarianceFactors& by, double* memory, double* out, int* doubt) {
  auto* const room = reinterpret_cast<Eight*>(memory);
  for (std::size_t g = 0; g < groups; ++g) {
    varianceBlocks(x + g * 8 * window, window, by, room, out + g * 8 * window, doubt);
  }
}

}  // namespace
}  // namespace vexel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vexel::kernels {

HWY_EXPORT(shortWindows);
HWY_EXPORT(allBlocks);
HWY_EXPORT(allVarianceBlocks);

namespace {

WindowFactor factorOf(std::size_t window, bool means) {
  const auto w = static_cast<double>(window);
  const double inverse = 1 / w;
  return {w, inverse, __builtin_fma(-inverse, w, 1.0) / w, !means};
}

// Memory whose vectors lie on their own boundaries.
class VectorRoom {
 public:
  explicit VectorRoom(std::size_t vectors) : memory_(8 * vectors + 8) {}
  double* get() {
    const std::size_t off = (64 - reinterpret_cast<std::size_t>(memory_.data()) % 64) % 64;
    return memory_.data() + off / sizeof(double);
  }

 private:
  std::vector<double> memory_;
};

}  // namespace

bool movingSums(const double* x, std::size_t results, std::size_t window, bool means, double* out) {
  constexpr std::size_t shortest = 16;  // windows for blocks
  const WindowFactor by = factorOf(window, means);
  if (window < shortest) {
    return HWY_DYNAMIC_DISPATCH(shortWindows)(x, results, window, by, out);
  }
  const std::size_t groups = results / movingSumsGroup(window);
  if (groups * movingSumsGroup(window) != results) {
    return false;
  }
  VectorRoom room(3 * window);
  return HWY_DYNAMIC_DISPATCH(allBlocks)(x, groups, window, by, room.get(), out);
}

bool movingVariances(const double* x, std::size_t results, std::size_t window, bool roots,
                     double* out) {
  constexpr double smallest = 0x1p-960;  // what is less may have lost digits to underflow
  const std::size_t groups = results / movingSumsGroup(window);
  if (window < 2 || groups * movingSumsGroup(window) != results) {
    return false;
  }
  const VarianceFactors by{factorOf(window, true), 1 / static_cast<double>(window - 1)};
  VectorRoom room(5 * window);
  int doubt = 0;
  HWY_DYNAMIC_DISPATCH(allVarianceBlocks)(x, groups, window, by, room.get(), out, &doubt);
  for (std::size_t j = 0; j < results; ++j) {
    const double v = out[j];
    doubt += static_cast<int>(!((v == 0) | ((v > smallest) & (v <= 0x1p1023))));
    out[j] = roots ? std::sqrt(v) : v;
  }
  return doubt == 0;
}

}  // namespace vexel::kernels
#endif
