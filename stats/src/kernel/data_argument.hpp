// One-dimensional array arguments in their own element type: checks, reading, new arrays.
#pragma once

#include <vexelc/vexelc.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

// Raises message, with x for its %1, unless x is an array of one dimension.
void STATS_RequireVector_HW(VKernelVector kv, ALGEB x, const char* message);

inline constexpr char STATS_kInvalidVector_HW[] =
    "invalid data sample, expected: one-dimensional array, received %1";

RTableSettings STATS_SettingsOf_HW(VKernelVector kv, ALGEB array);

// Whether arrays of these settings are one block of elements of that type.
inline bool STATS_IsDense_HW(const RTableSettings& settings, int dataType) {
  return settings.storage == RTABLE_RECTANGULAR && settings.data_type == dataType;
}

// Raises wrongStorage or, after it, wrongType, with array for its %1, unless array is a block of
// doubles.
void STATS_RequireFloatBlock_HW(VKernelVector kv, ALGEB array, const char* wrongStorage,
                                const char* wrongType);

// The array itself if it is dense, otherwise a dense copy.
ALGEB STATS_DenseArray_HW(VKernelVector kv, ALGEB array);

// A new one-dimensional array of count elements with these settings, indexed from lower; data,
// unless null, is copied into it.
ALGEB STATS_CreateLike_HW(VKernelVector kv, const RTableSettings& like, V_INT lower, V_INT count,
                          const void* data = nullptr);

// A new float[8] array of count elements from index lower, otherwise with the settings of data.
ALGEB STATS_FloatsLike_HW(VKernelVector kv, ALGEB data, V_INT lower, V_INT count);

// Element i of a dense block whose elements have that many bytes.
inline RTableData STATS_BlockElement_HW(const void* block, V_INT i, int elementSize) {
  RTableData element{};
  std::memcpy(&element, static_cast<const char*>(block) + i * elementSize,
              static_cast<std::size_t>(elementSize));
  return element;
}

// The elements of a one-dimensional array of any storage, counted from 0.
class STATS_ElementReader_HW {
 public:
  STATS_ElementReader_HW(VKernelVector kv, ALGEB array);

  V_INT size() const { return size_; }
  V_INT lower() const { return lower_; }
  int dataType() const { return settings_.data_type; }
  int elementSize() const { return elementSize_; }
  const RTableSettings& settings() const { return settings_; }

  // The block of a dense array, null for any other and for an empty one.
  const char* block() const { return block_; }

  // Element i as it is now.
  RTableData operator[](V_INT i) const;

  // All elements, one after another, into out.
  void copyTo(char* out) const;

 private:
  VKernelVector kv_;
  ALGEB array_;
  RTableSettings settings_;
  V_INT size_;
  V_INT lower_;
  int elementSize_;
  const char* block_ = nullptr;
};

// The host object of an element: what a predicate is given and what a tally counts.
ALGEB STATS_ElementToHost_HW(VKernelVector kv, const RTableData& element, int dataType);

// Calls f with a null pointer of the element's machine type; for the six types of
// STATS_IsMachineRealType_HW only.
template <typename F>
void STATS_WithMachineType_HW(int dataType, F f) {
  switch (dataType) {
    case RTABLE_INTEGER8:
      return f(static_cast<std::int8_t*>(nullptr));
    case RTABLE_INTEGER16:
      return f(static_cast<std::int16_t*>(nullptr));
    case RTABLE_INTEGER32:
      return f(static_cast<std::int32_t*>(nullptr));
    case RTABLE_INTEGER64:
      return f(static_cast<std::int64_t*>(nullptr));
    case RTABLE_FLOAT64:
      return f(static_cast<double*>(nullptr));
    case RTABLE_FLOAT32:
      return f(static_cast<float*>(nullptr));
    default:
      return;
  }
}

// Scratch room for count elements: from the host where they are handles, so that the collector sees
// them, from the heap otherwise.
class STATS_ElementBuffer_HW {
 public:
  STATS_ElementBuffer_HW(VKernelVector kv, int dataType, V_INT count);

  char* data() const { return data_; }
  V_INT used() const { return used_; }

  // Appends an element of elementSize bytes; there must be room.
  void append(const RTableData& element, int elementSize) {
    std::memcpy(data_ + used_ * elementSize, &element, static_cast<std::size_t>(elementSize));
    ++used_;
  }

 private:
  std::unique_ptr<char[]> owned_;
  char* data_ = nullptr;
  V_INT used_ = 0;
};
