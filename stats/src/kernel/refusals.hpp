// Refusals of kernels as host errors.
#pragma once

#include <vexelc/vexelc.h>

#include "kernels/refusal.hpp"

// The value of body; a kernel's refusal in it is raised as a host error, after the handler has
// ended, so that nothing is in flight when the host's error unwinds.
template <typename Body>
auto STATS_RaisingRefusals_HW(VKernelVector kv, const Body& body) {
  const char* text = nullptr;
  try {
    return body();
  } catch (const vexel::kernels::Refusal& refusal) {
    text = refusal.what();
  }
  VexelRaiseError(kv, text);
}
