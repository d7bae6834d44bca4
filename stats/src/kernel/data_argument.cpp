// One-dimensional array arguments in their own element type.

#include "kernel/data_argument.hpp"

#include "kernel/element_types.hpp"
#include "kernel/host_arrays.hpp"
#include "kernels/watch.hpp"

void STATS_RequireVector_HW(VKernelVector kv, ALGEB x, const char* message) {
  if (IsVexelRTable(kv, x) == 0 || RTableNumDimensions(kv, x) != 1) {
    VexelRaiseError1(kv, message, x);
  }
}

RTableSettings STATS_SettingsOf_HW(VKernelVector kv, ALGEB array) {
  RTableSettings settings;
  RTableGetSettings(kv, &settings, array);
  return settings;
}

void STATS_RequireFloatBlock_HW(VKernelVector kv, ALGEB array, const char* wrongStorage,
                                const char* wrongType) {
  const RTableSettings settings = STATS_SettingsOf_HW(kv, array);
  if (settings.storage != RTABLE_RECTANGULAR) {
    VexelRaiseError1(kv, wrongStorage, array);
  }
  if (settings.data_type != RTABLE_FLOAT64) {
    VexelRaiseError1(kv, wrongType, array);
  }
}

ALGEB STATS_DenseArray_HW(VKernelVector kv, ALGEB array) {
  RTableSettings settings = STATS_SettingsOf_HW(kv, array);
  if (settings.storage == RTABLE_RECTANGULAR) {
    return array;
  }
  settings.storage = RTABLE_RECTANGULAR;
  return RTableCopy(kv, &settings, array);
}

ALGEB STATS_CreateLike_HW(VKernelVector kv, const RTableSettings& like, V_INT lower, V_INT count,
                          const void* data) {
  RTableSettings settings = like;
  settings.num_dimensions = 1;
  const STATS_Bounds_HW indices = STATS_BoundsFrom_HW(kv, lower, count);
  const V_INT bounds[] = {indices.lower, indices.upper};
  return RTableCreate(kv, &settings, count > 0 ? data : nullptr, bounds);
}

ALGEB STATS_FloatsLike_HW(VKernelVector kv, ALGEB data, V_INT lower, V_INT count) {
  RTableSettings settings = STATS_SettingsOf_HW(kv, data);
  settings.data_type = RTABLE_FLOAT64;
  settings.storage = RTABLE_RECTANGULAR;
  settings.read_only = 0;
  return STATS_CreateLike_HW(kv, settings, lower, count);
}

STATS_ElementReader_HW::STATS_ElementReader_HW(VKernelVector kv, ALGEB array)
    : kv_(kv),
      array_(array),
      settings_(STATS_SettingsOf_HW(kv, array)),
      size_(RTableNumElements(kv, array)),
      lower_(RTableLowerBound(kv, array, 1)),
      elementSize_(STATS_RTableDataSize_HW(kv, settings_.data_type)) {
  if (settings_.storage == RTABLE_RECTANGULAR && size_ > 0) {
    block_ = static_cast<const char*>(RTableDataBlock(kv, array));
  }
}

RTableData STATS_ElementReader_HW::operator[](V_INT i) const {
  if (block_ == nullptr) {
    const V_INT index = lower_ + i;
    return RTableSelect(kv_, array_, &index);
  }
  return STATS_BlockElement_HW(block_, i, elementSize_);
}

void STATS_ElementReader_HW::copyTo(char* out) const {
  if (block_ != nullptr) {
    vexel::kernels::copyWatched(block_, size_ * elementSize_, out);
    return;
  }
  vexel::kernels::forEach(size_, [&](V_INT i) {
    const RTableData element = (*this)[i];
    std::memcpy(out + i * elementSize_, &element, static_cast<std::size_t>(elementSize_));
  });
}

ALGEB STATS_ElementToHost_HW(VKernelVector kv, const RTableData& element, int dataType) {
  switch (dataType) {
    case RTABLE_COMPLEX_DAG:
      return ToVexelComplexFloat(kv, element.complexdag.re, element.complexdag.im);
    case RTABLE_INTEGER8:
      return ToVexelInteger(kv, element.int8);
    case RTABLE_INTEGER16:
      return ToVexelInteger(kv, element.int16);
    case RTABLE_INTEGER32:
      return ToVexelInteger(kv, element.int32);
    case RTABLE_INTEGER64:
      return ToVexelInteger64(kv, element.int64);
    case RTABLE_FLOAT64:
      return ToVexelFloat(kv, element.float64);
    case RTABLE_FLOAT32:
      return ToVexelFloat(kv, static_cast<double>(element.float32));
    case RTABLE_COMPLEX:
      return ToVexelComplex(kv, element.complexf64.re, element.complexf64.im);
    default:
      return element.dag;
  }
}

STATS_ElementBuffer_HW::STATS_ElementBuffer_HW(VKernelVector kv, int dataType, V_INT count) {
  const V_INT bytes = (count > 0 ? count : 1) * STATS_RTableDataSize_HW(kv, dataType);
  if (STATS_HoldsHandles_HW(dataType)) {
    data_ = static_cast<char*>(VexelAlloc(kv, bytes));
  } else {
    owned_.reset(new char[static_cast<std::size_t>(bytes)]);
    data_ = owned_.get();
  }
}
