// Error (exponential power) distribution with location a, scale b and shape c.
#pragma once

#include <vexelc/vexelc.h>

#include "kernel/callback_adapters.hpp"

// One variate.
double STATS_ErrorRandomVariate_HW(VKernelVector kv, double a, double b, double c);

inline double STATS_ErrorRandomVariate_HW(VKernelVector kv, const double* params) {
  return STATS_ErrorRandomVariate_HW(kv, params[0], params[1], params[2]);
}

// The x with F(x) = p by Newton-Raphson, f the derivative of F.  b and c are not looked at: the
// procedures know them.
double STATS_ErrorDeviate_HW(VKernelVector kv, double p, STATS_VexelCallbackAdapter_HW& F,
                             STATS_VexelCallbackAdapter_HW& f, double a, double b, double c,
                             double tol);
