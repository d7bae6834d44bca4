// The memory of one kernel: its heap and its interned objects.
#pragma once

#include "memory/heap.hpp"
#include "memory/interning.hpp"

namespace vexel {

// The base of a kernel's state, and all that the heap knows of it.
class Memory {
 public:
  Memory() : heap(*this), interned(heap) {}
  virtual ~Memory() = default;
  Memory(const Memory&) = delete;
  Memory& operator=(const Memory&) = delete;

  // Marks what the state itself keeps alive.
  virtual void markRoots(Marker& marker) = 0;

  // Raises the host's error "not enough memory".
  [[noreturn]] virtual void raiseNoMemory() = 0;

  Heap heap;
  InternTables interned;
};

}  // namespace vexel
