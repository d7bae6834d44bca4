// Sorting of up to sixteen vectors of numbers: their columns by a network of comparisons, then the
// sorted columns by bitonic merges.
//
// A column is a lane of all vectors, so that all but the first steps of a merge compare vectors
// with vectors; only at the end columns become rows of the memory.  K. E. Batcher, Sorting networks
// and their applications, 1968.  Included after Highway's headers, once for each set of
// instructions; hence the guard.
#if defined(NAG2_SORTING_SORT_NETWORKS) == defined(HWY_TARGET_TOGGLE)
#ifdef NAG2_SORTING_SORT_NETWORKS
#undef NAG2_SORTING_SORT_NETWORKS
#else
#define NAG2_SORTING_SORT_NETWORKS
#endif

#include <cstddef>
#include <cstdint>
#include <limits>

HWY_BEFORE_NAMESPACE();
namespace nag2::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

// What no number sorts after.
template <typename T>
inline constexpr T kLast = std::numeric_limits<T>::has_infinity ? std::numeric_limits<T>::infinity()
                                                                : std::numeric_limits<T>::max();

// Size vectors of the tag D, a power of two and not less than their lanes.  Element i of a column
// or of sorted columns side by side lies in lane i / Size of vector i % Size.
template <typename D, int Size>
class Network {
 public:
  using T = hn::TFromD<D>;

  // Sorts n <= Size lanes numbers, none of them NaN.
  static HWY_NOINLINE void sort(T* x, std::size_t n) {
    V v[Size];
    read(x, n, v);
    sortColumns<0, Size>(v);
    mergeColumns<2>(v);
    turnSquares<1>(v);
    write(v, x, n);
  }

 private:
  using V = hn::Vec<D>;
  static constexpr int lanes = static_cast<int>(hn::MaxLanes(D()));
  static_assert(Size >= lanes && Size <= 16);

  // What is not there sorts last.
  static HWY_INLINE void read(const T* x, std::size_t n, V* v) {
    const D d;
    const V none = hn::Set(d, kLast<T>);
    HWY_UNROLL(16)
    for (int r = 0; r < Size; ++r) {
      const std::size_t at = static_cast<std::size_t>(r) * lanes;
      if (at + lanes <= n) {
        v[r] = hn::LoadU(d, x + at);
      } else if (at < n) {
        const auto there = hn::FirstN(d, n - at);
        v[r] = hn::IfThenElse(there, hn::MaskedLoad(there, d, x + at), none);
      } else {
        v[r] = none;
      }
    }
  }

  // Of vectors that hold rows of squares.
  static HWY_INLINE void write(const V* v, T* x, std::size_t n) {
    const D d;
    HWY_UNROLL(16)
    for (int r = 0; r < Size; ++r) {
      const std::size_t at =
          static_cast<std::size_t>(r % lanes) * Size + static_cast<std::size_t>(r / lanes) * lanes;
      if (at + lanes <= n) {
        hn::StoreU(v[r], d, x + at);
      } else if (at < n) {
        hn::BlendedStore(v[r], hn::FirstN(d, n - at), d, x + at);
      }
    }
  }

  // Lanes of high where their number has the bit, else of low.
  template <int Bit>
  static HWY_INLINE V pick(V high, V low) {
    constexpr int bytes = Bit * static_cast<int>(sizeof(T));
    if constexpr (Bit == 1) {
      return hn::OddEven(high, low);
    } else if constexpr (bytes == 8) {
      const hn::Repartition<std::uint64_t, D> wide;
      return hn::BitCast(D(), hn::OddEven(hn::BitCast(wide, high), hn::BitCast(wide, low)));
    } else if constexpr (bytes == 16) {
      return hn::OddEvenBlocks(high, low);
    } else {
      return hn::ConcatUpperLower(D(), high, low);
    }
  }

