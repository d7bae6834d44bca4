// The source of every random number of the library: the host's own stream.  The library keeps no
// generator state, so the order of draws is part of what each variate and sample is.
#pragma once

#include <vexelc/vexelc.h>

#include <cstdint>

#include "kernels/classic/uniforms.hpp"

class STATS_VexelRandomStream_HW {
 public:
  static void Initialize(VKernelVector kv) { gVKernelVector = kv; }
  static void Terminate() {}

  // Uniform over all 32-bit integers.
  static std::int32_t NextInteger() { return VexelRandomInt32(gVKernelVector); }

  // Uniform in the unit interval; whether 0 can occur is the host's business.
  static double NextDouble() { return VexelRandomDouble01(gVKernelVector); }

  // As the kernels' source of uniforms.
  static std::int32_t integer() { return NextInteger(); }
  static vexel::kernels::classic::Unit unit() {
    return vexel::kernels::classic::Unit(NextDouble());
  }

 private:
  static VKernelVector gVKernelVector;
};
