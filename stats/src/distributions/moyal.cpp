// Moyal distribution with location a and scale b; variates by rejection from a uniform angle.
//
// Walck, Hand-book on Statistical Distributions for Experimentalists, Stockholm 1996, chapter 26.

#include "distributions/families.hpp"
#include "kernel/host_settings.hpp"
#include "kernel/nag_call.hpp"
#include "kernel/uniform_source.hpp"
#include "kernels/classic/variates.hpp"

double STATS_MoyalRandomVariate_HW(VKernelVector kv, double a, double b) {
  STATS_VexelRandomStream_HW uniforms;
  return vexel::kernels::classic::moyal(uniforms, a, b, STATS_HostPi_HW(kv));
}
