// The law of the Kolmogorov-Smirnov statistic.
#pragma once

#include <cstddef>

namespace vexel {

// P(D_n >= d) of a sample of n from a continuous law.
double kolmogorovTail(std::size_t n, double d);

}  // namespace vexel
