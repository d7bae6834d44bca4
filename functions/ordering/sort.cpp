// Sorting by the numerical library's sorts: vector instructions where there are any, else by radix.
#include <nag2/nag2.h>

#include <algorithm>
#include <new>

#include "functions/data/elements.hpp"
#include "vexel/ordering.hpp"

namespace vexel {

namespace {

template <typename T>
constexpr int kKind = NAG2_FLOAT64;
template <>
constexpr int kKind<float> = NAG2_FLOAT32;
template <>
constexpr int kKind<std::int32_t> = NAG2_INT32;
template <>
constexpr int kKind<std::int64_t> = NAG2_INT64;

template <typename T>
void sortInto(std::span<const T> x, T* out) {
  NagError fail;
  fail.code = NAG2_OK;
  nag2_sort_typed(x.data(), x.size(), kKind<T>, Nag_Ascending, out, &fail);
  if (fail.code != NAG2_OK) {
    throw std::bad_alloc();
  }
}

// How many of the sorted elements are to be kept.
template <typename T>
std::size_t present(std::span<const T> sorted, Missing missing) {
  const auto last =
      std::partition_point(sorted.begin(), sorted.end(), [](T v) { return !isMissing(v); });
  return missing == Missing::omit ? static_cast<std::size_t>(last - sorted.begin()) : sorted.size();
}

}  // namespace

template <DataElement T>
std::size_t sort(Data x, std::span<T> out, const SortOptions& options) {
  requireElement<T>(x);
  requireSize("out", out.size(), x.size());
  if (options.missing == Missing::raise) {
    requireNoneMissing("sort", x);
  }
  onElements(x, [&]<typename E>(std::span<const E> elements) {
    if constexpr (std::is_same_v<E, T>) {
      sortInto(elements, out.data());
    } else if constexpr (std::is_same_v<T, double>) {
      std::vector<E> sorted(elements.size());
      sortInto(elements, sorted.data());
      std::copy(sorted.begin(), sorted.end(), out.begin());
    }
  });
  return present(std::span<const T>(out), options.missing);
}
template std::size_t sort(Data, std::span<double>, const SortOptions&);
template std::size_t sort(Data, std::span<float>, const SortOptions&);
template std::size_t sort(Data, std::span<std::int32_t>, const SortOptions&);
template std::size_t sort(Data, std::span<std::int64_t>, const SortOptions&);

}  // namespace vexel
