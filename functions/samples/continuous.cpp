// Variates of the continuous laws: transformations of uniform, normal, exponential, gamma and
// Poisson variates.
#include "kernels/variates/continuous.hpp"

#include <cmath>

#include "functions/samples/frame.hpp"
#include "kernels/variates/discrete.hpp"
#include "vexel/distributions.hpp"

namespace vexel {

namespace detail {

using kernels::exponentialVariate;
using kernels::GammaVariates;
using kernels::normalVariate;
using kernels::PoissonVariates;

template <>
class Variates<Uniform> {
 public:
  explicit Variates(const Uniform& law)
      : a_(law.parameters().a), b_(law.parameters().b), width_(b_ - a_) {}
  double operator()(Random& rng) const { return at(rng.uniform()); }
  void fill(std::span<double> out, Random& rng) const {
    rng.uniform(out);
    for (double& x : out) {
      x = at(x);
    }
  }

 private:
  double at(double u) const {
    return width_ <= std::numeric_limits<double>::max() ? a_ + width_ * u : a_ * (1 - u) + b_ * u;
  }

  double a_;
  double b_;
  double width_;
};

template <>
class Variates<Normal> {
 public:
  explicit Variates(const Normal& law) : p_(law.parameters()) {}
  double operator()(Random& rng) const { return p_.mean + p_.sd * normalVariate(rng); }
  void fill(std::span<double> out, Random& rng) const {
    rng.normal(out);
    for (double& x : out) {
      x = p_.mean + p_.sd * x;
    }
  }

 private:
  Normal::Parameters p_;
};

template <>
class Variates<LogNormal> {
 public:
  explicit Variates(const LogNormal& law) : p_(law.parameters()) {}
  double operator()(Random& rng) const { return std::exp(p_.mu + p_.sigma * normalVariate(rng)); }

 private:
  LogNormal::Parameters p_;
};

template <>
class Variates<Exponential> {
 public:
  explicit Variates(const Exponential& law) : scale_(law.parameters().scale) {}
  double operator()(Random& rng) const { return scale_ * exponentialVariate(rng); }
  void fill(std::span<double> out, Random& rng) const {
    rng.exponential(out);
    for (double& x : out) {
      x *= scale_;
    }
  }

 private:
  double scale_;
};

template <>
class Variates<Gamma> {
 public:
  explicit Variates(const Gamma& law)
      : gamma_(law.parameters().shape), scale_(law.parameters().scale) {}
  double operator()(Random& rng) const { return scale_ * gamma_(rng); }

 private:
  GammaVariates gamma_;
  double scale_;
};

template <>
class Variates<ChiSquare> {
 public:
  explicit Variates(const ChiSquare& law) : gamma_(0.5 * law.parameters().df) {}
  double operator()(Random& rng) const { return 2 * gamma_(rng); }

 private:
  GammaVariates gamma_;
};

// |z|^(2 / shape) / 2 is a gamma variate of shape / 2; of a small shape its power is all that is
// within reach of a double.
template <>
class Variates<ExponentialPower> {
 public:
  explicit Variates(const ExponentialPower& law) : p_(law.parameters()), gamma_(0.5 * p_.shape) {}
  double operator()(Random& rng) const {
    const double power = 0.5 * p_.shape;
    const GammaVariates::Product g = gamma_.product(rng);
    const double z = std::pow(2 * g.factor, power) * std::exp(g.logarithm * power);
    return p_.location + p_.scale * kernels::withRandomSign(z, rng);
  }

 private:
  ExponentialPower::Parameters p_;
  GammaVariates gamma_;
};

template <>
class Variates<Beta> {
 public:
  explicit Variates(const Beta& law) : x_(law.parameters().a), y_(law.parameters().b) {}
  double operator()(Random& rng) const {
    const GammaVariates::Product x = x_.product(rng);
    return kernels::share(x, y_.product(rng));
  }

 private:
  GammaVariates x_;
  GammaVariates y_;
};

template <>
class Variates<StudentT> {
 public:
  explicit Variates(const StudentT& law)
      : gamma_(0.5 * law.parameters().df), root_(std::sqrt(0.5 * law.parameters().df)) {}
  double operator()(Random& rng) const {
    const double z = normalVariate(rng);
    return kernels::overRoot(root_ * z, gamma_.product(rng));
  }

