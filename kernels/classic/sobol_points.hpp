// Sobol's direction numbers, generator matrices, and runs of points without going back to each
// index.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vexel::kernels::classic {

struct SobolNumbers {
  const std::uint64_t* v;  // number k of dimension j is v[j * rowLength + k]
  std::ptrdiff_t rowLength;
  int dimension;
  int precision;  // how many numbers a dimension has; coordinates are over 2^precision
};

// Writes the points of index, index + 1, ..., which may wrap around: coordinate j of point i goes
// to out[i * pointStride + j * coordStride].
void writeSobolPoints(const SobolNumbers& numbers, std::uint32_t index, int count, double* out,
                      std::ptrdiff_t pointStride, std::ptrdiff_t coordStride);

// What a dimension but the first starts from: a primitive polynomial of its degree over GF(2), by
// the code of its inner coefficients.
struct SobolPolynomial {
  int degree;
  std::int32_t code;
};

// Continues the initial direction integers m[0 .. degree - 1] to precision of them.
void continueDirections(std::uint64_t* m, SobolPolynomial polynomial, int precision);

// Direction integers as direction numbers, in place.
void toDirectionNumbers(std::uint64_t* m, int precision);

// Writes n entries of a generator matrix's row: the leading bits of the direction integers m,
// continued by the polynomial's recurrence.  Of a degree above n, as many entries as the degree.
void leadingBits(const std::int64_t* m, SobolPolynomial polynomial, int n, std::int32_t* bits);

}  // namespace vexel::kernels::classic
