// Rational approximations of the normal quantile and of the quantile of a ratio distribution.
#pragma once

#include <vexelc/vexelc.h>

// The standard normal quantile at p, off by up to 6.5e-4 for p in [0.001, 0.999].
double STATS_NormalDeviateApprox_HW(VKernelVector kv, double p);

// The quantity w of the normal approximation for a beta or F quantile.  a or b of 1/2 raises.
double STATS_NormalWApprox_HW(VKernelVector kv, double x, double a, double b);
