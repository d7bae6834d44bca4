// The machine stack's limits, as the C library tells them.

#include "memory/stack_bounds.hpp"

#include <pthread.h>

#include <cstddef>

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

}  // namespace vexel
