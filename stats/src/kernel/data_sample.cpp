// Host arrays seen as doubles.
//
// A dense array of 64-bit floats is used where it lies.  Any other is copied once by the host; only
// when the host refuses the copy (some element is not a number as it stands) are elements converted
// one at a time, so that expressions with a numeric value are accepted and the first element
// without one is named.

#include "kernel/data_sample.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "kernel/conversions.hpp"
#include "kernel/data_argument.hpp"
#include "kernel/element_types.hpp"
#include "kernel/host_arrays.hpp"
#include "kernels/watch.hpp"

namespace {

double objectToDouble(VKernelVector kv, ALGEB x) {
  if (STATS_IsVexelFloat_HW(x)) {
    return STATS_VexelFloatToDouble_HW(kv, x);
  }
  double value = 0.0;
  if (!STATS_VexelUtils_HW::VexelDAGToDouble(x, &value)) {
    STATS_VexelUtils_HW::ReportNonNumeric(x);
  }
  return value;
}

double realPart(VKernelVector kv, ALGEB re, ALGEB im) {
  if (!IsVexelUnnamedZero(kv, im) || !IsVexelNumeric(kv, re)) {
    STATS_VexelUtils_HW::ReportNonNumeric(ToVexelComplexFloat(kv, re, im));
  }
  return VexelToFloat64(kv, re);
}

double realPart(VKernelVector kv, double re, double im) {
  if (im != 0.0) {  // true for a NaN as well
    STATS_VexelUtils_HW::ReportNonNumeric(ToVexelComplex(kv, re, im));
  }
  return re;
}

// One element of an array of the given type as a double.
double elementToDouble(VKernelVector kv, const RTableData& element, int dataType) {
  switch (dataType) {
    case RTABLE_DAG:
      return objectToDouble(kv, element.dag);
    case RTABLE_COMPLEX_DAG:
      return realPart(kv, element.complexdag.re, element.complexdag.im);
    case RTABLE_INTEGER8:
      return element.int8;
    case RTABLE_INTEGER16:
      return element.int16;
    case RTABLE_INTEGER32:
      return element.int32;
    case RTABLE_INTEGER64:
      return static_cast<double>(element.int64);
    case RTABLE_FLOAT64:
      return element.float64;
    case RTABLE_COMPLEX:
      return realPart(kv, element.complexf64.re, element.complexf64.im);
    default:
      return static_cast<double>(element.float32);
  }
}

void fillFromBlock(VKernelVector kv, ALGEB rtable, int dataType, double* out, int n) {
  const void* block = RTableDataBlock(kv, rtable);
  const int size = STATS_RTableDataSize_HW(kv, dataType);
  vexel::kernels::forEach(n, [&](int i) {
    out[i] = elementToDouble(kv, STATS_BlockElement_HW(block, i, size), dataType);
  });
}

// Elements of an array without a block, along its first dimension.
//
// Host objects go to the position of their index itself, whatever the lower bound: position 0 stays
// zero for an array from 1.  Hosts have long seen it so.  Positions beyond the vector are dropped.
void fillBySelection(VKernelVector kv, ALGEB rtable, const RTableSettings& settings, double* out,
                     int n) {
  std::vector<V_INT> index;
  for (V_INT dim = 1; dim <= settings.num_dimensions; ++dim) {
    index.push_back(RTableLowerBound(kv, rtable, dim));
  }
  const V_INT lower = index.front();
  const V_INT first = settings.data_type == RTABLE_DAG ? lower : 0;
  vexel::kernels::forEach(n, [&](int i) {
    index.front() = lower + i;
    const RTableData element = RTableSelect(kv, rtable, index.data());
    const double value = elementToDouble(kv, element, settings.data_type);
    const V_INT position = first + i;
    if (position >= 0 && position < n) {
      out[position] = value;
    }
  });
}

}  // namespace

STATS_Vector_HW::STATS_Vector_HW(VKernelVector kv, ALGEB rtable) { SetData(kv, this, rtable); }

void STATS_Vector_HW::SetData(VKernelVector kv, STATS_Vector_HW* vector, ALGEB rtable) {
  vector->kv_ = kv;
  if (!IsVexelRTable(kv, rtable)) {
    VexelRaiseError1(kv, "invalid data sample, expected: rtable, received %1", rtable);
  }
  vector->rtable_ = rtable;
  if (vector->size() == 0) {
    return;
  }
  if (STATS_IsDense_HW(STATS_SettingsOf_HW(kv, rtable), RTABLE_FLOAT64)) {
    vector->converted_ = rtable;
    vector->data_ = static_cast<double*>(RTableDataBlock(kv, rtable));
  } else {
    ConvertData(kv, vector);
  }
}

