// Sorting of integers with vector instructions: what the Highway library offers, or nothing.

#include "vector_sort.hpp"

#ifdef NAG2_HAVE_HIGHWAY

#include <hwy/contrib/sort/vqsort.h>
#include <hwy/targets.h>

namespace {

bool haveWideVectors() {
  static const bool have = (hwy::SupportedTargets() & (HWY_AVX2 | HWY_AVX3 | HWY_AVX3_DL)) != 0;
  return have;
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

bool nag2::vectorSortServes(std::size_t n) {
  constexpr std::size_t kFew = 256;  // done in a few microseconds by any sort
  return n >= kFew && haveWideVectors();
}
void nag2::vectorSort(std::int32_t* x, std::size_t n, bool down) { sortWith(x, n, down); }
void nag2::vectorSort(std::int64_t* x, std::size_t n, bool down) { sortWith(x, n, down); }
void nag2::vectorSort(std::uint64_t* x, std::size_t n, bool down) { sortWith(x, n, down); }

#else

bool nag2::vectorSortServes(std::size_t) { return false; }
void nag2::vectorSort(std::int32_t*, std::size_t, bool) {}
void nag2::vectorSort(std::int64_t*, std::size_t, bool) {}
void nag2::vectorSort(std::uint64_t*, std::size_t, bool) {}

#endif
