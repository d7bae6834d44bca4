// Moyal distribution with location a and scale b; variates only.
//
// Method  Rejection from a uniform angle, in kernels/classic/variates.hpp.
// Source  Walck, Hand-book on Statistical Distributions for Experimentalists, Stockholm 1996,
//         chapter 26.
// Draws   Two uniforms a trial, the angle's first; 2.9 trials.
// Error   Not measured: exact but for rounding, as the bound 0.912 is above the greatest ratio,
//         0.9111.

#include "distributions/families.hpp"
#include "kernel/host_settings.hpp"
#include "kernel/nag_call.hpp"
#include "kernel/uniform_source.hpp"
#include "kernels/classic/variates.hpp"

double STATS_MoyalRandomVariate_HW(VKernelVector kv, double a, double b) {
  STATS_VexelRandomStream_HW uniforms;
  return vexel::kernels::classic::moyal(uniforms, a, b, STATS_HostPi_HW(kv));
}
