// Laws of the gamma family: gamma, chi-square, exponential power.
#pragma once

#include <tuple>

#include "vexel/distributions/law.hpp"

namespace vexel {

// t^(shape - 1) exp(-t) / (scale Gamma(shape)), t = x / scale >= 0; shape > 0, scale > 0.
class VEXEL_API Gamma : public ContinuousLaw<Gamma> {
 public:
  struct Parameters {
    double shape = detail::required;
    double scale = 1.0;
    bool operator==(const Parameters&) const = default;
  };
  static constexpr const char* name = "Gamma";
  static constexpr std::tuple fields{Field{"shape", &Parameters::shape},
                                     Field{"scale", &Parameters::scale, 1.0}};

  explicit Gamma(const Parameters& parameters);
  explicit Gamma(double shape, double scale = 1.0) : Gamma(Parameters{shape, scale}) {}
  const Parameters& parameters() const { return parameters_; }
  static Gamma fit(Data x, const FitOptions& options = {});

 private:
  friend struct detail::Formulas<Gamma>;
  Parameters parameters_;
  double logScale_;
  detail::Opaque<64> gamma_;
};

// The sum of df squared standard normal variables; df > 0, whole or not.
class VEXEL_API ChiSquare : public ContinuousLaw<ChiSquare> {
 public:
  struct Parameters {
    double df = detail::required;
    bool operator==(const Parameters&) const = default;
  };
  static constexpr const char* name = "ChiSquare";
  static constexpr std::tuple fields{Field{"df", &Parameters::df}};

  explicit ChiSquare(const Parameters& parameters);
  explicit ChiSquare(double df) : ChiSquare(Parameters{df}) {}
  const Parameters& parameters() const { return parameters_; }
  static ChiSquare fit(Data x, const FitOptions& options = {});

 private:
  friend struct detail::Formulas<ChiSquare>;
  Parameters parameters_;
  detail::Opaque<64> gamma_;
};

// exp(-|z|^(2 / shape) / 2) / (scale 2^(shape / 2 + 1) Gamma(shape / 2 + 1)), z = (x - location) /
// scale; scale > 0, shape > 0.  Shape 1 is the normal law, shape 2 Laplace's with twice the scale.
class VEXEL_API ExponentialPower : public ContinuousLaw<ExponentialPower> {
 public:
  struct Parameters {
    double location = detail::required;
    double scale = detail::required;
    double shape = detail::required;
    bool operator==(const Parameters&) const = default;
  };
  static constexpr const char* name = "ExponentialPower";
  static constexpr std::tuple fields{Field{"location", &Parameters::location},
                                     Field{"scale", &Parameters::scale},
                                     Field{"shape", &Parameters::shape}};

  explicit ExponentialPower(const Parameters& parameters);
  ExponentialPower(double location, double scale, double shape)
      : ExponentialPower(Parameters{location, scale, shape}) {}
  const Parameters& parameters() const { return parameters_; }
  static ExponentialPower fit(Data x, const FitOptions& options = {});

 private:
  friend struct detail::Formulas<ExponentialPower>;
  Parameters parameters_;
  double logFactor_;
  detail::Opaque<64> gamma_;
};

}  // namespace vexel
