#include "in_use.hpp"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <stdexcept>
#include <vector>

namespace vexel::python {

namespace {

// Few at a time, of all interpreters.
std::mutex guard;
std::vector<const void*> used;
std::atomic<int> many{0};

bool isUsed(const void* object) {
  return std::find(used.begin(), used.end(), object) != used.end();
}

[[noreturn]] void refuse() {
  throw std::runtime_error(
      "the object is used by another call, which has not ended: a generator, a sequence or a state "
      "serves one thread at a time");
}

}  // namespace

void requireUnused(const void* object) {
  if (many.load(std::memory_order_relaxed) == 0) {
    return;
  }
  const std::lock_guard lock(guard);
  if (isUsed(object)) {
    refuse();
  }
}

InUse::InUse(const void* object) : object_(object) {
  if (object == nullptr) {
    return;
  }
  const std::lock_guard lock(guard);
  if (isUsed(object)) {
    refuse();
  }
  used.push_back(object);
  ++many;
}

InUse::~InUse() {
  if (object_ != nullptr) {
    const std::lock_guard lock(guard);
    used.erase(std::find(used.begin(), used.end(), object_));
    --many;
  }
}

}  // namespace vexel::python
