#include "kernels/vector/columns.hpp"

#include <algorithm>
#include <bit>
#include <cmath>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/vector/columns.cpp"
#include "kernels/vector/each_target.hpp"
#include "kernels/vector/eight.hpp"

HWY_BEFORE_NAMESPACE();
namespace vexel::kernels::HWY_NAMESPACE {
namespace {

constexpr std::size_t kStep = static_cast<std::size_t>(kLanes);
constexpr std::size_t kSumLanes = 16;

// The first n <= kLanes numbers, and zeros.
HWY_INLINE Register readSome(const double* p, std::size_t n) {
#ifdef VEXEL_HAVE_HIGHWAY
  return hn::MaskedLoad(hn::FirstN(Tag(), n), Tag(), p);
#else
  return n > 0 ? *p : 0.0;
#endif
}

HWY_INLINE void takeInto(double* sum, double* error, Register x) {
  Register lost;
  const Register next = twoSum(read(sum), x, lost);
  write(next, sum);
  write(add(read(error), lost), error);
}

// One row of as many lanes, more or less: n numbers.
HWY_INLINE void addRow(const double* x, std::size_t n, double* sum, double* error) {
  std::size_t k = 0;
  for (; k + kStep <= n; k += kStep) {
    takeInto(sum + k, error + k, read(x + k));
  }
  if (k < n) {
    takeInto(sum + k, error + k, readSome(x + k, n - k));
  }
}

// Asks for a row of some lines that will be read soon.
HWY_INLINE void expectRow(const double* x, std::size_t width) {
  for (std::size_t k = 0; k < width; k += 8) {
    __builtin_prefetch(x + k);
  }
}

void addColumns(const double* x, std::ptrdiff_t stride, std::size_t n, std::size_t width,
                std::size_t pitch, double* sums) {
  double* const errors = sums + kSumLanes * pitch;
  if (pitch == width && stride == static_cast<std::ptrdiff_t>(width)) {
    // Sixteen rows are one.
    const std::size_t all = n * width;
    const std::size_t together = kSumLanes * width;
    for (std::size_t i = 0; i < all; i += together) {
      addRow(x + i, std::min(together, all - i), sums, errors);
    }
    return;
  }
  constexpr std::ptrdiff_t ahead = 4;
  for (std::size_t i = 0; i < n; ++i, x += stride) {
    const std::size_t row = i % kSumLanes * pitch;
    if (i + ahead < n) {
      expectRow(x + ahead * stride, width);
    }
    addRow(x, width, sums + row, errors + row);
  }
}

// The least and the largest exponent field of floats; zeros have none.
struct FieldRange {
  std::uint32_t least = 255;
  std::uint32_t largest = 0;
};

// Of the bits of |x|, less 1 so that zero has the most.
HWY_INLINE void widen(FieldRange& range, std::uint32_t leastLessOne, std::uint32_t largest) {
  range.least =
      std::min(range.least, (leastLessOne < 0x7F800000U ? leastLessOne + 1 : 0x7F800000U) >> 23);
  range.largest = std::max(range.largest, largest >> 23);
}

#ifdef VEXEL_HAVE_HIGHWAY

HWY_INLINE void addFloats(const float* x, std::ptrdiff_t stride, std::size_t n, std::size_t width,
                          double* sums, FieldRange& range) {
  const hn::ScalableTag<std::uint32_t> d;
  const hn::Repartition<float, decltype(d)> floats;
  const hn::Rebind<float, Tag> some;
  constexpr std::size_t lanes = hn::MaxLanes(d);
  const auto allButSign = hn::Set(d, 0x7FFFFFFFU);
  const auto one = hn::Set(d, 1U);
  auto least = hn::Set(d, 0xFFFFFFFFU);
  auto largest = hn::Zero(d);
  const auto gapless = static_cast<std::ptrdiff_t>(width);
  const std::ptrdiff_t ahead = stride == gapless ? 16 * stride : gapless;
  std::size_t k = 0;
  for (; k + lanes <= width; k += lanes) {
    Register sum[lanes / kStep];
    for (std::size_t part = 0; part < lanes / kStep; ++part) {
      sum[part] = read(sums + k + part * kStep);
    }
    const float* at = x + k;
    for (std::size_t i = 0; i < n; ++i, at += stride) {
      __builtin_prefetch(at + ahead);  // what comes next most often
      const auto size = hn::And(hn::BitCast(d, hn::LoadU(floats, at)), allButSign);
      least = hn::Min(least, hn::Sub(size, one));
      largest = hn::Max(largest, size);
      for (std::size_t part = 0; part < lanes / kStep; ++part) {
        sum[part] = add(sum[part], hn::PromoteTo(Tag(), hn::LoadU(some, at + part * kStep)));
      }
    }
    for (std::size_t part = 0; part < lanes / kStep; ++part) {
      write(sum[part], sums + k + part * kStep);
    }
  }
  for (; k < width; ++k) {
    for (std::size_t i = 0; i < n; ++i) {
      const float v = x[static_cast<std::ptrdiff_t>(i) * stride + static_cast<std::ptrdiff_t>(k)];
      const std::uint32_t size = std::bit_cast<std::uint32_t>(v) & 0x7FFFFFFFU;
      widen(range, size - 1, size);
      sums[k] += static_cast<double>(v);
    }
  }
  widen(range, hn::GetLane(hn::MinOfLanes(d, least)), hn::GetLane(hn::MaxOfLanes(d, largest)));
}

#else

void addFloats(const float* x, std::ptrdiff_t stride, std::size_t n, std::size_t width,
               double* sums, FieldRange& range) {
  for (std::size_t i = 0; i < n; ++i, x += stride) {
    for (std::size_t k = 0; k < width; ++k) {
      const std::uint32_t size = std::bit_cast<std::uint32_t>(x[k]) & 0x7FFFFFFFU;
      widen(range, size - 1, size);
      sums[k] += static_cast<double>(x[k]);
    }
  }
}

#endif

bool foldFloats(const float* x, std::ptrdiff_t stride, std::size_t n, std::size_t width,
                double* sums) {
  constexpr std::size_t together = 8;
  FieldRange range;
  std::fill_n(sums, width, 0.0);
  for (std::size_t i = 0; i < n; i += together) {
    addFloats(x + static_cast<std::ptrdiff_t>(i) * stride, stride, std::min(together, n - i), width,
              sums, range);
  }
  // All are multiples of 2^(least - 150), sums below 2^(largest + 1 - 127 + 6).
  return range.largest < 255 && range.largest <= range.least + 23;
}

// What is known of some results: first + left, exactly but for what `error` bounds.
struct Rounded {
  double value[columnsTogether];
  double left[columnsTogether];
  double error[columnsTogether];
};

// first + second, and what the rounding of that leaves.
HWY_INLINE void writeRounded(Register first, Register second, Register error, std::size_t at,
                             Rounded& to) {
  const Register value = add(first, second);
  write(value, to.value + at);
  write(add(sub(first, value), second), to.left + at);
  write(error, to.error + at);
}

void decide(const Rounded& results, std::size_t n, double* out, std::uint8_t* sure) {
  for (std::size_t j = 0; j < n; ++j) {
    const double value = results.value[j];
    const double left = results.left[j];
    const double error = results.error[j];
    out[j] = value;
    sure[j] = static_cast<std::uint8_t>(value + (left + error) == value &&
                                        value + (left - error) == value);
  }
}

// (x + low) / y in two.
HWY_INLINE Register quotient(Register x, Register low, Register y, Register& second) {
  const Register first = div(x, y);
  const Register product = mul(first, y);
  second = div(add(sub(sub(x, product), productError(first, y, product)), low), y);
  return first;
}

void meansOfLanes(const double* sums, std::size_t width, std::ptrdiff_t pitch, std::size_t n,
                  double* mean, std::uint8_t* sure) {
  Rounded results;
  double sizes[columnsTogether];
  const double* const errors = sums + static_cast<std::ptrdiff_t>(kSumLanes) * pitch;
  const auto rows = static_cast<std::ptrdiff_t>(std::min(n, kSumLanes));
  const Register count = broadcast(static_cast<double>(n));
  for (std::size_t k = 0; k < width; k += kStep) {
    const std::size_t some = std::min(kStep, width - k);
    Register sum = broadcast(0.0);
    Register error = sum;
    Register size = sum;
    const auto take = [&](const double* from) HWY_ATTR {
      const Register x = readSome(from + k, some);
      Register lost;
      sum = twoSum(sum, x, lost);
      error = add(error, lost);
      size = add(size, absolute(x));
    };
    for (std::ptrdiff_t row = 0; row < rows; ++row) {
      take(sums + row * pitch);
    }
    for (std::ptrdiff_t row = 0; row < rows && n > kSumLanes; ++row) {
      take(errors + row * pitch);
    }
    Register second;
    const Register first = quotient(sum, error, count, second);
    const Register doubt = mul(broadcast(0x1p-96), div(size, count));
    writeRounded(first, second, doubt, k, results);
    write(size, sizes + k);
  }
  decide(results, width, mean, sure);
  for (std::size_t j = 0; j < width; ++j) {
    const bool inRange = std::fabs(mean[j]) > 0x1p-900 && sizes[j] < 0x1p1000;
    sure[j] = static_cast<std::uint8_t>(sizes[j] == 0.0 || (sure[j] != 0 && inRange));
  }
}

struct ColumnSquares {
  Register first;
  Register firstError;
  Register second;
  Register secondError;

