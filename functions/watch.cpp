// Watch: the functions' side of kernels/watch.hpp.
#include "kernels/watch.hpp"

#include <new>
#include <utility>

#include "vexel/interruption.hpp"

namespace vexel {

Watch::Watch(std::function<bool(double)> keepGoing) : keepGoing_(std::move(keepGoing)) {
  static_assert(sizeof(kernels::Watcher) <= sizeof(state_));
  const auto report = [](void* self, double done) {
    if (!static_cast<Watch*>(self)->keepGoing_(done)) {
      throw Interrupted();
    }
  };
  kernels::currentWatcher = new (state_) kernels::Watcher{report, this, kernels::currentWatcher};
}

Watch::~Watch() { kernels::currentWatcher = kernels::currentWatcher->previous; }

}  // namespace vexel
