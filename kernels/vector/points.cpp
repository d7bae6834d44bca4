// Tiles of points, compiled once for each set of vector instructions; the second half picks among
// them at run time.  Nothing here rounds.
#include "kernels/vector/points.hpp"

#include <bit>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/vector/points.cpp"
#include "kernels/vector/each_target.hpp"

HWY_BEFORE_NAMESPACE();
namespace vexel::kernels::HWY_NAMESPACE {
namespace {

void advanceTile(std::uint64_t* __restrict numerators, const std::uint64_t* __restrict changes,
                 std::size_t n, double* __restrict out) {
  for (std::size_t i = 0; i < n; ++i) {
    const std::uint64_t x = numerators[i];
    out[i] = (std::bit_cast<double>(x | 0x4330000000000000U) - 0x1p52) * 0x1p-52;
    numerators[i] = x ^ changes[i];
  }
}

}  // namespace
}  // namespace vexel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vexel::kernels {

HWY_EXPORT(advanceTile);

void advanceTile(std::uint64_t* numerators, const std::uint64_t* changes, std::size_t n,
                 double* out) {
  HWY_DYNAMIC_DISPATCH(advanceTile)(numerators, changes, n, out);
}

}  // namespace vexel::kernels
#endif
