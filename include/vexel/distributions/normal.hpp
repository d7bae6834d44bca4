// Laws of the normal family: normal, log-normal, inverse Gaussian, Maxwell, Moyal.
#pragma once

#include <tuple>

#include "vexel/distributions/law.hpp"

namespace vexel {

// exp(-z^2 / 2) / (sd sqrt(2 pi)), z = (x - mean) / sd; sd > 0.
class VEXEL_API Normal : public ContinuousLaw<Normal> {
 public:
  struct Parameters {
    double mean = 0.0;
    double sd = 1.0;
    bool operator==(const Parameters&) const = default;
  };
  static constexpr const char* name = "Normal";
  static constexpr std::tuple fields{Field{"mean", &Parameters::mean, 0.0},
                                     Field{"sd", &Parameters::sd, 1.0}};

  explicit Normal(const Parameters& parameters);
  explicit Normal(double mean = 0.0, double sd = 1.0) : Normal(Parameters{mean, sd}) {}
  const Parameters& parameters() const { return parameters_; }
  static Normal fit(Data x, const FitOptions& options = {});

 private:
  friend struct detail::Formulas<Normal>;
  Parameters parameters_;
  double logScale_;
};

// exp(Y) for a normal Y of mean mu and standard deviation sigma > 0.
class VEXEL_API LogNormal : public ContinuousLaw<LogNormal> {
 public:
  struct Parameters {
    double mu = detail::required;
    double sigma = detail::required;
    bool operator==(const Parameters&) const = default;
  };
  static constexpr const char* name = "LogNormal";
  static constexpr std::tuple fields{Field{"mu", &Parameters::mu},
                                     Field{"sigma", &Parameters::sigma}};

  explicit LogNormal(const Parameters& parameters);
  LogNormal(double mu, double sigma) : LogNormal(Parameters{mu, sigma}) {}
  const Parameters& parameters() const { return parameters_; }
  static LogNormal fit(Data x, const FitOptions& options = {});

 private:
  friend struct detail::Formulas<LogNormal>;
  Parameters parameters_;
  double logScale_;
};

// sqrt(shape / (2 pi x^3)) exp(-shape (x - mean)^2 / (2 mean^2 x)) on x > 0; mean > 0, shape > 0.
class VEXEL_API InverseGaussian : public ContinuousLaw<InverseGaussian> {
 public:
  struct Parameters {
    double mean = detail::required;
    double shape = detail::required;
    bool operator==(const Parameters&) const = default;
  };
  static constexpr const char* name = "InverseGaussian";
  static constexpr std::tuple fields{Field{"mean", &Parameters::mean},
                                     Field{"shape", &Parameters::shape}};

  explicit InverseGaussian(const Parameters& parameters);
  InverseGaussian(double mean, double shape) : InverseGaussian(Parameters{mean, shape}) {}
  const Parameters& parameters() const { return parameters_; }
  static InverseGaussian fit(Data x, const FitOptions& options = {});

 private:
  friend struct detail::Formulas<InverseGaussian>;
  Parameters parameters_;
};

// sqrt(2 / pi) x^2 exp(-x^2 / (2 scale^2)) / scale^3 on x >= 0; scale > 0.
class VEXEL_API Maxwell : public ContinuousLaw<Maxwell> {
 public:
  struct Parameters {
    double scale = 1.0;
    bool operator==(const Parameters&) const = default;
  };
  static constexpr const char* name = "Maxwell";
  static constexpr std::tuple fields{Field{"scale", &Parameters::scale, 1.0}};

  explicit Maxwell(const Parameters& parameters);
  explicit Maxwell(double scale = 1.0) : Maxwell(Parameters{scale}) {}
  const Parameters& parameters() const { return parameters_; }
  static Maxwell fit(Data x, const FitOptions& options = {});

 private:
  friend struct detail::Formulas<Maxwell>;
  Parameters parameters_;
  double logScale_;
};

// exp(-(z + exp(-z)) / 2) / (scale sqrt(2 pi)), z = (x - location) / scale; scale > 0.
class VEXEL_API Moyal : public ContinuousLaw<Moyal> {
 public:
  struct Parameters {
    double location = 0.0;
    double scale = 1.0;
    bool operator==(const Parameters&) const = default;
  };
  static constexpr const char* name = "Moyal";
  static constexpr std::tuple fields{Field{"location", &Parameters::location, 0.0},
                                     Field{"scale", &Parameters::scale, 1.0}};

  explicit Moyal(const Parameters& parameters);
  explicit Moyal(double location = 0.0, double scale = 1.0) : Moyal(Parameters{location, scale}) {}
  const Parameters& parameters() const { return parameters_; }
  static Moyal fit(Data x, const FitOptions& options = {});

 private:
  friend struct detail::Formulas<Moyal>;
  Parameters parameters_;
  double logScale_;
};

}  // namespace vexel
