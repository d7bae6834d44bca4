// Where the calling thread's machine stack ends, for the collector's scan and for the recursion
// guard.
#pragma once

namespace vexel {

struct StackBounds {
  const char* low;   // the last address that may be used
  const char* high;  // one past the first
};

// The calling thread's stack; found once a thread.
const StackBounds& stackBounds();

}  // namespace vexel
