// Maxwell distribution with scale a; variates only.
//
// Method  Johnk's method, in kernels/classic/variates.hpp.
// Source  Walck, Hand-book on Statistical Distributions for Experimentalists, Stockholm 1996,
//         chapter 25.
// Draws   One uniform, pairs until one lies in the quarter disc (1.27 pairs), one uniform.
// Error   Not measured: exact but for rounding.

#include "distributions/families.hpp"
#include "kernel/uniform_source.hpp"
#include "kernels/classic/variates.hpp"

double STATS_MaxwellRandomVariate_HW(VKernelVector, double a) {
  STATS_VexelRandomStream_HW uniforms;
  return vexel::kernels::classic::maxwell(uniforms, a);
}
