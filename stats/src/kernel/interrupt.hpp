// Looking for an interrupt of the user's in loops that evaluate nothing on the host.
#pragma once

#include <vexelc/vexelc.h>

#include <cstdint>

#include "kernels/watch.hpp"

// Lets the host raise a pending interrupt; cheap enough to call once in some 10^5 operations.
inline void STATS_LookForInterrupt_HW(VKernelVector kv) { VexelEval(kv, ToVexelInteger(kv, 0)); }

// While it lives, kernels that poll let the host raise a pending interrupt.  Without a host, kv
// null, there is nobody to ask.
class STATS_InterruptWatch_HW {
 public:
  explicit STATS_InterruptWatch_HW(VKernelVector kv)
      : watcher_{look, kv, vexel::kernels::currentWatcher} {
    vexel::kernels::currentWatcher = kv != nullptr ? &watcher_ : watcher_.previous;
  }
  ~STATS_InterruptWatch_HW() { vexel::kernels::currentWatcher = watcher_.previous; }
  STATS_InterruptWatch_HW(const STATS_InterruptWatch_HW&) = delete;
  STATS_InterruptWatch_HW& operator=(const STATS_InterruptWatch_HW&) = delete;

 private:
  static void look(void* kv, double) { STATS_LookForInterrupt_HW(static_cast<VKernelVector>(kv)); }

  vexel::kernels::Watcher watcher_;
};

// Looks once in some 10^7 operations, whatever the size of the steps that it is told of.
class STATS_InterruptLookout_HW {
 public:
  // Without a host, kv null, there is nobody to ask.
  explicit STATS_InterruptLookout_HW(VKernelVector kv) : kv_(kv) {}

  void done(std::int64_t operations) {
    constexpr std::int64_t kBetweenLooks = 10000000;
    work_ += operations;
    if (work_ >= kBetweenLooks && kv_ != nullptr) {
      work_ = 0;
      STATS_LookForInterrupt_HW(kv_);
    }
  }

 private:
  VKernelVector kv_;
  std::int64_t work_ = 0;
};
