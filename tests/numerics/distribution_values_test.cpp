// Distribution functions of the numerical library against values that other software is known to
// miss, computed with mpmath at 50 digits, and their failures.

#include <gtest/gtest.h>
#include <nag2/nag2.h>

#include <cmath>
#include <limits>
#include <string>

namespace {

TEST(DistributionValues, NoncentralTBelowZeroKeepsItsDigits) {
  NagError fail{};
  EXPECT_NEAR(
      nag2_noncentral_t_probability(-10, 8, 8.26915191978, 1e-14, 100, &fail) / 7.315065e-27, 1.0,
      1e-6);
  EXPECT_NEAR(nag2_noncentral_t_probability(-2, 8, 8.26915191978, 1e-14, 100, &fail) / 1.469517e-21,
              1.0, 1e-6);
  EXPECT_EQ(fail.code, NAG2_OK);
}

// A noncentrality of hundreds makes a sharp edge in the chi variable; values by quadrature.
TEST(DistributionValues, NoncentralTWithALargeNoncentralityConverges) {
  NagError fail{};
  EXPECT_NEAR(nag2_noncentral_t_probability(600, 7, 500, 1e-13, 100, &fail), 0.67690521621190518,
              1e-15);
  EXPECT_NEAR(
      nag2_noncentral_t_probability(-400, 30, -300, 1e-13, 100, &fail) / 0.025982510463037948, 1.0,
      3e-15);
  EXPECT_NEAR(
      nag2_noncentral_t_probability(20, 0.5, 150, 1e-13, 100, &fail) / 2.87881899486532302e-8, 1.0,
      3e-15);
  // deep in the tail, and where the value is no normal number
  EXPECT_NEAR(nag2_noncentral_t_probability(-578.8737227794396, 3851.8383074308804,
                                            -484.2978691836638, 1e-13, 100, &fail) /
                  1.81738574129765e-48,
              1.0, 1e-12);
  EXPECT_LT(nag2_noncentral_t_probability(-37.42, 0.035, 37.94, 1e-13, 100, &fail), 1e-300);
  EXPECT_EQ(fail.code, NAG2_OK) << fail.message;
}

// Weights and tails of the mixture run over many hundred orders of magnitude against each other.
TEST(DistributionValues, DeepTailsOfMixturesSumEveryTermThatMatters) {
  NagError fail{};
  EXPECT_NEAR(
      nag2_noncentral_chi_square_probability(0x1.5798ee2308c3ap-27, 0.5, 100, 1e-16, 100, &fail) /
          1.789358697580701690516871e-24,
      1.0, 1e-14);
  EXPECT_NEAR(
      nag2_noncentral_beta_probability(0x1.0624dd2f1a9fcp-10, 10, 3, 1000, 1e-16, 100, &fail) /
          8.456651516430970294354072e-246,
      1.0, 1e-13);
  EXPECT_NEAR(nag2_noncentral_f_probability(3, 8, 200, 1000, 1e-16, 100, &fail) /
                  1.771524622570254629541915e-150,
              1.0, 8e-13);
  // 10^-Digits is 0 from 324 Digits on: machine precision, like all below it.
  EXPECT_EQ(nag2_noncentral_chi_square_probability(3, 2, 1, 0.0, 100, &fail),
            nag2_noncentral_chi_square_probability(3, 2, 1, 1e-30, 100, &fail));
  // A subnormal value is no failure: searches meet it on their way.
  EXPECT_LT(nag2_noncentral_chi_square_probability(9.1e-6, 96.7, 2.6, 1e-15, 100, &fail), 1e-310);
  EXPECT_EQ(fail.code, NAG2_OK) << fail.message;
}

TEST(DistributionValues, TailsOfDiscreteLawsAddUpAndSucceedEachOther) {
  NagError fail{};
  double le = 0, gt = 0, eq = 0, before = 0;
  for (int k = 0; k <= 60; ++k) {
    nag2_hypergeometric(500, 60, 200, k, &le, &gt, &eq, &fail);
    EXPECT_NEAR(le, before + eq, 1e-14);
    EXPECT_NEAR(le + gt, 1.0, 1e-15);
    EXPECT_GE(le, before);
    before = le;
  }
  EXPECT_EQ(fail.code, NAG2_OK);
}

// Infinite parameters put all mass at a point; the continued fraction must not see them.
TEST(DistributionValues, InfiniteParametersAreAPoint) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  for (const double p : {5e-324, 0.5, 1.0}) {
    EXPECT_EQ(nag2_beta_quantile(p, kInfinity, 2.0, 0.0, nullptr), 1.0);
    EXPECT_EQ(nag2_beta_quantile(p, kInfinity, kInfinity, 0.0, nullptr), 0.5);
    EXPECT_EQ(nag2_f_quantile(p < 1.0 ? p : 0.99, kInfinity, kInfinity, nullptr), 1.0);
    EXPECT_EQ(nag2_beta_quantile(p, 2.0, kInfinity, 0.0, nullptr), 0.0);
  }
  for (const double nu : {1e16, 1e17, 1e40, 1.7e308, kInfinity}) {
    EXPECT_EQ(nag2_f_probability(Nag_LowerTail, 0.9, nu, nu, nullptr), 0.0) << nu;
    EXPECT_EQ(nag2_f_probability(Nag_LowerTail, 1.1, nu, nu, nullptr), 1.0) << nu;
    EXPECT_NEAR(nag2_f_quantile(1e-300, nu, nu, nullptr), 1.0, 1e-6) << nu;
  }
  EXPECT_EQ(nag2_noncentral_f_probability(0.9, kInfinity, kInfinity, 2, 1e-15, 100, nullptr), 0.0);
  EXPECT_EQ(nag2_noncentral_beta_probability(0.1, 2, kInfinity, 2, 1e-15, 100, nullptr), 1.0);
}

