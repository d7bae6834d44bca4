// Handles of quasi-random streams, and the entry points that work on them.

#include "lds/VexelQRStreamManager.hpp"

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

#include "kernel/data_argument.hpp"
#include "kernel/entry_frame.hpp"
#include "kernel/host_arrays.hpp"
#include "lds/FaureQRStream.hpp"
#include "lds/HaltonQRStream.hpp"
#include "lds/SobolQRStream.hpp"
#include "lds/host_tables.hpp"

STATS_EXPORT ALGEB STATS_InitializeQRStream_HW(VKernelVector kv, ALGEB args);

VKernelVector STATS_VexelQRStreamManager_HW::gVKernelVector = nullptr;
ALGEB STATS_VexelQRStreamManager_HW::gCurrentQRStreamPointer = nullptr;
VexelQRStream* STATS_VexelQRStreamManager_HW::gCurrentQRStream = nullptr;

namespace {

constexpr int kMaxInt = std::numeric_limits<int>::max();

enum StreamKind : V_INT { kSobol = 0, kHalton = 1, kFaure = 2 };

// Marks pointer objects as ours: an address that no other library can have.
V_INT streamPointerType() {
  return static_cast<V_INT>(reinterpret_cast<std::intptr_t>(&STATS_InitializeQRStream_HW));
}

int checkedDimension(VKernelVector kv, V_INT dimension, int lowest, int highest) {
  if (dimension < lowest) {
    VexelRaiseError2(kv, "dimension is expected to be at least %1, received: %2",
                     ToVexelInteger(kv, lowest), ToVexelInteger(kv, dimension));
  }
  if (dimension > highest) {
    VexelRaiseError2(kv, "dimension is expected to be at most %1, received: %2",
                     ToVexelInteger(kv, highest), ToVexelInteger(kv, dimension));
  }
  return static_cast<int>(dimension);
}

std::unique_ptr<VexelQRStream> makeSobol(VKernelVector kv, const Arguments& arg, V_INT dimension) {
  if (arg.count() < 5) {
    VexelRaiseError1(kv, "expected at least 5 arguments for sobol, received: %1", arg.all());
  }
  const ALGEB directions = arg[5];
  RTableSettings s;
  RTableGetSettings(kv, &s, directions);
  if (s.num_dimensions != 2) {
    VexelRaiseError1(kv, "direction integers are expected in a two-dimensional array, received: %1",
                     directions);
  }
  assert(s.num_dimensions == 2);
  const V_INT columns = STATS_Extent_HW(kv, directions, 2);
  const V_INT precision = arg.integer(6);
  return std::make_unique<SobolQRStream>(kv, checkedDimension(kv, dimension, 1, kMaxInt),
                                         directions, columns, arg[4], arg[3], precision);
}

std::unique_ptr<VexelQRStream> makeStream(VKernelVector kv, const Arguments& arg) {
  const V_INT dimension = arg.integer(1);
  const V_INT kind = arg.integer(2);
  switch (kind) {
    case kSobol:
      return makeSobol(kv, arg, dimension);
    case kHalton:
      return std::make_unique<HaltonQRStream>(
          kv, checkedDimension(kv, dimension, 1, HaltonQRStream::kMaxDimension));
    case kFaure:
      return std::make_unique<FaureQRStream>(
          kv, checkedDimension(kv, dimension, 2, FaureQRStream::kMaxDimension), 0);
    default:
      VexelRaiseError1(kv,
                       "invalid quasi-random stream kind, expected: 0 (Sobol), 1 (Halton) or 2 "
                       "(Faure), received: %1",
                       ToVexelInteger(kv, kind));
  }
}

// Raises unless out is a dense array of doubles with room for count points; its order code.
int checkedOutputOrder(VKernelVector kv, ALGEB out, V_INT count, int dimension) {
  if (IsVexelRTable(kv, out) != 0) {
    const RTableSettings s = STATS_SettingsOf_HW(kv, out);
    if (STATS_IsDense_HW(s, RTABLE_FLOAT64)) {
      if (count > kMaxInt || count > RTableNumElements(kv, out) / dimension) {
        VexelRaiseError2(kv, "output array has no room for %1 points: %2",
                         ToVexelInteger(kv, count), out);
      }
      return s.order;
    }
  }
  VexelRaiseError1(kv, "invalid output, expected: dense array of 64-bit floats, received %1", out);
}

int checkedSize(VKernelVector kv, V_INT size, int lowest) {
  if (size < lowest || size > kMaxInt) {
    VexelRaiseError1(kv, "invalid row, size or stride of a binary matrix: %1",
                     ToVexelInteger(kv, size));
  }
  return static_cast<int>(size);
}

// What the binary matrices are made from.  Polynomials and degrees are copies, since the output may
// be the same host array.
class MatrixTables {
 public:
  // rows: how many rows the tables must describe.
  MatrixTables(VKernelVector kv, ALGEB directions, ALGEB out, ALGEB polynomials, ALGEB degrees,
               V_INT rows)
      : kv_(kv), directions_(kv, directions), out_(kv, out) {
    // The first row is always a unit row; nothing is read for it.
    const V_INT described = rows > 1 ? rows : 0;
    polynomials_ = copy(STATS_HostTable_HW<std::int32_t>(kv, polynomials), described);
    degrees_ = copy(STATS_HostTable_HW<std::int32_t>(kv, degrees), described);
  }

