// Empirical distribution of a sample.

#include "distributions/empirical.hpp"

#include <algorithm>
#include <cstring>
#include <vector>

#include "descriptive/quantiles.hpp"
#include "descriptive/sort_kernels.hpp"
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

namespace {

// Whether one more sort of sorted points would exchange tied ones: the sort is not stable.
bool sortingMoves(const double* points, const double* weights, int n) {
  std::vector<double> x(points, points + n);
  std::vector<double> w(weights, weights + n);
  STATS_SortData_HW(x.data(), w.data(), n);
  const std::size_t bytes = x.size() * sizeof(double);
  return std::memcmp(x.data(), points, bytes) != 0 || std::memcmp(w.data(), weights, bytes) != 0;
}

}  // namespace

// The first variate by itself: it leaves weighted points sorted, and the weights' total is added up
// in that order from then on.  Every variate sorts them again; where that changes nothing, as it
// does unless tied points differ in their weights, the others are looked up together.
void STATS_EmpiricalRandomSample_HW(VKernelVector kv, double* result, std::int32_t size, int n,
                                    double* points, double* weights) {
  constexpr int kFewest = 4096;
  constexpr int kMost = 1 << 20;
  if (size < 1) {
    return;
  }
  result[0] = STATS_EmpiricalRandomVariate_HW(kv, n, points, weights);
  if (n > 0 && weights != nullptr && weights != points && sortingMoves(points, weights, n)) {
    for (std::int32_t i = 1; i < size; ++i) {
      result[i] = STATS_EmpiricalRandomVariate_HW(kv, n, points, weights);
    }
    return;
  }
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
