// Sobol stream over direction numbers that the host supplies.
// I. M. Sobol, On the distribution of points in a cube and the approximate evaluation of integrals,
// USSR Computational Mathematics and Mathematical Physics 7 (1967); points in Gray-code order after
// I. A. Antonov and V. M. Saleev (same journal, 19, 1979).
#pragma once

#include <cstdint>

#include "lds/VexelQRStream.hpp"

class SobolQRStream : public VexelQRStream {
 public:
  static constexpr int kMaxPrecision = 62;

  // directions  two-dimensional, 64-bit integers, rowLength to a row: row j starts with the initial
  //             direction integers of dimension j and is overwritten with its direction numbers
  // polynomials 32-bit: inner coefficients of each dimension's primitive polynomial as a number
  // degrees     32-bit: the polynomials' degrees
  // precision   bits of the direction numbers, 1 .. kMaxPrecision
  //
  // The tables are used in place and kept alive by GcMark.  Raises a host error for tables of other
  // types, or too small for what will be read and written.
  SobolQRStream(VKernelVector kv, int dimension, ALGEB directions, V_INT rowLength,
                ALGEB polynomials, ALGEB degrees, V_INT precision);

  static int getMaxPrecision(VKernelVector /*kv*/) { return kMaxPrecision; }

  void GcMark(VKernelVector kv) override;

  // To the origin, index 0, although a new stream starts at index 1.
  int reset(VKernelVector kv) override;

  // The index wraps around in 32 bits.
  int next(VKernelVector kv, double* out, int pointStride, int coordStride, int count) override;
  int skip(VKernelVector kv, V_INT k) override;
  const char* getType(VKernelVector kv) const override;
  ALGEB getOptions(VKernelVector kv) const override;

  // Writes n entries for row (from 0) into out[row * n ...]: the leading bits of the row's
  // direction integers, continued by the polynomial's recurrence over GF(2).  A row of higher
  // degree than n writes as many entries as its degree.
  static void genBinaryMatrixRow(VKernelVector kv, const std::int64_t* directions, int row, int n,
                                 int rowStride, std::int32_t* out, const std::int32_t* polynomials,
                                 const std::int32_t* degrees);

  // Rows 0 .. d - 1 of d entries each.
  static void genBinaryMatrix(VKernelVector kv, const std::int64_t* directions, int d,
                              int rowStride, std::int32_t* out, const std::int32_t* polynomials,
                              const std::int32_t* degrees);

 private:
  void initialize(VKernelVector kv, V_INT precision);
  void genDirectionIntegers();
  void toDirectionNumbers();
  std::uint64_t* row(int j) const;

  std::uint32_t index_ = 1;
  std::uint64_t* directions_ = nullptr;  // the host's block; signed there
  ALGEB directionTable_;
  V_INT rowLength_;
  const std::int32_t* polynomials_ = nullptr;
  ALGEB polynomialTable_;
  const std::int32_t* degrees_ = nullptr;
  ALGEB degreeTable_;
  int precision_ = 0;
};