  // Lanes change places with those whose number differs in the bit.
  template <int Bit>
  static HWY_INLINE V swapped(V v) {
    constexpr int bytes = Bit * static_cast<int>(sizeof(T));
    if constexpr (bytes == 4) {
      return hn::Shuffle2301(v);
    } else if constexpr (bytes == 8) {
      const hn::Repartition<std::uint64_t, D> wide;
      return hn::BitCast(D(), hn::Shuffle01(hn::BitCast(wide, v)));
    } else if constexpr (bytes == 16) {
      return hn::SwapAdjacentBlocks(v);
    } else {
      return hn::ConcatLowerUpper(D(), v, v);
    }
  }

  // Groups of lanes backwards.
  template <int Group>
  static HWY_INLINE V reversed(V v) {
    if constexpr (Group == 2) {
      return swapped<1>(v);
    } else if constexpr (Group == lanes) {
      return hn::Reverse(D(), v);
    } else if constexpr (Group == 4) {
      return hn::Reverse4(D(), v);
    } else {
      return hn::Reverse8(D(), v);
    }
  }

  static HWY_INLINE void order(V& low, V& high) {
    const V least = hn::Min(low, high);
    high = hn::Max(low, high);
    low = least;
  }

  // N vectors from one on: first halves, then the two together.
  template <int From, int N>
  static HWY_INLINE void sortColumns(V* v) {
    if constexpr (N > 1) {
      sortColumns<From, N / 2>(v);
      sortColumns<From + N / 2, N / 2>(v);
      mergeOddEven<From, N, 1>(v);
    }
  }
  template <int From, int N, int Step>
  static HWY_INLINE void mergeOddEven(V* v) {
    if constexpr (2 * Step < N) {
      mergeOddEven<From, N, 2 * Step>(v);
      mergeOddEven<From + Step, N, 2 * Step>(v);
      HWY_UNROLL(16)
      for (int r = From + Step; r + Step < From + N; r += 2 * Step) {
        order(v[r], v[r + Step]);
      }
    } else {
      order(v[From], v[From + Step]);
    }
  }

  // Groups of columns, whose halves are in order, and so on with larger ones.  First each number
  // is compared with the one as far from the other end of the group.
  template <int Group>
  static HWY_INLINE void mergeColumns(V* v) {
    if constexpr (Group <= lanes) {
      HWY_UNROLL(8)
      for (int r = 0; r < Size / 2; ++r) {
        const V other = reversed<Group>(v[Size - 1 - r]);
        const V least = hn::Min(v[r], other);
        const V most = hn::Max(v[r], other);
        v[r] = pick<Group / 2>(most, least);
        v[Size - 1 - r] = reversed<Group>(pick<Group / 2>(least, most));
      }
      orderLanes<Group / 4>(v);
      orderVectors<Size / 2>(v);
      mergeColumns<2 * Group>(v);
    }
  }
  template <int Bit>
  static HWY_INLINE void orderLanes(V* v) {
    if constexpr (Bit > 0) {
      HWY_UNROLL(16)
      for (int r = 0; r < Size; ++r) {
        const V other = swapped<Bit>(v[r]);
        v[r] = pick<Bit>(hn::Max(v[r], other), hn::Min(v[r], other));
      }
      orderLanes<Bit / 2>(v);
    }
  }
  template <int Bit>
  static HWY_INLINE void orderVectors(V* v) {
    if constexpr (Bit > 0) {
      HWY_UNROLL(16)
      for (int r = 0; r < Size; ++r) {
        if ((r & Bit) == 0) {
          order(v[r], v[r + Bit]);
        }
      }
      orderVectors<Bit / 2>(v);
    }
  }

  // In each square of vectors columns become rows.
  template <int Bit>
  static HWY_INLINE void turnSquares(V* v) {
    if constexpr (Bit < lanes) {
      HWY_UNROLL(16)
      for (int r = 0; r < Size; ++r) {
        if ((r & Bit) == 0) {
          const V a = v[r];
          const V b = v[r + Bit];
          v[r] = pick<Bit>(swapped<Bit>(b), a);
          v[r + Bit] = pick<Bit>(b, swapped<Bit>(a));
        }
      }
      turnSquares<2 * Bit>(v);
    }
  }
};

}  // namespace
}  // namespace nag2::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
