// Quicksort with vector instructions: elements go to their side of a pivot a vector at a time, in
// place, and networks sort what is left of some hundred elements.
//
// The first half of this file is compiled once for each set of instructions, in a namespace each;
// the second half, once, picks among them at run time.
#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>

#include "numerics/sorting/vector_sort.hpp"

#ifdef NAG2_HAVE_HIGHWAY

#ifndef HWY_DISABLED_TARGETS
// vectorSortServes leaves narrow vectors to the radix sorts.
#define HWY_DISABLED_TARGETS (HWY_SSSE3 | HWY_SSE4 | HWY_AVX3_DL)
#endif

#ifndef NAG2_SORTING_LANE_ORDERS
#define NAG2_SORTING_LANE_ORDERS
namespace nag2 {
namespace {

// Of each mask of eight lanes those that are set, then the others; a nibble each.
constexpr std::array<std::uint64_t, 256> kLaneOrders = [] {
  std::array<std::uint64_t, 256> all{};
  for (unsigned bits = 0; bits < 256; ++bits) {
    unsigned shift = 0;
    for (const unsigned wanted : {1U, 0U}) {
      for (std::uint64_t lane = 0; lane < 8; ++lane) {
        if ((bits >> lane & 1U) == wanted) {
          all[bits] |= lane << shift;
          shift += 4;
        }
      }
    }
  }
  return all;
}();

}  // namespace
}  // namespace nag2
#endif

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "numerics/sorting/quick_sort.cpp"
#include <hwy/foreach_target.h>
// After it, as it wants:
#include <hwy/highway.h>

#undef NAG2_WIDE_VECTORS
#if HWY_ARCH_X86 && HWY_TARGET <= HWY_AVX2  // or better
#define NAG2_WIDE_VECTORS
#include "numerics/sorting/sort_networks.hpp"
#endif

HWY_BEFORE_NAMESPACE();
namespace nag2::HWY_NAMESPACE {
namespace {

#ifdef NAG2_WIDE_VECTORS

template <typename T>
class QuickSort {
 public:
  static void sort(T* x, std::size_t n) { sortPart(x, n, 2 * static_cast<int>(std::bit_width(n))); }

 private:
  using D = hn::CappedTag<T, 64 / sizeof(T)>;
  using V = hn::Vec<D>;
  static constexpr std::size_t kLanes = hn::MaxLanes(D());
  static constexpr std::size_t kFew = 16 * kLanes;  // sorted by a network
  static constexpr int kVectors = 8;                // read from one side at a time
  static constexpr std::size_t kStep = kVectors * kLanes;

  // Some elements at even distances.
  struct Sample {
    T least;
    T middle;
    T most;

    Sample(const T* x, std::size_t n) {
      T some[64];
      const std::size_t size = n < 1024 ? 16 : n < 8192 ? 32 : 64;
      const std::size_t distance = n / size;
      for (std::size_t i = 0; i < size; ++i) {
        some[i] = x[i * distance + distance / 2];
      }
      sortFew(some, size);
      least = some[0];
      middle = some[size / 2];
      most = some[size - 1];
    }
  };

  // With so many more divisions before it is left to a sort that does without luck.
  static void sortPart(T* x, std::size_t n, int divisions) {
    while (n > kFew) {
      if (--divisions < 0) {
        return sortByHeap(x, n);
      }
      const Sample sample(x, n);
      std::size_t front = 0;
      if (sample.least < sample.middle) {
        front = part<false>(x, n, sample.middle);
      } else {
        // Ties: what is not above them goes to the front.
        if (sample.most == sample.middle && allAre(sample.middle, x, n)) {
          return;
        }
        front = part<true>(x, n, sample.middle);
        if (front == n) {  // nothing is above, and the back is in order
          n = part<false>(x, n, sample.middle);
          continue;
        }
      }
      if (front < n - front) {
        sortPart(x, front, divisions);
        x += front;
        n -= front;
      } else {
        sortPart(x + front, n - front, divisions);
        n = front;
      }
    }
    sortFew(x, n);
  }

