// Interrupts the kernel as Ctrl-C would when a computation runs longer than it may.
#pragma once

#include <sys/time.h>

#include <csignal>
#include <vexel/kernel.hpp>

class Watchdog {
 public:
  // Interrupts after so many seconds, and again every second until it is destroyed.
  explicit Watchdog(int seconds) {
    std::signal(SIGALRM, [](int) { vexel::Kernel::interrupt(); });
    const itimerval timer{{1, 0}, {seconds, 0}};
    setitimer(ITIMER_REAL, &timer, nullptr);
  }
  ~Watchdog() {
    const itimerval off{};
    setitimer(ITIMER_REAL, &off, nullptr);
  }
  Watchdog(const Watchdog&) = delete;
  Watchdog& operator=(const Watchdog&) = delete;
};
