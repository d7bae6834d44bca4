// What can be said of one object by looking at it: its mark, its guards.
#pragma once

#include <cstddef>

#include "memory/guards.hpp"
#include "memory/heap_chunk.hpp"
#include "memory/layout.hpp"

namespace vexel {

inline bool isMarked(ALGEB x) { return (words(x)[0] & kMarkBit) != 0; }

// The bytes behind those that VexelAlloc handed out, to the end of the block.
inline bool isBlockIntact(ALGEB x) {
  const BlockObject& block = blockOf(x);
  const std::size_t room = length(x) * sizeof(Word) - sizeof(BlockObject);
  return isGuardIntact(block.bytes + block.size, room - block.size);
}

inline std::size_t dataBytes(const ArrayObject& array) {
  return static_cast<std::size_t>(array.count) * elementSize(array.type);
}

inline bool ownsData(const ArrayObject& array) {
  return array.ownsData != 0 && array.data != nullptr;
}

inline bool isDataIntact(const ArrayObject& array) {
  const auto* data = static_cast<const char*>(array.data);
  return isGuardIntact(data - kGuardBytes) && isGuardIntact(data + dataBytes(array));
}

}  // namespace vexel
