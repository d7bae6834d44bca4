// The full sorts: quicksort to short runs with one insertion sort to finish (Sedgewick,
// Implementing Quicksort Programs, CACM 21, 1978).

#include <bit>

#include "kernels/sorting/partition.hpp"
#include "kernels/watch.hpp"

namespace vexel::kernels {

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
    if (hi - lo > kWorthALook) {
      poll();
    }
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

void quickSort(double* a, int lo, int hi) {
  if (lo < hi) {
    quickSortEither(PlainArray{a}, lo, hi);
  }
}

// An array may be its own weights; exchanging both would then exchange nothing, and the scans would
// find no element to stop them.
void quickSort(double* a, double* w, int lo, int hi) {
  if (a == w) {
    quickSort(a, lo, hi);
  } else if (lo < hi) {
    quickSortEither(PairedArray{a, w}, lo, hi);
  }
}

void insertionSort(double* a, int lo, int hi) {
  forEach(hi - lo, [=](int before) {
    int i = lo + before + 1;
    const double value = a[i];
    for (; i > lo && follows(a[i - 1], value); --i) {
      a[i] = a[i - 1];
    }
    a[i] = value;
  });
}

void insertionSort(double* a, double* w, int lo, int hi) {
  forEach(hi - lo, [=](int before) {
    int i = lo + before + 1;
    const double value = a[i];
    const double partner = w[i];
    for (; i > lo && follows(a[i - 1], value); --i) {
      a[i] = a[i - 1];
      w[i] = w[i - 1];
    }
    a[i] = value;
    w[i] = partner;
  });
}

void sortData(double* a, int n) {
  quickSort(a, 0, n - 1);
  insertionSort(a, 0, n - 1);
}

void sortData(double* a, double* w, int n) {
  quickSort(a, w, 0, n - 1);
  insertionSort(a, w, 0, n - 1);
}

}  // namespace vexel::kernels
