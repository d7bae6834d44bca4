// Ranges and equations of the host, whose operands the library reads and writes itself.
#pragma once

#include <vexelc/vexelc.h>

#include <cstdint>

inline bool STATS_IsRange_HW(ALGEB x) {
  const auto address = reinterpret_cast<std::uintptr_t>(x);
  if (x == nullptr || (address & 1U) != 0) {
    return false;
  }
  const std::uintptr_t header = *reinterpret_cast<const std::uintptr_t*>(x);
  return (header & VEXEL_HEADER_TAG_MASK) >> 26 == VEXEL_TAG_RANGE;
}

// Operand 1 or 2 of a range or an equation.
inline ALGEB STATS_Operand_HW(ALGEB x, int i) { return reinterpret_cast<const ALGEB*>(x)[i]; }

// A range or an equation, by tag.
inline ALGEB STATS_NewPair_HW(VKernelVector kv, int tag, ALGEB left, ALGEB right) {
  const ALGEB pair = VexelNew(kv, tag, 3);
  reinterpret_cast<ALGEB*>(pair)[1] = left;
  reinterpret_cast<ALGEB*>(pair)[2] = right;
  return pair;
}
