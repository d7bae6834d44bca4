#include "turn.hpp"

#include <pthread.h>
#include <unistd.h>

#include <mutex>
#include <new>
#include <thread>

namespace vexel::python {

namespace {

struct Turns {
  std::mutex mutex;
  std::thread::id holder;  // written with the interpreter lock held
  int depth = 0;
  std::vector<Value> dropped;  // with the interpreter lock held
};

// Never destroyed: Values may be dropped while the process ends.
Turns& turns() {
  static Turns& only = *[] {
    static Turns* made = new Turns;
    // A child of fork has one thread, which had its turn or none.
    pthread_atfork(nullptr, nullptr, [] {
      if (made->holder != std::this_thread::get_id()) {
        new (&made->mutex) std::mutex;
        made->holder = {};
        made->depth = 0;
      }
    });
    return made;
  }();
  return only;
}

struct sigaction pythons {};

void onInterrupt(int signal, siginfo_t* info, void* context) {
  Kernel::interrupt();
  if ((pythons.sa_flags & SA_SIGINFO) != 0) {
    pythons.sa_sigaction(signal, info, context);
  } else {
    pythons.sa_handler(signal);
  }
}

}  // namespace

Turn::Turn() {
  Turns& t = turns();
  if (t.holder == std::this_thread::get_id()) {
    ++t.depth;
    return;
  }
  if (!t.mutex.try_lock()) {
    const py::gil_scoped_release released;
    t.mutex.lock();
  }
  t.holder = std::this_thread::get_id();
  t.depth = 1;
  t.dropped.clear();
}

Turn::~Turn() {
  Turns& t = turns();
  if (--t.depth == 0) {
    t.dropped.clear();
    t.holder = {};
    t.mutex.unlock();
  }
}

InterruptWatch::InterruptWatch() {
  if (getpid() != gettid()) {
    return;
  }
  struct sigaction mine {};
  mine.sa_sigaction = onInterrupt;
  sigemptyset(&mine.sa_mask);
  sigaction(SIGINT, nullptr, &before_);
  const bool plain = (before_.sa_flags & SA_SIGINFO) == 0;
  if ((plain && (before_.sa_handler == SIG_DFL || before_.sa_handler == SIG_IGN)) ||
      (!plain && before_.sa_sigaction == onInterrupt)) {
    return;
  }
  pythons = before_;  // Python's, or that of a library which calls it
  mine.sa_flags = before_.sa_flags | SA_SIGINFO;
  installed_ = sigaction(SIGINT, &mine, nullptr) == 0;
}

InterruptWatch::~InterruptWatch() {
  if (installed_) {
    sigaction(SIGINT, &before_, nullptr);
    Kernel::clearInterrupt();
  }
}

Held::~Held() {
  Turns& t = turns();
  if (t.holder != std::this_thread::get_id()) {
    t.dropped.push_back(std::move(value_));
  }
}

}  // namespace vexel::python
