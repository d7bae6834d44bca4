// Fourier transforms of the smoothing kernels, each kernel scaled to unit variance.
#pragma once

// Each is 1 at s = 0 and tends to 0 for large s; a NaN gives a NaN.
double KernelDensity_Gaussian(double s);
double KernelDensity_Triangular(double s);
double KernelDensity_Rectangular(double s);
double KernelDensity_Epanechnikov(double s);
double KernelDensity_Biweight(double s);

using STATS_KernelTransform_HW = double (*)(double);

// The transform of kernel code 0 to 4, in the order above; null for another code.
STATS_KernelTransform_HW STATS_KernelTransformOfCode_HW(int code);
