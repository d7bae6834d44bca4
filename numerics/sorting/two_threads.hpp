// Two pieces of work at the same time, where the machine has a second processor to give.
#pragma once

#include <pthread.h>
#include <signal.h>

#include <exception>
#include <new>
#include <system_error>
#include <thread>

namespace nag2 {

inline bool haveTwoProcessors() {
  static const bool have = std::thread::hardware_concurrency() > 1;
  return have;
}

// A thread that takes no signals, so that handlers run where they always do; none where the system
// has none to give.
template <typename Work>
std::jthread quietThread(Work work) {
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  std::jthread thread;
  try {
    thread = std::jthread(work);
  } catch (const std::system_error&) {
  } catch (const std::bad_alloc&) {
  }
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  return thread;
}

// Runs both, in turn where no thread is to be had; what either throws is thrown here when both are
// done.
template <typename First, typename Second>
void runBoth(First first, Second second) {
  std::exception_ptr failure;
  {
    const std::jthread other = quietThread([&] {
      try {
        first();
      } catch (...) {
        failure = std::current_exception();
      }
    });
    if (!other.joinable()) {
      first();
    }
    second();
  }
  if (failure) {
    std::rethrow_exception(failure);
  }
}

}  // namespace nag2
