// The exported entry points of the continuous distributions, one row each: operation, kind of
// result, message for a wrong number of arguments, and the kinds of the arguments in their order.
//
// Messages are spelled out so that a search for what a user saw ends on its row.  A few name the
// wrong entry point or read "2 argument"; hosts match on these texts, so they stay as they are.
// A sample takes its size before what the row lists.  Entry points that fit no row
// stand in irregular_entry_points.cpp.

#include "distributions/entry_rows.hpp"
#include "distributions/families.hpp"

// clang-format off
ENTRY(BetaProbability,                Float,   "VexelBetaProbability expects 3 arguments, received: %1", real, real, real)
ENTRY(BetaDeviate,                    Float,   "VexelBetaDeviate expects 3 arguments, received: %1", real, real, real)
ENTRY(BetaRandomVariate,              Float,   "VexelBetaRandomVariate expects 2 arguments, received: %1", real, real)
SAMPLE(Beta,                                   "VexelBetaRandomSample expects 3 arguments, received: %1", real, real)

ENTRY(CauchyProbability,              Float,   "VexelCauchyProbability expects 3 arguments, received: %1", real, real, real)
ENTRY(CauchyDeviate,                  Float,   "VexelCauchyDeviate expects 3 arguments, received: %1", real, real, real)
ENTRY(CauchyRandomVariate,            Float,   "VexelCauchyRandomVariate expects 2 arguments, received: %1", real, real)
SAMPLE(Cauchy,                                 "VexelCauchyRandomSample expects 3 arguments, received: %1", real, real)

ENTRY(ChiSquareProbability,           Float,   "VexelChiSquareProbability expects 2 arguments, received: %1", real, real)
ENTRY(ChiSquareDeviate,               Float,   "VexelChiSquareDeviate expects 2 arguments, received: %1", real, real)
ENTRY(ChiSquareRandomVariate,         Float,   "VexelChiSquareRandomVariate expects 1 argument, received: %1", real)
SAMPLE(ChiSquare,                              "VexelChiSquareRandomSample expects 2 arguments, received: %1", real)

ENTRY(ExponentialProbability,         Float,   "VexelExponentialProbability expects 2 arguments, received: %1", real, real)
ENTRY(ExponentialDeviate,             Float,   "VexelExponentialDeviate expects 2 arguments, received: %1", real, real)
ENTRY(ExponentialRandomVariate,       Float,   "VexelExponentialRandomVariate expects 1 argument, received: %1", real)
SAMPLE(Exponential,                            "VexelExponentialRandomSample expects 2 arguments, received: %1", real)

ENTRY(FRatioProbability,              Float,   "VexelFRatioProbability expects 3 arguments, received: %1", real, real, real)
ENTRY(FRatioDeviate,                  Float,   "VexelFRatioDeviate expects 3 arguments, received: %1", real, real, real)
ENTRY(FRatioRandomVariate,            Float,   "VexelFRatioRandomVariate expects 2 arguments, received: %1", real, real)
SAMPLE(FRatio,                                 "VexelFRatioRandomSample expects 3 arguments, received: %1", real, real)

ENTRY(GammaProbability,               Float,   "VexelGammaProbability expects 3 arguments, received: %1", real, real, real)
ENTRY(GammaDeviate,                   Float,   "VexelGammaDeviate expects 3 arguments, received: %1", real, real, real)
ENTRY(GammaRandomVariate,             Float,   "VexelGammaRandomVariate expects 2 arguments, received: %1", real, real)
SAMPLE(Gamma,                                  "VexelGammaRandomSample expects 3 arguments, received: %1", real, real)

ENTRY(GumbelProbability,              Float,   "VexelGumbelProbability expects 3 arguments, received: %1", real, real, real)
ENTRY(GumbelDeviate,                  Float,   "VexelGumbelDeviate expects 3 arguments, received: %1", real, real, real)
ENTRY(GumbelRandomVariate,            Float,   "VexelGumbelRandomVariate expects 2 arguments, received: %1", real, real)
SAMPLE(Gumbel,                                 "VexelGumbelRandomSample expects 3 arguments, received: %1", real, real)

