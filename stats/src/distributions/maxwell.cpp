// Maxwell distribution with scale a; variates by Johnk's method.
//
// Walck, Hand-book on Statistical Distributions for Experimentalists, Stockholm 1996, chapter 25.

#include "distributions/families.hpp"
#include "kernel/uniform_source.hpp"
#include "kernels/classic/variates.hpp"

double STATS_MaxwellRandomVariate_HW(VKernelVector, double a) {
  STATS_VexelRandomStream_HW uniforms;
  return vexel::kernels::classic::maxwell(uniforms, a);
}
