// Sums of products, eight results at a time.
//
// T. Ogita, S. M. Rump and S. Oishi, Accurate sum and dot product (2005): the errors of products
// and sums are added up beside them.  The first half of this file is compiled once for each set of
// instructions, in a namespace each; the second half picks among them at run time.  All give the
// same bits: a fused multiply-add serves only where its result is exact.
#include "kernels/filter.hpp"

#include "kernels/exact_product.hpp"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/vector/filter.cpp"
#include "kernels/vector/each_target.hpp"

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

void filterStretch(const double* x, std::size_t n, std::span<const double> taps, double* out) {
  HWY_DYNAMIC_DISPATCH(filterAll)(x, n, taps.data(), taps.size(), out);
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
