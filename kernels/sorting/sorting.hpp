// In-place sorting and selection of doubles, plain and with a second array (weights) that makes
// every move of the first.
//
// One order throughout: numbers as usual, every NaN after every number, NaNs equal to one another;
// a missing value is a NaN, so missing values go last.  Nothing here allocates; an interrupt
// (watch.hpp) leaves the array permuted in some way.  An empty range is left alone.  w is never
// compared, and must not be null.
//
// The exchanges are part of the interface: how ties carry their weights along, and the order that
// a selection leaves behind it (trimmed sums run in that order), show in the last bits of results.
#pragma once

namespace vexel::kernels {

// True when x sorts after y.  Compiles without a branch.
constexpr bool follows(double x, double y) noexcept { return (x > y) | ((x != x) & (y == y)); }

// Sorts a[0..n-1]: a quicksort that leaves runs of at most five, then an insertion sort.
//
// Stable up to five elements, not beyond.  O(n log n) with a stack of O(log n) for every input; on
// input made to defeat the median of three a heap sort takes over, and the order among ties is
// then its own.
void sortData(double* a, int n);
void sortData(double* a, double* w, int n);

// The first of the two steps: a[lo..hi] apart from runs of at most five out of order.
void quickSort(double* a, int lo, int hi);
void quickSort(double* a, double* w, int lo, int hi);

// Sorts a[lo..hi], stable.  O(n + inversions).
void insertionSort(double* a, int lo, int hi);
void insertionSort(double* a, double* w, int lo, int hi);

// The value of rank k (from 0) of a[0..n-1], put at a[k] with none greater before it and none less
// after it.  O(n) on average, O(n log n) at worst.
//
// The plain form does nothing and gives NaN when k is not in [0, n); the paired form clamps k, and
// gives NaN when there are no values.
double quickSelect(double* a, int n, int k);
double quickSelect(double* a, double* w, int n, int k);

// Puts the value of every rank in ranks[0..m-1] (ascending, each in [0, n)) at its place in
// a[0..n-1], so that a[ranks[j]] can be read.  O(n log m) on average, O(n log n) at worst.
void selectRanks(double* a, int n, const int* ranks, int m);

}  // namespace vexel::kernels
