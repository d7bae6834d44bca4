#include "functions/descriptive/column_tiles.hpp"

#include "kernels/vector/row_copies.hpp"

namespace vexel {

namespace {

// n rows of width elements, rows `stride` and columns `apart` elements from one another.
template <typename T>
void copyRows(const T* x, std::ptrdiff_t stride, std::ptrdiff_t apart, std::size_t n,
              std::size_t width, double* to) {
  if (apart == 1) {
    for (std::size_t i = 0; i < n; ++i, x += stride, to += width) {
      for (std::size_t j = 0; j < width; ++j) {
        to[j] = static_cast<double>(x[j]);
      }
    }
    return;
  }
  for (std::size_t j = 0; j < width; ++j, x += apart, ++to) {
    for (std::size_t i = 0; i < n; ++i) {
      to[i * width] = static_cast<double>(x[static_cast<std::ptrdiff_t>(i) * stride]);
    }
  }
}

void copyRows(const Data& x, std::ptrdiff_t first, std::ptrdiff_t apart, std::size_t n,
              std::size_t width, double* to) {
  const std::ptrdiff_t stride = x.stride();
  switch (x.element()) {
    case Element::float32:
      kernels::copyRows(static_cast<const float*>(x.data()) + first, stride, apart, n, width, width,
                        to);
      break;
    case Element::int32:
      copyRows(static_cast<const std::int32_t*>(x.data()) + first, stride, apart, n, width, to);
      break;
    case Element::int64:
      copyRows(static_cast<const std::int64_t*>(x.data()) + first, stride, apart, n, width, to);
      break;
    default:
      kernels::copyRows(static_cast<const double*>(x.data()) + first, stride, apart, n, width,
                        width, to);
  }
}

}  // namespace

ColumnTile::ColumnTile(const Columns& columns)
    : columns_(columns),
      direct_(columns.first().element() == Element::float64 && columns.apart() == 1),
      lanes_(columns.apart() != 1 && columns.first().stride() == 1),
      stride_(columns.first().stride()) {
  if (!direct_) {
    copies_ = std::make_unique_for_overwrite<double[]>(std::min(columns.count(), most()) * step());
  }
}

void ColumnTile::moveTo(std::size_t begin, std::size_t width) {
  begin_ = begin;
  width_ = width;
  held_ = 0;
}

ColumnTile::Rows ColumnTile::rows(std::size_t begin, std::size_t n) {
  const std::ptrdiff_t first = static_cast<std::ptrdiff_t>(begin_) * columns_.apart() +
                               static_cast<std::ptrdiff_t>(begin) * stride_;
  if (direct_) {
    return {static_cast<const double*>(columns_.first().data()) + first, stride_};
  }
  if (begin > 0 || n != held_) {
    copyRows(columns_.first(), first, columns_.apart(), n, width_, copies_.get());
    held_ = begin == 0 ? n : 0;
  }
  return {copies_.get(), static_cast<std::ptrdiff_t>(width_)};
}

}  // namespace vexel