// A thousand million degrees of freedom and more: sums and fractions would be too long, and
// expansions whose exponent is a double lose deep tails.  Values by quadrature of the density.
TEST(DistributionValues, HugeParametersKeepTheirDigits) {
  struct Row {
    double a;
    double b;  // 0: gamma
    double x;
    double p;
    double tolerance;
  };
  const Row rows[] = {
      {1000000000.0, 0.0, 1000000000.0, 0.50000420522087005696, 2.5e-11},
      {2219904407.4762254, 0.0, 2219527548.740871, 6.2717362902948328464e-16, 3.8e-10},
      {8763605506311873.0, 0.0, 8763605635958851.0, 0.91695973058569816918, 1.6e-8},
      {1e+16, 1e+16, 0.5, 0.5, 1.1e-7},
      {84002092464245.53, 136687376976023.75, 0.3806348018384582, 0.50022045544504137749, 9.3e-9},
      {37819048034434.73, 4316687805736661.5, 0.008685033047428112, 0.024029144057510962531,
       1.5e-8},
  };
  for (const Row& row : rows) {
    NagError fail{};
    const double p = row.b == 0.0 ? nag2_gamma_probability(Nag_LowerTail, row.x, row.a, 1.0, &fail)
                                  : nag2_beta_probability(row.x, row.a, row.b, 0.0, &fail);
    const double x = row.b == 0.0 ? nag2_gamma_quantile(row.p, row.a, 1.0, 0.0, &fail)
                                  : nag2_beta_quantile(row.p, row.a, row.b, 0.0, &fail);
    EXPECT_NEAR(p / row.p, 1.0, row.tolerance) << row.a;
    EXPECT_NEAR(x / row.x, 1.0, 1e-15) << row.a;
    EXPECT_EQ(fail.code, NAG2_OK) << fail.message;
  }
}

// Far out on the right, where weights and powers underflow or overflow.
TEST(DistributionValues, FarBeyondTheMeanTheTailIsOne) {
  for (const double x : {1e30, 1e60, 1e200, 1.7e308}) {
    NagError fail{};
    EXPECT_EQ(nag2_chi_square_probability(Nag_LowerTail, x, 1.0, &fail), 1.0) << x;
    EXPECT_NEAR(nag2_noncentral_chi_square_probability(x, 0.5, 0.5, 1e-15, 100, &fail), 1.0, 1e-14);
    EXPECT_NEAR(nag2_noncentral_f_probability(x, 0.5, 0.5, 0.5, 1e-15, 100, &fail), 1.0, 1e-7);
    EXPECT_EQ(fail.code, NAG2_OK) << fail.message;
  }
}

// A small b and a point near 1: the fraction's digits go with b.
TEST(DistributionValues, SmallDenominatorFreedomKeepsItsDigits) {
  EXPECT_NEAR(
      nag2_f_probability(Nag_LowerTail, 0.849506990123799, 2434.79126, 0.00026501531, nullptr) /
          0.0010845472507312982075,
      1.0, 1e-14);
  EXPECT_NEAR(nag2_f_probability(Nag_LowerTail, 1.0, 722.0, 0.89, nullptr) / 0.30795840621278592931,
              1.0, 3e-15);
  NagError fail{};
  EXPECT_NEAR(nag2_f_probability(Nag_LowerTail, 1e9, 40, 2e-9, &fail) / 4.0894523454918918402e-8,
              1.0, 1e-14);
  EXPECT_NEAR(
      nag2_beta_probability(0.999999999, 2.379, 1.9e-11, 0.0, &fail) / 3.7057647541068843163e-10,
      1.0, 1e-14);
  EXPECT_NEAR(nag2_student_t_probability(Nag_LowerTail, -2.5, 1e-12, &fail), 0.49999999999228752576,
              1e-16);
  EXPECT_EQ(fail.code, NAG2_OK) << fail.message;
}

