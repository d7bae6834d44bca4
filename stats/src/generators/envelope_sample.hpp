// The non-central chi-square sample that is drawn from the density's envelope instead of by
// inversion.
#pragma once

#include <vexelc/vexelc.h>

#include <cstdint>

// Fills sample (n doubles) and returns it.  args holds six arguments, the last three procedures:
// the density, its first and its second derivative, which place the envelope's base points.
ALGEB STATS_NonCentralChiSquareEnvelopeSample_HW(VKernelVector kv, ALGEB args, std::int32_t n,
                                                 double nu, double delta, ALGEB sample);
