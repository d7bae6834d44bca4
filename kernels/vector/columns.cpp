#include "kernels/vector/columns.hpp"

#include <cmath>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/vector/columns.cpp"
#include "kernels/vector/each_target.hpp"
#include "kernels/vector/eight.hpp"

HWY_BEFORE_NAMESPACE();
namespace vexel::kernels::HWY_NAMESPACE {
namespace {

constexpr int kColumnRows = 16;  // lanes of a column
constexpr int kColumnCount = 8;

// (sum + low) / n, rounded; false where a change of it by error could round to another double.
bool quotient(double sum, double low, double size, double n, double& mean) {
  const double first = sum / n;
  const double product = first * n;
  const double rest = (sum - product) - exactProductError(first, n, product) + low;
  const double second = rest / n;
  mean = first + second;
  const double left = (first - mean) + second;
  const double error = 0x1p-96 * (size / n);
  const bool inRange = std::fabs(mean) > 0x1p-900 && size < 0x1p1000;
  const bool zero = size == 0.0;
  return zero || (inRange && mean + (left + error) == mean && mean + (left - error) == mean);
}

unsigned meansOfColumns(const double* x, std::ptrdiff_t stride, std::size_t n, double* mean) {
  // Row i mod 16 of these is what lane i mod 16 of each column holds.
  double sum[kColumnRows * kColumnCount] = {};
  double error[kColumnRows * kColumnCount] = {};
  for (std::size_t i = 0; i < n; ++i, x += stride) {
    const std::size_t row = i % kColumnRows * kColumnCount;
    __builtin_prefetch(x + 16 * stride);
    for (int k = 0; k < kParts; ++k) {
      const std::size_t at = row + static_cast<std::size_t>(k) * kLanes;
      Register lost;
      const Register next = twoSum(read(sum + at), read(x + k * kLanes), lost);
      write(next, sum + at);
      write(add(read(error + at), lost), error + at);
    }
  }
  EightSums totals;  // one lane for each column
  for (int row = 0; row < kColumnRows; ++row) {
    for (int k = 0; k < kParts; ++k) {
      totals.take(k, read(sum + row * kColumnCount + k * kLanes));
      totals.take(k, read(error + row * kColumnCount + k * kLanes));
    }
  }
  double total[2 * kColumnCount];
  totals.store(total);
  double size[kColumnCount] = {};
  for (int row = 0; row < kColumnRows; ++row) {
    for (int j = 0; j < kColumnCount; ++j) {
      size[j] += std::fabs(sum[row * kColumnCount + j]) + std::fabs(error[row * kColumnCount + j]);
    }
  }
  unsigned sure = 0;
  for (int j = 0; j < kColumnCount; ++j) {
    if (quotient(total[j], total[kColumnCount + j], size[j], static_cast<double>(n), mean[j])) {
      sure |= 1U << j;
    }
  }
  return sure;
}

}  // namespace
}  // namespace vexel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace vexel::kernels {

HWY_EXPORT(meansOfColumns);

unsigned meansOfColumns(const double* x, std::ptrdiff_t stride, std::size_t n, double* mean) {
  return HWY_DYNAMIC_DISPATCH(meansOfColumns)(x, stride, n, mean);
}

}  // namespace vexel::kernels

#endif
