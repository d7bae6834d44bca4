// Laws of one's own: from a density that need not integrate to 1, or from a distribution function.
//
//   vexel::Density d([](double t) { return std::exp(-t * t * t * t); }, {.support = {-5, 5}});
//   d.mean(), d.cdf(0.3), d.quantile(0.99), d.sample(1000, rng)
//   vexel::CumulativeDistribution c([](double t) { return t * t; }, {.support = {0, 1}});
//
// Both are built once, from at most 2000 values of the function, and keep a copy of it.  cdf and
// quantile are as good as the error of the probability that the build is given (1e-10), which it
// checks.  Variates of a log-concave density are exact, by rejection; others are by inversion, with
// that error.  They depend on the values of the function and on the stream only.
#pragma once

#include <concepts>
#include <cstddef>
#include <functional>
#include <limits>
#include <memory>
#include <span>
#include <type_traits>
#include <utility>
#include <vector>
#include <vexel/data.hpp>
#include <vexel/export.hpp>
#include <vexel/interval.hpp>
#include <vexel/random.hpp>

namespace vexel {

// y[i] = f(x[i]): how laws call a function.
using FunctionOfSpans = std::function<void(std::span<const double> x, std::span<double> y)>;

namespace detail {

class OwnLawTables;

// A function of one double as one of spans, inlined into its loop.
template <typename F>
FunctionOfSpans overSpans(F f) {
  if constexpr (std::invocable<F&, std::span<const double>, std::span<double>>) {
    return FunctionOfSpans(std::move(f));
  } else {
    return [f = std::move(f)](std::span<const double> x, std::span<double> y) mutable {
      for (std::size_t i = 0; i < x.size(); ++i) {
        y[i] = static_cast<double>(f(x[i]));
      }
    };
  }
}

template <typename F>
concept FunctionOfDouble =
    std::invocable<F&, double> || std::invocable<F&, std::span<const double>, std::span<double>>;

}  // namespace detail

// The methods of a distribution.  Copies share their tables; any number of threads may use them if
// the function may be called so.
class VEXEL_API OwnLaw {
 public:
  double pdf(double x) const;
  void pdf(Data x, std::span<double> out) const;
  std::vector<double> pdf(Data x) const;
  double logpdf(double x) const;
  void logpdf(Data x, std::span<double> out) const;
  std::vector<double> logpdf(Data x) const;
  double cdf(double x) const;
  void cdf(Data x, std::span<double> out) const;
  std::vector<double> cdf(Data x) const;
  double sf(double x) const;
  void sf(Data x, std::span<double> out) const;
  std::vector<double> sf(Data x) const;
  double logcdf(double x) const;
  void logcdf(Data x, std::span<double> out) const;
  std::vector<double> logcdf(Data x) const;
  double logsf(double x) const;
  void logsf(Data x, std::span<double> out) const;
  std::vector<double> logsf(Data x) const;
  double quantile(double p) const;
  void quantile(Data p, std::span<double> out) const;
  std::vector<double> quantile(Data p) const;
  double ppf(double p) const { return quantile(p); }
  void ppf(Data p, std::span<double> out) const { quantile(p, out); }
  std::vector<double> ppf(Data p) const { return quantile(p); }
  double isf(double q) const;
  void isf(Data q, std::span<double> out) const;
  std::vector<double> isf(Data q) const;
  Interval interval(double level) const;

  Interval support() const;
  double mean() const;
  double var() const;
  double std() const;
  double skewness() const;
  double kurtosis() const;  // excess: 0 for the normal law
  double median() const { return quantile(0.5); }
  double log_likelihood(Data x) const;

  double sample(Random& rng) const;
  void sample(std::span<double> out, Random& rng) const;
  std::vector<double> sample(std::size_t n, Random& rng) const;
  double rvs(Random& rng) const { return sample(rng); }
  void rvs(std::span<double> out, Random& rng) const { sample(out, rng); }
  std::vector<double> rvs(std::size_t n, Random& rng) const { return sample(n, rng); }

  bool log_concave() const;         // sampled by rejection
  double log_integral() const;      // logarithm of the integral of f; 0 for a distribution function
  double error() const;             // measured error of the probability
  std::size_t evaluations() const;  // values of the function that the build took

 protected:
  explicit OwnLaw(std::shared_ptr<const detail::OwnLawTables> tables);

 private:
  std::shared_ptr<const detail::OwnLawTables> tables_;
};

struct DensityOptions {
  Interval support;                            // where f is; either end may be infinite
  bool log = false;                            // f is the logarithm of the density
  std::function<double(double)> derivative{};  // of f; a tighter tail for a log-concave f
  double mode = std::numeric_limits<double>::quiet_NaN();  // where f is largest, roughly
  double error = 1e-10;                                    // of the probability; at least 1e-12
};

// std::invalid_argument says what is wrong with f: negative, NaN, no mass found, an infinite mass,
// or too rough for the error asked for.  What f throws comes through.
class VEXEL_API Density : public OwnLaw {
 public:
  template <detail::FunctionOfDouble F>
  Density(F f, const DensityOptions& options)
      : Density(detail::overSpans(std::move(f)), options, 0) {}

 private:
  Density(FunctionOfSpans f, const DensityOptions& options, int);
};

struct CumulativeDistributionOptions {
  Interval support{-std::numeric_limits<double>::infinity(),
                   std::numeric_limits<double>::infinity()};
  std::function<double(double)> density{};  // if it is known; else the tables' slope
  double error = 1e-10;
};

// F goes from 0 to 1 over the support without falling; std::invalid_argument if not.
class VEXEL_API CumulativeDistribution : public OwnLaw {
 public:
  template <detail::FunctionOfDouble F>
  explicit CumulativeDistribution(F f, const CumulativeDistributionOptions& options = {})
      : CumulativeDistribution(detail::overSpans(std::move(f)), options, 0) {}

 private:
  CumulativeDistribution(FunctionOfSpans f, const CumulativeDistributionOptions& options, int);
};

}  // namespace vexel