 private:
  GammaVariates gamma_;
  double root_;
};

template <>
class Variates<FRatio> {
 public:
  explicit Variates(const FRatio& law)
      : x_(0.5 * law.parameters().df1),
        y_(0.5 * law.parameters().df2),
        factor_(law.parameters().df2 / law.parameters().df1) {}
  double operator()(Random& rng) const {
    const GammaVariates::Product x = x_.product(rng);
    return factor_ * kernels::quotient(x, y_.product(rng));
  }

 private:
  GammaVariates x_;
  GammaVariates y_;
  double factor_;
};

// location + scale times a standard variate.
template <typename L, double (*standard)(Random&)>
class ShiftedAndScaled {
 public:
  explicit ShiftedAndScaled(const L& law) : p_(law.parameters()) {}
  double operator()(Random& rng) const { return p_.location + p_.scale * standard(rng); }

 private:
  typename L::Parameters p_;
};

inline double laplace(Random& rng) {
  const double x = exponentialVariate(rng);
  return kernels::withRandomSign(x, rng);
}
inline double gumbel(Random& rng) { return -std::log(exponentialVariate(rng)); }
inline double moyal(Random& rng) { return -2 * std::log(std::abs(normalVariate(rng))); }

template <>
class Variates<Cauchy> : public ShiftedAndScaled<Cauchy, kernels::cauchyVariate<Random>> {
  using ShiftedAndScaled::ShiftedAndScaled;
};
template <>
class Variates<Laplace> : public ShiftedAndScaled<Laplace, laplace> {
  using ShiftedAndScaled::ShiftedAndScaled;
};
template <>
class Variates<Logistic> : public ShiftedAndScaled<Logistic, kernels::logisticVariate<Random>> {
  using ShiftedAndScaled::ShiftedAndScaled;
};
template <>
class Variates<Gumbel> : public ShiftedAndScaled<Gumbel, gumbel> {
  using ShiftedAndScaled::ShiftedAndScaled;
};
template <>
class Variates<Moyal> : public ShiftedAndScaled<Moyal, moyal> {
  using ShiftedAndScaled::ShiftedAndScaled;
};

template <>
class Variates<Weibull> {
 public:
  explicit Variates(const Weibull& law) : p_(law.parameters()) {}
  double operator()(Random& rng) const {
    return p_.scale * std::pow(exponentialVariate(rng), 1 / p_.shape);
  }

 private:
  Weibull::Parameters p_;
};

template <>
class Variates<Pareto> {
 public:
  explicit Variates(const Pareto& law) : p_(law.parameters()) {}
  double operator()(Random& rng) const {
    return p_.minimum * std::exp(exponentialVariate(rng) / p_.shape);
  }

 private:
  Pareto::Parameters p_;
};

template <>
class Variates<Power> {
 public:
  explicit Variates(const Power& law) : p_(law.parameters()) {}
  double operator()(Random& rng) const {
    return p_.maximum * std::exp(-exponentialVariate(rng) / p_.shape);
  }

 private:
  Power::Parameters p_;
};

template <>
class Variates<Rayleigh> {
 public:
  explicit Variates(const Rayleigh& law) : scale_(law.parameters().scale) {}
  double operator()(Random& rng) const { return scale_ * std::sqrt(2 * exponentialVariate(rng)); }

 private:
  double scale_;
};

// The square of a normal variate, and the sum of two such as an exponential one.
template <>
class Variates<Maxwell> {
 public:
  explicit Variates(const Maxwell& law) : scale_(law.parameters().scale) {}
  double operator()(Random& rng) const {
    const double z = normalVariate(rng);
    return scale_ * std::sqrt(z * z + 2 * exponentialVariate(rng));
  }

 private:
  double scale_;
};

template <>
class Variates<Triangular> {
 public:
  explicit Variates(const Triangular& law) : p_(law.parameters()) {}
  double operator()(Random& rng) const {
    return kernels::triangularVariate(p_.a, p_.b, p_.mode, rng);
  }

 private:
  Triangular::Parameters p_;
};

template <>
class Variates<InverseGaussian> {
 public:
  explicit Variates(const InverseGaussian& law) : p_(law.parameters()) {}
  double operator()(Random& rng) const {
    return kernels::inverseGaussianVariate(p_.mean, p_.shape, rng);
  }