ENTRY(LaplaceProbability,             Float,   "VexelLaplaceProbability expects 3 arguments, received: %1", real, real, real)
ENTRY(LaplaceDeviate,                 Float,   "VexelLaplaceDeviate expects 3 arguments, received: %1", real, real, real)
ENTRY(LaplaceRandomVariate,           Float,   "VexelLaplaceRandomVariate expects 2 arguments, received: %1", real, real)
SAMPLE(Laplace,                                "VexelLaplaceRandomSample expects 3 arguments, received: %1", real, real)

ENTRY(LogisticProbability,            Float,   "VexelLogisticProbability expects 3 arguments, received: %1", real, real, real)
ENTRY(LogisticDeviate,                Float,   "VexelLogisticDeviate expects 3 arguments, received: %1", real, real, real)
ENTRY(LogisticRandomVariate,          Float,   "VexelLogisticRandomVariate expects 2 arguments, received: %1", real, real)
SAMPLE(Logistic,                               "VexelLogisticRandomSample expects 3 arguments, received: %1", real, real)

ENTRY(LogNormalProbability,           Float,   "VexelLogNormalProbability expects 3 arguments, received: %1", real, real, real)
ENTRY(LogNormalDeviate,               Float,   "VexelLogNormalDeviate expects 3 arguments, received: %1", real, real, real)
ENTRY(LogNormalRandomVariate,         Float,   "VexelLogNormalRandomVariate expects 2 arguments, received: %1", real, real)
SAMPLE(LogNormal,                              "VexelLogNormalRandomSample expects 3 arguments, received: %1", real, real)

ENTRY(NormalProbability,              Float,   "VexelNormalProbability expects 3 arguments, received: %1", real, real, real)
ENTRY(NormalDeviate,                  Float,   "VexelNormalDeviate expects 3 arguments, received: %1", real, real, real)
ENTRY(NormalRandomVariate,            Float,   "VexelNormalRandomVariate expects 2 arguments, received: %1", real, real)

ENTRY(ParetoProbability,              Float,   "VexelParetoProbability expects 3 arguments, received: %1", real, real, real)
ENTRY(ParetoDeviate,                  Float,   "VexelParetoDeviate expects 3 arguments, received: %1", real, real, real)
ENTRY(ParetoRandomVariate,            Float,   "VexelParetoRandomVariate expects 2 arguments, received: %1", real, real)
SAMPLE(Pareto,                                 "VexelParetoRandomSample expects 3 arguments, received: %1", real, real)

ENTRY(PowerProbability,               Float,   "VexelPowerProbability expects 3 arguments, received: %1", real, real, real)
ENTRY(PowerDeviate,                   Float,   "VexelPowerDeviate expects 3 arguments, received: %1", real, real, real)
ENTRY(PowerRandomVariate,             Float,   "VexelPowerRandomVariate expects 2 arguments, received: %1", real, real)
SAMPLE(Power,                                  "VexelPowerRandomSample expects 3 arguments, received: %1", real, real)

ENTRY(RayleighProbability,            Float,   "VexelRayleighProbability expects 2 arguments, received: %1", real, real)
ENTRY(RayleighDeviate,                Float,   "VexelRayleighDeviate expects 2 arguments, received: %1", real, real)
ENTRY(RayleighRandomVariate,          Float,   "VexelRayleighRandomVariate expects 1 argument, received: %1", real)
SAMPLE(Rayleigh,                               "VexelRayleighRandomSample expects 2 arguments, received: %1", real)

ENTRY(StudentTProbability,            Float,   "VexelStudentTProbability expects 2 arguments, received: %1", real, real)
ENTRY(StudentTDeviate,                Float,   "VexelStudentTDeviate expects 2 arguments, received: %1", real, real)
ENTRY(StudentTRandomVariate,          Float,   "VexelStudentTRandomVariate expects 1 argument, received: %1", real)
SAMPLE(StudentT,                               "VexelStudentTRandomSample expects 2 arguments, received: %1", real)

ENTRY(TriangularProbability,          Float,   "VexelTriangularProbability expects 4 arguments, received: %1", real, real, real, real)
ENTRY(TriangularDeviate,              Float,   "VexelTriangularDeviate expects 4 arguments, received: %1", real, real, real, real)
ENTRY(TriangularRandomVariate,        Float,   "VexelTriangularRandomVariate expects 3 arguments, received: %1", real, real, real)
SAMPLE(Triangular,                             "VexelTriangularRandomSample expects 4 arguments, received: %1", real, real, real)

