// Variates of the discrete laws.
#include "kernels/variates/discrete.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "functions/samples/frame.hpp"
#include "vexel/distributions.hpp"

namespace vexel {

namespace detail {

// Of 2^64 draws p 2^64 are below the threshold.
template <>
class Variates<Bernoulli> {
 public:
  explicit Variates(const Bernoulli& law)
      : certain_(law.parameters().p == 1),
        threshold_(certain_ ? 0 : static_cast<std::uint64_t>(law.parameters().p * 0x1p64)) {}
  double operator()(Random& rng) const { return rng.bits() < threshold_ || certain_ ? 1 : 0; }

 private:
  bool certain_;
  std::uint64_t threshold_;
};

template <>
class Variates<Binomial> : public kernels::BinomialVariates {
 public:
  explicit Variates(const Binomial& law)
      : BinomialVariates(static_cast<double>(law.parameters().n), law.parameters().p) {}
};

template <>
class Variates<Poisson> : public kernels::PoissonVariates {
 public:
  explicit Variates(const Poisson& law) : PoissonVariates(law.parameters().mean) {}
};

template <>
class Variates<Geometric> : public kernels::GeometricVariates {
 public:
  explicit Variates(const Geometric& law) : GeometricVariates(law.parameters().p) {}
};

// Poisson with a gamma variate for its mean.
template <>
class Variates<NegativeBinomial> {
 public:
  explicit Variates(const NegativeBinomial& law)
      : n_(law.parameters().n),
        odds_((1 - law.parameters().p) / law.parameters().p),
        gamma_(n_ == 0 ? 1 : n_) {}
  double operator()(Random& rng) const {
    if (n_ == 0) {
      return 0;
    }
    const double gamma = gamma_(rng);
    const double mean = gamma == 0 ? 0 : odds_ * gamma;  // the odds may be infinite
    return std::isinf(mean) ? mean : kernels::PoissonVariates(mean)(rng);
  }

 private:
  double n_;
  double odds_;
  kernels::GammaVariates gamma_;
};

template <>
class Variates<Hypergeometric> : public kernels::HypergeometricVariates {
 public:
  explicit Variates(const Hypergeometric& law)
      : HypergeometricVariates(static_cast<double>(law.parameters().population),
                               static_cast<double>(law.parameters().marked),
                               static_cast<double>(law.parameters().drawn)) {}
};

template <>
class Variates<DiscreteUniform> {
 public:
  explicit Variates(const DiscreteUniform& law)
      : first_(static_cast<std::uint64_t>(law.parameters().a)),
        size_(static_cast<std::uint64_t>(law.parameters().b) - first_ + 1) {}
  double operator()(Random& rng) const {
    const std::uint64_t k = size_ == 0 ? rng.bits() : rng.below(size_);  // 0: all 2^64 of them
    return static_cast<double>(static_cast<std::int64_t>(first_ + k));
  }

 private:
  std::uint64_t first_;
  std::uint64_t size_;
};

}  // namespace detail

VEXEL_SAMPLES(Bernoulli)
VEXEL_SAMPLES(Binomial)
VEXEL_SAMPLES(Poisson)
VEXEL_SAMPLES(Geometric)
VEXEL_SAMPLES(NegativeBinomial)
VEXEL_SAMPLES(Hypergeometric)
VEXEL_SAMPLES(DiscreteUniform)

}  // namespace vexel
