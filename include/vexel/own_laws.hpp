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
#include <vexel/distributions/law.hpp>
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

// What a density and a distribution function give: a law with the methods of all others.  Copies
// share their tables; any number of threads may use them if the function may be called so.
class VEXEL_API OwnLaw : public ContinuousLaw<OwnLaw> {
 public:
  static constexpr const char* name = "OwnLaw";

  bool log_concave() const;         // sampled by rejection
  double log_integral() const;      // logarithm of the integral of f; 0 for a distribution function
  double error() const;             // measured error of the probability
  std::size_t evaluations() const;  // values of the function that the build took

 protected:
  explicit OwnLaw(std::shared_ptr<const detail::OwnLawTables> tables);

 private:
  template <typename>
  friend struct detail::Formulas;
  template <typename>
  friend class detail::Variates;
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