  // Raises unless everything that row will read and write is there.
  void check(int row, int n, V_INT rowStride) const {
    int written = std::max(n, 1);  // a unit row has its 1 whatever n is
    if (row > 0) {
      const std::int32_t degree = degrees()[row];
      STATS_CheckDegree_HW(kv_, degree);
      checkedSize(kv_, rowStride, 0);
      directions_.require(row, rowStride, degree);
      written = std::max(n, degree);
    }
    out_.require(row, n, written);
  }

  const std::int64_t* directions() const { return directions_.data(); }
  std::int32_t* out() const { return out_.data(); }
  const std::int32_t* polynomials() const { return polynomials_.data(); }
  const std::int32_t* degrees() const { return degrees_.data(); }

 private:
  static std::vector<std::int32_t> copy(const STATS_HostTable_HW<std::int32_t>& table,
                                        V_INT count) {
    table.require(count);
    return {table.data(), table.data() + count};
  }

  VKernelVector kv_;
  STATS_HostTable_HW<std::int64_t> directions_;
  STATS_HostTable_HW<std::int32_t> out_;
  std::vector<std::int32_t> polynomials_;
  std::vector<std::int32_t> degrees_;
};

}  // namespace

ALGEB STATS_VexelQRStreamManager_HW::ToVexelQRStream(VKernelVector kv,
                                                     std::unique_ptr<VexelQRStream> stream) {
  Initialize(kv);
  const ALGEB handle = ToVexelPointer(kv, stream.get(), streamPointerType());
  VexelPointerSetMarkFunction(kv, handle, GcMark);
  VexelPointerSetDisposeFunction(kv, handle, GcDispose);
  gCurrentQRStreamPointer = handle;
  gCurrentQRStream = stream.release();
  VexelGcProtect(kv, handle);
  return handle;
}

VexelQRStream* STATS_VexelQRStreamManager_HW::VexelToQRStream(VKernelVector kv, ALGEB handle) {
  if (handle != nullptr && handle == gCurrentQRStreamPointer) {
    return gCurrentQRStream;
  }
  if (handle == nullptr || IsVexelPointer(kv, handle) == 0 ||
      VexelPointerType(kv, handle) != streamPointerType()) {
    VexelRaiseError1(
        kv, "expected VexelPointer containing quasi-random number generator, received %1", handle);
  }
  gCurrentQRStream = static_cast<VexelQRStream*>(VexelToPointer(kv, handle));
  gCurrentQRStreamPointer = handle;
  return gCurrentQRStream;
}

void STATS_VexelQRStreamManager_HW::Release(VKernelVector kv, ALGEB handle) {
  VexelToQRStream(kv, handle);  // nothing but a stream may lose its protection here
  gCurrentQRStreamPointer = nullptr;
  VexelGcAllow(kv, handle);
}

void STATS_VexelQRStreamManager_HW::GcMark(ALGEB handle) {
  VexelToQRStream(gVKernelVector, handle)->GcMark(gVKernelVector);
}

// The cache must not outlive the stream: the host may use the handle's address again.
void STATS_VexelQRStreamManager_HW::GcDispose(ALGEB handle) {
  delete VexelToQRStream(gVKernelVector, handle);
  gCurrentQRStreamPointer = nullptr;
  gCurrentQRStream = nullptr;
}

// STATS_InitializeQRStream_HW(dimension, kind, ...): a handle of a new stream.
//
// kind 0, Sobol: degrees, polynomials, directions, precision follow (SobolQRStream.hpp); kind 1 is
// Halton, kind 2 Faure.  The handle stays alive until STATS_TerminateQRStream_HW.
STATS_ENTRY(STATS_InitializeQRStream_HW) {
  const Arguments arg(kv, args);
  if (arg.count() < 2) {
    VexelRaiseError1(kv, "expected at least 2 arguments, received: %1", args);
  }
  return STATS_VexelQRStreamManager_HW::ToVexelQRStream(kv, makeStream(kv, arg));
}

