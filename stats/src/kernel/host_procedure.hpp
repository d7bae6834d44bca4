// Values of host procedures as doubles: the two ways, in software and in hardware, that adapters,
// generators and samplers share.
#pragma once

#include <vexelc/vexelc.h>

#include <memory>

// proc(args) in software, by evalf where the value is no number; args is one value or a sequence.
double STATS_SoftwareValue_HW(VKernelVector kv, ALGEB proc, ALGEB args);

// Runs body, which returns a double, under the host's trap; false when an error was trapped.
template <typename Body>
bool STATS_Trapped_HW(VKernelVector kv, const Body& body, double* out) {
  struct Call {
    const Body* body;
    double value;
  } call{&body, 0.0};
  V_BOOL failed = 0;
  VexelTrapError(
      kv,
      [](void* data) -> void* {
        auto* const c = static_cast<Call*>(data);
        c->value = (*c->body)();
        return data;
      },
      &call, &failed);
  if (!failed) {
    *out = call.value;
  }
  return !failed;
}
