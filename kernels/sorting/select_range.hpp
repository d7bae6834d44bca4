// Selection of the k-th smallest by partitioning about the median of three (Hoare, Algorithm 65:
// FIND, CACM 4, 1961, with the median's partners as sentinels), on anything that partition.hpp can
// exchange.
#pragma once

#include <cstdint>

#include "kernels/sorting/partition.hpp"

namespace vexel::kernels {

// Elements that may be looked at, in multiples of n, before input counts as made to defeat the
// median of three.  A random order needs about 3 n for a median, a rise and fall 1.6 n log2 n.
inline constexpr std::int64_t kWorkLimit = 64;

// Puts the median of a[l], a[mid], a[r] at l + 1 with the others as sentinels round the rest, and
// splits the rest about it; the median ends at j.
template <bool kMissing, typename Array>
void splitRange(Array array, int l, int r, int& i, int& j) {
  const double* a = array.a;
  array.exchange(l + (r - l) / 2, l + 1);
  if (sortsAfter<kMissing>(a[l], a[r])) {
    array.exchange(l, r);
  }
  if (sortsAfter<kMissing>(a[l + 1], a[r])) {
    array.exchange(l + 1, r);
  }
  if (sortsAfter<kMissing>(a[l], a[l + 1])) {
    array.exchange(l, l + 1);
  }
  i = l + 1;
  j = r;
  partitionAround<kMissing>(array, a[l + 1], i, j);
  array.exchange(l + 1, j);
}

template <bool kMissing, typename Array>
double selectRange(Array array, int n, int k) {
  const double* a = array.a;
  std::int64_t work = kWorkLimit * n;
  int l = 0;
  int r = n - 1;
  while (r > l + 1) {
    work -= r - l;
    if (work < 0) {
      heapSortRange<kMissing>(array, l, r);
      return a[k];
    }
    int i = 0;
    int j = 0;
    splitRange<kMissing>(array, l, r, i, j);
    if (j >= k) {
      r = j - 1;
    }
    if (j <= k) {
      l = i;
    }
  }
  if (r == l + 1 && sortsAfter<kMissing>(a[l], a[r])) {
    array.exchange(l, r);
  }
  return a[k];
}

// a[k] after the array has been rearranged about position k, 0 <= k < n.
template <typename Array>
double selectEither(Array array, int n, int k) {
  if (n > kWorthALook) {
    poll();
  }
  return anyMissing(array.a, 0, n - 1) ? selectRange<true>(array, n, k)
                                       : selectRange<false>(array, n, k);
}

}  // namespace vexel::kernels