  HWY_INLINE ColumnSquares(const double* from, std::size_t pitch)
      : first(read(from)),
        firstError(read(from + pitch)),
        second(read(from + 2 * pitch)),
        secondError(read(from + 3 * pitch)) {}
  HWY_INLINE void store(double* to, std::size_t pitch) const {
    write(first, to);
    write(firstError, to + pitch);
    write(second, to + 2 * pitch);
    write(secondError, to + 3 * pitch);
  }
  HWY_INLINE void take(Register x, Register center) {
    // d + low = x - center exactly.
    const Register d = sub(x, center);
    const Register fromC = sub(x, d);
    const Register low = add(sub(x, add(d, fromC)), sub(fromC, center));
    const Register square = mul(d, d);
    const Register cross = mul(d, low);
    Register lost;
    first = twoSum(first, d, lost);
    firstError = add(firstError, add(lost, low));
    second = twoSum(second, square, lost);
    secondError = add(secondError, add(lost, add(productError(d, d, square), add(cross, cross))));
  }
};

// Eight rows at a time, while their sums are in registers.
void addSquaresOfColumns(const double* x, std::ptrdiff_t stride, std::size_t n, std::size_t width,
                         std::size_t pitch, const double* center, double* sums) {
  constexpr std::size_t together = 8;
  for (std::size_t i = 0; i < n; i += together, x += std::ptrdiff_t{together} * stride) {
    const std::size_t rows = std::min(together, n - i);
    const bool more = i + 2 * together <= n;
    for (std::size_t k = 0; k < width; k += kStep) {
      const std::size_t some = std::min(kStep, width - k);
      ColumnSquares squares(sums + k, pitch);
      const Register c = readSome(center + k, some);
      if (k % 8 == 0 && more) {
        for (std::size_t row = 0; row < together; ++row) {
          __builtin_prefetch(x + static_cast<std::ptrdiff_t>(together + row) * stride + k);
        }
      }
      if (some == kStep && rows == together) {
        for (std::size_t row = 0; row < together; ++row) {
          squares.take(read(x + static_cast<std::ptrdiff_t>(row) * stride + k), c);
        }
      } else {
        for (std::size_t row = 0; row < rows; ++row) {
          squares.take(readSome(x + static_cast<std::ptrdiff_t>(row) * stride + k, some), c);
        }
      }
      squares.store(sums + k, pitch);
    }
  }
}

void variancesOfSums(const double* sums, std::size_t width, std::size_t pitch, double n,
                     double divisor, bool root, double* out, std::uint8_t* sure) {
  Rounded results;
  double sizes[columnsTogether];
  const Register count = broadcast(n);
  const Register by = broadcast(divisor);
  for (std::size_t k = 0; k < width; k += kStep) {
    const ColumnSquares s(sums + k, pitch);
    Register firstLow;
    Register secondLow;
    const Register first = twoSum(s.first, s.firstError, firstLow);
    const Register second = twoSum(s.second, s.secondError, secondLow);
    // The square of the first sum, divided by n.
    const Register square = mul(first, first);
    const Register cross = mul(first, firstLow);
    const Register squareLow = add(productError(first, first, square), add(cross, cross));
    Register shiftLow;
    const Register shift = quotient(square, squareLow, count, shiftLow);
    Register lost;
    const Register rest = twoSum(second, sub(broadcast(0.0), shift), lost);
    Register left;
    Register value = quotient(rest, add(lost, sub(secondLow, shiftLow)), by, left);
    Register doubt = mul(broadcast(0x1p-76), div(second, by));
    write(doubt, sizes + k);
    if (root) {
      const Register whole = add(value, left);
      left = add(sub(value, whole), left);
      value = squareRoot(whole);
      const Register product = mul(value, value);
      const Register twice = add(value, value);
      left = div(add(sub(sub(whole, product), productError(value, value, product)), left), twice);
      doubt = add(div(doubt, value), mul(broadcast(0x1p-96), value));
    }
    writeRounded(value, left, doubt, k, results);
  }
  decide(results, width, out, sure);
  for (std::size_t j = 0; j < width; ++j) {
    sure[j] &= static_cast<std::uint8_t>(out[j] > 0.0 && sizes[j] > 0x1p-800 && sizes[j] < 0x1p800);
  }
}

}  // namespace
}  // namespace vexel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace vexel::kernels {

