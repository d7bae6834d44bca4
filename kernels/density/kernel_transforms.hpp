// Fourier transforms of the smoothing kernels, each kernel scaled to unit variance.
#pragma once

namespace vexel::kernels {

// Each is 1 at s = 0 and tends to 0 for large s; a NaN gives a NaN.
double gaussianTransform(double s);
double triangularTransform(double s);
double rectangularTransform(double s);
double epanechnikovTransform(double s);
double biweightTransform(double s);

using KernelTransform = double (*)(double);

// The transform of kernel code 0 to 4, in the order above; null for another code.
KernelTransform kernelTransformOfCode(int code);

}  // namespace vexel::kernels
