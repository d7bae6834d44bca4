// Counting numbers into bins.

#include "kernels/tallies/bins.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "kernels/lookout.hpp"

namespace vexel::kernels {

// Compiled for wider vectors as well, the fitting one chosen when the library is loaded; the
// arithmetic is the same.
#if defined(__x86_64__) && defined(__gnu_linux__) && !defined(__clang__) && \
    !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define KERNELS_WIDER_VECTORS __attribute__((target_clones("default", "avx2", "avx512f")))
#else
#define KERNELS_WIDER_VECTORS
#endif

namespace {

bool confirmed(double x, const double* edges, int k) {
  return (edges[k] <= x) & (x < edges[k + 1]);
}

// Writes a guess, some bin in any case, for each x; true if all are right.  Two loops without
// branches.
KERNELS_WIDER_VECTORS bool guessBins(const double* x, int n, const double* edges, int m,
                                     double scale, int* bins) {
  const double low = edges[0];
  const double last = m - 1;
  for (int i = 0; i < n; ++i) {
    const double position = (x[i] - low) * scale;
    const double atLeast0 = position > 0.0 ? position : 0.0;  // a NaN as well
    bins[i] = static_cast<int>(atLeast0 < last ? atLeast0 : last);
  }
  int all = 1;
  for (int i = 0; i < n; ++i) {
    all &= static_cast<int>(confirmed(x[i], edges, bins[i]));
  }
  return all != 0;
}

// Finds bins of one range.  Where the edges ascend and are finite, the bin that the width suggests
// is tried first and taken if its edges confirm it, which is nearly always so for equal widths;
// otherwise the edges are searched.  The bin is the same either way.
class BinFinder {
 public:
  BinFinder(const double* edges, int m) : edges_(edges), m_(m), scale_(m / (edges[m] - edges[0])) {
    guess_ = std::isfinite(scale_) && std::isfinite(edges[m] - edges[0]) &&
             std::is_sorted(edges, edges + m + 1);
  }

  // The bins of x[0..n-1], -1 for those that the range does not hold.
  void find(const double* x, int n, int* bins) const {
    if (guess_ && guessBins(x, n, edges_, m_, scale_, bins)) {
      return;
    }
    for (int i = 0; i < n; ++i) {
      if (!guess_ || !confirmed(x[i], edges_, bins[i])) {
        bins[i] = search(x[i]);
      }
    }
  }

 private:
  int search(double x) const {
    if (x == edges_[m_]) {
      return m_ - 1;
    }
    return edges_[0] <= x && x < edges_[m_] ? binOf(edges_, m_, x) : -1;
  }

  const double* edges_;
  int m_;
  double scale_;
  bool guess_;
};

// Calls add(cell, i) for every range that holds data[i].
template <typename Add>
void forEachBin(const double* data, int n, const double* edges, int nRanges, int m, Add add) {
  constexpr int kBlock = 256;
  constexpr std::int64_t kCost =
      10;  // operations for a number, some hundred where edges are searched
  std::array<int, kBlock> bins;
  Lookout lookout;
  for (int r = 0; r < nRanges; ++r) {
    const BinFinder finder(edges + std::ptrdiff_t{r} * (m + 1), m);
    const std::ptrdiff_t first = std::ptrdiff_t{r} * m;
    lookout.done(m);
    for (int start = 0, size = 0; start < n; start += size) {
      size = std::min(kBlock, n - start);
      finder.find(data + start, size, bins.data());
      lookout.done(kCost * size);
      for (int i = 0; i < size; ++i) {
        const int k = bins[static_cast<std::size_t>(i)];
        if (k >= 0) {
          add(first + k, start + i);
        }
      }
    }
  }
}

}  // namespace

int binOf(const double* edges, int m, double x) {
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

void tallyInto(std::uint32_t* counts, const double* data, int n, const double* edges, int nRanges,
               int m) {
  std::fill_n(counts, std::ptrdiff_t{nRanges} * m, 0U);
  forEachBin(data, n, edges, nRanges, m, [=](std::ptrdiff_t cell, int) { ++counts[cell]; });
}

void weightedTallyInto(double* sums, const double* data, const double* weights, int n,
                       const double* edges, int nRanges, int m) {
  std::fill_n(sums, std::ptrdiff_t{nRanges} * m, 0.0);
  forEachBin(data, n, edges, nRanges, m,
             [=](std::ptrdiff_t cell, int i) { sums[cell] += weights[i]; });
}

}  // namespace vexel::kernels
