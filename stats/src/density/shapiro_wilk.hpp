// The Shapiro-Wilk test of normality.
#pragma once

#include <vexelc/vexelc.h>

// Sorts the n points x in place and writes the statistic and its significance level.  Raises the
// numerical library's message unless 3 <= n <= 5000 and the points are finite and not all equal.
void STATS_ShapiroWilk_HW(VKernelVector kv, long n, double* x, double* W, double* p);
