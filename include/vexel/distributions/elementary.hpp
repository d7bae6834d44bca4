// Laws whose distribution functions are elementary.
#pragma once

#include <tuple>

#include "vexel/distributions/law.hpp"

namespace vexel {

// 1 / (b - a) on [a, b]; a < b.
class VEXEL_API Uniform : public ContinuousLaw<Uniform> {
 public:
  struct Parameters {
    double a = 0.0;
    double b = 1.0;
    bool operator==(const Parameters&) const = default;
  };
  static constexpr const char* name = "Uniform";
  static constexpr std::tuple fields{Field{"a", &Parameters::a, 0.0},
                                     Field{"b", &Parameters::b, 1.0}};

  explicit Uniform(const Parameters& parameters);
  explicit Uniform(double a = 0.0, double b = 1.0) : Uniform(Parameters{a, b}) {}
  const Parameters& parameters() const { return parameters_; }
  static Uniform fit(Data x, const FitOptions& options = {});

 private:
  friend struct detail::Formulas<Uniform>;
  Parameters parameters_;
};

// exp(-x / scale) / scale on x >= 0; scale > 0.
class VEXEL_API Exponential : public ContinuousLaw<Exponential> {
 public:
  struct Parameters {
    double scale = 1.0;
    bool operator==(const Parameters&) const = default;
  };
  static constexpr const char* name = "Exponential";
  static constexpr std::tuple fields{Field{"scale", &Parameters::scale, 1.0}};

  explicit Exponential(const Parameters& parameters);
  explicit Exponential(double scale = 1.0) : Exponential(Parameters{scale}) {}
  const Parameters& parameters() const { return parameters_; }
  static Exponential fit(Data x, const FitOptions& options = {});

 private:
  friend struct detail::Formulas<Exponential>;
  Parameters parameters_;
  double logScale_;
};

// 1 / (pi scale (1 + z^2)), z = (x - location) / scale; scale > 0.
class VEXEL_API Cauchy : public ContinuousLaw<Cauchy> {
 public:
  struct Parameters {
    double location = 0.0;
    double scale = 1.0;
    bool operator==(const Parameters&) const = default;
  };
  static constexpr const char* name = "Cauchy";
  static constexpr std::tuple fields{Field{"location", &Parameters::location, 0.0},
                                     Field{"scale", &Parameters::scale, 1.0}};

  explicit Cauchy(const Parameters& parameters);
  explicit Cauchy(double location = 0.0, double scale = 1.0)
      : Cauchy(Parameters{location, scale}) {}
  const Parameters& parameters() const { return parameters_; }
  static Cauchy fit(Data x, const FitOptions& options = {});

 private:
  friend struct detail::Formulas<Cauchy>;
  Parameters parameters_;
  double logScale_;
};

// exp(-|z|) / (2 scale), z = (x - location) / scale; scale > 0.
class VEXEL_API Laplace : public ContinuousLaw<Laplace> {
 public:
  struct Parameters {
    double location = 0.0;
    double scale = 1.0;
    bool operator==(const Parameters&) const = default;
  };
  static constexpr const char* name = "Laplace";
  static constexpr std::tuple fields{Field{"location", &Parameters::location, 0.0},
                                     Field{"scale", &Parameters::scale, 1.0}};

  explicit Laplace(const Parameters& parameters);
  explicit Laplace(double location = 0.0, double scale = 1.0)
      : Laplace(Parameters{location, scale}) {}
  const Parameters& parameters() const { return parameters_; }
  static Laplace fit(Data x, const FitOptions& options = {});

 private:
  friend struct detail::Formulas<Laplace>;
  Parameters parameters_;
  double logScale_;
};

// exp(-z) / (scale (1 + exp(-z))^2), z = (x - location) / scale; scale > 0.
class VEXEL_API Logistic : public ContinuousLaw<Logistic> {
 public:
  struct Parameters {
    double location = 0.0;
    double scale = 1.0;
    bool operator==(const Parameters&) const = default;
  };
  static constexpr const char* name = "Logistic";
  static constexpr std::tuple fields{Field{"location", &Parameters::location, 0.0},
                                     Field{"scale", &Parameters::scale, 1.0}};

  explicit Logistic(const Parameters& parameters);
  explicit Logistic(double location = 0.0, double scale = 1.0)
      : Logistic(Parameters{location, scale}) {}
  const Parameters& parameters() const { return parameters_; }
  static Logistic fit(Data x, const FitOptions& options = {});

 private:
  friend struct detail::Formulas<Logistic>;
  Parameters parameters_;
  double logScale_;
};

// exp(-z - exp(-z)) / scale, z = (x - location) / scale, the law of largest values; scale > 0.
class VEXEL_API Gumbel : public ContinuousLaw<Gumbel> {
 public:
  struct Parameters {
    double location = 0.0;
    double scale = 1.0;
    bool operator==(const Parameters&) const = default;
  };
  static constexpr const char* name = "Gumbel";
  static constexpr std::tuple fields{Field{"location", &Parameters::location, 0.0},
                                     Field{"scale", &Parameters::scale, 1.0}};