  // The smallest network that has room.
  static void sortFew(T* x, std::size_t n) {
    using Four = hn::CappedTag<T, 4>;
    using Eight = hn::CappedTag<T, 8>;
    if (n <= 16) {
      Network<Four, 4>::sort(x, n);
    } else if (n <= 32) {
      Network<Four, 8>::sort(x, n);
    } else if constexpr (kLanes == 4) {
      Network<Four, 16>::sort(x, n);
    } else if (n <= 64) {
      Network<Eight, 8>::sort(x, n);
    } else if (n <= 128) {
      Network<Eight, 16>::sort(x, n);
    } else {
      Network<D, 16>::sort(x, n);
    }
  }

  static HWY_NOINLINE bool allAre(T value, const T* x, std::size_t n) {
    const V all = hn::Set(D(), value);
    std::size_t i = 0;
    for (; i + kLanes <= n; i += kLanes) {
      if (!hn::AllTrue(D(), hn::Eq(hn::LoadU(D(), x + i), all))) {
        return false;
      }
    }
    for (; i < n; ++i) {
      if (x[i] != value) {
        return false;
      }
    }
    return true;
  }

  // J. W. J. Williams, Heapsort, 1964.
  static void sortByHeap(T* x, std::size_t n) {
    for (std::size_t root = n / 2; root-- > 0;) {
      sift(x, root, n);
    }
    while (n > 1) {
      --n;
      const T largest = x[0];
      x[0] = x[n];
      x[n] = largest;
      sift(x, 0, n);
    }
  }
  static void sift(T* x, std::size_t root, std::size_t n) {
    const T value = x[root];
    for (std::size_t child = 2 * root + 1; child < n; child = 2 * root + 1) {
      child += child + 1 < n && x[child] < x[child + 1] ? 1 : 0;
      if (!(value < x[child])) {
        break;
      }
      x[root] = x[child];
      root = child;
    }
    x[root] = value;
  }

  // Brings what is below the pivot, or equal if that counts, to the front; the number of it.
  //
  // Both ends wait beside.  What has been read and not written is the room on both sides together,
  // and the next step is read from the side with less of it, so that either has enough for it.
  template <bool OrEqual>
  static std::size_t part(T* const x, std::size_t n, T pivot) {
    HWY_ALIGN T ends[2 * kStep];
    HWY_ALIGN T rest[kStep];
    std::copy(x, x + kStep, ends);
    std::copy(x + n - kStep, x + n, ends + kStep);
    const T* left = x + kStep;
    const T* right = x + n - kStep;
    Parted<OrEqual> parted(x, x + n, pivot);
    while (static_cast<std::size_t>(right - left) >= kStep) {
      const bool fromLeft = left - parted.front <= parted.back - right;
      const T* const from = fromLeft ? left : right - kStep;
      left += fromLeft ? kStep : 0;
      right -= fromLeft ? 0 : kStep;
      parted.takeStep(from);
    }
    const auto size = static_cast<std::size_t>(right - left);
    std::copy(left, right, rest);
    std::size_t i = 0;
    for (; i + kLanes <= size; i += kLanes) {
      parted.take(hn::LoadU(D(), rest + i));
    }
    for (; i < size; ++i) {
      parted.takeOne(rest[i]);
    }
    parted.takeStep(ends);
    parted.takeStep(ends + kStep);
    return static_cast<std::size_t>(parted.front - x);
  }

  // The places before front and from back on are filled.
  template <bool OrEqual>
  struct Parted {
    T* front;
    T* back;
    T pivot;
    V pivots;

    HWY_INLINE Parted(T* first, T* last, T p)
        : front(first), back(last), pivot(p), pivots(hn::Set(D(), p)) {}

    HWY_INLINE void takeStep(const T* from) {
      V v[kVectors];
      HWY_UNROLL(8)
      for (int i = 0; i < kVectors; ++i) {
        v[i] = hn::LoadU(D(), from + i * kLanes);
      }
      HWY_UNROLL(8)
      for (int i = 0; i < kVectors; ++i) {
        take(v[i]);
      }
    }

