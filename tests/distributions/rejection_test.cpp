// Rejection variates replayed from scripted draws against methods written out here, each with at
// least one refused trial, and the exact count of draws.

#include <cmath>
#include <vector>

#include "distributions/ziggurat_exponential.hpp"
#include "distributions/ziggurat_normal.hpp"
#include "kernel_test.hpp"

namespace {

constexpr double kPi = 3.14159265358979323846;

class RejectionTest : public KernelTest {
 protected:
  RejectionTest() {
    STATS_ZigguratNormalGenerator_HW::Reset();
    STATS_ZigguratExpGenerator_HW::Reset();
  }
  // The integer that the normal ziggurat's quick path turns into about z, and exactly what it
  // gives.
  static std::int32_t integerFor(double z) {
    const auto& table = STATS_ZigguratNormalGenerator_HW::tables();
    const auto h = static_cast<std::int32_t>(z / table.W[200]);
    return (h & ~255) | 200;
  }
  static double normalOf(std::int32_t h) {
    return h * STATS_ZigguratNormalGenerator_HW::tables().W[h & 255];
  }
  template <typename... Args>
  void expectVariate(const char* family, double expected, std::vector<std::int32_t> integers,
                     std::vector<double> doubles, Args... args) {
    SCOPED_TRACE(family);
    const auto draws = integers.size() + doubles.size();
    const auto before = kernel.drawsTaken();
    script(std::move(integers), std::move(doubles));
    const double got =
        number(call(std::string("STATS_Vexel") + family + "RandomVariate_HW", args...));
    EXPECT_NEAR(got, expected, 4e-15 * std::fabs(expected));
    EXPECT_EQ(kernel.drawsTaken() - before, draws);
  }
};

}  // namespace

TEST_F(RejectionTest, GammaCubesANormalAndBoostsSmallShapes) {
  const double d = 1.5 - 1.0 / 3.0;
  const double s = 1.0 / std::sqrt(9.0 * d);
  const std::int32_t low = integerFor(-2.0);  // the cube is small, negative only beyond -3.24
  const std::int32_t usual = integerFor(0.8);
  const double v = std::pow(1.0 + s * normalOf(usual), 3.0);
  // u below the squeeze; u above it and refused, then accepted; shape 1/2 takes one more uniform.
  expectVariate("Gamma", 2.0 * v * d, {usual}, {0.5}, 2.0, 1.5);
  expectVariate("Gamma", 2.0 * v * d, {low, usual}, {0.9999, 0.5}, 2.0, 1.5);
  expectVariate("Gamma", 2.0 * v * d * 0.09, {usual}, {0.5, 0.3}, 2.0, 0.5);
  expectVariate("ChiSquare", 2.0 * v * d, {usual}, {0.5}, 3.0);
  // Shape 4/3 - just above 1 - has s near 1/3: a normal below -3 is drawn again without a uniform.
  const double d1 = 1.0625 - 1.0 / 3.0;
  const double s1 = 1.0 / std::sqrt(9.0 * d1);
  const std::int32_t deep =
      (static_cast<std::int32_t>(-3.0 / STATS_ZigguratNormalGenerator_HW::tables().W[253]) & ~255) |
      253;
  ASSERT_LT(1.0 + s1 * normalOf(deep), 0.0);
  const double v1 = std::pow(1.0 + s1 * normalOf(usual), 3.0);
  expectVariate("Gamma", v1 * d1, {deep, usual}, {0.5}, 1.0, 1.0625);
  // Shape 1 is exponential.
  expectVariate("Gamma", 3.0 * 256.0 * STATS_ZigguratExpGenerator_HW::tables().W[0], {-256}, {},
                3.0, 1.0);
}