 private:
  InverseGaussian::Parameters p_;
};

// Gamma variates of shape `shape` + j, j Poisson of mean nc / 2: half the non-central chi-square
// variate of 2 * shape degrees of freedom, whole or not.  From one degree on it is a shifted normal
// variate squared and a central rest.
class NonCentralGamma {
 public:
  NonCentralGamma(double shape, double nc)
      : shape_(shape),
        mean_(0.5 * nc),
        root_(std::sqrt(nc)),
        poisson_(mean_),
        rest_(shape > 0.5 ? shape - 0.5 : 1) {}

  GammaVariates::Product product(Random& rng) const {
    if (shape_ < 0.5 || mean_ == 0) {
      return GammaVariates(shape_ + poisson_(rng)).product(rng);
    }
    const double z = normalVariate(rng) + root_;
    return {0.5 * (z * z) + (shape_ > 0.5 ? rest_(rng) : 0), 0};
  }

 private:
  double shape_;
  double mean_;
  double root_;
  PoissonVariates poisson_;
  GammaVariates rest_;
};

inline double value(GammaVariates::Product g) {
  return g.logarithm == 0 ? g.factor : g.factor * std::exp(g.logarithm);
}

template <>
class Variates<NonCentralChiSquare> {
 public:
  explicit Variates(const NonCentralChiSquare& law)
      : gamma_(0.5 * law.parameters().df, law.parameters().nc) {}
  double operator()(Random& rng) const { return 2 * value(gamma_.product(rng)); }

 private:
  NonCentralGamma gamma_;
};

template <>
class Variates<NonCentralBeta> {
 public:
  explicit Variates(const NonCentralBeta& law)
      : x_(law.parameters().a, law.parameters().nc), y_(law.parameters().b) {}
  double operator()(Random& rng) const {
    const GammaVariates::Product x = x_.product(rng);
    return kernels::share(x, y_.product(rng));
  }

 private:
  NonCentralGamma x_;
  GammaVariates y_;
};

template <>
class Variates<NonCentralFRatio> {
 public:
  explicit Variates(const NonCentralFRatio& law)
      : x_(0.5 * law.parameters().df1, law.parameters().nc),
        y_(0.5 * law.parameters().df2),
        factor_(law.parameters().df2 / law.parameters().df1) {}
  double operator()(Random& rng) const {
    const GammaVariates::Product x = x_.product(rng);
    return factor_ * kernels::quotient(x, y_.product(rng));
  }

 private:
  NonCentralGamma x_;
  GammaVariates y_;
  double factor_;
};

template <>
class Variates<NonCentralStudentT> {
 public:
  explicit Variates(const NonCentralStudentT& law)
      : nc_(law.parameters().nc),
        gamma_(0.5 * law.parameters().df),
        root_(std::sqrt(0.5 * law.parameters().df)) {}
  double operator()(Random& rng) const {
    const double z = normalVariate(rng) + nc_;
    return kernels::overRoot(root_ * z, gamma_.product(rng));
  }

 private:
  double nc_;
  GammaVariates gamma_;
  double root_;
};

}  // namespace detail

VEXEL_SAMPLES(Uniform)
VEXEL_SAMPLES(Normal)
VEXEL_SAMPLES(LogNormal)
VEXEL_SAMPLES(Exponential)
VEXEL_SAMPLES(Gamma)
VEXEL_SAMPLES(ChiSquare)
VEXEL_SAMPLES(ExponentialPower)
VEXEL_SAMPLES(Beta)
VEXEL_SAMPLES(StudentT)
VEXEL_SAMPLES(FRatio)
VEXEL_SAMPLES(Cauchy)
VEXEL_SAMPLES(Laplace)
VEXEL_SAMPLES(Logistic)
VEXEL_SAMPLES(Gumbel)
VEXEL_SAMPLES(Moyal)
VEXEL_SAMPLES(Weibull)
VEXEL_SAMPLES(Pareto)
VEXEL_SAMPLES(Power)
VEXEL_SAMPLES(Rayleigh)
VEXEL_SAMPLES(Maxwell)
VEXEL_SAMPLES(Triangular)
VEXEL_SAMPLES(InverseGaussian)
VEXEL_SAMPLES(NonCentralChiSquare)
VEXEL_SAMPLES(NonCentralBeta)
VEXEL_SAMPLES(NonCentralFRatio)
VEXEL_SAMPLES(NonCentralStudentT)

}  // namespace vexel
