// Inverse Gaussian distribution with mean mu and shape lambda; variates only.
//
// Michael, Schucany and Haas, Generating Random Variates Using Transformations with Multiple Roots,
// The American Statistician 30, 1976.

#include "distributions/families.hpp"
#include "kernel/uniform_source.hpp"
#include "kernels/classic/variates.hpp"

double STATS_InverseGaussianRandomVariate_HW(VKernelVector, double mu, double lambda) {
  STATS_VexelRandomStream_HW uniforms;
  return vexel::kernels::classic::inverseGaussian(uniforms, mu, lambda);
}
