// Empirical distribution of a sample.
//
// Method  The sample's quantile by the definition of the next observation; many at a time from one
//         sorted copy.
// Source  Hyndman and Fan, Sample Quantiles in Statistical Packages, The American Statistician 50,
//         1996, type 1.
// Draws   One uniform, by inversion.
// Error   Not measured: a quantile is one of the points, chosen by rounded sums of the weights.

#include "distributions/empirical.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

#include "descriptive/given_names.hpp"
#include "kernel/uniform_source.hpp"
#include "kernels/descriptive/tied_points.hpp"

double STATS_EmpiricalDeviate_HW(VKernelVector, double u, int n, double* points, double* weights) {
  double result = 0.0;
  STATS_Quantile_HW(&result, points, weights, &u, n, 1, STATS_QUANTILE_TYPE_HW::next);
  return result;
}

double STATS_EmpiricalRandomVariate_HW(VKernelVector kv, int n, double* points, double* weights) {
  return STATS_EmpiricalDeviate_HW(kv, STATS_VexelRandomStream_HW::NextDouble(), n, points,
                                   weights);
}

using vexel::kernels::RepeatedSort;
using vexel::kernels::TiedPoints;

namespace {

bool finite(const double* x, int n) {
  return std::all_of(x, x + n, [](double value) { return std::isfinite(value); });
}

// The variates after the first, where sorting once more moves something.
void sampleTied(VKernelVector kv, double* result, std::int32_t size, const RepeatedSort& sort,
                int n, double* points, double* weights) {
  const double total = std::accumulate(weights, weights + n, 0.0);
  if (sort.movesPoints() || !finite(points, n) || !std::isfinite(total) ||
      *std::min_element(weights, weights + n) < 0.0) {
    for (std::int32_t i = 1; i < size; ++i) {
      result[i] = STATS_EmpiricalRandomVariate_HW(kv, n, points, weights);
    }
    return;
  }
  const TiedPoints tied(points, weights, n, sort);
  for (std::int32_t i = 1; i < size; ++i) {
    const double u = STATS_VexelRandomStream_HW::NextDouble();
    if (!tied.quantile(u, i, result[i])) {
      sort.weightsAfter(i - 1, weights);
      result[i] = STATS_EmpiricalDeviate_HW(kv, u, n, points, weights);
    }
  }
  sort.weightsAfter(size - 1, weights);
}

}  // namespace

// The first variate by itself: it leaves weighted points sorted, and the weights' total is added up
// in that order from then on.  Every variate sorts them again; where that changes nothing, as it
// does unless tied points differ in their weights, the others are looked up together.
void STATS_EmpiricalRandomSample_HW(VKernelVector kv, double* result, std::int32_t size, int n,
                                    double* points, double* weights, bool orderSeen) {
  constexpr int kFewest = 4096;
  constexpr int kMost = 1 << 20;
  constexpr std::int64_t kMostSelecting = 1 << 26;  // about 0.1 s
  if (size < 1) {
    return;
  }
  result[0] = STATS_EmpiricalRandomVariate_HW(kv, n, points, weights);
  if (n > 0 && weights != nullptr && weights != points) {
    const RepeatedSort sort(points, weights, n);
    if (sort.movesPoints() || sort.movesWeights()) {
      sampleTied(kv, result, size, sort, n, points, weights);
      return;
    }
  }
  if (orderSeen && weights == nullptr && std::int64_t{size} * n <= kMostSelecting) {
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
    STATS_QuantileOfCopy_HW(result + done, points, weights, uniforms.data(), n, count,
                            STATS_QUANTILE_TYPE_HW::next);
    done += count;
  }
}
