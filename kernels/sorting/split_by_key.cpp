// Selection with elements carried along; the scheme of quickSelect, exchange for exchange.

#include "kernels/sorting/split_by_key.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <utility>

#include "kernels/sorting/select_range.hpp"

namespace vexel::kernels {

namespace {

// Keys with raw elements of a fixed width.
template <std::size_t Width>
struct KeyedElements {
  double* a;
  char* elements;

  void exchange(int i, int j) const {
    std::swap(a[i], a[j]);
    std::array<char, Width> scratch;
    char* const x = elements + static_cast<std::size_t>(i) * Width;
    char* const y = elements + static_cast<std::size_t>(j) * Width;
    std::memcpy(scratch.data(), x, Width);
    std::memmove(x, y, Width);
    std::memcpy(y, scratch.data(), Width);
  }
};

}  // namespace

void splitByKey(double* keys, char* elements, int n, int k, int elementSize) {
  if (n < 1) {
    return;
  }
  k = std::clamp(k, 0, n - 1);
  switch (elementSize) {
    case 1:
      selectEither(KeyedElements<1>{keys, elements}, n, k);
      return;
    case 2:
      selectEither(KeyedElements<2>{keys, elements}, n, k);
      return;
    case 4:
      selectEither(KeyedElements<4>{keys, elements}, n, k);
      return;
    case 16:
      selectEither(KeyedElements<16>{keys, elements}, n, k);
      return;
    default:
      selectEither(KeyedElements<8>{keys, elements}, n, k);
      return;
  }
}

}  // namespace vexel::kernels
