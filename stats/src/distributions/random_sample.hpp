// The host arrays that samples go into.
#pragma once

#include <vexelc/vexelc.h>

#include <cstdint>

// A new float[8] array 1..n; the last argument is not looked at.
ALGEB STATS_CreateRandomSample_HW(VKernelVector kv, int n, ALGEB ignored);

// An array to be filled in place if a is one (dense float[8], else an error), otherwise a new array
// of as many elements as the integer a says.
ALGEB STATS_CreateRandomSample_HW(VKernelVector kv, ALGEB a);
