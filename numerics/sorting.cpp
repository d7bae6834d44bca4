// Sorting of machine numbers: as signed integers with vector instructions where there are any, else
// by radix on unsigned keys.
//
// Neither keeps apart -0.0 from 0.0 or one NaN from another as they came, so the zeros and NaNs,
// which are contiguous in the result, are written over last with the input's own in their input
// order.

#include <nag2/nag2.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <new>
#include <type_traits>
#include <vector>

#include "failure.hpp"
#include "radix_sort.hpp"
#include "sort_keys.hpp"
#include "vector_sort.hpp"

namespace {

// The zeros and NaNs of the input in their order.
template <typename T>
struct Indistinct {
  std::vector<T> zeros;
  std::vector<T> nans;

  // Looks through x[0..n-1]: first without a branch per element, for most blocks hold neither.
  void collect(const T* x, std::size_t n) {
    int any = 0;
    for (std::size_t i = 0; i < n; ++i) {
      any |= static_cast<int>(!(std::fabs(x[i]) > T{0}));
    }
    for (std::size_t i = 0; any != 0 && i < n; ++i) {
      if (x[i] == T{0}) {
        zeros.push_back(x[i]);
      } else if (x[i] != x[i]) {
        nans.push_back(x[i]);
      }
    }
  }

  // Writes them over their equals in out[0..n-1].
  void putBack(T* out, std::size_t n, bool descending) const {
    T* const first = descending ? out + nans.size() : out;
    T* const last = first + (n - nans.size());
    std::copy(nans.begin(), nans.end(), descending ? out : last);
    if (!zeros.empty()) {
      T* const firstZero = descending ? std::lower_bound(first, last, T{0}, std::greater<T>())
                                      : std::lower_bound(first, last, T{0});
      std::copy(zeros.begin(), zeros.end(), firstZero);
    }
  }
};

// Both sorts take blocks that stay in the first cache for all that is done with them.
constexpr std::size_t kBlock = 1024;

// Sorts n integers or floats of 4 or 8 bytes from x into out, which may be x.
template <typename T>
void sortByVectors(const T* x, std::size_t n, bool descending, T* out) {
  if constexpr (std::is_integral_v<T>) {
    if (out != x) {
      std::copy_n(x, n, out);
    }
    nag2::vectorSort(out, n, descending);
  } else {
    using Integer = nag2::SignedOf<T>;
    // The integers take the place of the result (the build has no strict aliasing).
    auto* const integers = reinterpret_cast<Integer*>(out);
    Indistinct<T> equals;
    Integer signs = 0;
    for (std::size_t start = 0; start < n; start += kBlock) {
      const std::size_t end = std::min(n, start + kBlock);
      equals.collect(x + start, end - start);
      for (std::size_t i = start; i < end; ++i) {
        const auto bits = std::bit_cast<Integer>(x[i]);
        integers[i] = nag2::mirrorNegative(bits);
        signs |= bits;
      }
    }
    nag2::vectorSort(integers, n, descending);
    if (signs < 0) {
      std::transform(integers, integers + n, integers, nag2::mirrorNegative<Integer>);
    }
    // NaNs are at both ends, by their signs.
    const std::vector<T>& nans = equals.nans;
    const auto atFront = static_cast<std::size_t>(std::count_if(
        nans.begin(), nans.end(), [=](T v) { return std::signbit(v) != descending; }));
    if (!nans.empty()) {
      std::memmove(descending ? out + nans.size() : out, out + atFront,
                   (n - nans.size()) * sizeof(T));
    }
    equals.putBack(out, n, descending);
  }
}

// The same for all types.
template <typename T>
void sortByRadix(const T* x, std::size_t n, bool descending, T* out) {
  using Key = nag2::KeyOf<T>;
  const Key flip = descending ? static_cast<Key>(~Key{0}) : Key{0};
  const auto scratch = std::make_unique_for_overwrite<Key[]>(n);
  auto* const keys = reinterpret_cast<Key*>(out);
  Indistinct<T> equals;
  for (std::size_t start = 0; start < n; start += kBlock) {
    const std::size_t end = std::min(n, start + kBlock);
    if constexpr (std::is_floating_point_v<T>) {
      equals.collect(x + start, end - start);
    }
    for (std::size_t i = start; i < end; ++i) {
      keys[i] = static_cast<Key>(nag2::ascendingKey(x[i]) ^ flip);
    }
  }
  nag2::radixSortKeys(keys, scratch.get(), n);
  for (std::size_t i = 0; i < n; ++i) {
    out[i] = nag2::fromAscendingKey<T>(static_cast<Key>(keys[i] ^ flip));
  }
  equals.putBack(out, n, descending);
}

template <typename T>
void sortNumbers(const T* x, std::size_t n, bool descending, T* out) {
  if constexpr (sizeof(T) >= 4) {
    if (nag2::vectorSortServes(n)) {
      return sortByVectors(x, n, descending, out);
    }
  }
  sortByRadix(x, n, descending, out);
}

bool knownOrder(int order, const char* function, NagError* fail) {
  if (order == Nag_Ascending || order == Nag_Descending) {
    return true;
  }
  nag2::setFailure(fail, NAG2_BAD_ORDER, function,
                   "the order code is neither ascending nor descending");
  return false;
}

}  // namespace

extern "C" void q43352(double* x, size_t n, int order, NagError* fail) {
  if (!knownOrder(order, "q43352", fail)) {
    return;
  }
  try {
    sortNumbers(x, n, order == Nag_Descending, x);
  } catch (const std::bad_alloc&) {
    nag2::setFailure(fail, NAG2_NO_MEMORY, "q43352",
                     "there is not enough memory to sort the elements");
  }
}

extern "C" void nag2_sort_typed(const void* data, size_t n, int kind, int order, void* out,
                                NagError* fail) {
  constexpr const char* kName = "nag2_sort_typed";
  if (!knownOrder(order, kName, fail)) {
    return;
  }
  const bool descending = order == Nag_Descending;
  const auto sortAs = [&]<typename T>(T*) {
    sortNumbers(static_cast<const T*>(data), n, descending, static_cast<T*>(out));
  };
  try {
    switch (kind) {
      case NAG2_INT8:
        return sortAs(static_cast<std::int8_t*>(nullptr));
      case NAG2_INT16:
        return sortAs(static_cast<std::int16_t*>(nullptr));
      case NAG2_INT32:
        return sortAs(static_cast<std::int32_t*>(nullptr));
      case NAG2_INT64:
        return sortAs(static_cast<std::int64_t*>(nullptr));
      case NAG2_FLOAT64:
        return sortAs(static_cast<double*>(nullptr));
      case NAG2_FLOAT32:
        return sortAs(static_cast<float*>(nullptr));
      default:
        nag2::setFailure(fail, NAG2_DOMAIN, kName,
                         "the kind of the elements is none that can be sorted");
    }
  } catch (const std::bad_alloc&) {
    nag2::setFailure(fail, NAG2_NO_MEMORY, kName,
                     "there is not enough memory to sort the elements");
  }
}