TEST_F(RejectionTest, RatiosDrawTheirNumeratorFirst) {
  const std::int32_t first = integerFor(0.8);
  const std::int32_t second = integerFor(-0.3);
  const double d = 1.5 - 1.0 / 3.0;
  const auto gamma = [&](std::int32_t h) {
    return d * std::pow(1.0 + normalOf(h) / std::sqrt(9.0 * d), 3.0);
  };
  const double x = gamma(first);
  const double y = gamma(second);
  expectVariate("Beta", x / (x + y), {first, second}, {0.5, 0.5}, 1.5, 1.5);
  expectVariate("FRatio", x / y, {first, second}, {0.5, 0.5}, 3.0, 3.0);
  expectVariate("NonCentralStudentT", (normalOf(first) + 2.0) / std::sqrt(2.0 * y / 3.0),
                {first, second}, {0.5}, 3.0, 2.0);
  // A non-central numerator is inverted for the F, and for the beta from nu1 = 50 on.
  const auto inverse = [&](double nu) {
    return number(call("STATS_VexelNonCentralChiSquareDeviate_HW", 0.3, nu, 2.0));
  };
  expectVariate("NonCentralFRatio", inverse(4.0) * 3.0 / (2.0 * y * 4.0), {second}, {0.3, 0.5}, 4.0,
                3.0, 2.0);
  const double squares = 2.0 * std::pow(normalOf(first) + 1.0, 2.0);
  expectVariate("NonCentralBeta", squares / (squares + 2.0 * y), {first, first, second}, {0.5}, 1.0,
                1.5, 2.0);
  expectVariate("NonCentralBeta", inverse(102.0) / (inverse(102.0) + 2.0 * y), {second}, {0.3, 0.5},
                51.0, 1.5, 2.0);
}

TEST_F(RejectionTest, CauchyTakesOneUniformOrPairs) {
  const auto simple = [](double u, double c, double a, double b) {
    return u * (a / (c - u * u) + b);
  };
  expectVariate("Cauchy",
                1.0 + 2.0 * simple(0.2, 0.2488702280083841, 0.6366197723675813, 0.5972997593539963),
                {}, {0.7}, 1.0, 2.0);
  // 0.9999 lies in the tail; the first pair is refused, the second accepted.
  const double accepted = simple(0.3, 0.25, 0.6380631366077802, 0.595948606052907);
  const auto score = [&](double uniform, double w) {
    const double u = uniform - 0.5;
    const double t = 0.25 - u * u;
    const double x = u * (0.6380631366077802 / t + 0.595948606052907);
    return t * t *
               ((x * x + 1.0) * (0.0214949004570452 * w + 4.9125013953033205) -
                0.9339962957603656) +
           t;
  };
  double refused = 0.0;
  for (double u = 0.001; u < 1.0 && refused == 0.0; u += 0.001) {
    if (score(u, 0.9999) > 0.5) {
      refused = u;
    }
  }
  ASSERT_LE(score(0.8, 0.0), 0.5);
  if (refused != 0.0) {
    expectVariate("Cauchy", accepted, {}, {0.9999, refused, 0.9999, 0.8, 0.0}, 0.0, 1.0);
  }
  expectVariate("Cauchy", accepted, {}, {0.9999, 0.8, 0.0}, 0.0, 1.0);
}

TEST_F(RejectionTest, MoyalDrawsAnAngleAndItsTest) {
  // The angle 0.99 pi - pi/2 has next to no density; 0.5 gives x = 0, density 0.242, hat 0.912.
  expectVariate("Moyal", 1.0, {}, {0.99, 0.9, 0.5, 0.2}, 1.0, 2.0);
  expectVariate("Moyal", 1.0 + 2.0 * std::tan(0.1 * kPi), {}, {0.6, 0.1}, 1.0, 2.0);
}

TEST_F(RejectionTest, MaxwellDrawsPairsInTheQuarterDisc) {
  const double y = -std::log(0.3) - std::log(0.4) * (0.25 / 0.41);
  expectVariate("Maxwell", 2.0 * std::sqrt(2.0 * y), {}, {0.3, 0.9, 0.9, 0.5, 0.4, 0.4}, 2.0);
}