    HWY_INLINE void take(V v) {
      const auto low = OrEqual ? hn::Not(hn::Lt(pivots, v)) : hn::Lt(v, pivots);
      const std::size_t count = hn::CountTrue(D(), low);
      if constexpr (kLanes <= 8) {
        // Whole to both sides: what is too much there lies in the room between.
        const V ordered = inOrder(v, low);
        hn::StoreU(ordered, D(), front);
        hn::StoreU(ordered, D(), back - kLanes);
      } else {
        hn::StoreU(hn::Compress(v, low), D(), front);
        hn::CompressBlendedStore(v, hn::Not(low), D(), back - (kLanes - count));
      }
      front += count;
      back -= kLanes - count;
    }

    HWY_INLINE void takeOne(T v) {
      if (OrEqual ? !(pivot < v) : v < pivot) {
        *front++ = v;
      } else {
        *--back = v;
      }
    }

    // The lanes of the mask, then the others.
    static HWY_INLINE V inOrder(V v, hn::Mask<D> first) {
      const hn::RebindToUnsigned<D> d;
      using Index = hn::TFromD<decltype(d)>;
      std::uint8_t bits[8] = {};  // the first of them
      hn::StoreMaskBits(D(), first, bits);
      const auto nibbles = hn::Set(d, static_cast<Index>(kLaneOrders[bits[0]]));
      const auto lane = nibbles >> hn::ShiftLeft<2>(hn::Iota(d, 0));
      return hn::TableLookupLanes(v,
                                  hn::IndicesFromVec(D(), hn::And(lane, hn::Set(d, kLanes - 1))));
    }
  };
};

#else

template <typename T>
struct QuickSort {
  static void sort(T* x, std::size_t n) { std::sort(x, x + n); }
};

#endif

void sortFloats32(float* x, std::size_t n) { QuickSort<float>::sort(x, n); }
void sortFloats64(double* x, std::size_t n) { QuickSort<double>::sort(x, n); }
void sortIntegers32(std::int32_t* x, std::size_t n) { QuickSort<std::int32_t>::sort(x, n); }
void sortIntegers64(std::int64_t* x, std::size_t n) { QuickSort<std::int64_t>::sort(x, n); }
void sortWords64(std::uint64_t* x, std::size_t n) { QuickSort<std::uint64_t>::sort(x, n); }

}  // namespace
}  // namespace nag2::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace nag2 {

HWY_EXPORT(sortFloats32);
HWY_EXPORT(sortFloats64);
HWY_EXPORT(sortIntegers32);
HWY_EXPORT(sortIntegers64);
HWY_EXPORT(sortWords64);

void vectorSort(float* x, std::size_t n) { HWY_DYNAMIC_DISPATCH(sortFloats32)(x, n); }
void vectorSort(double* x, std::size_t n) { HWY_DYNAMIC_DISPATCH(sortFloats64)(x, n); }
void vectorSort(std::int32_t* x, std::size_t n) { HWY_DYNAMIC_DISPATCH(sortIntegers32)(x, n); }
void vectorSort(std::int64_t* x, std::size_t n) { HWY_DYNAMIC_DISPATCH(sortIntegers64)(x, n); }
void vectorSort(std::uint64_t* x, std::size_t n) { HWY_DYNAMIC_DISPATCH(sortWords64)(x, n); }

}  // namespace nag2

#endif  // HWY_ONCE

#else

namespace nag2 {

void vectorSort(float* x, std::size_t n) { std::sort(x, x + n); }
void vectorSort(double* x, std::size_t n) { std::sort(x, x + n); }
void vectorSort(std::int32_t* x, std::size_t n) { std::sort(x, x + n); }
void vectorSort(std::int64_t* x, std::size_t n) { std::sort(x, x + n); }
void vectorSort(std::uint64_t* x, std::size_t n) { std::sort(x, x + n); }

}  // namespace nag2

#endif
