// Selection of the k-th smallest by partitioning about the median of three (Hoare, Algorithm 65:
// FIND, CACM 4, 1961, with the median's partners as sentinels).

#include <bit>
#include <limits>
#include <span>

#include "kernels/sorting/select_range.hpp"

namespace vexel::kernels {

namespace {

constexpr double kNothing = std::numeric_limits<double>::quiet_NaN();

// Splits as long as there are ranks to place on a side, and goes only there.  The side with fewer
// elements goes first, by recursion: the stack holds at most log2 n calls.
template <bool kMissing>
void placeRanks(PlainArray array, int l, int r, std::span<const int> ranks, std::int64_t& work) {
  constexpr int kShortRun = 16;
  while (!ranks.empty()) {
    if (r - l > kWorthALook) {
      poll();
    }
    work -= r - l;
    if (r - l < kShortRun) {
      insertionSort(array.a, l, r);
      return;
    }
    if (work < 0) {
      heapSortRange<kMissing>(array, l, r);
      return;
    }
    int i = 0;
    int j = 0;
    splitRange<kMissing>(array, l, r, i, j);
    const auto below = std::lower_bound(ranks.begin(), ranks.end(), j);
    const auto above = std::lower_bound(below, ranks.end(), i);  // between: equal to the median
    const std::span<const int> left(ranks.begin(), below);
    const std::span<const int> right(above, ranks.end());
    if (j - l < r - i) {
      placeRanks<kMissing>(array, l, j - 1, left, work);
      l = i;
      ranks = right;
    } else {
      placeRanks<kMissing>(array, i, r, right, work);
      r = j - 1;
      ranks = left;
    }
  }
}

}  // namespace

double quickSelect(double* a, int n, int k) {
  return k >= 0 && k < n ? selectEither(PlainArray{a}, n, k) : kNothing;
}

double quickSelect(double* a, double* w, int n, int k) {
  if (n <= 0) {
    return kNothing;
  }
  const int rank = std::clamp(k, 0, n - 1);
  // An array may be its own weights: exchanging both would exchange nothing.
  return a == w ? quickSelect(a, n, rank) : selectEither(PairedArray{a, w}, n, rank);
}

void selectRanks(double* a, int n, const int* ranks, int m) {
  const std::span<const int> wanted(ranks, static_cast<std::size_t>(std::max(m, 0)));
  // Up to two ranks cost what a selection does; more of them at most what a sort does.
  std::int64_t work = kWorkLimit * n * static_cast<int>(std::bit_width(wanted.size()));
  if (anyMissing(a, 0, n - 1)) {
    placeRanks<true>(PlainArray{a}, 0, n - 1, wanted, work);
  } else {
    placeRanks<false>(PlainArray{a}, 0, n - 1, wanted, work);
  }
}

}  // namespace vexel::kernels
