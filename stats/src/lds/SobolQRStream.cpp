// Sobol stream: the host's tables, indices, generator matrices.

#include "lds/SobolQRStream.hpp"

#include <algorithm>
#include <cstddef>

#include "kernel/interrupt.hpp"
#include "kernels/classic/sobol_points.hpp"
#include "lds/host_tables.hpp"

using vexel::kernels::classic::SobolPolynomial;

SobolQRStream::SobolQRStream(VKernelVector kv, int dimension, ALGEB directions, V_INT rowLength,
                             ALGEB polynomials, ALGEB degrees, V_INT precision)
    : directionTable_(directions),
      rowLength_(rowLength),
      polynomialTable_(polynomials),
      degreeTable_(degrees) {
  dimension_ = dimension;
  initialize(kv, precision);
}

void SobolQRStream::initialize(VKernelVector kv, V_INT precision) {
  if (precision < 1 || precision > kMaxPrecision) {
    VexelRaiseError1(kv, "precision is expected to be an integer between 1 and 62, received: %1",
                     ToVexelInteger(kv, precision));
  }
  precision_ = static_cast<int>(precision);

  // The first dimension has no polynomial; nothing of the other two tables is read for it.
  const V_INT described = dimension_ > 1 ? dimension_ : 0;
  const STATS_HostTable_HW<std::int32_t> degrees(kv, degreeTable_);
  degrees.require(described);
  const STATS_HostTable_HW<std::int32_t> polynomials(kv, polynomialTable_);
  polynomials.require(described);
  const STATS_HostTable_HW<std::int64_t> directions(kv, directionTable_);
  directions.require(V_INT{dimension_ - 1}, rowLength_, precision);
  for (int j = 1; j < dimension_; ++j) {
    STATS_CheckDegree_HW(kv, degrees.data()[j]);
  }
  degrees_ = degrees.data();
  polynomials_ = polynomials.data();
  directions_ = reinterpret_cast<std::uint64_t*>(directions.data());

  index_ = 1;
  genDirectionIntegers();
  toDirectionNumbers();
}

std::uint64_t* SobolQRStream::row(int j) const { return directions_ + j * rowLength_; }

void SobolQRStream::genDirectionIntegers() {
  std::fill(row(0) + 1, row(0) + precision_, 1);
  for (int j = 1; j < dimension_; ++j) {
    vexel::kernels::classic::continueDirections(
        row(j), SobolPolynomial{degrees_[j], polynomials_[j]}, precision_);
  }
}

void SobolQRStream::toDirectionNumbers() {
  for (int j = 0; j < dimension_; ++j) {
    vexel::kernels::classic::toDirectionNumbers(row(j), precision_);
  }
}

void SobolQRStream::GcMark(VKernelVector kv) {
  VexelGcMark(kv, directionTable_);
  VexelGcMark(kv, polynomialTable_);
  VexelGcMark(kv, degreeTable_);
}

int SobolQRStream::reset(VKernelVector /*kv*/) {
  index_ = 0;
  return 1;
}

int SobolQRStream::skip(VKernelVector /*kv*/, V_INT k) {
  index_ += static_cast<std::uint32_t>(k);
  return 1;
}

int SobolQRStream::next(VKernelVector kv, double* out, int pointStride, int coordStride,
                        int count) {
  // Looks for an interrupt after some 10^6 coordinates.
  const int block = std::clamp((1 << 20) / dimension_, 64, 4096);
  const vexel::kernels::classic::SobolNumbers numbers{directions_, rowLength_, dimension_,
                                                      precision_};
  for (int done = 0; done < count;) {
    const int length = std::min(count - done, block);
    vexel::kernels::classic::writeSobolPoints(numbers, index_, length,
                                              out + static_cast<std::ptrdiff_t>(done) * pointStride,
                                              pointStride, coordStride);
    index_ += static_cast<std::uint32_t>(length);
    done += length;
    STATS_LookForInterrupt_HW(kv);
  }
  return 1;
}

const char* SobolQRStream::getType(VKernelVector /*kv*/) const { return "Sobol"; }

ALGEB SobolQRStream::getOptions(VKernelVector kv) const {
  const auto option = [kv](const char* key, ALGEB value) {
    return ToVexelRelation(kv, "=", ToVexelName(kv, key, 1), value);
  };
  const ALGEB precision = option("precision", ToVexelInteger(kv, precision_));
  const ALGEB polynomials = option("primitivepolynomials", polynomialTable_);
  const ALGEB directions = option("directionintegers", directionTable_);
  return ToVexelExpressionSequence(kv, 5, ToVexelInteger(kv, dimension_),
                                   ToVexelName(kv, getType(kv), 1), precision, polynomials,
                                   directions);
}

void SobolQRStream::genBinaryMatrixRow(VKernelVector /*kv*/, const std::int64_t* directions,
                                       int row, int n, int rowStride, std::int32_t* out,
                                       const std::int32_t* polynomials,
                                       const std::int32_t* degrees) {
  std::int32_t* const bits = out + static_cast<std::ptrdiff_t>(row) * n;
  if (row == 0) {
    bits[0] = 1;
    std::fill_n(bits + 1, std::max(n, 1) - 1, 0);
    return;
  }
  vexel::kernels::classic::leadingBits(directions + static_cast<std::ptrdiff_t>(row) * rowStride,
                                       SobolPolynomial{degrees[row], polynomials[row]}, n, bits);
}

void SobolQRStream::genBinaryMatrix(VKernelVector kv, const std::int64_t* directions, int d,
                                    int rowStride, std::int32_t* out,
                                    const std::int32_t* polynomials, const std::int32_t* degrees) {
  for (int r = 0; r < d; ++r) {
    genBinaryMatrixRow(kv, directions, r, d, rowStride, out, polynomials, degrees);
  }
}
