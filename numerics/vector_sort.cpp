// Sorting with vector instructions: what the Highway library offers, or nothing.

#include "vector_sort.hpp"

#ifdef NAG2_HAVE_HIGHWAY

#include <hwy/contrib/sort/vqsort.h>
#include <hwy/targets.h>

namespace nag2 {

namespace {

// Fewer elements are sorted by the radix sorts in a few microseconds.
constexpr std::size_t kFewElements = 256;

// Vectors of 128 bits do not beat a radix sort.
bool wideVectors() {
  static const bool found = (hwy::SupportedTargets() & (HWY_AVX2 | HWY_AVX3 | HWY_AVX3_DL)) != 0 &&
                            hwy::Sorter::HaveFloat64();
  return found;
}

template <typename T>
void sortWith(T* x, std::size_t n, bool descending) {
  const hwy::Sorter sorter;
  if (descending) {
    sorter(x, n, hwy::SortDescending());
  } else {
    sorter(x, n, hwy::SortAscending());
  }
}

}  // namespace

bool vectorSortServes(std::size_t n) { return n >= kFewElements && wideVectors(); }

void vectorSort(std::int32_t* x, std::size_t n, bool descending) { sortWith(x, n, descending); }
void vectorSort(std::int64_t* x, std::size_t n, bool descending) { sortWith(x, n, descending); }
void vectorSort(std::uint64_t* x, std::size_t n, bool descending) { sortWith(x, n, descending); }
void vectorSort(float* x, std::size_t n, bool descending) { sortWith(x, n, descending); }
void vectorSort(double* x, std::size_t n, bool descending) { sortWith(x, n, descending); }

}  // namespace nag2

#else

namespace nag2 {

bool vectorSortServes(std::size_t) { return false; }

void vectorSort(std::int32_t*, std::size_t, bool) {}
void vectorSort(std::int64_t*, std::size_t, bool) {}
void vectorSort(std::uint64_t*, std::size_t, bool) {}
void vectorSort(float*, std::size_t, bool) {}
void vectorSort(double*, std::size_t, bool) {}

}  // namespace nag2

#endif
