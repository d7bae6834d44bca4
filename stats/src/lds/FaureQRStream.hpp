// Faure stream (kernels/classic/faure_points.hpp).
#pragma once

#include "kernels/classic/faure_points.hpp"
#include "lds/VexelQRStream.hpp"

class FaureQRStream : public VexelQRStream {
 public:
  // Tables of a gigabyte: a base from 46341 on has one digit, and one row to each of its tables.
  static constexpr int kMaxDimension = 1 << 28;

  // A stream that starts behind the point of index b^startExponent - 1, 2 <= dimension <=
  // kMaxDimension.  A start exponent beyond the digits of the base makes a stream that is exhausted
  // from the start.
  FaureQRStream(VKernelVector kv, int dimension, int startExponent);

  int reset(VKernelVector kv) override;

  // 0 once the points are exhausted, and from then on until a reset.
  int next(VKernelVector kv, double* out, int pointStride, int coordStride, int count) override;

  int skip(VKernelVector kv, V_INT n) override;
  const char* getType(VKernelVector kv) const override;

 private:
  vexel::kernels::classic::FaurePoints points_;
};
