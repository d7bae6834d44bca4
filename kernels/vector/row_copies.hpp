// Columns or lanes of a matrix as rows of doubles, blocks of eight by eight at a time where vectors
// can be turned over.
#pragma once

#include <cstddef>

namespace vexel::kernels {

// Element i of column j, x[i * stride + j * apart], goes to to[i * pitch + j]: n rows, width <=
// pitch columns.
void copyRows(const double* x, std::ptrdiff_t stride, std::ptrdiff_t apart, std::size_t n,
              std::size_t width, std::size_t pitch, double* to);
void copyRows(const float* x, std::ptrdiff_t stride, std::ptrdiff_t apart, std::size_t n,
              std::size_t width, std::size_t pitch, double* to);

}  // namespace vexel::kernels
