// Sorting of machine numbers: with vector instructions where there are any, else by radix on
// order-preserving keys.
//
// Neither tells -0.0 from 0.0 nor one NaN from another, so NaNs stay out of it, and the zeros and
// NaNs, each contiguous in the result, are written last: the input's own in their input order.

#include <nag2/nag2.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
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

// The zeros and NaNs of the input in their order, when there is anything to tell apart.
template <typename T>
struct Indistinct {
  std::vector<T> zeros;
  std::vector<T> nans;
};

// Copies x to out, which may be x, and collects what it passes.
template <typename T>
Indistinct<T> copyAndCollect(const T* x, std::size_t n, T* out) {
  constexpr std::size_t kBlock = 1024;
  Indistinct<T> found;
  for (std::size_t start = 0; start < n; start += kBlock) {
    const std::size_t end = std::min(n, start + kBlock);
    if constexpr (std::is_floating_point_v<T>) {
      int any = 0;  // without a branch per element: most blocks have nothing to collect
      for (std::size_t i = start; i < end; ++i) {
        any |= !(std::fabs(x[i]) > T{0});
      }
      for (std::size_t i = start; any != 0 && i < end; ++i) {
        if (x[i] == T{0}) {
          found.zeros.push_back(x[i]);
        } else if (x[i] != x[i]) {
          found.nans.push_back(x[i]);
        }
      }
    }
    if (out != x) {
      std::copy(x + start, x + end, out + start);
    }
  }
  return found;
}

// Sorts x[0..n-1], no NaNs, by radix; zeros come out positive.
template <typename T>
void radixSortNumbers(T* x, std::size_t n, bool descending, nag2::KeyOf<T>* scratch) {
  using Key = nag2::KeyOf<T>;
  const Key flip = descending ? static_cast<Key>(~Key{0}) : Key{0};
  // The keys take the place of the numbers until they are sorted (the build has no strict
  // aliasing).
  Key* keys = reinterpret_cast<Key*>(x);
  for (std::size_t i = 0; i < n; ++i) {
    keys[i] = static_cast<Key>(nag2::ascendingKey(x[i]) ^ flip);
  }
  nag2::radixSortKeys(keys, scratch, n);
  for (std::size_t i = 0; i < n; ++i) {
    x[i] = nag2::fromAscendingKey<T>(static_cast<Key>(keys[i] ^ flip));
  }
}

// Sorts n numbers from x into out, which may be x.
template <typename T>
void sortNumbers(const T* x, std::size_t n, bool descending, T* out) {
  using Key = nag2::KeyOf<T>;
  // Memory first, so that a failure leaves an array that is sorted in place as it was.
  std::unique_ptr<Key[]> scratch;
  if (sizeof(T) < 4 || !nag2::vectorSortServes(n)) {
    scratch = std::make_unique_for_overwrite<Key[]>(n);
  }
  const Indistinct<T> equals = copyAndCollect(x, n, out);

  T* first = out;  // of the numbers
  T* last = out + n;
  if (!equals.nans.empty()) {
    last = std::remove_if(out, out + n, [](T v) { return v != v; });
    if (descending) {
      first = std::move_backward(out, last, out + n);
      last = out + n;
    }
    std::copy(equals.nans.begin(), equals.nans.end(), descending ? out : last);
  }

  const auto numbers = static_cast<std::size_t>(last - first);
  if (scratch) {
    radixSortNumbers(first, numbers, descending, scratch.get());
  } else if constexpr (sizeof(T) >= 4) {
    nag2::vectorSort(first, numbers, descending);
  }

  if (!equals.zeros.empty()) {
    T* zeros = descending ? std::lower_bound(first, last, T{0}, std::greater<T>())
                          : std::lower_bound(first, last, T{0});
    std::copy(equals.zeros.begin(), equals.zeros.end(), zeros);
  }
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
