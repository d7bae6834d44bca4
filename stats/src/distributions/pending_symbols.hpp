// Lets the library link and load while parts of the numerical library are still on their
// way: absent functions are null until they land, and this file goes when the last one has.
#pragma once

#include <nag2/nag2.h>

#pragma weak nag2_beta_probability
#pragma weak nag2_beta_quantile
#pragma weak nag2_binomial
#pragma weak nag2_chi_square_probability
#pragma weak nag2_chi_square_quantile
#pragma weak nag2_f_probability
#pragma weak nag2_f_quantile
#pragma weak nag2_gamma_probability
#pragma weak nag2_gamma_quantile
#pragma weak nag2_hypergeometric
#pragma weak nag2_noncentral_beta_probability
#pragma weak nag2_noncentral_chi_square_probability
#pragma weak nag2_noncentral_f_probability
#pragma weak nag2_noncentral_t_probability
#pragma weak nag2_normal_probability
#pragma weak nag2_normal_quantile
#pragma weak nag2_poisson
#pragma weak nag2_student_t_probability
#pragma weak nag2_student_t_quantile
