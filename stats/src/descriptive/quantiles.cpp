// Quantile, order statistic and median kernels.
//
// All ranks that a call needs are placed in one go, so the sample is never sorted for a few
// probabilities.  The weighted quantile sorts once and walks the cumulative weight once.

#include "descriptive/quantiles.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <vector>

#include "descriptive/sort_kernels.hpp"
#include "kernel/conversions.hpp"

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

struct QuantileParameters {
  double a, b, c, d;
  explicit QuantileParameters(STATS_QUANTILE_TYPE_HW type) {
    STATS_SetQuantileType_HW(a, b, c, d, type);
  }
};

// Where a quantile lies in the sorted sample, from 0: between lo and the next value, unless
// !between.
struct Position {
  int lo;
  bool between;
  double fraction;
};

Position positionOf(double p, int n, const QuantileParameters& q) {
  const double h = (n + q.b) * p + q.a;
  const double f = std::floor(h);
  int lo = std::max(STATS_DoubleToInteger_HW(f - 1.0), 0);
  if (lo == n) {
    lo = n - 1;
  }
  const int hi = std::max(STATS_DoubleToInteger_HW(std::ceil(h) - 1.0), 0);
  return {lo, lo != hi && lo < n - 1, h - f};
}

void placeRanks(double* x, int n, std::vector<int>& ranks) {
  std::sort(ranks.begin(), ranks.end());
  ranks.erase(std::unique(ranks.begin(), ranks.end()), ranks.end());
  STATS_SelectRanks_HW(x, n, ranks.data(), static_cast<int>(ranks.size()));
}

}  // namespace

void STATS_SetQuantileType_HW(double& a, double& b, double& c, double& d,
                              STATS_QUANTILE_TYPE_HW type) {
  static constexpr struct {
    double a, b, c, d;
  } kTypes[] = {
      {0.0, 0.0, 1.0, 0.0},              // 1
      {0.5, 0.0, 0.0, 0.0},              // 2
      {0.0, 0.0, 0.0, 1.0},              // 3
      {0.5, 0.0, 0.0, 1.0},              // 4
      {0.0, 1.0, 0.0, 1.0},              // 5
      {1.0, -1.0, 0.0, 1.0},             // 6
      {1.0 / 3.0, 1.0 / 3.0, 0.0, 1.0},  // 7
      {0.375, 0.25, 0.0, 1.0},           // 8
  };
  const auto& row = kTypes[STATS_ToQuantileType_HW(type) - 1];
  a = row.a;
  b = row.b;
  c = row.c;
  d = row.d;
}

void STATS_SimpleQuantile_HW(double* result, double* x, const double* probs, int n, int m,
                             STATS_QUANTILE_TYPE_HW type) {
  const QuantileParameters q(type);
  std::vector<Position> positions;
  std::vector<int> ranks;
  for (int j = 0; j < m; ++j) {
    const Position at = positionOf(probs[j], n, q);
    positions.push_back(at);
    if (at.lo >= 0 && at.lo < n) {
      ranks.push_back(at.lo);
    }
    if (at.between) {
      ranks.push_back(at.lo + 1);
    }
  }
  placeRanks(x, n, ranks);
  for (int j = 0; j < m; ++j) {
    const Position& at = positions[static_cast<std::size_t>(j)];
    if (at.lo < 0 || at.lo >= n) {
      result[j] = kNaN;
    } else if (at.between) {
      const double v = x[at.lo];
      result[j] = v + (x[at.lo + 1] - v) * (at.fraction * q.d + q.c);
    } else {
      result[j] = x[at.lo];
    }
  }
}

// The first cumulative weight beyond the position decides: the value before it is the lower one.
// When that is the very first, it is the lower one itself.
void STATS_WeightedQuantile_HW(double* result, double* x, double* w, const double* probs, int n,
                               int m, STATS_QUANTILE_TYPE_HW type) {
  if (n <= 0) {
    std::fill_n(result, std::max(m, 0), kNaN);
    return;
  }
  const QuantileParameters q(type);
  double total = 0.0;
  for (int i = 0; i < n; ++i) {
    total += w[i];
  }
  STATS_SortData_HW(x, w, n);

  // Positions in ascending order, so that one walk serves all of them.
  std::vector<double> h(static_cast<std::size_t>(std::max(m, 0)));
  std::vector<std::size_t> order(h.size());
  for (std::size_t j = 0; j < h.size(); ++j) {
    h[j] = (total + q.b) * probs[j] + q.a;
  }
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::sort(order.begin(), order.end(),
            [&](std::size_t s, std::size_t t) { return STATS_SortsAfter_HW(h[t], h[s]); });

  int i = 0;
  double cumulative = w[0];
  for (const std::size_t j : order) {
    while (i < n && !(cumulative > h[j])) {
      ++i;
      cumulative += i < n ? w[i] : 0.0;
    }
    const int k = std::max(i - 1, 0);
    const double lower = x[k];
    const double upper = k < n - 1 ? x[k + 1] : x[k];
    result[j] = lower + (upper - lower) * ((h[j] - std::floor(h[j])) * q.d + q.c);
  }
}

void STATS_Quantile_HW(double* result, double* x, double* w, const double* probs, int n, int m,
                       STATS_QUANTILE_TYPE_HW type) {
  if (w != nullptr) {
    STATS_WeightedQuantile_HW(result, x, w, probs, n, m, type);
  } else {
    STATS_SimpleQuantile_HW(result, x, probs, n, m, type);
  }
}

void STATS_SimpleOrderStatistic_HW(double* result, double* x, const int* ranks, int n, int m) {
  std::vector<int> wanted;
  for (int j = 0; j < m; ++j) {
    if (ranks[j] >= 1 && ranks[j] <= n) {
      wanted.push_back(ranks[j] - 1);
    }
  }
  placeRanks(x, n, wanted);
  for (int j = 0; j < m; ++j) {
    result[j] = ranks[j] >= 1 && ranks[j] <= n ? x[ranks[j] - 1] : kNaN;
  }
}

void STATS_OrderStatistic_HW(double* result, double* x, double*, const int* ranks, int n, int m) {
  STATS_SimpleOrderStatistic_HW(result, x, ranks, n, m);
}

double STATS_SimpleMedian_HW(double* x, int n) {
  if (n % 2 != 0) {
    return STATS_QuickSelect_HW(x, n, (n - 1) / 2);
  }
  const int half = n / 2;
  const double v = STATS_QuickSelect_HW(x, n, half);
  const double u = STATS_QuickSelect_HW(x, half, half - 1);
  return (u + v) * 0.5;
}

double STATS_Median_HW(double* x, double* w, int n) {
  if (w == nullptr) {
    return STATS_SimpleMedian_HW(x, n);
  }
  constexpr double kHalf = 0.5;
  double median = kNaN;
  STATS_WeightedQuantile_HW(&median, x, w, &kHalf, n, 1, STATS_QUANTILE_NEXT_HW);
  return median;
}
