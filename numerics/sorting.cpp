// Sorting of machine numbers by radix on order-preserving keys.
//
// Keys do not tell -0.0 from 0.0 nor one NaN from another, so floats are sorted by key and the
// zeros and NaNs, which are contiguous in the result, are then written over with the input's own in
// their input order.

#include <nag2/nag2.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <new>
#include <type_traits>
#include <vector>

#include "failure.hpp"
#include "radix_sort.hpp"
#include "sort_keys.hpp"

namespace {

// The zeros and NaNs of the input in their order, when there is anything to tell apart.
template <typename T>
struct Indistinct {
  std::vector<T> zeros;
  std::vector<T> nans;
};

template <typename T>
Indistinct<T> indistinct(const T* x, std::size_t n) {
  Indistinct<T> found;
  if constexpr (std::is_floating_point_v<T>) {
    for (std::size_t i = 0; i < n; ++i) {
      if (x[i] == T{0}) {
        found.zeros.push_back(x[i]);
      } else if (x[i] != x[i]) {
        found.nans.push_back(x[i]);
      }
    }
  }
  return found;
}

// Sorts n numbers from x into out, which may be x.
template <typename T>
void sortNumbers(const T* x, std::size_t n, bool descending, T* out) {
  using Key = nag2::KeyOf<T>;
  const Indistinct<T> equals = indistinct(x, n);
  const Key flip = descending ? static_cast<Key>(~Key{0}) : Key{0};

  const auto scratch = std::make_unique_for_overwrite<Key[]>(n);  // before anything is written
  // The keys take the place of the result until they are sorted (the build has no strict aliasing).
  Key* keys = reinterpret_cast<Key*>(out);
  for (std::size_t i = 0; i < n; ++i) {
    keys[i] = static_cast<Key>(nag2::ascendingKey(x[i]) ^ flip);
  }
  nag2::radixSortKeys(keys, scratch.get(), n);

  const auto zeroKey = static_cast<Key>(nag2::ascendingKey(T{0}) ^ flip);
  const auto firstZero = std::lower_bound(keys, keys + n, zeroKey) - keys;
  for (std::size_t i = 0; i < n; ++i) {
    out[i] = nag2::fromAscendingKey<T>(static_cast<Key>(keys[i] ^ flip));
  }
  std::copy(equals.zeros.begin(), equals.zeros.end(), out + firstZero);
  T* firstNaN = descending ? out : out + (n - equals.nans.size());
  std::copy(equals.nans.begin(), equals.nans.end(), firstNaN);
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
