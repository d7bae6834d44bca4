// Quantile, order statistic and median kernels.
//
// In a copy all ranks that a call needs are found in one go, so that it is never sorted for a few
// probabilities.  The weighted quantile sorts once and walks the cumulative weight once.

#include "kernels/descriptive/quantiles.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <vector>

#include "kernels/lookout.hpp"
#include "kernels/saturate.hpp"
#include "kernels/sorting/select_reading.hpp"
#include "kernels/sorting/sorting.hpp"
#include "kernels/watch.hpp"

namespace vexel::kernels {

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

struct QuantileParameters {
  double a, b, c, d;
  explicit QuantileParameters(QuantileKind type) { quantileConstants(a, b, c, d, type); }
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
  int lo = std::max(toInteger(f - 1.0), 0);
  if (lo == n) {
    lo = n - 1;
  }
  const int hi = std::max(toInteger(std::ceil(h) - 1.0), 0);
  return {lo, lo != hi && lo < n - 1, h - f};
}

// Values by rank, from 0.  The ranks that are wanted are named first and then found in one go.
class RankedValues {
 public:
  void want(int rank) { ranks_.push_back(rank); }

  void place(double* x, int n) {
    sortRanks();
    selectRanks(x, n, ranks_.data(), static_cast<int>(ranks_.size()));
    placed_ = x;
  }
  bool read(const double* x, int n) {
    sortRanks();
    read_.resize(ranks_.size());
    return selectReading(x, n, ranks_.data(), static_cast<int>(ranks_.size()), read_.data());
  }

  // Of a rank that was wanted.
  double operator[](int rank) const {
    return placed_ != nullptr
               ? placed_[rank]
               : read_[static_cast<std::size_t>(
                     std::lower_bound(ranks_.begin(), ranks_.end(), rank) - ranks_.begin())];
  }

 private:
  void sortRanks() {
    std::sort(ranks_.begin(), ranks_.end());
    ranks_.erase(std::unique(ranks_.begin(), ranks_.end()), ranks_.end());
  }

  std::vector<int> ranks_;
  const double* placed_ = nullptr;
  std::vector<double> read_;
};

// All quantiles of a call: where they lie, and their values once those of the ranks are there.
class QuantilePlan {
 public:
  QuantilePlan(const double* probs, int n, int m, QuantileKind type) : parameters_(type), n_(n) {
    for (int j = 0; j < m; ++j) {
      const Position at = positionOf(probs[j], n, parameters_);
      positions_.push_back(at);
      if (inside(at)) {
        values.want(at.lo);
      }
      if (at.between) {
        values.want(at.lo + 1);
      }
    }
  }

  void evaluate(double* result) const {
    for (const Position& at : positions_) {
      double value = inside(at) ? values[at.lo] : kNaN;
      if (at.between) {
        value += (values[at.lo + 1] - value) * (at.fraction * parameters_.d + parameters_.c);
      }
      *result++ = value;
    }
  }

  RankedValues values;

 private:
  bool inside(const Position& at) const { return at.lo >= 0 && at.lo < n_; }

  QuantileParameters parameters_;
  int n_;
  std::vector<Position> positions_;
};

bool isRank(int rank, int n) { return rank >= 1 && rank <= n; }

void wantAll(RankedValues& values, const int* ranks, int n, int m) {
  for (int j = 0; j < m; ++j) {
    if (isRank(ranks[j], n)) {
      values.want(ranks[j] - 1);
    }
  }
}

void takeAll(const RankedValues& values, const int* ranks, int n, int m, double* result) {
  for (int j = 0; j < m; ++j) {
    result[j] = isRank(ranks[j], n) ? values[ranks[j] - 1] : kNaN;
  }
}

}  // namespace

void quantileConstants(double& a, double& b, double& c, double& d, QuantileKind type) {
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
  const auto& row = kTypes[static_cast<int>(toQuantileKind(static_cast<int>(type))) - 1];
  a = row.a;
  b = row.b;
  c = row.c;
  d = row.d;
}

// Selects in what the selection before left above its place, or in the whole when that is below.
void simpleQuantile(double* result, double* x, const double* probs, int n, int m,
                    QuantileKind type) {
  const QuantileParameters q(type);
  int first = 0;  // nothing before it sorts after anything from it on
  for (int j = 0; j < m; ++j) {
    const Position at = positionOf(probs[j], n, q);
    first = at.lo < first ? 0 : first;
    double value = quickSelect(x + first, n - first, at.lo - first);
    if (at.lo >= 0 && at.lo < n) {
      first = at.lo;
    }
    if (at.between) {
      const double next = quickSelect(x + at.lo + 1, n - at.lo - 1, 0);
      value += (next - value) * (at.fraction * q.d + q.c);
    }
    result[j] = value;
  }
}

