// Short convolutions, compiled once for each set of vector instructions; the second half picks
// among them at run time.  Every number has its own sum, in one order, so all give the same bits.
#include "kernels/vector/convolution.hpp"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/vector/convolution.cpp"
#include "kernels/vector/each_target.hpp"
#include "kernels/vector/eight.hpp"

HWY_BEFORE_NAMESPACE();
namespace vexel::kernels::HWY_NAMESPACE {
namespace {

void convolve(const double* x, std::size_t n, const double* weights, std::size_t m, double* out) {
  constexpr std::size_t registers = 4;  // at a time: as many sums as an addition takes cycles
  constexpr std::size_t step = registers * kLanes;
  static_assert(convolutionBlock % step == 0);
  for (std::size_t k = 0; k < n; k += step) {
    Register sums[registers];
    for (std::size_t r = 0; r < registers; ++r) {
      sums[r] = broadcast(0.0);
    }
    for (std::size_t s = 0; s < m; ++s) {
      const Register weight = broadcast(weights[s]);
      const double* from = x + k - s;
      for (std::size_t r = 0; r < registers; ++r) {
        sums[r] = add(sums[r], mul(weight, read(from + r * kLanes)));
      }
    }
    for (std::size_t r = 0; r < registers; ++r) {
      write(sums[r], out + k + r * kLanes);
    }
  }
}

}  // namespace
}  // namespace vexel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vexel::kernels {

HWY_EXPORT(convolve);

void convolve(const double* x, std::size_t n, const double* weights, std::size_t m, double* out) {
  HWY_DYNAMIC_DISPATCH(convolve)(x, n, weights, m, out);
}

}  // namespace vexel::kernels
#endif
