#include "kernels/vector/column_extremes.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/vector/column_extremes.cpp"
#include "kernels/vector/each_target.hpp"

HWY_BEFORE_NAMESPACE();
namespace vexel::kernels::HWY_NAMESPACE {
namespace {

#ifdef VEXEL_HAVE_HIGHWAY

namespace hn = hwy::HWY_NAMESPACE;

template <End end, typename T>
struct Extreme {
  using Tag = hn::ScalableTag<T>;
  using Vector = hn::Vec<Tag>;
  static constexpr std::size_t lanes = hn::MaxLanes(Tag());
  static constexpr T none =
      end == End::least ? std::numeric_limits<T>::infinity() : -std::numeric_limits<T>::infinity();

  Vector value;
  hn::Mask<Tag> missing;

  HWY_INLINE Extreme() : value(hn::Set(Tag(), none)), missing(hn::FirstN(Tag(), 0)) {}
  HWY_INLINE explicit Extreme(Vector from) : value(from), missing(hn::FirstN(Tag(), 0)) {}

  static HWY_INLINE Vector ofTwo(Vector a, Vector b) {
    if constexpr (end == End::least) {
      return hn::Min(a, b);
    } else {
      return hn::Max(a, b);
    }
  }
  HWY_INLINE void take(Vector x) {
    const auto isMissing = hn::IsNaN(x);
    value = ofTwo(value, hn::IfThenElse(isMissing, value, x));
    missing = hn::Or(missing, isMissing);
  }
  HWY_INLINE void take(const Extreme& other) {
    value = ofTwo(value, other.value);
    missing = hn::Or(missing, other.missing);
  }
  HWY_INLINE T ofAll() const {
    if constexpr (end == End::least) {
      return hn::GetLane(hn::MinOfLanes(Tag(), value));
    } else {
      return hn::GetLane(hn::MaxOfLanes(Tag(), value));
    }
  }
};

// One vector of columns down n rows.
template <End end, typename T>
HWY_INLINE void goDown(const T* x, std::ptrdiff_t stride, std::size_t n, T* extremes,
                       std::uint8_t* missing) {
  using E = Extreme<end, T>;
  const typename E::Tag d;
  E found(hn::LoadU(d, extremes));
  for (std::size_t i = 0; i < n; ++i, x += stride) {
    found.take(hn::LoadU(d, x));
  }
  hn::StoreU(found.value, d, extremes);
  if (!hn::AllFalse(d, found.missing)) {
    HWY_ALIGN T which[E::lanes];
    hn::Store(hn::IfThenElseZero(found.missing, hn::Set(d, T{1})), d, which);
    for (std::size_t j = 0; j < E::lanes; ++j) {
      missing[j] |= which[j] > T{0};
    }
  }
}

template <End end, typename T>
void ofRows(const T* x, std::ptrdiff_t stride, std::size_t n, std::size_t width, T* extremes,
            std::uint8_t* missing) {
  using E = Extreme<end, T>;
  const typename E::Tag d;
  if (width < E::lanes) {
    const auto there = hn::FirstN(d, width);
    HWY_ALIGN T held[E::lanes] = {};
    std::uint8_t absent[E::lanes] = {};
    std::copy_n(extremes, width, held);
    for (std::size_t i = 0; i < n; ++i, x += stride) {
      HWY_ALIGN T row[E::lanes];
      hn::Store(hn::MaskedLoad(there, d, x), d, row);
      goDown<end>(static_cast<const T*>(row), 0, 1, static_cast<T*>(held),
                  static_cast<std::uint8_t*>(absent));
    }
    std::copy_n(held, width, extremes);
    for (std::size_t j = 0; j < width; ++j) {
      missing[j] |= absent[j];
    }
    return;
  }
  constexpr std::size_t together = 8;
  for (std::size_t i = 0; i < n; i += together) {
    const T* const from = x + static_cast<std::ptrdiff_t>(i) * stride;
    const std::size_t rows = std::min(together, n - i);
    for (std::size_t k = 0; k < width; k += E::lanes) {
      const std::size_t at = std::min(k, width - E::lanes);  // may reach back
      goDown<end>(from + at, stride, rows, extremes + at, missing + at);
    }
  }
}

template <End end, typename T>
HWY_INLINE Extreme<end, T> ofLane(const T* x, std::size_t n) {
  using E = Extreme<end, T>;
  const typename E::Tag d;
  E found;
  if (n == 0) {
    return found;
  }
  if (n < E::lanes) {
    const auto there = hn::FirstN(d, n);
    found.take(hn::IfThenElse(there, hn::MaskedLoad(there, d, x), hn::Set(d, E::none)));
    return found;
  }
  std::size_t i = 0;
  if (n >= 4 * E::lanes) {
    E more[3];
    for (; i + 4 * E::lanes <= n; i += 4 * E::lanes) {
      for (std::size_t k = 0; k < 4 * E::lanes; k += 64 / sizeof(T)) {
        __builtin_prefetch(x + i + 4096 / sizeof(T) + k);  // there may be nothing
      }
      found.take(hn::LoadU(d, x + i));
      for (std::size_t k = 0; k < 3; ++k) {
        more[k].take(hn::LoadU(d, x + i + (k + 1) * E::lanes));
      }
    }
    for (const E& e : more) {
      found.take(e);
    }
  }
  for (; i < n; i += E::lanes) {
    found.take(hn::LoadU(d, x + std::min(i, n - E::lanes)));  // may reach back
  }
  return found;
}

template <End end, typename T>
void ofLanes(const T* x, std::ptrdiff_t apart, std::size_t n, std::size_t count, T* extremes,
             std::uint8_t* missing) {
  using E = Extreme<end, T>;
  for (std::size_t j = 0; j < count; ++j, x += apart) {
    const E found = ofLane<end>(x, n);
    const T value = found.ofAll();
    extremes[j] = end == End::least ? std::min(extremes[j], value) : std::max(extremes[j], value);
    missing[j] |= !hn::AllFalse(typename E::Tag(), found.missing);
  }
}

#else

template <End end, typename T>
void takeOne(T x, T& extreme, std::uint8_t& missing) {
  missing |= static_cast<std::uint8_t>(x != x);
  extreme = (end == End::least ? x < extreme : x > extreme) ? x : extreme;
}

template <End end, typename T>
void ofRows(const T* x, std::ptrdiff_t stride, std::size_t n, std::size_t width, T* extremes,
            std::uint8_t* missing) {
  for (std::size_t i = 0; i < n; ++i, x += stride) {
    for (std::size_t j = 0; j < width; ++j) {
      takeOne<end>(x[j], extremes[j], missing[j]);
    }
  }
}

template <End end, typename T>
void ofLanes(const T* x, std::ptrdiff_t apart, std::size_t n, std::size_t count, T* extremes,
             std::uint8_t* missing) {
  for (std::size_t j = 0; j < count; ++j, x += apart) {
    for (std::size_t i = 0; i < n; ++i) {
      takeOne<end>(x[i], extremes[j], missing[j]);
    }
  }
}

#endif

template <typename T>
void rowsOf(End end, const T* x, std::ptrdiff_t stride, std::size_t n, std::size_t width,
            T* extremes, std::uint8_t* missing) {
  if (end == End::least) {
    ofRows<End::least>(x, stride, n, width, extremes, missing);
  } else {
    ofRows<End::greatest>(x, stride, n, width, extremes, missing);
  }
}
template <typename T>
void lanesOf(End end, const T* x, std::ptrdiff_t apart, std::size_t n, std::size_t count,
             T* extremes, std::uint8_t* missing) {
  if (end == End::least) {
    ofLanes<End::least>(x, apart, n, count, extremes, missing);
  } else {
    ofLanes<End::greatest>(x, apart, n, count, extremes, missing);
  }
}

void rowsOfDoubles(End end, const double* x, std::ptrdiff_t stride, std::size_t n,
                   std::size_t width, double* extremes, std::uint8_t* missing) {
  rowsOf(end, x, stride, n, width, extremes, missing);
}
void rowsOfFloats(End end, const float* x, std::ptrdiff_t stride, std::size_t n, std::size_t width,
                  float* extremes, std::uint8_t* missing) {
  rowsOf(end, x, stride, n, width, extremes, missing);
}
void lanesOfDoubles(End end, const double* x, std::ptrdiff_t apart, std::size_t n,
                    std::size_t count, double* extremes, std::uint8_t* missing) {
  lanesOf(end, x, apart, n, count, extremes, missing);
}
void lanesOfFloats(End end, const float* x, std::ptrdiff_t apart, std::size_t n, std::size_t count,
                   float* extremes, std::uint8_t* missing) {
  lanesOf(end, x, apart, n, count, extremes, missing);
}

}  // namespace
}  // namespace vexel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace vexel::kernels {

