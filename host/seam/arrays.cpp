// The C interface: arrays.

#include "values/arrays.hpp"

#include <cstring>

#include "values/errors.hpp"
#include "values/numbers.hpp"

namespace {

vexel::ArrayObject& arrayFrom(VKernelVector kv, ALGEB x) {
  if (!vexel::isArray(x)) {
    vexel::raise(*kv, "an array expected, received %1", x);
  }
  return vexel::arrayOf(x);
}

// The array, with dim (from 1) checked.
vexel::ArrayObject& arrayWithDimension(VKernelVector kv, ALGEB x, V_INT dim) {
  vexel::ArrayObject& a = arrayFrom(kv, x);
  if (dim < 1 || dim > a.dimensions) {
    vexel::raise(*kv, "array has no dimension %1", vexel::newInteger(*kv, dim));
  }
  return a;
}

}  // namespace

extern "C" {

void RTableGetDefaults(VKernelVector, RTableSettings* s) {
  *s = {RTABLE_DAG, RTABLE_RECTANGULAR, RTABLE_COLUMN_MAJOR, 0, 0};
}

void RTableGetSettings(VKernelVector kv, RTableSettings* s, ALGEB x) {
  arrayFrom(kv, x);
  *s = vexel::settingsOf(x);
}

ALGEB RTableCreate(VKernelVector kv, const RTableSettings* s, const void* data,
                   const V_INT* bounds) {
  return vexel::newArray(*kv, *s, data, bounds);
}

ALGEB RTableCopy(VKernelVector kv, const RTableSettings* s, ALGEB x) {
  arrayFrom(kv, x);
  return vexel::copyArray(*kv, *s, x);
}

void* RTableDataBlock(VKernelVector kv, ALGEB x) {
  const vexel::ArrayObject& a = arrayFrom(kv, x);
  if (a.storage != RTABLE_RECTANGULAR) {
    vexel::raise(*kv, "an array of rectangular storage expected, received %1", x);
  }
  return a.data;
}

V_INT RTableNumElements(VKernelVector kv, ALGEB x) { return arrayFrom(kv, x).count; }
V_INT RTableNumDimensions(VKernelVector kv, ALGEB x) { return arrayFrom(kv, x).dimensions; }

V_INT RTableLowerBound(VKernelVector kv, ALGEB x, V_INT dim) {
  return arrayWithDimension(kv, x, dim).lower(static_cast<int>(dim - 1));
}

V_INT RTableUpperBound(VKernelVector kv, ALGEB x, V_INT dim) {
  return arrayWithDimension(kv, x, dim).upper(static_cast<int>(dim - 1));
}

RTableData RTableSelect(VKernelVector kv, ALGEB x, const V_INT* index) {
  arrayFrom(kv, x);
  return vexel::elementAt(x, vexel::position(*kv, x, index));
}

void RTableAssign(VKernelVector kv, ALGEB x, const V_INT* index, RTableData value) {
  if (arrayFrom(kv, x).readOnly != 0) {
    vexel::raise(*kv, "array is read-only");
  }
  vexel::setElementAt(x, vexel::position(*kv, x, index), value);
}

}  // extern "C"
