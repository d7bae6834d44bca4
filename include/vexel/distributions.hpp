// Distributions: 34 laws, each a value with the methods of vexel/distributions/law.hpp.
#pragma once

#include "vexel/distributions/beta.hpp"
#include "vexel/distributions/discrete.hpp"
#include "vexel/distributions/elementary.hpp"
#include "vexel/distributions/empirical.hpp"
#include "vexel/distributions/gamma.hpp"
#include "vexel/distributions/law.hpp"
#include "vexel/distributions/noncentral.hpp"
#include "vexel/distributions/normal.hpp"
#include "vexel/own_laws.hpp"
#include "vexel/random.hpp"

namespace vexel {

template <typename... L>
struct LawList {
  // f.template operator()<L>() for each law, in order.
  template <typename F>
  static constexpr void forEach(F&& f) {
    (f.template operator()<L>(), ...);
  }
};

using Laws =
    LawList<Normal, LogNormal, Uniform, Exponential, Gamma, Beta, ChiSquare, StudentT, FRatio,
            Cauchy, Laplace, Logistic, Gumbel, Weibull, Pareto, Power, Rayleigh, Maxwell,
            Triangular, InverseGaussian, Moyal, ExponentialPower, NonCentralChiSquare,
            NonCentralBeta, NonCentralFRatio, NonCentralStudentT, Bernoulli, Binomial, Poisson,
            Geometric, NegativeBinomial, Hypergeometric, DiscreteUniform, Empirical>;

// L::fit exists, with L's parameters of Field::given told by its options.
template <typename L>
concept Fittable = requires {
  &L::fit;
};

}  // namespace vexel
