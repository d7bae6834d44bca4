// Inverse Gaussian distribution with mean mu and shape lambda; variates only.
//
// Method  Transformation with two roots, one of which a uniform chooses.
// Source  Michael, Schucany and Haas, Generating Random Variates Using Transformations with
//         Multiple Roots, The American Statistician 30, 1976.
// Draws   A chi-square variate of one degree of freedom, then one uniform.
// Error   That of the normal ziggurat behind the chi-square variate (4.2e-6); not measured itself.

#include "distributions/families.hpp"
#include "kernel/uniform_source.hpp"
#include "kernels/classic/variates.hpp"

double STATS_InverseGaussianRandomVariate_HW(VKernelVector, double mu, double lambda) {
  STATS_VexelRandomStream_HW uniforms;
  return vexel::kernels::classic::inverseGaussian(uniforms, mu, lambda);
}