ENTRY(UniformProbability,             Float,   "VexelUniformRandomVariate expects 3 arguments, received: %1", real, real, real)
ENTRY(UniformDeviate,                 Float,   "VexelUniformRandomVariate expects 3 arguments, received: %1", real, real, real)
ENTRY(UniformRandomVariate,           Float,   "VexelUniformRandomVariate expects 2 arguments, received: %1", real, real)
SAMPLE(Uniform,                                "VexelUniformRandomSample expects 3 arguments, received: %1", real, real)

ENTRY(WeibullProbability,             Float,   "VexelWeibullProbability expects 3 arguments, received: %1", real, real, real)
ENTRY(WeibullDeviate,                 Float,   "VexelWeibullDeviate expects 3 arguments, received: %1", real, real, real)
ENTRY(WeibullRandomVariate,           Float,   "VexelWeibullRandomVariate expects 2 arguments, received: %1", real, real)
SAMPLE(Weibull,                                "VexelWeibullRandomSample expects 3 arguments, received: %1", real, real)

ENTRY(ErrorRandomVariate,             Float,   "expected 3 arguments, received: %1", real, real, real)
SAMPLE(Error,                                  "expected 4 arguments, received: %1", real, real, real)

ENTRY(InverseGaussianRandomVariate,   Float,   "VexelInverseGaussianRandomVariate expects 2 argument, received: %1", real, real)
SAMPLE(InverseGaussian,                        "VexelInverseGaussianRandomSample expects 3 arguments, received: %1", real, real)

ENTRY(MaxwellRandomVariate,           Float,   "VexelMaxwellRandomVariate expects 1 argument, received: %1", real)
SAMPLE(Maxwell,                                "VexelMaxwellRandomSample expects 2 arguments, received: %1", real)

ENTRY(MoyalRandomVariate,             Float,   "VexelMoyalRandomVariate expects 2 argument, received: %1", real, real)
SAMPLE(Moyal,                                  "VexelMoyalRandomSample expects 3 arguments, received: %1", real, real)

ROUNDED(NonCentralBetaProbability,      "VexelNonCentralBetaProbability expects 4 arguments, received: %1", real, real, real, real)
TOLERANT(NonCentralBetaDeviate,          AtDigits,     "VexelNonCentralBetaDeviate expects 4 arguments, received: %1", real, real, real, real)
ENTRY(NonCentralBetaRandomVariate,    Float,   "VexelNonCentralBetaRandomVariate expects 3 arguments, received: %1", real, real, real)
SAMPLE(NonCentralBeta,                         "VexelNonCentralBetaRandomSample expects 4 arguments, received: %1", real, real, real)

TOLERANT(NonCentralChiSquareProbability, AtDigits,     "VexelNonCentralChiSquareProbability expects 3 arguments, received: %1", real, real, real)
TOLERANT(NonCentralChiSquareDeviate,     AtDigits,     "VexelNonCentralChiSquareDeviate expects 3 arguments, received: %1", real, real, real)
ENTRY(NonCentralChiSquareRandomVariate,Float,   "VexelNonCentralChiSquareRandomVariate expects 3 arguments, received: %1", real, real, flag)

TOLERANT(NonCentralFRatioProbability,    AtDigits,     "VexelNonCentralFRatioProbability expects 4 arguments, received: %1", real, real, real, real)
TOLERANT(NonCentralFRatioDeviate,        AtDigits,     "VexelNonCentralFRatioDeviate expects 4 arguments, received: %1", real, real, real, real)
ENTRY(NonCentralFRatioRandomVariate,  Float,   "VexelNonCentralFRatioRandomVariate expects 3 arguments, received: %1", real, real, real)
SAMPLE(NonCentralFRatio,                       "VexelNonCentralFRatioRandomSample expects 4 arguments, received: %1", real, real, real)

TOLERANT(NonCentralStudentTProbability,  PastDigits,   "VexelNonCentralStudentTProbability expects 3 arguments, received: %1", real, real, real)
ENTRY(NonCentralStudentTRandomVariate,Float,   "VexelNonCentralStudentTRandomVariate expects 2 arguments, received: %1", real, real)
SAMPLE(NonCentralStudentT,                     "VexelNonCentralStudentTRandomSample expects 3 arguments, received: %1", real, real)
// clang-format on
