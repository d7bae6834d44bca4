// Empirical distribution of a sample.

#include "distributions/empirical.hpp"

#include <algorithm>
#include <vector>

#include "descriptive/quantiles.hpp"
#include "kernel/uniform_source.hpp"

double STATS_EmpiricalDeviate_HW(VKernelVector, double u, int n, double* points, double* weights) {
  double result = 0.0;
  STATS_Quantile_HW(&result, points, weights, &u, n, 1, STATS_QUANTILE_NEXT_HW);
  return result;
}

double STATS_EmpiricalRandomVariate_HW(VKernelVector kv, int n, double* points, double* weights) {
  return STATS_EmpiricalDeviate_HW(kv, STATS_VexelRandomStream_HW::NextDouble(), n, points,
                                   weights);
}

// The first variate by itself: it leaves weighted points sorted, and the weights' total is added up
// in that order from then on.  Tied points keep the order of this sort.
void STATS_EmpiricalRandomSample_HW(VKernelVector kv, double* result, std::int32_t size, int n,
                                    double* points, double* weights) {
  constexpr int kFewest = 4096;
  constexpr int kMost = 1 << 20;
  if (size < 1) {
    return;
  }
  result[0] = STATS_EmpiricalRandomVariate_HW(kv, n, points, weights);
  std::vector<double> uniforms(static_cast<std::size_t>(std::clamp(n, kFewest, kMost)));
  const auto most = static_cast<std::int32_t>(uniforms.size());
  for (std::int32_t done = 1; done < size;) {
    const std::int32_t count = std::min(size - done, most);
    for (std::int32_t i = 0; i < count; ++i) {
      uniforms[static_cast<std::size_t>(i)] = STATS_VexelRandomStream_HW::NextDouble();
    }
    STATS_Quantile_HW(result + done, points, weights, uniforms.data(), n, count,
                      STATS_QUANTILE_NEXT_HW);
    done += count;
  }
}
