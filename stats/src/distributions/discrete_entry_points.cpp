// The exported entry points of the discrete distributions, one row each: operation, kind of result,
// message for a wrong number of arguments, and the kinds of the arguments in their order.
//
// Messages are spelled out so that a search for what a user saw ends on its row.  A few name the
// wrong entry point or read "2 argument"; hosts match on these texts, so they stay as they are.
// A sample takes its size before what the row lists.  Entry points that fit no row
// stand in irregular_entry_points.cpp.

#include "distributions/entry_rows.hpp"
#include "distributions/families.hpp"

// clang-format off
ENTRY(BernoulliProbability,           Float,   "VexelBernoulliProbability expects 2 arguments, received: %1", whole, real)
ENTRY(BernoulliDeviate,               Integer, "VexelBernoulliDeviate expects 2 arguments, received: %1", real, real)
ENTRY(BernoulliRandomVariate,         Float,   "VexelBernoulliRandomVariate expects 1 argument, received: %1", real)
SAMPLE(Bernoulli,                              "VexelBernoulliRandomSample expects 2 arguments, received: %1", real)

ENTRY(BinomialProbability,            Float,   "VexelBinomialProbability expects 3 arguments, received: %1", real, whole, real)
ENTRY(BinomialDeviate,                Integer, "VexelBinomialDeviate expects 3 arguments, received: %1", real, whole, real)
ENTRY(BinomialRandomVariate,          Float,   "VexelBinomialRandomVariate expects 2 arguments, received: %1", whole, real)
FAST_SAMPLE(Binomial,                          "VexelBinomialRandomSample expects 3 arguments, received: %1", whole, real)

ENTRY(DiscreteUniformProbability,     Float,   "VexelDiscreteUniformProbability expects 3 arguments, received: %1", real, whole, whole)
ENTRY(DiscreteUniformDeviate,         Integer, "VexelDiscreteUniformDeviate expects 3 arguments, received: %1", real, whole, whole)
ENTRY(DiscreteUniformRandomVariate,   Float,   "VexelDiscreteUniformRandomVariate expects 2 arguments, received: %1", whole, whole)
SAMPLE(DiscreteUniform,                        "VexelDiscreteUniformRandomSample expects 3 arguments, received: %1", whole, whole)

ENTRY(GeometricProbability,           Float,   "VexelGeometricProbability expects 2 arguments, received: %1", real, real)
ENTRY(GeometricDeviate,               Integer, "VexelGeometricDeviate expects 2 arguments, received: %1", real, real)
ENTRY(GeometricRandomVariate,         Float,   "VexelGeometricRandomVariate expects 1 argument, received: %1", real)

ENTRY(HypergeometricProbability,      Float,   "VexelHypergeometricProbability expects 4 arguments, received: %1", real, whole, whole, whole)
ENTRY(HypergeometricDeviate,          Float,   "VexelHypergeometricDeviate expects 4 arguments, received: %1", real, whole, whole, whole)
ENTRY(HypergeometricRandomVariate,    Float,   "VexelHypergeometricRandomVariate expects 3 arguments, received: %1", whole, whole, whole)
FAST_SAMPLE(Hypergeometric,                    "VexelHypergeometricRandomSample expects 4 arguments, received: %1", whole, whole, whole)

ENTRY(NegativeBinomialProbability,    Float,   "VexelNegativeBinomialProbability expects 3 arguments, received: %1", real, real, real)
ENTRY(NegativeBinomialDeviate,        Integer, "VexelNegativeBinomialDeviate expects 3 arguments, received: %1", real, real, real)
ENTRY(NegativeBinomialRandomVariate,  Float,   "VexelNegativeBinomialRandomVariate expects 2 arguments, received: %1", real, real)
FAST_SAMPLE(NegativeBinomial,                  "VexelNegativeBinomialRandomSample expects 3 arguments, received: %1", real, real)

ENTRY(PoissonProbability,             Float,   "VexelPoissonProbability expects 2 arguments, received: %1", real, real)
ENTRY(PoissonDeviate,                 Integer, "VexelPoissonDeviate expects 2 arguments, received: %1", real, real)
ENTRY(PoissonRandomVariate,           Float,   "VexelPoissonRandomVariate expects 1 argument, received: %1", real)
FAST_SAMPLE(Poisson,                           "VexelPoissonRandomSample expects 2 arguments, received: %1", real)
// clang-format on
