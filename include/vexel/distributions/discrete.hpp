// Discrete laws.  Their values are whole numbers, held as doubles: sizes are at most 2^53.
#pragma once

#include <cstdint>
#include <limits>
#include <tuple>

#include "vexel/distributions/law.hpp"

namespace vexel {

// 1 with probability p, else 0; 0 <= p <= 1.
class VEXEL_API Bernoulli : public DiscreteLaw<Bernoulli> {
 public:
  struct Parameters {
    double p = detail::required;
    bool operator==(const Parameters&) const = default;
  };
  static constexpr const char* name = "Bernoulli";
  static constexpr std::tuple fields{Field{"p", &Parameters::p}};

  explicit Bernoulli(const Parameters& parameters);
  explicit Bernoulli(double p) : Bernoulli(Parameters{p}) {}
  const Parameters& parameters() const { return parameters_; }
  static Bernoulli fit(Data x, const FitOptions& options = {});

 private:
  friend struct detail::Formulas<Bernoulli>;
  Parameters parameters_;
};

// C(n, k) p^k (1 - p)^(n - k); n >= 0, 0 <= p <= 1.
class VEXEL_API Binomial : public DiscreteLaw<Binomial> {
 public:
  struct Parameters {
    std::int64_t n = -1;
    double p = detail::required;
    bool operator==(const Parameters&) const = default;
  };
  static constexpr const char* name = "Binomial";
  static constexpr std::tuple fields{
      Field{"n", &Parameters::n, std::numeric_limits<double>::quiet_NaN(), true},
      Field{"p", &Parameters::p}};

  explicit Binomial(const Parameters& parameters);
  Binomial(std::int64_t n, double p) : Binomial(Parameters{n, p}) {}
  const Parameters& parameters() const { return parameters_; }

  struct FitOptions {
    std::int64_t n = -1;
    Data weights{};
    Missing missing = Missing::propagate;
  };
  static Binomial fit(Data x, const FitOptions& options);

 private:
  friend struct detail::Formulas<Binomial>;
  Parameters parameters_;
};

// mean^k exp(-mean) / k!; mean >= 0.
class VEXEL_API Poisson : public DiscreteLaw<Poisson> {
 public:
  struct Parameters {
    double mean = detail::required;
    bool operator==(const Parameters&) const = default;
  };
  static constexpr const char* name = "Poisson";
  static constexpr std::tuple fields{Field{"mean", &Parameters::mean}};

  explicit Poisson(const Parameters& parameters);
  explicit Poisson(double mean) : Poisson(Parameters{mean}) {}
  const Parameters& parameters() const { return parameters_; }
  static Poisson fit(Data x, const FitOptions& options = {});

 private:
  friend struct detail::Formulas<Poisson>;
  Parameters parameters_;
};

// Failures before the first success: p (1 - p)^k; 0 < p <= 1.
class VEXEL_API Geometric : public DiscreteLaw<Geometric> {
 public:
  struct Parameters {
    double p = detail::required;
    bool operator==(const Parameters&) const = default;
  };
  static constexpr const char* name = "Geometric";
  static constexpr std::tuple fields{Field{"p", &Parameters::p}};

  explicit Geometric(const Parameters& parameters);
  explicit Geometric(double p) : Geometric(Parameters{p}) {}
  const Parameters& parameters() const { return parameters_; }
  static Geometric fit(Data x, const FitOptions& options = {});

 private:
  friend struct detail::Formulas<Geometric>;
  Parameters parameters_;
  double logP_;
  double logFail_;  // log(1 - p)
};

// Failures before success number n: Gamma(n + k) / (Gamma(n) k!) p^n (1 - p)^k; n >= 0, whole or
// not, 0 < p <= 1.
class VEXEL_API NegativeBinomial : public DiscreteLaw<NegativeBinomial> {
 public:
  struct Parameters {
    double n = detail::required;
    double p = detail::required;
    bool operator==(const Parameters&) const = default;
  };
  static constexpr const char* name = "NegativeBinomial";
  static constexpr std::tuple fields{Field{"n", &Parameters::n}, Field{"p", &Parameters::p}};

  explicit NegativeBinomial(const Parameters& parameters);
  NegativeBinomial(double n, double p) : NegativeBinomial(Parameters{n, p}) {}
  const Parameters& parameters() const { return parameters_; }
  static NegativeBinomial fit(Data x, const FitOptions& options = {});

 private:
  friend struct detail::Formulas<NegativeBinomial>;
  Parameters parameters_;
};

// Marked ones among those drawn from a population without replacement: C(marked, k)
// C(population - marked, drawn - k) / C(population, drawn).
class VEXEL_API Hypergeometric : public DiscreteLaw<Hypergeometric> {
 public:
  struct Parameters {
    std::int64_t population = -1;
    std::int64_t marked = -1;
    std::int64_t drawn = -1;
    bool operator==(const Parameters&) const = default;
  };
  static constexpr const char* name = "Hypergeometric";
  static constexpr std::tuple fields{
      Field{"population", &Parameters::population, std::numeric_limits<double>::quiet_NaN(), true},
      Field{"marked", &Parameters::marked},
      Field{"drawn", &Parameters::drawn, std::numeric_limits<double>::quiet_NaN(), true}};

  explicit Hypergeometric(const Parameters& parameters);
  Hypergeometric(std::int64_t population, std::int64_t marked, std::int64_t drawn)
      : Hypergeometric(Parameters{population, marked, drawn}) {}
  const Parameters& parameters() const { return parameters_; }

  struct FitOptions {
    std::int64_t population = -1;
    std::int64_t drawn = -1;
    Data weights{};
    Missing missing = Missing::propagate;
  };
  static Hypergeometric fit(Data x, const FitOptions& options);

 private:
  friend struct detail::Formulas<Hypergeometric>;
  Parameters parameters_;
};

// 1 / (b - a + 1) on a, a + 1, ..., b; a <= b.
class VEXEL_API DiscreteUniform : public DiscreteLaw<DiscreteUniform> {
 public:
  struct Parameters {
    std::int64_t a = std::numeric_limits<std::int64_t>::max();
    std::int64_t b = std::numeric_limits<std::int64_t>::min();
    bool operator==(const Parameters&) const = default;
  };
  static constexpr const char* name = "DiscreteUniform";
  static constexpr std::tuple fields{Field{"a", &Parameters::a}, Field{"b", &Parameters::b}};

  explicit DiscreteUniform(const Parameters& parameters);
  DiscreteUniform(std::int64_t a, std::int64_t b) : DiscreteUniform(Parameters{a, b}) {}
  const Parameters& parameters() const { return parameters_; }
  static DiscreteUniform fit(Data x, const FitOptions& options = {});

 private:
  friend struct detail::Formulas<DiscreteUniform>;
  Parameters parameters_;
};

}  // namespace vexel
