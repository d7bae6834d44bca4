// Faure's points: coordinate k of point n is the radical inverse, in the smallest prime base b not
// below the dimension, of the digits of n multiplied by the k-th power of the Pascal matrix.
// H. Faure, Discrepance de suites associees a un systeme de numeration (en dimension s), Acta
// Arithmetica 41 (1982); points in base-b Gray-code order after S. Tezuka, Uniform Random Numbers:
// Theory and Practice (1995), section 6.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vexel::kernels::classic {

class FaurePoints {
 public:
  // Starts behind the point of index b^startExponent - 1; exhausted from the start when the
  // exponent is beyond the digits of the base.
  FaurePoints(int dimension, int startExponent);

  // Back to where it started.
  void restart();

  // Writes count points: coordinate j of point i goes to out[i * pointStride + j * coordStride].
  // False once every index that the digits can hold has been used, and from then on.
  bool next(double* out, std::ptrdiff_t pointStride, std::ptrdiff_t coordStride, int count);

  // As many calls of next for one point: past the last one the points are exhausted.
  void skip(std::int64_t n);

 private:
  void buildGenerators();
  void moveTo(std::int64_t counter);
  std::int64_t counter() const;
  int increment();
  void addGenerator(int j);
  std::size_t generator(int j, int i) const;

  int dimension_ = 0;
  int base_ = 0;
  int digits_ = 0;  // m, digits of an index; 0: no tables
  bool exhausted_ = false;
  std::int64_t start_ = 1;          // index of the first point
  std::vector<int> counterDigits_;  // m + 1, least significant first; the last one ends the count
  std::vector<std::int32_t> weights_;  // b^(m-1-j), m of them
  std::int32_t denominator_ = 0;       // b^m

  // Digit tables run over the coordinates fastest: cell [row * dimension + k].
  std::vector<std::int32_t> generators_;  // C_j,i for i <= j: row j (j + 1) / 2 + i
  std::vector<std::int32_t> y_;           // digit i of the coordinates: row i
  std::vector<std::int32_t> x_;           // sum over i of digit i times weight i
};

}  // namespace vexel::kernels::classic
