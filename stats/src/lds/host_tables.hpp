// Integer tables of the host that streams read and write in place, with their sizes checked.
#pragma once

#include <vexelc/vexelc.h>

#include <concepts>
#include <cstdint>

#include "kernel/data_argument.hpp"

// The block of a dense host array of 32- or 64-bit integers.
template <typename T>
requires std::same_as<T, std::int32_t> || std::same_as<T, std::int64_t>
class STATS_HostTable_HW {
 public:
  // Raises for anything but a dense array of that element type.
  STATS_HostTable_HW(VKernelVector kv, ALGEB table) : kv_(kv), table_(table) {
    constexpr bool wide = sizeof(T) == sizeof(std::int64_t);
    if (IsVexelRTable(kv, table) != 0 &&
        STATS_IsDense_HW(STATS_SettingsOf_HW(kv, table),
                         wide ? RTABLE_INTEGER64 : RTABLE_INTEGER32)) {
      size_ = RTableNumElements(kv, table);
      data_ = static_cast<T*>(RTableDataBlock(kv, table));
      return;
    }
    VexelRaiseError1(kv,
                     wide ? "invalid table, expected: dense array of 64-bit integers, received %1"
                          : "invalid table, expected: dense array of 32-bit integers, received %1",
                     table);
  }

  T* data() const { return data_; }
  V_INT size() const { return size_; }

  // Raises unless there are count elements from the first one on.
  void require(V_INT count) const {
    if (count > size_) {
      raiseTooSmall();
    }
  }

  // Raises unless elements row * stride .. row * stride + count - 1 exist.
  void require(V_INT row, V_INT stride, V_INT count) const {
    V_INT first = 0;
    V_INT end = 0;
    if (__builtin_mul_overflow(row, stride, &first) || first < 0 ||
        __builtin_add_overflow(first, count, &end) || end > size_) {
      raiseTooSmall();
    }
  }

 private:
  [[noreturn]] void raiseTooSmall() const {
    VexelRaiseError1(kv_, "table has too few elements for the dimension and sizes given: %1",
                     table_);
  }

  VKernelVector kv_;
  ALGEB table_;
  T* data_ = nullptr;
  V_INT size_ = 0;
};

// Raises unless a polynomial may have that degree.
inline void STATS_CheckDegree_HW(VKernelVector kv, std::int32_t degree) {
  if (degree < 1) {
    VexelRaiseError1(kv,
                     "degree of a primitive polynomial is expected to be positive, received: %1",
                     ToVexelInteger(kv, degree));
  }
}
