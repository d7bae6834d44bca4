// The partition step that the quicksort and the selection share (Hoare, Quicksort, The Computer
// Journal 5, 1962), on plain and paired arrays.
//
// Long ranges are scanned in blocks without branches (Edelkamp and Weiss, BlockQuicksort: How
// Branch Mispredictions don't affect Quicksort, 2016).  Both ways exchange the k-th misplaced
// element from the left with the k-th from the right, so the array that they leave is the same.
#pragma once

#include <algorithm>
#include <cstdint>
#include <utility>

#include "kernels/lookout.hpp"
#include "kernels/sorting/sorting.hpp"

namespace vexel::kernels {

// Values alone, or values that carry weights along.
struct PlainArray {
  double* a;
  void exchange(int i, int j) const { std::swap(a[i], a[j]); }
};
struct PairedArray {
  double* a;
  double* w;
  void exchange(int i, int j) const {
    std::swap(a[i], a[j]);
    std::swap(w[i], w[j]);
  }
};

// Without NaNs in the range the plain comparison gives the same answers and costs less.
template <bool kMissing>
constexpr bool sortsAfter(double x, double y) noexcept {
  if constexpr (kMissing) {
    return follows(x, y);
  } else {
    return x > y;
  }
}

// Ranges of more elements are worth a poll.
inline constexpr int kWorthALook = 1 << 12;

// Elements scanned at a time; offsets inside a block fit 8 bits.
inline constexpr int kPartitionBlock = 64;

// Does the exchanges of the scan from i + 1 upwards and j - 1 downwards, as long as two whole
// blocks lie between; leaves i and j where the one-by-one scan goes on.
template <bool kMissing, typename Array>
void partitionBlocks(Array array, double p, int& i, int& j) {
  const double* a = array.a;
  std::uint8_t left[kPartitionBlock];
  std::uint8_t right[kPartitionBlock];
  int leftStart = 0;
  int rightStart = 0;
  int leftCount = 0;
  int rightCount = 0;
  int first = i + 1;
  int last = j - 1;
  Lookout lookout;
  while (last - first >= 2 * kPartitionBlock - 1) {
    lookout.done(std::int64_t{2} * kPartitionBlock);
    if (leftCount == 0) {
      leftStart = 0;
      for (int c = 0; c < kPartitionBlock; ++c) {
        left[leftCount] = static_cast<std::uint8_t>(c);
        leftCount += !sortsAfter<kMissing>(p, a[first + c]);
      }
    }
    if (rightCount == 0) {
      rightStart = 0;
      for (int c = 0; c < kPartitionBlock; ++c) {
        right[rightCount] = static_cast<std::uint8_t>(c);
        rightCount += !sortsAfter<kMissing>(a[last - c], p);
      }
    }
    const int pairs = std::min(leftCount, rightCount);
    for (int k = 0; k < pairs; ++k) {
      array.exchange(first + left[leftStart + k], last - right[rightStart + k]);
    }
    leftStart += pairs;
    rightStart += pairs;
    leftCount -= pairs;
    rightCount -= pairs;
    first += leftCount == 0 ? kPartitionBlock : 0;
    last -= rightCount == 0 ? kPartitionBlock : 0;
  }
  i = leftCount == 0 ? first - 1 : first + left[leftStart] - 1;
  j = rightCount == 0 ? last + 1 : last - right[rightStart] + 1;
}

// Splits the elements strictly between i and j about p.  On return j < i, everything up to j sorts
// no later and everything from i on no earlier than p.  a[i] and a[j], or what lies beyond, must
// stop the scans: some element at or before i not after p, some at or after j not before p.
template <bool kMissing, typename Array>
void partitionAround(Array array, double p, int& i, int& j) {
  const double* a = array.a;
  partitionBlocks<kMissing>(array, p, i, j);
  for (;;) {
    do {
      ++i;
    } while (sortsAfter<kMissing>(p, a[i]));
    do {
      --j;
    } while (sortsAfter<kMissing>(a[j], p));
    if (j < i) {
      return;
    }
    array.exchange(i, j);
  }
}

// The way out when partitioning makes no headway: sorts [lo, hi] in O(n log n) whatever the input.
template <bool kMissing, typename Array>
void heapSortRange(Array array, int lo, int hi) {
  const double* a = array.a + lo;
  const auto sink = [&](std::int64_t i, std::int64_t end) {
    for (std::int64_t child = 2 * i + 1; child < end; child = 2 * i + 1) {
      child += child + 1 < end && sortsAfter<kMissing>(a[child + 1], a[child]);
      if (!sortsAfter<kMissing>(a[child], a[i])) {
        return;
      }
      array.exchange(lo + static_cast<int>(i), lo + static_cast<int>(child));
      i = child;
    }
  };
  constexpr int kSinkCost = 100;  // operations in a large heap, near enough
  Lookout lookout;
  const std::int64_t n = std::int64_t{hi} - lo + 1;
  for (std::int64_t i = n / 2; i-- > 0;) {
    lookout.done(kSinkCost);
    sink(i, n);
  }
  for (std::int64_t end = n; end-- > 1;) {
    lookout.done(kSinkCost);
    array.exchange(lo, lo + static_cast<int>(end));
    sink(0, end);
  }
}

// True when some of x[lo..hi] is a NaN; a pass at the speed of memory.
inline bool anyMissing(const double* x, int lo, int hi) {
  constexpr int kStep = 1024;
  for (int i = lo; i <= hi;) {
    const int end = hi - i < kStep ? hi : i + kStep - 1;
    int missing = 0;
    for (int k = i; k <= end; ++k) {
      missing |= x[k] != x[k];
    }
    if (missing) {
      return true;
    }
    if (end == hi) {
      break;
    }
    i = end + 1;
  }
  return false;
}

}  // namespace vexel::kernels