// STATS_QRStreamNext_HW(handle, count, out): writes the next count points and returns out.
//
// out is a dense float[8] array, dimension x count when it is column-major and has two dimensions;
// in row-major order the coordinate index is the first as well.
STATS_ENTRY(STATS_QRStreamNext_HW) {
  const Arguments arg(kv, args, 3, "expected 3 arguments, received: %1");
  VexelQRStream* const stream = STATS_VexelQRStreamManager_HW::VexelToQRStream(kv, arg[1]);
  const V_INT count = arg.integer(2);
  const ALGEB out = arg[3];
  const int dimension = stream->getDimension(kv);
  const int order = checkedOutputOrder(kv, out, count, dimension);
  if (count < 1) {
    return out;
  }
  auto* const block = static_cast<double*>(RTableDataBlock(kv, out));
  const int points = static_cast<int>(count);
  const int done = order == RTABLE_COLUMN_MAJOR ? stream->next(kv, block, dimension, 1, points)
                                                : stream->next(kv, block, 1, points, points);
  if (done == 0) {
    VexelRaiseError(kv, "quasi-random stream is exhausted");
  }
  return out;
}

STATS_ENTRY(STATS_QRStreamSkip_HW) {
  const Arguments arg(kv, args);
  VexelQRStream* const stream = STATS_VexelQRStreamManager_HW::VexelToQRStream(kv, arg[1]);
  stream->skip(kv, arg.integer(2));
  return ToVexelNULL(kv);
}

STATS_ENTRY(STATS_ResetQRStream_HW) {
  STATS_VexelQRStreamManager_HW::VexelToQRStream(kv, args)->reset(kv);
  return ToVexelNULL(kv);
}

STATS_ENTRY(STATS_TerminateQRStream_HW) {
  STATS_VexelQRStreamManager_HW::Release(kv, args);
  return ToVexelNULL(kv);
}

STATS_ENTRY(STATS_QRStreamGetDimension_HW) {
  const Arguments arg(kv, args);
  VexelQRStream* const stream = STATS_VexelQRStreamManager_HW::VexelToQRStream(kv, arg[1]);
  return ToVexelInteger(kv, stream->getDimension(kv));
}

STATS_ENTRY(STATS_QRStreamGetOptions_HW) {
  const Arguments arg(kv, args);
  return STATS_VexelQRStreamManager_HW::VexelToQRStream(kv, arg[1])->getOptions(kv);
}

STATS_ENTRY(STATS_QRStreamGetMaxSobolPrecision_HW) {
  return ToVexelInteger(kv, SobolQRStream::getMaxPrecision(kv));
}

// STATS_QRStreamGenBinaryMatrix_HW(directions, d, rowStride, out, polynomials, degrees): the d x d
// generator matrix of leading bits, row after row, into out.
STATS_ENTRY(STATS_QRStreamGenBinaryMatrix_HW) {
  const Arguments arg(kv, args);
  const V_INT size = arg.integer(2);
  const V_INT stride = arg.integer(3);
  const int d = size < 1 ? 0 : checkedSize(kv, size, 1);
  const MatrixTables tables(kv, arg[1], arg[4], arg[5], arg[6], d);
  for (int r = 0; r < d; ++r) {
    tables.check(r, d, stride);
  }
  SobolQRStream::genBinaryMatrix(kv, tables.directions(), d, static_cast<int>(stride), tables.out(),
                                 tables.polynomials(), tables.degrees());
  return ToVexelNULL(kv);
}

// STATS_QRStreamGenBinaryMatrixRow_HW(directions, row, n, rowStride, out, polynomials, degrees): n
// entries of one row, counted from 1, in place in out, whose rows are n long.
STATS_ENTRY(STATS_QRStreamGenBinaryMatrixRow_HW) {
  const Arguments arg(kv, args);
  const int row = checkedSize(kv, arg.integer(2), 1) - 1;
  const int n = checkedSize(kv, arg.integer(3), std::numeric_limits<int>::min());
  const V_INT stride = arg.integer(4);
  const MatrixTables tables(kv, arg[1], arg[5], arg[6], arg[7], V_INT{row} + 1);
  tables.check(row, n, stride);
  SobolQRStream::genBinaryMatrixRow(kv, tables.directions(), row, n, static_cast<int>(stride),
                                    tables.out(), tables.polynomials(), tables.degrees());
  return ToVexelNULL(kv);
}
