// Watch: the functions' side of kernels/watch.hpp.
#include "kernels/watch.hpp"

#include <cmath>
#include <new>
#include <utility>

#include "vexel/interruption.hpp"

namespace vexel {

// Parts of the work that cannot say how far the whole is repeat what was said last.
Watch::Watch(std::function<bool(double)> keepGoing)
    : keepGoing_([ask = std::move(keepGoing), last = 0.0](double done) mutable {
        last = std::isnan(done) ? last : done;
        return ask(last);
      }) {
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
