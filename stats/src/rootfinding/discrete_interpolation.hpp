// Integer quantile search: where a nondecreasing F on the integers reaches p.
//
// F is called on integers converted to double.  lowerValue and upperValue bound the values of F.
// Points are 32-bit; an extrapolation beyond that range goes to the end of it that
// STATS_DoubleToInteger_HW names.  maxIter counts steps; spending it is a host error.
#pragma once

#include <vexelc/vexelc.h>

#include <cstdint>

#include "kernel/callback_adapters.hpp"

// The smallest b in (lo, hi] with F(b) >= p, or lo if F(lo) > p.  The left end counts as lying
// below p even when F(lo) = p.  F(hi) < p raises.
std::int32_t STATS_DiscreteInterpolation_HW(VKernelVector kv, double p,
                                            STATS_VexelCallbackAdapter_HW& F, std::int32_t lo,
                                            std::int32_t hi, int maxIter);

// Extends a bracket to the right of x0 > left by floored secant steps toward upperValue, then
// bisects it.
std::int32_t STATS_DiscreteInterpolationHybridLeft_HW(VKernelVector kv, double p,
                                                      STATS_VexelCallbackAdapter_HW& F,
                                                      double lowerValue, double upperValue,
                                                      std::int32_t left, std::int32_t x0,
                                                      int maxIter);

// Bisects [x0, right] if F(right) >= p, x0 included when F(x0) > p; otherwise steps to the left.
std::int32_t STATS_DiscreteInterpolationHybridRight_HW(VKernelVector kv, double p,
                                                       STATS_VexelCallbackAdapter_HW& F,
                                                       double lowerValue, double upperValue,
                                                       std::int32_t x0, std::int32_t right,
                                                       int maxIter);

// Two distinct points to start from, expected in ascending order: given in descending order, the
// smaller one serves for both, and unless F is p there the search raises.
std::int32_t STATS_DiscreteInterpolationHybridUnbound_HW(VKernelVector kv, double p,
                                                         STATS_VexelCallbackAdapter_HW& F,
                                                         double lowerValue, double upperValue,
                                                         std::int32_t initPoint1,
                                                         std::int32_t initPoint2, int maxIter);
