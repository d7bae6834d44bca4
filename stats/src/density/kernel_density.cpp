// Kernel density estimates on an equally spaced grid by the Fourier method: bin the data linearly,
// transform, multiply by the kernel's transform, transform back.  B. W. Silverman, 1982, Algorithm
// AS 176, Applied Statistics 31, 93-99.

#include <nag2/nag2.h>
#include <vexelc/vexelc.h>

#include <cstdint>

#include "density/discretize.hpp"
#include "kernel/conversions.hpp"
#include "kernel/data_sample.hpp"
#include "kernel/entry_frame.hpp"
#include "kernel/host_arrays.hpp"
#include "kernel/interrupt.hpp"
#include "kernels/density/kernel_transforms.hpp"
#include "kernels/watch.hpp"

namespace {

// The host's Pi as a double.
double hostPi(VKernelVector kv) {
  return STATS_VexelUtils_HW::VexelDAGToDouble(VexelEval(kv, ToVexelName(kv, "Pi", 1)));
}

// Multiplies the terms of a Hermitian sequence of length M by the kernel's transform at k d.  Term
// 0 keeps its value, since every kernel's transform is 1 there.
//
// The middle element takes the factor of frequency M/2 for odd M too, where it is the real part of
// term (M - 1)/2 and its imaginary partner stays as it is: estimates on odd grids rely on that.
void smooth(vexel::kernels::KernelTransform kernel, double d, std::int32_t M, double* z) {
  vexel::kernels::forEach(M / 2 - 1, [=](std::int32_t before) {
    const std::int32_t k = before + 1;
    const double factor = kernel(k * d);
    z[k] *= factor;
    z[M - k] *= factor;
  });
  z[M / 2] *= kernel(M * d * 0.5);
}

void forwardTransform(VKernelVector kv, const std::int32_t M, double* z, double* work) {
  int ifail = 0;
  q64883(z, &M, work, &ifail);
  if (ifail != 0) {
    VexelRaiseError(kv, "nag function failed to compute the forward fourier transform");
  }
}

void reverseTransform(VKernelVector kv, const std::int32_t M, double* z, double* work) {
  int ifail = 0;
  q33150(z, &M, &ifail);
  if (ifail != 0) {
    VexelRaiseError(kv, "nag function failed to compute complex conjugates");
  }
  q42899(z, &M, work, &ifail);
  if (ifail != 0) {
    VexelRaiseError(kv, "nag function failed to compute the reverse fourier transform");
  }
}

}  // namespace

// STATS_VexelKernelDensity_HW(data, weights, kernel, h, M, quiet, a, b): the density on M points
// over [a, b], a new float[8] array.
//
// data     array of points; weights: array of as many, or an empty one
// kernel   0 Gaussian, 1 triangular, 2 rectangular, 3 Epanechnikov, 4 biweight
// h        bandwidth, the standard deviation of the kernel
// quiet    true keeps silent about missing data
// a, b     ends of the grid; the estimate is periodic over M (b - a)/(M - 1)
STATS_ENTRY(STATS_VexelKernelDensity_HW) {
  const Arguments arg(kv, args, 8, "expected 8 arguments, received: %1");
  const std::int32_t code = arg.integer32(3);
  const double h = arg.real(4);
  const std::int32_t M = arg.integer32(5);
  const bool quiet = arg.boolean(6);
  const double a = arg.real(7);
  const double b = arg.real(8);
  STATS_CheckGrid_HW(kv, M, a, b);

  const STATS_VexelDataSample_HW sample(kv, arg[1], arg[2]);
  const ALGEB result = STATS_CreateFloatVector_HW(kv, M);
  double* density = STATS_FloatBlock_HW(kv, result);
  STATS_Discretize_HW(kv, M, a, b, 0.0, quiet, sample.size(), sample.points(), sample.weights(),
                      density);
  double* const work = STATS_AllocDoubles_HW(kv, M);
  STATS_LookForInterrupt_HW(kv);
  forwardTransform(kv, M, density, work);

  const vexel::kernels::KernelTransform kernel = vexel::kernels::kernelTransformOfCode(code);
  if (kernel == nullptr) {
    VexelRaiseError1(kv, "invalid kernel, received: %1", ToVexelInteger(kv, code));
  }
  smooth(kernel, 2.0 * hostPi(kv) * h / (b - a), M, density);
  STATS_LookForInterrupt_HW(kv);
  reverseTransform(kv, M, density, work);
  return result;
}
