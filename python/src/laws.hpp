// Distributions behind one interface, so that the methods are bound once for all of them.
#pragma once

#include <pybind11/pybind11.h>

#include <memory>
#include <span>
#include <vexel/data.hpp>
#include <vexel/interval.hpp>

namespace vexel {
class Random;
}

namespace vexel::python {

enum class LawFunction { density, logdensity, cdf, sf, logcdf, logsf, quantile, isf };

class AnyLaw {
 public:
  virtual ~AnyLaw() = default;
  virtual double at(LawFunction f, double x) const = 0;
  virtual void at(LawFunction f, const Data& x, std::span<double> out) const = 0;
  virtual Interval interval(double level) const = 0;
  virtual Interval support() const = 0;
  virtual double mean() const = 0;
  virtual double var() const = 0;
  virtual double std() const = 0;
  virtual double skewness() const = 0;
  virtual double kurtosis() const = 0;
  virtual double likelihood(const Data& x, const Data& weights, Missing missing) const = 0;
  virtual double sample(Random& rng) const = 0;
  virtual void sample(std::span<double> out, Random& rng) const = 0;
  virtual bool whole() const = 0;  // variates are whole numbers
  virtual pybind11::dict parameters() const = 0;
};

// What continuous and discrete laws and laws of one's own have in common.
template <typename L>
class LawFrame : public AnyLaw {
 public:
  explicit LawFrame(L law) : law_(std::move(law)) {}
  const L& law() const { return law_; }

  double at(LawFunction f, double x) const override {
    double result = 0;
    call(f, [&](auto method) { result = method(law_, x); });
    return result;
  }
  void at(LawFunction f, const Data& x, std::span<double> out) const override {
    call(f, [&](auto method) { method(law_, x, out); });
  }
  Interval interval(double level) const override { return law_.interval(level); }
  Interval support() const override { return law_.support(); }
  double mean() const override { return law_.mean(); }
  double var() const override { return law_.var(); }
  double std() const override { return law_.std(); }
  double skewness() const override { return law_.skewness(); }
  double kurtosis() const override { return law_.kurtosis(); }
  double sample(Random& rng) const override { return law_.sample(rng); }
  void sample(std::span<double> out, Random& rng) const override { law_.sample(out, rng); }

 private:
  template <typename Use>
  void call(LawFunction f, Use use) const {
    switch (f) {
      case LawFunction::density:
        return use([](const L& l, auto... a) {
          if constexpr (requires { l.pmf(0.0); }) {
            return l.pmf(a...);
          } else {
            return l.pdf(a...);
          }
        });
      case LawFunction::logdensity:
        return use([](const L& l, auto... a) {
          if constexpr (requires { l.logpmf(0.0); }) {
            return l.logpmf(a...);
          } else {
            return l.logpdf(a...);
          }
        });
      case LawFunction::cdf:
        return use([](const L& l, auto... a) { return l.cdf(a...); });
      case LawFunction::sf:
        return use([](const L& l, auto... a) { return l.sf(a...); });
      case LawFunction::logcdf:
        return use([](const L& l, auto... a) { return l.logcdf(a...); });
      case LawFunction::logsf:
        return use([](const L& l, auto... a) { return l.logsf(a...); });
      case LawFunction::quantile:
        return use([](const L& l, auto... a) { return l.quantile(a...); });
      case LawFunction::isf:
        return use([](const L& l, auto... a) { return l.isf(a...); });
    }
  }

  L law_;
};

}  // namespace vexel::python
