// The machine stack's limits, as the C library tells them.

#include "memory/stack_bounds.hpp"

#include <pthread.h>

#include <cstdint>

#include "values/errors.hpp"

namespace vexel {

namespace {

StackBounds findStackBounds() {
  pthread_attr_t attributes;
  void* low = nullptr;
  std::size_t size = 0;
  pthread_getattr_np(pthread_self(), &attributes);
  pthread_attr_getstack(&attributes, &low, &size);
  pthread_attr_destroy(&attributes);
  return {static_cast<const char*>(low), static_cast<const char*>(low) + size};
}

}  // namespace

const StackBounds& stackBounds() {
  thread_local const StackBounds bounds = findStackBounds();
  return bounds;
}

constinit thread_local std::uintptr_t stackLimit = UINTPTR_MAX;

// Finds the limit, when it was not known, and looks again.
void checkStackSlowly(State& state) {
  // Room for unwinding, the formatting of the error and what a callback of the library needs.
  constexpr std::uintptr_t kReserve = 192 * 1024;
  stackLimit = reinterpret_cast<std::uintptr_t>(stackBounds().low) + kReserve;
  if (reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0)) < stackLimit) {
    raise(state, "too many levels of recursion");
  }
}

}  // namespace vexel
