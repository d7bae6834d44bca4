// What the fuzz target of the functions found, once each.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <vexel/distributions.hpp>
#include <vexel/statistics.hpp>

namespace {

namespace vx = vexel;
using Vector = std::vector<double>;
constexpr double kMax = std::numeric_limits<double>::max();

// Each of these went on for ever.
TEST(FuzzFindings, SearchesAndSamplesEnd) {
  EXPECT_THROW(vx::NegativeBinomial::fit(Vector{0, 1e300}), std::domain_error);
  vx::Random rng(1);
  for (const auto& [n, p] : {std::pair{1e-150, 1e-310}, std::pair{1e-100, 5e-324}}) {
    for (const double x : vx::NegativeBinomial(n, p).sample(20, rng)) {
      EXPECT_GE(x, 0);
    }
  }
}

// So did these, on weights that leave one point and on a support longer than any number.
TEST(FuzzFindings, FitsAndOwnLawsEnd) {
  EXPECT_THROW(vx::Weibull::fit(Vector{1, 3}, {.weights = Vector{1e-300, 1e300}}),
               std::domain_error);
  const auto flat = [](double) { return 11.5; };
  EXPECT_THROW(vx::Density(flat, {.support = {-kMax, 1}}), std::invalid_argument);
  // A support in which no place of the survey lay.
  const auto none = [](double) { return 0.5; };
  EXPECT_THROW(vx::CumulativeDistribution(
                   none, {.support = {2.5e263, std::numeric_limits<double>::infinity()}}),
               std::invalid_argument);
}

// Around x^2 = df a fraction was taken where it does not converge: 0.47 came.
TEST(FuzzFindings, FewDegreesOfFreedom) {
  for (const double df : {1e-4, 1e-8, 1e-16, 1e-100}) {
    const vx::StudentT law(df);
    for (const double share : {0.9, 1.0, 1.1, 1.5, 1.6, 3.0}) {
      const double x = share * std::sqrt(df);
      // P(0 < T < x) = df / 2 asinh(x / sqrt(df)) but for terms of df^2.
      const double wanted = 0.5 - 0.5 * df * std::asinh(share);
      EXPECT_NEAR(law.sf(x), wanted, 1e-14 + 10 * df * df) << df << ' ' << share;
      EXPECT_NEAR(law.cdf(Vector{x})[0], 1 - wanted, 1e-14 + 10 * df * df) << df << ' ' << share;
    }
  }
  // Next to all of it lies beyond the doubles; the rest was rounded away, or lost altogether.
  EXPECT_NEAR(vx::NonCentralStudentT(1e-100, 29).cdf(1e200) / 5.7233753877130304e-98, 1, 1e-14);
  EXPECT_NEAR(vx::NonCentralStudentT(1e-100, 0.3).cdf(1e4), 0.38208857781104737, 1e-14);
  EXPECT_NEAR(vx::NonCentralStudentT(1e-300, -0.3).sf(1e-30), 0.38208857781104737, 1e-14);
}

// Quotients of degrees of freedom that are no doubles, and laws that are all in one place, whose
// quantiles were searched for in rounding; references with 100 digits.
TEST(FuzzFindings, RatiosAndBetasAtTheEnds) {
  const vx::FRatio few(7.2e16, 5.77e-296);
  EXPECT_NEAR(few.cdf(few.quantile(1e-300)) / 1e-300, 1, 1e-13);
  EXPECT_NEAR(few.sf(1.0), 1, 0);
  EXPECT_GT(few.cdf(1.0), 0);
  EXPECT_LT(few.cdf(1.0), 1e-290);
  EXPECT_NEAR(vx::FRatio(1e-300, 1e10).logpdf(1e-300), -0.69314718055994531, 1e-13);
  EXPECT_NEAR(vx::FRatio(1e-300, 1e10).pdf(1e-3) / 5e-298, 1, 1e-14);
  const vx::Beta narrow(7.7224227621066346e+182, 1.5467316217892077e+243);
  for (const double p : {1e-300, 1e-5, 0.5, 0.999}) {
    EXPECT_DOUBLE_EQ(narrow.quantile(p), 7.7224227621066346e+182 / 1.5467316217892077e+243);
    EXPECT_DOUBLE_EQ(narrow.isf(p), narrow.quantile(p));
  }
  // A subnormal tail has few digits; the quantile came out on the other side of the mean.
  const vx::FRatio wide(9.2233720368547758e18, 12400000000.0);
  EXPECT_LT(wide.isf(1e-317), wide.isf(1e-318));
  EXPECT_GT(wide.isf(1e-317), wide.isf(1e-316));
  EXPECT_NEAR(wide.logsf(wide.isf(1e-317)), std::log(1e-317), 1e-6);
}

// The first term of the mixture, larger than all between it and the peak, was left out.
TEST(FuzzFindings, MixturesOfNextToNoShape) {
  const vx::NonCentralBeta law(1e-9, 1e-8, 300);
  EXPECT_NEAR(law.cdf(1e-10) / 6.522814370865203e-66, 1, 1e-14);
  EXPECT_NEAR(law.cdf(0.1) / 6.5413973334203578e-66, 1, 1e-13);
  EXPECT_NEAR(vx::NonCentralBeta(5e-130, 2.6e-116, 379).cdf(0.9) / 5.02568980175876e-83, 1, 1e-13);
}

TEST(FuzzFindings, DensityBesideATinyScale) {
  EXPECT_GE(vx::ExponentialPower(0, 1e-5, 9.3132257461547852e-10).pdf(3.5436029306996558e-315), 0);
}

// Changed, with the checksum set right: no data have such sums.
TEST(FuzzFindings, MomentsOfNoData) {
  vx::Moments state(2);
  state.update(Vector{3, 3, 3, 1});
  std::vector<std::uint8_t> bytes = state.to_bytes();
  int refused = 0;
  for (std::size_t at = 20; at + 8 < bytes.size(); ++at) {
    std::vector<std::uint8_t> changed(bytes.begin(), bytes.end() - 8);
    changed[at] ^= 0x40U;
    std::uint64_t hash = 0xCBF29CE484222325U;
    for (const std::uint8_t b : changed) {
      hash = (hash ^ b) * 0x100000001B3U;
    }
    for (int shift = 0; shift < 64; shift += 8) {
      changed.push_back(static_cast<std::uint8_t>(hash >> shift));
    }
    try {
      EXPECT_FALSE(vx::Moments::from_bytes(changed).var() < 0) << at;
    } catch (const std::invalid_argument&) {
      ++refused;
    }
  }
  EXPECT_GT(refused, 0);
}

// Of a mode near the other end, relatively: what lies beyond it, 1e-140 here, was 1 less 1.
TEST(FuzzFindings, TriangularTailsAcrossTheMode) {
  const vx::Triangular low(-1e239, 1e100, 0.0);
  const vx::Triangular high(-1e100, 1e239, 0.0);
  for (const double x : {0.0, 1.0, 60.0}) {
    EXPECT_NEAR(low.sf(-x) / 1e-139, 1, 1e-14) << x;
    EXPECT_NEAR(high.cdf(x) / 1e-139, 1, 1e-14) << x;
    EXPECT_NEAR(low.logsf(-x), std::log(1e-139), 1e-12) << x;
    EXPECT_NEAR(high.logcdf(x), std::log(1e-139), 1e-12) << x;
  }
  EXPECT_EQ(low.sf(-1e239), 1);
}

TEST(FuzzFindings, VariancesUnderWeightsOfAllSizesAreNotNegative) {
  const Vector x = {2147483647, 23, 0, 0, 0, 178, 141, 3930, -2147483648};
  const Vector w = {1.2936039832066119e-05,
                    9.375,
                    0,
                    150,
                    1.4900000000000002e+284,
                    205,
                    2.5111665535828522e-30,
                    15.125,
                    0.1142425537109375};
  const vx::Data columns[] = {x, x};
  EXPECT_GE(vx::cov(columns, {.weights = w})(1, 1), 0);
}

TEST(FuzzFindings, WeightsWhoseSumOverflowsAreRefused) {
  EXPECT_THROW(vx::Empirical(Vector{1, 2}, Vector{kMax, kMax}), std::invalid_argument);
  EXPECT_THROW(vx::Normal::fit(Vector{1, 2}, {.weights = Vector{kMax, kMax}}),
               std::invalid_argument);
}

// A great acceleration brought the corrected ends of the interval back from the other side.
TEST(FuzzFindings, EndsOfBootstrapIntervalsDoNotCross) {
  Vector x(40);
  std::iota(x.begin(), x.end(), 0.0);
  x[0] = 1e6;
  for (unsigned seed = 0; seed < 10; ++seed) {
    vx::Random rng(seed);
    const auto b =
        vx::bootstrap(x, vx::Statistic::mean, rng, {.replicates = 60, .confidence = 1 - 1e-14});
    EXPECT_FALSE(b.interval.low > b.interval.high) << seed;
  }
}

}  // namespace
