// Looking for an interrupt of the user's in loops that evaluate nothing on the host.
#pragma once

#include <nag2/nag2.h>
#include <vexelc/vexelc.h>

#include "kernels/watch.hpp"

// A numerical library may come without it.
#pragma weak nag2_watch

// Lets the host raise a pending interrupt; cheap enough to call once in some 10^5 operations.
inline void STATS_LookForInterrupt_HW(VKernelVector kv) { VexelEval(kv, ToVexelInteger(kv, 0)); }

// While it lives, kernels and the numerical library let the host raise a pending interrupt.  Every
// entry point has one.  Without a host, kv null, there is nobody to ask.
class STATS_InterruptWatch_HW {
 public:
  explicit STATS_InterruptWatch_HW(VKernelVector kv)
      : watcher_{look, kv, vexel::kernels::currentWatcher} {
    if (kv != nullptr) {
      vexel::kernels::currentWatcher = &watcher_;
      numericsBefore_ = setNumerics({look, kv});
    }
  }
  ~STATS_InterruptWatch_HW() {
    if (watcher_.data != nullptr) {
      vexel::kernels::currentWatcher = watcher_.previous;
      setNumerics(numericsBefore_);
    }
  }
  STATS_InterruptWatch_HW(const STATS_InterruptWatch_HW&) = delete;
  STATS_InterruptWatch_HW& operator=(const STATS_InterruptWatch_HW&) = delete;

 private:
  static void look(void* kv, double) { STATS_LookForInterrupt_HW(static_cast<VKernelVector>(kv)); }
  static Nag2Watch setNumerics(Nag2Watch watch) {
    return nag2_watch != nullptr ? nag2_watch(watch) : Nag2Watch{};
  }

  vexel::kernels::Watcher watcher_;
  Nag2Watch numericsBefore_{};
};