HWY_EXPORT(addColumns);
HWY_EXPORT(foldFloats);
HWY_EXPORT(meansOfLanes);
HWY_EXPORT(addSquaresOfColumns);
HWY_EXPORT(variancesOfSums);

void addColumns(const double* x, std::ptrdiff_t stride, std::size_t n, std::size_t width,
                std::size_t pitch, double* sums) {
  HWY_DYNAMIC_DISPATCH(addColumns)(x, stride, n, width, pitch, sums);
}
bool foldFloats(const float* x, std::ptrdiff_t stride, std::size_t n, std::size_t width,
                double* sums) {
  return HWY_DYNAMIC_DISPATCH(foldFloats)(x, stride, n, width, sums);
}
void meansOfLanes(const double* sums, std::size_t width, std::ptrdiff_t pitch, std::size_t n,
                  double* mean, std::uint8_t* sure) {
  HWY_DYNAMIC_DISPATCH(meansOfLanes)(sums, width, pitch, n, mean, sure);
}
void addSquaresOfColumns(const double* x, std::ptrdiff_t stride, std::size_t n, std::size_t width,
                         std::size_t pitch, const double* center, double* sums) {
  HWY_DYNAMIC_DISPATCH(addSquaresOfColumns)(x, stride, n, width, pitch, center, sums);
}
void variancesOfSums(const double* sums, std::size_t width, std::size_t pitch, double n,
                     double divisor, bool root, double* out, std::uint8_t* sure) {
  HWY_DYNAMIC_DISPATCH(variancesOfSums)(sums, width, pitch, n, divisor, root, out, sure);
}

}  // namespace vexel::kernels

#endif
