// The functions taken from Boost.Math, in double only.  No exception leaves them: whatever Boost
// cannot compute is a NaN.
#pragma once

namespace nag2 {

double boostGammaP(double a, double x);
double boostGammaQ(double a, double x);
double boostDigamma(double x);
double boostGammaPInverse(double a, double p);
double boostGammaQInverse(double a, double q);
// Root x of I_x(a, b) = p, with 1 - x in *complement; the second for 1 - I_x(a, b) = q.
double boostBetaInverse(double a, double b, double p, double* complement);
double boostBetaComplementInverse(double a, double b, double q, double* complement);

}  // namespace nag2