  explicit Gumbel(const Parameters& parameters);
  explicit Gumbel(double location = 0.0, double scale = 1.0)
      : Gumbel(Parameters{location, scale}) {}
  const Parameters& parameters() const { return parameters_; }
  static Gumbel fit(Data x, const FitOptions& options = {});

 private:
  friend struct detail::Formulas<Gumbel>;
  Parameters parameters_;
  double logScale_;
};

// (shape / scale) t^(shape - 1) exp(-t^shape), t = x / scale >= 0; shape > 0, scale > 0.
class VEXEL_API Weibull : public ContinuousLaw<Weibull> {
 public:
  struct Parameters {
    double shape = detail::required;
    double scale = 1.0;
    bool operator==(const Parameters&) const = default;
  };
  static constexpr const char* name = "Weibull";
  static constexpr std::tuple fields{Field{"shape", &Parameters::shape},
                                     Field{"scale", &Parameters::scale, 1.0}};

  explicit Weibull(const Parameters& parameters);
  explicit Weibull(double shape, double scale = 1.0) : Weibull(Parameters{shape, scale}) {}
  const Parameters& parameters() const { return parameters_; }
  static Weibull fit(Data x, const FitOptions& options = {});

 private:
  friend struct detail::Formulas<Weibull>;
  Parameters parameters_;
  double logRate_;  // log(shape / scale)
};

// shape minimum^shape / x^(shape + 1) on x >= minimum; shape > 0, minimum > 0.
class VEXEL_API Pareto : public ContinuousLaw<Pareto> {
 public:
  struct Parameters {
    double shape = detail::required;
    double minimum = 1.0;
    bool operator==(const Parameters&) const = default;
  };
  static constexpr const char* name = "Pareto";
  static constexpr std::tuple fields{Field{"shape", &Parameters::shape},
                                     Field{"minimum", &Parameters::minimum, 1.0}};

  explicit Pareto(const Parameters& parameters);
  explicit Pareto(double shape, double minimum = 1.0) : Pareto(Parameters{shape, minimum}) {}
  const Parameters& parameters() const { return parameters_; }
  static Pareto fit(Data x, const FitOptions& options = {});

 private:
  friend struct detail::Formulas<Pareto>;
  Parameters parameters_;
  double logShape_;
};

// (shape / maximum) (x / maximum)^(shape - 1) on [0, maximum]; shape > 0, maximum > 0.
class VEXEL_API Power : public ContinuousLaw<Power> {
 public:
  struct Parameters {
    double shape = detail::required;
    double maximum = 1.0;
    bool operator==(const Parameters&) const = default;
  };
  static constexpr const char* name = "Power";
  static constexpr std::tuple fields{Field{"shape", &Parameters::shape},
                                     Field{"maximum", &Parameters::maximum, 1.0}};

  explicit Power(const Parameters& parameters);
  explicit Power(double shape, double maximum = 1.0) : Power(Parameters{shape, maximum}) {}
  const Parameters& parameters() const { return parameters_; }
  static Power fit(Data x, const FitOptions& options = {});

 private:
  friend struct detail::Formulas<Power>;
  Parameters parameters_;
  double logRate_;  // log(shape / maximum)
};

// (x / scale^2) exp(-x^2 / (2 scale^2)) on x >= 0; scale > 0.
class VEXEL_API Rayleigh : public ContinuousLaw<Rayleigh> {
 public:
  struct Parameters {
    double scale = 1.0;
    bool operator==(const Parameters&) const = default;
  };
  static constexpr const char* name = "Rayleigh";
  static constexpr std::tuple fields{Field{"scale", &Parameters::scale, 1.0}};

  explicit Rayleigh(const Parameters& parameters);
  explicit Rayleigh(double scale = 1.0) : Rayleigh(Parameters{scale}) {}
  const Parameters& parameters() const { return parameters_; }
  static Rayleigh fit(Data x, const FitOptions& options = {});

 private:
  friend struct detail::Formulas<Rayleigh>;
  Parameters parameters_;
  double logScale_;
};

// Rises linearly from a to the mode and falls to b; a <= mode <= b, a < b.
class VEXEL_API Triangular : public ContinuousLaw<Triangular> {
 public:
  struct Parameters {
    double a = detail::required;
    double b = detail::required;
    double mode = detail::required;
    bool operator==(const Parameters&) const = default;
  };
  static constexpr const char* name = "Triangular";
  static constexpr std::tuple fields{Field{"a", &Parameters::a}, Field{"b", &Parameters::b},
                                     Field{"mode", &Parameters::mode}};

  explicit Triangular(const Parameters& parameters);
  Triangular(double a, double b, double mode) : Triangular(Parameters{a, b, mode}) {}
  const Parameters& parameters() const { return parameters_; }
  static Triangular fit(Data x, const FitOptions& options = {});

 private:
  friend struct detail::Formulas<Triangular>;
  Parameters parameters_;
};

}  // namespace vexel