HWY_EXPORT(rowsOfDoubles);
HWY_EXPORT(rowsOfFloats);
HWY_EXPORT(lanesOfDoubles);
HWY_EXPORT(lanesOfFloats);

void extremesOfRows(End end, const double* x, std::ptrdiff_t stride, std::size_t n,
                    std::size_t width, double* extremes, std::uint8_t* missing) {
  HWY_DYNAMIC_DISPATCH(rowsOfDoubles)(end, x, stride, n, width, extremes, missing);
}
void extremesOfRows(End end, const float* x, std::ptrdiff_t stride, std::size_t n,
                    std::size_t width, float* extremes, std::uint8_t* missing) {
  HWY_DYNAMIC_DISPATCH(rowsOfFloats)(end, x, stride, n, width, extremes, missing);
}
void extremesOfLanes(End end, const double* x, std::ptrdiff_t apart, std::size_t n,
                     std::size_t count, double* extremes, std::uint8_t* missing) {
  HWY_DYNAMIC_DISPATCH(lanesOfDoubles)(end, x, apart, n, count, extremes, missing);
}
void extremesOfLanes(End end, const float* x, std::ptrdiff_t apart, std::size_t n,
                     std::size_t count, float* extremes, std::uint8_t* missing) {
  HWY_DYNAMIC_DISPATCH(lanesOfFloats)(end, x, apart, n, count, extremes, missing);
}

}  // namespace vexel::kernels

#endif
