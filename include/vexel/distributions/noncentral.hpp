// Non-central laws.  nc is the sum of the squared means, of Student's t the mean itself.
#pragma once

#include <tuple>

#include "vexel/distributions/law.hpp"

namespace vexel {

// A Poisson mixture, of mean nc / 2, of chi-square laws of df + 2 j; df > 0, nc >= 0.
class VEXEL_API NonCentralChiSquare : public ContinuousLaw<NonCentralChiSquare> {
 public:
  struct Parameters {
    double df = detail::required;
    double nc = detail::required;
    bool operator==(const Parameters&) const = default;
  };
  static constexpr const char* name = "NonCentralChiSquare";
  static constexpr std::tuple fields{Field{"df", &Parameters::df}, Field{"nc", &Parameters::nc}};

  explicit NonCentralChiSquare(const Parameters& parameters);
  NonCentralChiSquare(double df, double nc) : NonCentralChiSquare(Parameters{df, nc}) {}
  const Parameters& parameters() const { return parameters_; }

 private:
  friend struct detail::Formulas<NonCentralChiSquare>;
  Parameters parameters_;
};

// A Poisson mixture, of mean nc / 2, of beta laws of a + j and b; a > 0, b > 0, nc >= 0.
class VEXEL_API NonCentralBeta : public ContinuousLaw<NonCentralBeta> {
 public:
  struct Parameters {
    double a = detail::required;
    double b = detail::required;
    double nc = detail::required;
    bool operator==(const Parameters&) const = default;
  };
  static constexpr const char* name = "NonCentralBeta";
  static constexpr std::tuple fields{Field{"a", &Parameters::a}, Field{"b", &Parameters::b},
                                     Field{"nc", &Parameters::nc}};

  explicit NonCentralBeta(const Parameters& parameters);
  NonCentralBeta(double a, double b, double nc) : NonCentralBeta(Parameters{a, b, nc}) {}
  const Parameters& parameters() const { return parameters_; }

 private:
  friend struct detail::Formulas<NonCentralBeta>;
  Parameters parameters_;
};

// (N / df1) / (C / df2), N non-central chi-square of df1 and nc, C chi-square of df2; df1 > 0, df2
// > 0, nc >= 0.
class VEXEL_API NonCentralFRatio : public ContinuousLaw<NonCentralFRatio> {
 public:
  struct Parameters {
    double df1 = detail::required;
    double df2 = detail::required;
    double nc = detail::required;
    bool operator==(const Parameters&) const = default;
  };
  static constexpr const char* name = "NonCentralFRatio";
  static constexpr std::tuple fields{Field{"df1", &Parameters::df1}, Field{"df2", &Parameters::df2},
                                     Field{"nc", &Parameters::nc}};

  explicit NonCentralFRatio(const Parameters& parameters);
  NonCentralFRatio(double df1, double df2, double nc)
      : NonCentralFRatio(Parameters{df1, df2, nc}) {}
  const Parameters& parameters() const { return parameters_; }

 private:
  friend struct detail::Formulas<NonCentralFRatio>;
  Parameters parameters_;
  detail::Opaque<320> f_;
};

// (Z + nc) / sqrt(C / df), Z standard normal, C chi-square of df > 0.
class VEXEL_API NonCentralStudentT : public ContinuousLaw<NonCentralStudentT> {
 public:
  struct Parameters {
    double df = detail::required;
    double nc = detail::required;
    bool operator==(const Parameters&) const = default;
  };
  static constexpr const char* name = "NonCentralStudentT";
  static constexpr std::tuple fields{Field{"df", &Parameters::df}, Field{"nc", &Parameters::nc}};

  explicit NonCentralStudentT(const Parameters& parameters);
  NonCentralStudentT(double df, double nc) : NonCentralStudentT(Parameters{df, nc}) {}
  const Parameters& parameters() const { return parameters_; }

 private:
  friend struct detail::Formulas<NonCentralStudentT>;
  Parameters parameters_;
  detail::Opaque<256> t_;
};

}  // namespace vexel
