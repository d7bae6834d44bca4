// The machine stack's limits, as the C library tells them.

#include "core/stack_bounds.hpp"

#include <pthread.h>

#include <cstddef>

#include "core/errors.hpp"

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

void checkStack(State& state) {
  // Room for unwinding, the formatting of the error and what a callback of the library needs.
  constexpr std::ptrdiff_t kReserve = 192 * 1024;
  const char here = 0;
  if (&here - stackBounds().low < kReserve) {
    raise(state, "too many levels of recursion");
  }
}

}  // namespace vexel
