// Laws of the beta family: beta, Student t, F.
#pragma once

#include <tuple>

#include "vexel/distributions/law.hpp"

namespace vexel {

// x^(a - 1) (1 - x)^(b - 1) / B(a, b) on [0, 1]; a > 0, b > 0.
class VEXEL_API Beta : public ContinuousLaw<Beta> {
 public:
  struct Parameters {
    double a = detail::required;
    double b = detail::required;
    bool operator==(const Parameters&) const = default;
  };
  static constexpr const char* name = "Beta";
  static constexpr std::tuple fields{Field{"a", &Parameters::a}, Field{"b", &Parameters::b}};

  explicit Beta(const Parameters& parameters);
  Beta(double a, double b) : Beta(Parameters{a, b}) {}
  const Parameters& parameters() const { return parameters_; }
  static Beta fit(Data x, const FitOptions& options = {});

 private:
  friend struct detail::Formulas<Beta>;
  Parameters parameters_;
  detail::Opaque<160> beta_;
};

// (1 + x^2 / df)^(-(df + 1) / 2) / (sqrt(df) B(df / 2, 1 / 2)); df > 0.
class VEXEL_API StudentT : public ContinuousLaw<StudentT> {
 public:
  struct Parameters {
    double df = detail::required;
    bool operator==(const Parameters&) const = default;
  };
  static constexpr const char* name = "StudentT";
  static constexpr std::tuple fields{Field{"df", &Parameters::df}};

  explicit StudentT(const Parameters& parameters);
  explicit StudentT(double df) : StudentT(Parameters{df}) {}
  const Parameters& parameters() const { return parameters_; }
  static StudentT fit(Data x, const FitOptions& options = {});

 private:
  friend struct detail::Formulas<StudentT>;
  Parameters parameters_;
  detail::Opaque<192> t_;
};

// The ratio of two chi-square variables, each divided by its degrees of freedom; df1 > 0, df2 > 0.
class VEXEL_API FRatio : public ContinuousLaw<FRatio> {
 public:
  struct Parameters {
    double df1 = detail::required;
    double df2 = detail::required;
    bool operator==(const Parameters&) const = default;
  };
  static constexpr const char* name = "FRatio";
  static constexpr std::tuple fields{Field{"df1", &Parameters::df1},
                                     Field{"df2", &Parameters::df2}};

  explicit FRatio(const Parameters& parameters);
  FRatio(double df1, double df2) : FRatio(Parameters{df1, df2}) {}
  const Parameters& parameters() const { return parameters_; }
  static FRatio fit(Data x, const FitOptions& options = {});

 private:
  friend struct detail::Formulas<FRatio>;
  Parameters parameters_;
  detail::Opaque<192> f_;
};

}  // namespace vexel
