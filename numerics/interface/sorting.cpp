// Sorting of machine numbers: with vector instructions where there are any, very many of them as
// signed integers; else by radix on unsigned keys.
//
// None of these keeps apart -0.0 from 0.0 or one NaN from another as they came, so the zeros and
// NaNs, which are contiguous in the result, are written over last with the input's own in their
// input order.

#include <nag2/nag2.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <new>
#include <type_traits>
#include <vector>

#include "kernels/lookout.hpp"
#include "kernels/watch.hpp"
#include "numerics/interface/failure.hpp"
#include "numerics/sorting/radix_sort.hpp"
#include "numerics/sorting/sort_in_steps.hpp"
#include "numerics/sorting/sort_keys.hpp"
#include "numerics/sorting/two_threads.hpp"
#include "numerics/sorting/vector_sort.hpp"

namespace {

// The zeros and NaNs of the input in their order; nothing where no zero is negative and no NaN is
// there.
template <typename T>
struct Indistinct {
  std::vector<T> zeros;
  std::vector<T> nans;

  void collect(const T* x, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
      if (x[i] == T{0}) {
        zeros.push_back(x[i]);
      } else if (x[i] != x[i]) {  // NOLINT(misc-redundant-expression): a NaN
        nans.push_back(x[i]);
      }
    }
  }