// With b < 1 the mixture's central tails fall more slowly than their first decrements say.
TEST(DistributionValues, HeavyRightTailOfAMixtureCountsEveryTerm) {
  NagError fail{};
  EXPECT_NEAR(nag2_noncentral_f_probability(1e20, 0.5, 0.5, 0.5, 1e-15, 100, &fail),
              0.99999335299836997684, 1e-15);
  EXPECT_EQ(fail.code, NAG2_OK);
}

// The quantile's start must not be sought where that takes for ever, and with the numerator's
// degrees of freedom infinite a small p must not become 1 - p.
TEST(DistributionValues, QuantilesOfVeryUnequalParametersEnd) {
  NagError fail{};
  EXPECT_NEAR(
      nag2_beta_quantile(0.8240509823784496, 331921.768093815, 1.784690220181963e+253, 0.0, &fail) /
          1.8628333581669782138e-248,
      1.0, 1e-14);
  EXPECT_NEAR(nag2_f_quantile(1e-300, std::numeric_limits<double>::infinity(), 10.0, &fail) /
                  0.007003919608496828189,
              1.0, 1e-14);
  EXPECT_EQ(fail.code, NAG2_OK);
}

// Every call ends soon, with a number or with a failure that has a message, never a silent NaN.
TEST(DistributionValues, ExtremeArgumentsEndInAValueOrAFailure) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const auto ends = [](double value, const NagError& fail) {
    EXPECT_NE(std::isnan(value), fail.code == NAG2_OK) << fail.message;
  };
  for (const double a : {5e-324, 1e-300, 0.5, 3.3, 1e10, 1e100, 1.7e308, kInfinity}) {
    for (const double x : {-1e308, 1e-12, 0.3, 1.7e308}) {
      const double p = x > 0.0 && x < 1.0 ? x : 0.5;
      for (const double b : {5e-324, 0.7, 1e300}) {
        NagError fails[9] = {};
        ends(nag2_student_t_probability(Nag_LowerTail, x, a, &fails[0]), fails[0]);
        ends(nag2_gamma_probability(Nag_UpperTail, x, a, b, &fails[1]), fails[1]);
        ends(nag2_beta_probability(x, a, b, 0.0, &fails[2]), fails[2]);
        ends(nag2_f_probability(Nag_UpperTail, x, a, b, &fails[3]), fails[3]);
        ends(nag2_f_quantile(p, a, b, &fails[4]), fails[4]);
        ends(nag2_noncentral_t_probability(x, a, b, 1e-14, 100, &fails[5]), fails[5]);
        ends(nag2_noncentral_f_probability(x, a, b, 3.0, 1e-14, 100, &fails[6]), fails[6]);
        ends(nag2_noncentral_chi_square_probability(x, a, b, 1e-14, 100, &fails[7]), fails[7]);
        ends(nag2_student_t_quantile(Nag_LowerTail, p, a, &fails[8]), fails[8]);
      }
    }
  }
}

TEST(DistributionValues, FailuresNameParameterValueAndConstraint) {
  NagError fail{};
  EXPECT_TRUE(std::isnan(nag2_student_t_probability(Nag_LowerTail, 1.0, -1.0, &fail)));
  EXPECT_EQ(fail.code, NAG2_DOMAIN);
  EXPECT_STREQ(fail.message,
               "on entry, the degrees of freedom nu must be greater than 0, received: -1");
  for (const double sign : {1.0, -1.0}) {
    nag2_normal_probability(Nag_LowerTail, std::copysign(NAN, sign), &fail);
    EXPECT_STREQ(fail.message, "on entry, x must be a number, received: nan");
  }
  fail = NagError{};
  EXPECT_TRUE(std::isnan(nag2_noncentral_chi_square_probability(5000, 3, 5000, 1e-14, 2, &fail)));
  EXPECT_EQ(fail.code, NAG2_NO_CONVERGENCE);
  EXPECT_NE(std::string(fail.message).find("limit 2"), std::string::npos);
}

}  // namespace