void quantileOfCopy(double* result, double* x, double* w, const double* probs, int n, int m,
                    QuantileKind type) {
  if (w != nullptr) {
    weightedQuantile(result, x, w, probs, n, m, type);
    return;
  }
  QuantilePlan plan(probs, n, m, type);
  plan.values.place(x, n);
  plan.evaluate(result);
}

bool quantileReading(double* result, const double* x, int size, const double* probs, int n, int m,
                     QuantileKind type) {
  QuantilePlan plan(probs, n, m, type);
  if (!plan.values.read(x, size)) {
    return false;
  }
  plan.evaluate(result);
  return true;
}

// The first cumulative weight beyond the position decides: the value before it is the lower one.
// When that is the very first, it is the lower one itself.
void weightedQuantile(double* result, double* x, double* w, const double* probs, int n, int m,
                      QuantileKind type) {
  if (n <= 0) {
    std::fill_n(result, m, kNaN);
    return;
  }
  const QuantileParameters q(type);
  double total = 0.0;
  forEach(n, [&](int i) { total += w[i]; });
  sortData(x, w, n);

  // Positions in ascending order, so that one walk serves all of them.
  std::vector<double> h(static_cast<std::size_t>(std::max(m, 0)));
  std::vector<std::size_t> order(h.size());
  for (std::size_t j = 0; j < h.size(); ++j) {
    h[j] = (total + q.b) * probs[j] + q.a;
  }
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::sort(order.begin(), order.end(),
            [&](std::size_t s, std::size_t t) { return follows(h[t], h[s]); });

  int i = 0;
  double cumulative = w[0];
  Lookout lookout;
  for (const std::size_t j : order) {
    while (i < n && !(cumulative > h[j])) {
      lookout.done(1);
      ++i;
      cumulative += i < n ? w[i] : 0.0;
    }
    const int k = std::max(i - 1, 0);
    const double lower = x[k];
    const double upper = k < n - 1 ? x[k + 1] : x[k];
    result[j] = lower + (upper - lower) * ((h[j] - std::floor(h[j])) * q.d + q.c);
  }
}

void quantile(double* result, double* x, double* w, const double* probs, int n, int m,
              QuantileKind type) {
  if (w != nullptr) {
    weightedQuantile(result, x, w, probs, n, m, type);
  } else {
    simpleQuantile(result, x, probs, n, m, type);
  }
}

void simpleOrderStatistic(double* result, double* x, const int* ranks, int n, int m) {
  int last = 0;  // rank of the selection before, none at first
  for (int j = 0; j < m; ++j) {
    const int rank = ranks[j];
    if (!isRank(rank, n)) {
      result[j] = kNaN;
      continue;
    }
    if (last == 0) {
      quickSelect(x, n, rank - 1);
    } else if (rank < last) {
      quickSelect(x, last - 1, rank - 1);
    } else if (rank > last) {
      quickSelect(x + last - 1, n - last + 1, rank - last);
    }
    result[j] = x[rank - 1];
    last = rank;
  }
}

void orderStatisticOfCopy(double* result, double* x, const int* ranks, int n, int m) {
  RankedValues values;
  wantAll(values, ranks, n, m);
  values.place(x, n);
  takeAll(values, ranks, n, m, result);
}

bool orderStatisticReading(double* result, const double* x, int size, const int* ranks, int n,
                           int m) {
  RankedValues values;
  wantAll(values, ranks, n, m);
  if (!values.read(x, size)) {
    return false;
  }
  takeAll(values, ranks, n, m, result);
  return true;
}

void orderStatistic(double* result, double* x, double*, const int* ranks, int n, int m) {
  simpleOrderStatistic(result, x, ranks, n, m);
}

double simpleMedian(double* x, int n) {
  if (n % 2 != 0) {
    return quickSelect(x, n, (n - 1) / 2);
  }
  const int half = n / 2;
  const double v = quickSelect(x, n, half);
  const double u = quickSelect(x, half, half - 1);
  return (u + v) * 0.5;
}

bool medianReading(double* result, const double* x, int size, int n) {
  RankedValues values;
  const int middle[] = {(n - 1) / 2, n / 2};  // the same for an odd n
  values.want(middle[0]);
  values.want(middle[1]);
  if (!values.read(x, size)) {
    return false;
  }
  *result = n % 2 != 0 ? values[middle[0]] : (values[middle[0]] + values[middle[1]]) * 0.5;
  return true;
}

double median(double* x, double* w, int n) {
  if (w == nullptr) {
    return simpleMedian(x, n);
  }
  constexpr double kHalf = 0.5;
  double median = kNaN;
  weightedQuantile(&median, x, w, &kHalf, n, 1, QuantileKind::next);
  return median;
}

}  // namespace vexel::kernels
