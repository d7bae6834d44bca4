// Element sizes and comparators of host arrays.

#include "kernel/element_types.hpp"

#include <cmath>
#include <cstring>
#include <type_traits>

#include "kernel/conversions.hpp"

namespace {

// The NaN rule of the header; written so that a NaN at a decides first.
template <typename T>
int compareElements(T a, T b) {
  if constexpr (std::is_floating_point_v<T>) {
    if (std::isnan(a)) {
      return 1;
    }
    if (std::isnan(b)) {
      return -1;
    }
  }
  return (a > b) - (a < b);
}

template <typename T>
T load(const char* p) {
  T value;
  std::memcpy(&value, p, sizeof value);  // NOLINT(bugprone-sizeof-expression): of a handle, too
  return value;
}

template <typename T>
int compareAt(const char* a, const char* b) {
  return compareElements(load<T>(a), load<T>(b));
}

double objectValue(ALGEB object) {
  double value = 0.0;
  if (STATS_VexelUtils_HW::VexelDAGToDouble(object, &value) == 0) {
    STATS_VexelUtils_HW::ReportNonNumeric(object);
  }
  return value;
}

}  // namespace

int STATS_RTableDataSize_HW(VKernelVector /*kv*/, int dataType) {
  switch (dataType) {
    case RTABLE_INTEGER8:
      return sizeof(std::int8_t);
    case RTABLE_INTEGER16:
      return sizeof(std::int16_t);
    case RTABLE_INTEGER32:
      return sizeof(std::int32_t);
    case RTABLE_INTEGER64:
      return sizeof(std::int64_t);
    case RTABLE_FLOAT32:
      return sizeof(float);
    case RTABLE_FLOAT64:
      return sizeof(double);
    case RTABLE_COMPLEX:
      return 2 * sizeof(double);
    case RTABLE_COMPLEX_DAG:
      return 2 * sizeof(ALGEB);
    default:
      return sizeof(ALGEB);
  }
}

int STATS_NumericCompareINTEGER8_HW(const char* a, const char* b) {
  return compareAt<std::int8_t>(a, b);
}
int STATS_NumericCompareINTEGER16_HW(const char* a, const char* b) {
  return compareAt<std::int16_t>(a, b);
}
int STATS_NumericCompareINTEGER32_HW(const char* a, const char* b) {
  return compareAt<std::int32_t>(a, b);
}
int STATS_NumericCompareINTEGER64_HW(const char* a, const char* b) {
  return compareAt<std::int64_t>(a, b);
}
int STATS_NumericCompareFLOAT32_HW(const char* a, const char* b) { return compareAt<float>(a, b); }
int STATS_NumericCompareFLOAT64_HW(const char* a, const char* b) { return compareAt<double>(a, b); }

int STATS_NumericCompareALGEB_HW(const char* a, const char* b) {
  const double x = objectValue(load<ALGEB>(a));
  const double y = objectValue(load<ALGEB>(b));
  return compareElements(x, y);
}

STATS_ElementComparator_HW STATS_ElementComparatorOf_HW(int dataType) {
  switch (dataType) {
    case RTABLE_INTEGER8:
      return STATS_NumericCompareINTEGER8_HW;
    case RTABLE_INTEGER16:
      return STATS_NumericCompareINTEGER16_HW;
    case RTABLE_INTEGER32:
      return STATS_NumericCompareINTEGER32_HW;
    case RTABLE_INTEGER64:
      return STATS_NumericCompareINTEGER64_HW;
    case RTABLE_FLOAT32:
      return STATS_NumericCompareFLOAT32_HW;
    case RTABLE_FLOAT64:
      return STATS_NumericCompareFLOAT64_HW;
    case RTABLE_COMPLEX:
    case RTABLE_COMPLEX_DAG:
      return nullptr;
    default:
      return STATS_NumericCompareALGEB_HW;
  }
}
