// Means, trimmed and winsorized means.
//
// Unweighted samples are cut by count, weighted ones by weight; at a cut by weight the boundary
// point keeps part of its weight.

#include "kernels/descriptive/means.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "kernels/saturate.hpp"
#include "kernels/sorting/sorting.hpp"
#include "kernels/watch.hpp"

namespace vexel::kernels {

namespace {

// The sum of term(i), first to last.
template <typename Term>
double sumOf(int n, Term term) {
  double sum = 0.0;
  forEach(n, [&](int i) { sum += term(i); });
  return sum;
}

double totalOf(const double* w, int n) {
  return sumOf(n, [=](int i) { return w[i]; });
}

}  // namespace

double simpleMean(const double* x, int n, MeanKind type) {
  switch (type) {
    case MeanKind::geometric:
      return std::exp(sumOf(n, [=](int i) { return std::log(x[i]); }) / n);
    case MeanKind::harmonic:
      return n / sumOf(n, [=](int i) { return 1.0 / x[i]; });
    case MeanKind::quadratic:
      return std::sqrt(sumOf(n, [=](int i) { return x[i] * x[i]; }) / n);
    default:
      return totalOf(x, n) / n;
  }
}

double weightedMean(const double* x, const double* w, int n, MeanKind type) {
  const double total = totalOf(w, n);
  switch (type) {
    case MeanKind::geometric:
      return std::exp(sumOf(n, [=](int i) { return w[i] * std::log(x[i]); }) / total);
    case MeanKind::harmonic:
      return total / sumOf(n, [=](int i) { return w[i] / x[i]; });
    case MeanKind::quadratic:
      return std::sqrt(sumOf(n, [=](int i) { return w[i] * (x[i] * x[i]); }) / total);
    default:
      return sumOf(n, [=](int i) { return w[i] * x[i]; }) / total;
  }
}

double mean(const double* x, const double* w, int n, MeanKind type) {
  return w != nullptr ? weightedMean(x, w, n, type) : simpleMean(x, n, type);
}

namespace {

// Ranks lo..hi-1 are kept, 0 <= lo, hi <= n.
struct CountCut {
  int lo;
  int hi;
  bool symmetric;  // as many values cut off below as above
};

// Rounds the cuts half up and moves the values of ranks lo..hi-1 to x[lo..hi-1].
CountCut cutByCount(double* x, int n, double lower, double upper) {
  const int size = std::max(n, 0);
  const int lo = std::clamp(toInteger(n * lower + 0.5), 0, size);
  const int hi = std::clamp(toInteger(n * upper + 0.5), 0, size);
  quickSelect(x, n, lo);
  quickSelect(x + lo, n - lo, hi - lo);
  return {lo, hi, std::int64_t{lo} + hi == n};
}

// Points first..last are kept, none when last < first.
struct WeightCut {
  int first;
  int last;
  double firstKept;   // the weight that the first keeps
  double lastExcess;  // the weight that the last loses, not below 0
};

// A point whose cumulative weight is the low cut exactly is dropped; one whose cumulative weight is
// the high cut exactly is kept whole.
WeightCut cutByWeight(const double* w, int n, double lower, double upper) {
  const double total = totalOf(w, n);
  const double lowCut = lower * total;
  const double highCut = total - (1.0 - upper) * total;

  WeightCut cut{0, n - 1, 0.0, 0.0};
  double cumulative = 0.0;
  for (; cut.first < n; ++cut.first) {
    cumulative += w[cut.first];
    if (!(cumulative <= lowCut)) {
      break;
    }
  }
  cut.firstKept = cumulative - lowCut;

  double remaining = total;
  for (; cut.last >= 0 && remaining - w[cut.last] >= highCut; --cut.last) {
    remaining -= w[cut.last];
  }
  cut.lastExcess = remaining > highCut ? remaining - highCut : 0.0;
  return cut;
}

}  // namespace

// A cut that is not symmetric averages one value fewer; results have always been so.
double simpleTrimmedMean(double* x, int n, double lower, double upper, MeanKind type) {
  const CountCut cut = cutByCount(x, n, lower, upper);
  const int kept = cut.hi - cut.lo;
  return simpleMean(x + cut.lo, cut.symmetric ? kept : kept - 1, type);
}

// A cut that is not symmetric takes its upper replacement, and starts replacing, one position
// lower.
double simpleWinsorizedMean(double* x, int n, double lower, double upper, MeanKind type) {
  const CountCut cut = cutByCount(x, n, lower, upper);
  if (cut.lo < n) {
    std::fill(x, x + cut.lo, x[cut.lo]);
  }
  const int end = cut.symmetric ? cut.hi : cut.hi - 1;
  if (end >= 1) {
    std::fill(x + end, x + n, x[end - 1]);
  }
  return simpleMean(x, n, type);
}

double weightedTrimmedMean(double* x, double* w, int n, double lower, double upper, MeanKind type) {
  sortData(x, w, n);
  const WeightCut cut = cutByWeight(w, n, lower, upper);
  if (cut.last < cut.first) {
    return weightedMean(x, w, 0, type);
  }
  w[cut.first] = cut.firstKept;
  w[cut.last] -= cut.lastExcess;
  return weightedMean(x + cut.first, w + cut.first, cut.last - cut.first + 1, type);
}

// Values below the first kept point become that point's, values above the last kept one become
// that one's; all keep their weights.
double weightedWinsorizedMean(double* x, double* w, int n, double lower, double upper,
                              MeanKind type) {
  sortData(x, w, n);
  const WeightCut cut = cutByWeight(w, n, lower, upper);
  if (cut.first < n && cut.last >= 0) {
    const double low = x[cut.first];
    const double high = x[cut.last];
    std::fill(x, x + cut.first, low);
    std::fill(x + cut.last + 1, x + n, high);
  }
  return weightedMean(x, w, n, type);
}

double trimmedMean(double* x, double* w, int n, double lower, double upper, MeanKind type) {
  return w != nullptr ? weightedTrimmedMean(x, w, n, lower, upper, type)
                      : simpleTrimmedMean(x, n, lower, upper, type);
}

double winsorizedMean(double* x, double* w, int n, double lower, double upper, MeanKind type) {
  return w != nullptr ? weightedWinsorizedMean(x, w, n, lower, upper, type)
                      : simpleWinsorizedMean(x, n, lower, upper, type);
}

}  // namespace vexel::kernels
