#include "kernels/vector/row_copies.hpp"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/vector/row_copies.cpp"
#include "kernels/vector/each_target.hpp"
#include "kernels/vector/transpose.hpp"

HWY_BEFORE_NAMESPACE();
namespace vexel::kernels::HWY_NAMESPACE {
namespace {

constexpr std::size_t kSide = 8;  // of a block

inline __attribute__((always_inline)) void readEight(const double* x, Eight& to) {
  __builtin_memcpy(&to, x, sizeof(Eight));
}
inline __attribute__((always_inline)) void readEight(const float* x, Eight& to) {
  using EightFloats = float __attribute__((vector_size(32)));
  EightFloats v;
  __builtin_memcpy(&v, x, sizeof v);
  to = __builtin_convertvector(v, Eight);
}

// Eight lanes of eight elements.
template <typename T>
void turnBlock(const T* x, std::ptrdiff_t apart, std::size_t pitch, double* to) {
  Eight v[kSide];
  for (std::size_t lane = 0; lane < kSide; ++lane) {
    readEight(x + static_cast<std::ptrdiff_t>(lane) * apart, v[lane]);
    __builtin_prefetch(x + static_cast<std::ptrdiff_t>(lane + kSide) * apart);  // what comes later
  }
  transpose(v);
  for (std::size_t row = 0; row < kSide; ++row) {
    __builtin_memcpy(to + row * pitch, &v[row], sizeof(Eight));
  }
}

template <typename T>
void copyOneByOne(const T* x, std::ptrdiff_t stride, std::ptrdiff_t apart, std::size_t n,
                  std::size_t width, std::size_t pitch, double* to) {
  for (std::size_t j = 0; j < width; ++j, x += apart, ++to) {
    for (std::size_t i = 0; i < n; ++i) {
      to[i * pitch] = static_cast<double>(x[static_cast<std::ptrdiff_t>(i) * stride]);
    }
  }
}

// Rows whose elements follow each other.
template <typename T>
void copyAcross(const T* x, std::ptrdiff_t stride, std::size_t n, std::size_t width,
                std::size_t pitch, double* to) {
  for (std::size_t i = 0; i < n; ++i, x += stride, to += pitch) {
    for (std::size_t j = 0; j + kSide <= width; j += kSide) {
      Eight v;
      readEight(x + j, v);
      __builtin_memcpy(to + j, &v, sizeof v);
      __builtin_prefetch(x + j + width);  // what comes next most often
    }
    for (std::size_t j = width / kSide * kSide; j < width; ++j) {
      to[j] = static_cast<double>(x[j]);
    }
  }
}

template <typename T>
void copyAny(const T* x, std::ptrdiff_t stride, std::ptrdiff_t apart, std::size_t n,
             std::size_t width, std::size_t pitch, double* to) {
  if (apart == 1 && pitch == width && stride == static_cast<std::ptrdiff_t>(width)) {
    copyAcross(x, 0, 1, n * width, 0, to);  // one long row
    return;
  }
  if (apart == 1) {
    copyAcross(x, stride, n, width, pitch, to);
    return;
  }
  if (stride != 1 || n < kSide || width < kSide) {
    copyOneByOne(x, stride, apart, n, width, pitch, to);
    return;
  }
  // The last blocks of a row or column may reach back into the ones before them.
  for (std::size_t j = 0; j < width; j += kSide) {
    const std::size_t column = std::min(j, width - kSide);
    const T* const from = x + static_cast<std::ptrdiff_t>(column) * apart;
    for (std::size_t i = 0; i < n; i += kSide) {
      const std::size_t row = std::min(i, n - kSide);
      turnBlock(from + row, apart, pitch, to + row * pitch + column);
    }
  }
}

void copyDoubles(const double* x, std::ptrdiff_t stride, std::ptrdiff_t apart, std::size_t n,
                 std::size_t width, std::size_t pitch, double* to) {
  copyAny(x, stride, apart, n, width, pitch, to);
}
void copyFloats(const float* x, std::ptrdiff_t stride, std::ptrdiff_t apart, std::size_t n,
                std::size_t width, std::size_t pitch, double* to) {
  copyAny(x, stride, apart, n, width, pitch, to);
}

}  // namespace
}  // namespace vexel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace vexel::kernels {

HWY_EXPORT(copyDoubles);
HWY_EXPORT(copyFloats);

void copyRows(const double* x, std::ptrdiff_t stride, std::ptrdiff_t apart, std::size_t n,
              std::size_t width, std::size_t pitch, double* to) {
  HWY_DYNAMIC_DISPATCH(copyDoubles)(x, stride, apart, n, width, pitch, to);
}
void copyRows(const float* x, std::ptrdiff_t stride, std::ptrdiff_t apart, std::size_t n,
              std::size_t width, std::size_t pitch, double* to) {
  HWY_DYNAMIC_DISPATCH(copyFloats)(x, stride, apart, n, width, pitch, to);
}

}  // namespace vexel::kernels

#endif
