// The watch of this library's interface: the kernels' watcher, for a caller beyond the interface.

#include "kernels/watch.hpp"

#include <nag2/nag2.h>

#include <utility>

namespace {

thread_local Nag2Watch current{};

void look(void* /*data*/, double done) { current.look(current.data, done); }

}  // namespace

extern "C" Nag2Watch nag2_watch(Nag2Watch watch) {
  thread_local vexel::kernels::Watcher watcher{look, nullptr, nullptr};
  vexel::kernels::currentWatcher = watch.look != nullptr ? &watcher : nullptr;
  return std::exchange(current, watch);
}
