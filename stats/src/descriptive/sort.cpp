// The full sorts: quicksort to short runs with one insertion sort to finish (Sedgewick,
// Implementing Quicksort Programs, CACM 21, 1978), and a heap sort (Williams, Algorithm 232, CACM
// 7, 1964).

#include <bit>

#include "descriptive/partition.hpp"

namespace {

// Runs of up to this difference of their bounds are left to the insertion sort.
constexpr int kShortRun = 4;

// Elements that may be looked at before input counts as made to defeat the median of three.  A
// random order needs about 1.2 n log2 n.
std::int64_t workLimit(std::int64_t n) {
  return 4 * n * static_cast<int>(std::bit_width(static_cast<std::uint64_t>(n)));
}

// Orders a[lo], a[mid], a[hi], hides the median at a[hi - 1] and splits the rest about it; the
// median ends at i.
template <bool kMissing, typename Array>
void splitRange(Array array, int lo, int hi, int& i, int& j) {
  const double* a = array.a;
  const int mid = lo + (hi - lo) / 2;
  if (sortsAfter<kMissing>(a[lo], a[mid])) {
    array.exchange(lo, mid);
  }
  if (sortsAfter<kMissing>(a[lo], a[hi])) {
    array.exchange(lo, hi);
  }
  if (sortsAfter<kMissing>(a[mid], a[hi])) {
    array.exchange(mid, hi);
  }
  array.exchange(mid, hi - 1);
  i = lo;
  j = hi - 1;
  partitionAround<kMissing>(array, a[hi - 1], i, j);
  array.exchange(i, hi - 1);
}

// The two parts do not touch each other, so the shorter one goes first, by recursion: the stack
// holds at most log2 n calls.
template <bool kMissing, typename Array>
void quickSort(Array array, int lo, int hi, std::int64_t& work) {
  while (hi - lo > kShortRun) {
    work -= hi - lo;
    if (work < 0) {
      heapSortRange<kMissing>(array, lo, hi);
      return;
    }
    int i = 0;
    int j = 0;
    splitRange<kMissing>(array, lo, hi, i, j);
    if (j - lo < hi - i) {
      quickSort<kMissing>(array, lo, j, work);
      lo = i + 1;
    } else {
      quickSort<kMissing>(array, i + 1, hi, work);
      hi = j;
    }
  }
}

template <typename Array>
void quickSortEither(Array array, int lo, int hi) {
  std::int64_t work = workLimit(std::int64_t{hi} - lo + 1);
  if (anyMissing(array.a, lo, hi)) {
    quickSort<true>(array, lo, hi, work);
  } else {
    quickSort<false>(array, lo, hi, work);
  }
}

}  // namespace

void STATS_QuickSort_HW(double* a, int lo, int hi) {
  if (lo < hi) {
    quickSortEither(PlainArray{a}, lo, hi);
  }
}

// An array may be its own weights; exchanging both would then exchange nothing, and the scans would
// find no element to stop them.
void STATS_QuickSort_HW(double* a, double* w, int lo, int hi) {
  if (a == w) {
    STATS_QuickSort_HW(a, lo, hi);
  } else if (lo < hi) {
    quickSortEither(PairedArray{a, w}, lo, hi);
  }
}

void STATS_InsertionSort_HW(double* a, int lo, int hi) {
  for (int j = lo + 1; j <= hi; ++j) {
    const double value = a[j];
    int i = j;
    for (; i > lo && STATS_SortsAfter_HW(a[i - 1], value); --i) {
      a[i] = a[i - 1];
    }
    a[i] = value;
  }
}

void STATS_InsertionSort_HW(double* a, double* w, int lo, int hi) {
  for (int j = lo + 1; j <= hi; ++j) {
    const double value = a[j];
    const double partner = w[j];
    int i = j;
    for (; i > lo && STATS_SortsAfter_HW(a[i - 1], value); --i) {
      a[i] = a[i - 1];
      w[i] = w[i - 1];
    }
    a[i] = value;
    w[i] = partner;
  }
}

void STATS_SortData_HW(double* a, int n) {
  STATS_QuickSort_HW(a, 0, n - 1);
  STATS_InsertionSort_HW(a, 0, n - 1);
}

void STATS_SortData_HW(double* a, double* w, int n) {
  STATS_QuickSort_HW(a, w, 0, n - 1);
  STATS_InsertionSort_HW(a, w, 0, n - 1);
}

void STATS_Shift_HW(double* a, double* w, int i, int hi) {
  const double value = a[i];
  const double partner = w[i];
  for (std::int64_t child = 2 * std::int64_t{i} + 1; child <= hi; child = 2 * std::int64_t{i} + 1) {
    auto d = static_cast<int>(child);
    if (d < hi && a[d] == a[d] && (a[d + 1] != a[d + 1] || a[d + 1] > a[d])) {
      ++d;
    }
    // The usual comparison, not the NaN-last order: a NaN on its way down does not stop here.
    if (value >= a[d]) {
      break;
    }
    a[i] = a[d];
    w[i] = w[d];
    i = d;
  }
  a[i] = value;
  w[i] = partner;
}

void STATS_HeapSort_HW(double* a, double* w, int n) {
  for (int i = n / 2 - 1; i >= 0; --i) {
    STATS_Shift_HW(a, w, i, n - 1);
  }
  for (int t = n - 1; t >= 1; --t) {
    std::swap(a[0], a[t]);
    if (w != a) {  // an array may be its own weights
      std::swap(w[0], w[t]);
    }
    STATS_Shift_HW(a, w, 0, t - 1);
  }
}
