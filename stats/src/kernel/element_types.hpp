// Element types of host arrays: sizes, and the comparators that ranking uses.
//
// Arrays are handled in their own element type, as blocks of bytes.  A comparator returns -1, 0 or
// 1 as the element at a sorts before, with or after the one at b; the addresses need not be
// aligned.
#pragma once

#include <vexelc/vexelc.h>

#include <cstdint>

constexpr bool STATS_IsElementType_HW(int dataType) {
  return dataType >= RTABLE_DAG && dataType <= RTABLE_FLOAT32;
}

// Bytes of one array element.  Codes that are not element types count as host objects.
int STATS_RTableDataSize_HW(VKernelVector kv, int dataType);

int STATS_NumericCompareINTEGER8_HW(const char* a, const char* b);
int STATS_NumericCompareINTEGER16_HW(const char* a, const char* b);
int STATS_NumericCompareINTEGER32_HW(const char* a, const char* b);
int STATS_NumericCompareINTEGER64_HW(const char* a, const char* b);

// NaN sorts after every number.  Two NaNs compare as 1 either way round, so they are never equal
// to one another; a ranking takes such a pair as tied.
int STATS_NumericCompareFLOAT32_HW(const char* a, const char* b);
int STATS_NumericCompareFLOAT64_HW(const char* a, const char* b);

// Compares two host objects by the doubles that they evaluate to.  Raises "unable to evaluate %1 to
// floating-point" for one that has none, a first.  Exact numbers closer than a double can tell
// apart are therefore equal.
int STATS_NumericCompareALGEB_HW(const char* a, const char* b);

using STATS_ElementComparator_HW = int (*)(const char* a, const char* b);

// The comparator of an element type; null for the complex ones, which have no order.
STATS_ElementComparator_HW STATS_ElementComparatorOf_HW(int dataType);

// True for signed integers and real floats: elements that need no host call to be compared.
constexpr bool STATS_IsMachineRealType_HW(int dataType) {
  return (dataType >= RTABLE_INTEGER8 && dataType <= RTABLE_FLOAT64) || dataType == RTABLE_FLOAT32;
}

// True when elements are handles or pairs of handles.  A scratch copy of such elements has to be
// where the collector sees it.
constexpr bool STATS_HoldsHandles_HW(int dataType) {
  return dataType <= RTABLE_COMPLEX_DAG || dataType > RTABLE_FLOAT32;
}