// Only the first dimension counts, but an array without elements has none to show, whatever that
// dimension's bounds are.
int STATS_Vector_HW::size() const {
  const V_INT lower = RTableLowerBound(kv_, rtable_, 1);
  const V_INT upper = RTableUpperBound(kv_, rtable_, 1);
  if (upper < lower || RTableNumElements(kv_, rtable_) == 0) {
    return 0;
  }
  const std::uint64_t n = static_cast<std::uint64_t>(upper) - static_cast<std::uint64_t>(lower) + 1;
  if (n == 0 || n > std::uint64_t{std::numeric_limits<int>::max()}) {  // 0: 2^64
    VexelRaiseError(kv_, "the data sample has more than 2147483647 elements");
  }
  return static_cast<int>(n);
}

void STATS_Vector_HW::ConvertData(VKernelVector kv, STATS_Vector_HW* vector) {
  if (vector->converted_ != nullptr && vector->converted_ != vector->rtable_) {
    VexelGcAllow(kv, vector->converted_);
    vector->converted_ = nullptr;
  }
  V_BOOL failed = 0;
  auto copy = static_cast<ALGEB>(VexelTrapError(kv, VexelConvertData, vector, &failed));
  if (!failed) {
    vector->converted_ = copy;
    vector->data_ = static_cast<double*>(RTableDataBlock(kv, copy));
    return;
  }

  const int n = vector->size();
  copy = STATS_CreateVector_HW(kv, RTABLE_FLOAT64, 0, V_INT{n} - 1);
  VexelGcProtect(kv, copy);
  vector->converted_ = copy;
  auto* out = STATS_FloatBlock_HW(kv, copy);

  RTableSettings settings;
  RTableGetSettings(kv, &settings, vector->rtable_);
  const bool knownType = STATS_IsElementType_HW(settings.data_type);
  if (knownType && settings.storage == RTABLE_RECTANGULAR) {
    fillFromBlock(kv, vector->rtable_, settings.data_type, out, n);
  } else if (knownType) {
    fillBySelection(kv, vector->rtable_, settings, out, n);
  }
  vector->data_ = out;
}

void* STATS_Vector_HW::VexelConvertData(void* vector) {
  const auto* self = static_cast<const STATS_Vector_HW*>(vector);
  const RTableSettings settings = STATS_VectorSettings_HW(self->kv_, RTABLE_FLOAT64);
  const ALGEB copy = RTableCopy(self->kv_, &settings, self->rtable_);
  VexelGcProtect(self->kv_, copy);
  return copy;
}

STATS_VexelDataSample_HW::STATS_VexelDataSample_HW(VKernelVector kv, ALGEB data)
    : points_(std::make_unique<STATS_Vector_HW>(kv, data)) {}

STATS_VexelDataSample_HW::STATS_VexelDataSample_HW(VKernelVector kv, ALGEB data, ALGEB weights)
    : points_(std::make_unique<STATS_Vector_HW>(kv, data)),
      weights_(std::make_unique<STATS_Vector_HW>(kv, weights)) {
  const int n = weights_->size();
  if (n == 0) {
    weights_.reset();
  } else if (n != points_->size()) {
    VexelRaiseError2(kv,
                     "vector of points and vector of weights are expected to have the same size, "
                     "received %1, %2",
                     data, weights);
  }
}

int STATS_CopySimpleData_HW(const double* src, double* dst, int n, int skipMissing) {
  if (!skipMissing) {
    vexel::kernels::copyWatched(src, n, dst);
    return n;
  }
  int kept = 0;
  vexel::kernels::forEach(n, [&](int i) {
    dst[kept] = src[i];  // overwritten by the next value when it is missing
    kept += src[i] == src[i];
  });
  return kept;
}

int STATS_CopyWeightedData_HW(const double* points, const double* weights, double* dstPoints,
                              double* dstWeights, int n, int skipMissing) {
  if (!skipMissing) {
    vexel::kernels::copyWatched(points, n, dstPoints);
    vexel::kernels::copyWatched(weights, n, dstWeights);
    return n;
  }
  int kept = 0;
  vexel::kernels::forEach(n, [&](int i) {
    dstPoints[kept] = points[i];
    dstWeights[kept] = weights[i];
    kept += (points[i] == points[i]) & (weights[i] == weights[i]);
  });
  return kept;
}

int STATS_CopyData_HW(const STATS_VexelDataSample_HW& sample, double* dst) {
  return STATS_CopySimpleData_HW(sample.points(), dst, sample.size(), 0);
}

int STATS_CopyData_HW(const STATS_VexelDataSample_HW& sample, double* dstPoints, double* dstWeights,
                      int skipMissing) {
  if (sample.weighted()) {
    return STATS_CopyWeightedData_HW(sample.points(), sample.weights(), dstPoints, dstWeights,
                                     sample.size(), skipMissing);
  }
  return STATS_CopySimpleData_HW(sample.points(), dstPoints, sample.size(), skipMissing);
}
