// What the allocator and the collector both know of the heap's memory.
#pragma once

#include "memory/heap.hpp"

namespace vexel {

constexpr std::size_t kChunkBytes = std::size_t{1} << 18;
// Collections begin when this much, or as much as is alive, was allocated since the last.
constexpr std::size_t kMinimalThreshold = std::size_t{1} << 19;
constexpr Word kMarkBit = 1;

constexpr std::size_t kChunkHeader = 64;  // keeps cells aligned to 16 bytes and to cache lines

// A run of cells of one size.  Cells below next have been handed to the free list at least once.
struct Heap::Chunk {
  std::size_t sizeClass;
  std::size_t cellBytes;
  char* next;
  char* end;

  char* first() {
    static_assert(sizeof(Chunk) <= kChunkHeader);
    return reinterpret_cast<char*>(this) + kChunkHeader;
  }
};

}  // namespace vexel
