// The frame of the laws: every method that a distribution has, once for all of them.
//
//   vexel::Gamma d({.shape = 2.5, .scale = 2.0});       or d(2.5, 2.0); checked here, then
//   immutable d.sf(40.0)                                          P(X > 40) d.logpdf(x) of data: a
//   vector of the same size d.quantile(p, out)                                  the same into the
//   caller's memory vexel::Gamma::fit(x)                                by maximum likelihood
//
// Impossible parameters and probabilities outside [0, 1] are std::domain_error.  A NaN gives NaN.
// Densities are 0 outside the support and at its ends their limit from within; quantile(0) and
// isf(1) are the lower end of the support, quantile(1) and isf(0) the upper one.  A moment that
// does not exist is NaN, one that is infinite is infinite.
//
// Relative errors are at most 1e-14 max(1, condition) in every method, in both tails down to 1e-300
// and in the logarithms beyond.  Scalar calls allocate nothing; any number of threads may use a
// law.
#pragma once

#include <cstddef>
#include <cstring>
#include <limits>
#include <new>
#include <span>
#include <tuple>
#include <type_traits>
#include <vector>

#include "vexel/data.hpp"
#include "vexel/export.hpp"
#include "vexel/interval.hpp"

namespace vexel {

class Random;

namespace detail {
// What a parameter without a default is until it is given: no law has it.
inline constexpr double required = std::numeric_limits<double>::quiet_NaN();

// A law's mathematics, where the library defines it.
template <typename L>
struct Formulas;

// A law's sampler, where the library defines it.
template <typename L>
class Variates;

// Room for what the library computes once for a law and keeps to itself.
template <std::size_t bytes>
class Opaque {
 public:
  template <typename T>
  void set(const T& value) {
    static_assert(sizeof(T) <= bytes && std::is_trivially_copyable_v<T>);
    std::memcpy(room_, &value, sizeof value);
  }
  template <typename T>
  const T& get() const {
    return *std::launder(reinterpret_cast<const T*>(room_));
  }

 private:
  alignas(double) unsigned char room_[bytes];
};
}  // namespace detail

struct LikelihoodOptions {
  Data weights{};
  Missing missing = Missing::propagate;
};

// A missing value stands in no law's way only if it is left out: Missing::propagate is
// std::invalid_argument like Missing::raise.
struct FitOptions {
  Data weights{};
  Missing missing = Missing::propagate;
};

// A parameter of a law by name: L::fields is a tuple of these, in the order of the constructor.
template <typename P, typename T>
struct Field {
  using Type = T;  // double, std::int64_t or Data

  const char* name;
  T P::*member;
  double fallback = std::numeric_limits<double>::quiet_NaN();  // NaN: it must be given
  bool given = false;  // fit() is told it instead of finding it
};
template <typename P, typename T>
Field(const char*, T P::*) -> Field<P, T>;
template <typename P, typename T>
Field(const char*, T P::*, double) -> Field<P, T>;
template <typename P, typename T>
Field(const char*, T P::*, double, bool) -> Field<P, T>;

// What continuous and discrete laws have in common.  Arrays in any of Data's forms; out has the
// size of x and may be its memory.
template <typename L>
class VEXEL_API Law {
 public:
  // P(X <= x).
  double cdf(double x) const;
  void cdf(Data x, std::span<double> out) const;
  std::vector<double> cdf(Data x) const;

  // P(X > x).
  double sf(double x) const;
  void sf(Data x, std::span<double> out) const;
  std::vector<double> sf(Data x) const;

  // Logarithms of these, also where they underflow, and with all digits where they are near 0.
  double logcdf(double x) const;
  void logcdf(Data x, std::span<double> out) const;
  std::vector<double> logcdf(Data x) const;
  double logsf(double x) const;
  void logsf(Data x, std::span<double> out) const;
  std::vector<double> logsf(Data x) const;

  // x with cdf(x) = p; of a discrete law the smallest x of the support with cdf(x) >= p.
  double quantile(double p) const;
  void quantile(Data p, std::span<double> out) const;
  std::vector<double> quantile(Data p) const;
  double ppf(double p) const { return quantile(p); }
  void ppf(Data p, std::span<double> out) const { quantile(p, out); }
  std::vector<double> ppf(Data p) const { return quantile(p); }

  // x with sf(x) = q; of a discrete law the smallest x of the support with sf(x) <= q.
  double isf(double q) const;
  void isf(Data q, std::span<double> out) const;
  std::vector<double> isf(Data q) const;

  // From quantile((1 - level) / 2) to isf((1 - level) / 2).
  Interval interval(double level) const;

  Interval support() const;
  double mean() const;
  double var() const;
  double std() const;
  double skewness() const;
  double kurtosis() const;  // excess: 0 for the normal law
  double median() const { return quantile(0.5); }

  // Sum of the weights times the logarithms of the densities.
  double log_likelihood(Data x, const LikelihoodOptions& options = {}) const;

  // Independent variates, whose law is exactly this one.  One by one or together: the same draws.
  double sample(Random& rng) const;
  void sample(std::span<double> out, Random& rng) const;
  std::vector<double> sample(std::size_t n, Random& rng) const;
  double rvs(Random& rng) const { return sample(rng); }
  void rvs(std::span<double> out, Random& rng) const { sample(out, rng); }
  std::vector<double> rvs(std::size_t n, Random& rng) const { return sample(n, rng); }

  friend bool operator==(const L& a, const L& b) { return a.parameters() == b.parameters(); }

 protected:
  Law() = default;

 private:
  const L& self() const { return static_cast<const L&>(*this); }
};

template <typename L>
class VEXEL_API ContinuousLaw : public Law<L> {
 public:
  static constexpr bool discrete = false;

  double pdf(double x) const;
  void pdf(Data x, std::span<double> out) const;
  std::vector<double> pdf(Data x) const;
  double logpdf(double x) const;
  void logpdf(Data x, std::span<double> out) const;
  std::vector<double> logpdf(Data x) const;

 protected:
  ContinuousLaw() = default;
};

template <typename L>
class VEXEL_API DiscreteLaw : public Law<L> {
 public:
  static constexpr bool discrete = true;

  // P(X = k); 0 where k is not in the support.
  double pmf(double k) const;
  void pmf(Data k, std::span<double> out) const;
  std::vector<double> pmf(Data k) const;
  double logpmf(double k) const;
  void logpmf(Data k, std::span<double> out) const;
  std::vector<double> logpmf(Data k) const;

 protected:
  DiscreteLaw() = default;
};

}  // namespace vexel