  void append(const Indistinct& later) {
    zeros.insert(zeros.end(), later.zeros.begin(), later.zeros.end());
    nans.insert(nans.end(), later.nans.begin(), later.nans.end());
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

// The integer that sorts as x does, NaNs at the ends by their signs and -0.0 just below 0.0.
template <typename T>
nag2::SignedOf<T> toInteger(T x) {
  if constexpr (std::is_integral_v<T>) {
    return x;
  } else {
    return nag2::mirrorNegative(std::bit_cast<nag2::SignedOf<T>>(x));
  }
}

// A middling element: the median of some taken at even distances.
template <typename T>
nag2::SignedOf<T> pivotOf(const T* x, std::size_t n) {
  std::array<nag2::SignedOf<T>, 255> some;
  for (std::size_t i = 0; i < some.size(); ++i) {
    some[i] = toInteger(x[i * (n / some.size())]);
  }
  std::nth_element(some.begin(), some.begin() + some.size() / 2, some.end());
  return some[some.size() / 2];
}

// Below this many elements a second thread costs more than it saves.
constexpr std::size_t kWorthAThread = std::size_t{1} << 17;

// A stretch of the input on its way into integers.
template <typename T>
struct Stretch {
  using Integer = nag2::SignedOf<T>;
  using Parting = nag2::Parting<Integer>;

  const T* x;
  std::size_t n;
  std::size_t before = 0;  // how many elements sort before the pivot
  bool someNegative = false;
  bool hasIndistinct = false;
  Indistinct<T> equals{};

  const Integer* bits() const { return reinterpret_cast<const Integer*>(x); }

  // done() is called now and then.
  template <typename Done>
  void look(Parting by, Done done) {
    for (std::size_t start = 0; start < n; start += kBlock) {
      if (start % nag2::kPassStep == 0 && start > 0) {
        done();
      }
      const std::size_t size = std::min(n - start, kBlock);
      const auto facts = nag2::lookThrough(bits() + start, size, by);
      before += facts.before;
      someNegative |= facts.bits < 0;
      hasIndistinct |= by.floats && facts.hasNegativeZeroOrNan;
    }
  }

  void collect() { equals.collect(x, n); }

  template <typename Done>
  void part(Parting by, Integer* front, Integer* back, Done done) const {
    for (std::size_t start = 0; start < n; start += nag2::kPassStep) {
      const std::size_t size = std::min(n - start, nag2::kPassStep);
      const std::size_t parted = nag2::part(bits() + start, size, by, front, back);
      front += parted;
      back += size - parted;
      done();
    }
  }
};

template <typename T>
void sortIntegers(nag2::SignedOf<T>* x, std::size_t n, bool descending, bool someNegative,
                  bool watched, nag2::SortProgress& progress) {
  nag2::vectorSortWatched(x, n, descending, watched, progress);
  if (std::is_floating_point_v<T> && someNegative) {
    std::transform(x, x + n, x, nag2::mirrorNegative<nag2::SignedOf<T>>);
  }
}

// Runs both, the first on a thread that may be told to stop.
template <typename First, typename Second>
void inTwoThreads(First first, Second second) {
  nag2::runBoth(
      [&] {
        try {
          first();
        } catch (const nag2::SortStopped&) {
        }
      },
      second);
}

// Sorts x into out, other memory, with two threads: each looks at half of the input, brings its
// elements to their side of a pivot, and sorts a side.
template <typename T>
Indistinct<T> sortInTwoThreads(const T* x, std::size_t n, nag2::Parting<nag2::SignedOf<T>> by,
                               nag2::SignedOf<T>* out) {
  Stretch<T> first{x, n / 2};
  Stretch<T> second{x + n / 2, n - n / 2};
  nag2::SortProgress passes(n);
  const auto done = [&] { passes.done(0); };
  inTwoThreads([&] { first.look(by, done); }, [&] { second.look(by, done); });
  if (first.hasIndistinct || second.hasIndistinct) {
    inTwoThreads([&] { first.collect(); }, [&] { second.collect(); });
  }
  nag2::SignedOf<T>* const middle = out + first.before + second.before;
  inTwoThreads(
      [&] { first.part(by, out, middle, done); },
      [&] { second.part(by, out + first.before, middle + (first.n - first.before), done); });
  const bool someNegative = first.someNegative || second.someNegative;
  const bool watched = vexel::kernels::currentWatcher != nullptr;
  const std::size_t before = first.before + second.before;
  nag2::SortProgress progress(n - before);
  inTwoThreads(
      [&] { sortIntegers<T>(out, before, by.descending, someNegative, watched, progress); },
      [&] { sortIntegers<T>(middle, n - before, by.descending, someNegative, watched, progress); });
  first.equals.append(second.equals);
  return std::move(first.equals);
}

// Sorts floats as they are, with infinities for the NaNs until these are put back.
template <typename T>
Indistinct<T> sortFloats(const T* x, std::size_t n, bool descending, T* out) {
  Indistinct<T> equals;
  if (nag2::copyLooking(x, n, out)) {
    equals.collect(x, n);
    std::transform(x, x + n, out,
                   [](T v) { return std::isnan(v) ? std::numeric_limits<T>::infinity() : v; });
  }
  nag2::vectorSort(out, n, descending);
  return equals;
}

// Sorts integers, or floats by way of integers.
template <typename T>
Indistinct<T> sortAsIntegers(const T* x, std::size_t n, bool descending, nag2::SignedOf<T>* out) {
  nag2::Parting<nag2::SignedOf<T>> by{std::is_floating_point_v<T>, descending, 0};
  if (reinterpret_cast<const T*>(out) != x && n >= kWorthAThread && nag2::haveTwoProcessors()) {
    by.pivot = pivotOf(x, n);
    return sortInTwoThreads(x, n, by, out);
  }
  Stretch<T> whole{x, n};
  whole.look(by, [] { vexel::kernels::poll(); });
  if (whole.hasIndistinct) {
    whole.collect();
  }
  vexel::kernels::inStretches(n, [&](std::size_t begin, std::size_t end) {
    std::transform(x + begin, x + end, out + begin, toInteger<T>);
  });
  nag2::SortProgress progress(n);
  sortIntegers<T>(out, n, descending, whole.someNegative, vexel::kernels::currentWatcher != nullptr,
                  progress);
  return std::move(whole.equals);
}

// Sorts n integers or floats of 4 or 8 bytes from x into out, which may be x.
template <typename T>
void sortByVectors(const T* x, std::size_t n, bool descending, T* out) {
  if constexpr (std::is_floating_point_v<T>) {
    if (n < kWorthAThread) {
      return sortFloats(x, n, descending, out).putBack(out, n, descending);
    }
  }
  // The integers take the place of the result (the build has no strict aliasing).
  auto* const integers = reinterpret_cast<nag2::SignedOf<T>*>(out);
  const Indistinct<T> equals = sortAsIntegers(x, n, descending, integers);
  if constexpr (std::is_floating_point_v<T>) {
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
  vexel::kernels::Lookout lookout;
  for (std::size_t start = 0; start < n; start += kBlock) {
    lookout.done(kBlock);
    const std::size_t end = std::min(n, start + kBlock);
    if constexpr (std::is_floating_point_v<T>) {
      equals.collect(x + start, end - start);
    }
    for (std::size_t i = start; i < end; ++i) {
      keys[i] = static_cast<Key>(nag2::ascendingKey(x[i]) ^ flip);
    }
  }
  nag2::radixSortKeys(keys, scratch.get(), n);
  vexel::kernels::forEach(n, [&](std::size_t i) {
    out[i] = nag2::fromAscendingKey<T>(static_cast<Key>(keys[i] ^ flip));
  });
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
