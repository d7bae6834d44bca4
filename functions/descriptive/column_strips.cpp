#include "functions/descriptive/column_strips.hpp"

#include <algorithm>
#include <cstdint>

#include "kernels/vector/row_copies.hpp"

namespace vexel {

namespace {

constexpr std::size_t kAligned = 64 / sizeof(double);

double* alignedWithin(double* memory) {
  const auto past = reinterpret_cast<std::uintptr_t>(memory) % 64 / sizeof(double);
  return memory + (kAligned - past) % kAligned;
}

template <typename T>
void copyWhole(const T* x, std::ptrdiff_t stride, std::ptrdiff_t apart, std::size_t n,
               std::size_t width, double* to) {
  for (std::size_t i = 0; i < n; ++i, x += stride, to += ColumnStrip::width) {
    for (std::size_t j = 0; j < width; ++j) {
      to[j] = static_cast<double>(x[static_cast<std::ptrdiff_t>(j) * apart]);
    }
  }
}

}  // namespace

ColumnStrip::ColumnStrip(const Columns& columns)
    : from_(columns),
      memory_(std::make_unique<double[]>(width * columns.first().size() + kAligned)),
      rows_(alignedWithin(memory_.get())) {}

void ColumnStrip::moveTo(std::size_t begin) {
  there_ = std::min(width, from_.count() - begin);
  copy(begin);
  kernels::lookAtStrip(rows_, from_.first().size(), facts_);
}

bool ColumnStrip::anyMissing() const {
  return std::any_of(facts_.missing, facts_.missing + there_, [](double n) { return n > 0.0; });
}

void ColumnStrip::copy(std::size_t begin) {
  const Data& first = from_.first();
  const std::size_t n = first.size();
  const std::ptrdiff_t stride = first.stride();
  const std::ptrdiff_t apart = from_.apart();
  const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(begin) * apart;
  switch (first.element()) {
    case Element::float32:
      kernels::copyRows(static_cast<const float*>(first.data()) + at, stride, apart, n, there_,
                        width, rows_);
      break;
    case Element::int32:
      copyWhole(static_cast<const std::int32_t*>(first.data()) + at, stride, apart, n, there_,
                rows_);
      break;
    case Element::int64:
      copyWhole(static_cast<const std::int64_t*>(first.data()) + at, stride, apart, n, there_,
                rows_);
      break;
    default:
      kernels::copyRows(static_cast<const double*>(first.data()) + at, stride, apart, n, there_,
                        width, rows_);
  }
}

}  // namespace vexel