TEST_F(RejectionTest, InverseGaussianChoosesBetweenTwoRoots) {
  const std::int32_t h = integerFor(0.8);
  const double d = 1.5 - 1.0 / 3.0;
  // Chi-square with one degree: shape 1/2.
  const double y = 2.0 * d * std::pow(1.0 + normalOf(h) / std::sqrt(9.0 * d), 3.0) * 0.36;
  const double m = 2.0 * y;
  const double x = (6.0 + m - std::sqrt(m * m + 12.0 * m)) / 3.0;
  const double root = x;
  script({h}, {0.5, 0.6, 0.01});
  EXPECT_NEAR(number(call("STATS_VexelInverseGaussianRandomVariate_HW", 2.0, 3.0)), root, 1e-13);
  script({h}, {0.5, 0.6, 0.9999});
  EXPECT_NEAR(number(call("STATS_VexelInverseGaussianRandomVariate_HW", 2.0, 3.0)), 4.0 / root,
              1e-12);
}

TEST_F(RejectionTest, ErrorShapesOneAndTwoAreNormalAndLaplace) {
  const std::int32_t h = integerFor(0.8);
  expectVariate("Error", 5.0 + 3.0 * normalOf(h), {h}, {}, 5.0, 3.0, 1.0);
  expectVariate("Error", 5.0 + 6.0 * std::log(0.5), {}, {0.25}, 5.0, 3.0, 2.0);
  // Shape 3: the sign's uniform comes first, then gamma of shape 3/2; the location is added last.
  const double d = 1.5 - 1.0 / 3.0;
  const double g = d * std::pow(1.0 + normalOf(h) / std::sqrt(9.0 * d), 3.0);
  const double y = std::pow(2.0 * g, 1.5) * 3.0;
  expectVariate("Error", y, {h}, {0.6, 0.5}, 0.0, 3.0, 3.0);
  expectVariate("Error", 5.0 - y, {h}, {0.5, 0.5}, 5.0, 3.0, 3.0);
}

TEST_F(RejectionTest, BinomialRoundsANormalFrom101TrialsOn) {
  const std::int32_t h = integerFor(0.8);
  const double sd = std::sqrt(101.0 * 0.25);
  expectVariate("Binomial", std::floor(50.5 + sd * normalOf(h) + 0.5), {h}, {}, 101, 0.5);
  expectVariate("Binomial", 50.0, {}, {0.5}, 100, 0.5);
  expectVariate("Binomial", 5.0, {}, {0.5}, 1000, 0.005);  // too few successes for a normal
}

TEST_F(RejectionTest, NonCentralChiSquareSumsSquaresOrInverts) {
  const std::int32_t h[] = {integerFor(0.8), integerFor(-0.3), integerFor(1.1)};
  double sum = 0.0;
  for (const std::int32_t x : h) {
    sum += std::pow(normalOf(x) + std::sqrt(4.0 / 2.5), 2.0);
  }
  expectVariate("NonCentralChiSquare", sum, {h[0], h[1], h[2]}, {}, 2.5, 4.0, true);
  const double inverse = number(call("STATS_VexelNonCentralChiSquareDeviate_HW", 0.3, 2.5, 4.0));
  expectVariate("NonCentralChiSquare", inverse, {}, {0.3}, 2.5, 4.0, false);
}

TEST_F(RejectionTest, GeometricSamplesRoundExponentialsDown) {
  const auto& table = STATS_ZigguratExpGenerator_HW::tables();
  const std::int32_t h = -2000000000;
  script({h, -256}, {});
  const std::vector<double> sample = numbers(call("STATS_VexelGeometricRandomSample_HW", 2, 0.125));
  EXPECT_EQ(sample[0], std::floor(std::fabs(h * table.W[h & 255]) / -std::log1p(-0.125)));
  EXPECT_EQ(sample[1], 0.0);
  for (const double never : {0.0, -0.0}) {
    script({h}, {});
    EXPECT_EQ(numbers(call("STATS_VexelGeometricRandomSample_HW", 1, never)).front(), -kInf);
  }
}
