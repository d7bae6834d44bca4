// Counting numbers into bins.

#include "data/bins.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace {

// Finds bins of one range.  Where the edges ascend and are finite, the bin that the width suggests
// is tried first and taken if its edges confirm it, which is nearly always so for equal widths;
// otherwise the edges are searched.  The bin is the same either way.
class BinFinder {
 public:
  BinFinder(const double* edges, int m)
      : edges_(edges), m_(m), low_(edges[0]), bins_(m), scale_(m / (edges[m] - edges[0])) {
    guess_ = std::isfinite(scale_) && std::isfinite(edges[m] - edges[0]) &&
             std::is_sorted(edges, edges + m + 1);
  }

  // The bin of x, or -1 when the range does not hold it.
  int operator()(double x) const {
    if (guess_) {
      // A NaN fails every test, here and below.
      const double position = (x - low_) * scale_;
      if (position >= 0.0 && position < bins_) {
        const int k = static_cast<int>(position);
        if (edges_[k] <= x && x < edges_[k + 1]) {
          return k;
        }
      }
    }
    if (x == edges_[m_]) {
      return m_ - 1;
    }
    return edges_[0] <= x && x < edges_[m_] ? STATS_TallyIntoFindBin_HW(edges_, m_, x) : -1;
  }

 private:
  const double* edges_;
  int m_;
  double low_;
  double bins_;
  double scale_;
  bool guess_;
};

// Calls add(cell, i) for every range that holds data[i].
template <typename Add>
void forEachBin(const double* data, int n, const double* edges, int nRanges, int m, Add add) {
  for (int r = 0; r < nRanges; ++r) {
    const BinFinder find(edges + std::ptrdiff_t{r} * (m + 1), m);
    const std::ptrdiff_t first = std::ptrdiff_t{r} * m;
    for (int i = 0; i < n; ++i) {
      const int k = find(data[i]);
      if (k >= 0) {
        add(first + k, i);
      }
    }
  }
}

}  // namespace

int STATS_TallyIntoFindBin_HW(const double* edges, int m, double x) {
  const double* base = edges;
  int count = m;
  while (count > 1) {
    const int half = count / 2;
    const bool above = base[half] <= x;
    base += above ? half : 0;
    count = above ? count - half : half;
  }
  return static_cast<int>(base - edges);
}

void STATS_SimpleTallyInto_HW(std::uint32_t* counts, const double* data, int n, const double* edges,
                              int nRanges, int m) {
  std::fill_n(counts, std::ptrdiff_t{nRanges} * m, 0U);
  forEachBin(data, n, edges, nRanges, m, [=](std::ptrdiff_t cell, int) { ++counts[cell]; });
}

void STATS_WeightedTallyInto_HW(double* sums, const double* data, const double* weights, int n,
                                const double* edges, int nRanges, int m) {
  std::fill_n(sums, std::ptrdiff_t{nRanges} * m, 0.0);
  forEachBin(data, n, edges, nRanges, m,
             [=](std::ptrdiff_t cell, int i) { sums[cell] += weights[i]; });
}
