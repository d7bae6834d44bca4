// Samples of 10^6 against the law that each method follows: chi-square over cells of nearly equal
// probability.
//
// The seed is fixed, so these tests raise no false alarms; with fresh seeds each of the 33 would
// with probability 1e-6.

#include <algorithm>
#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "kernel_test.hpp"

namespace {

using Params = std::vector<double>;
using Cdf = std::function<double(double)>;

class GoodnessOfFitTest : public KernelTest {
 protected:
  GoodnessOfFitTest() { kernel.seed(20240611); }

  vexel::Value callWith(const std::string& entry, double first, const Params& params) {
    std::vector<vexel::Value> args = {kernel.real(first)};
    for (const double x : params) {
      args.push_back(kernel.real(x));
    }
    return kernel.callValues("STATS_Vexel" + entry + "_HW", args);
  }
  std::vector<double> sample(const std::string& family, int n, const Params& params) {
    std::vector<vexel::Value> args = {kernel.integer(n)};
    for (const double x : params) {
      args.push_back(kernel.real(x));
    }
    std::vector<double> x =
        numbers(kernel.callValues("STATS_Vexel" + family + "RandomSample_HW", args));
    std::sort(x.begin(), x.end());
    return x;
  }

  // Cells (-inf, e1], (e1, e2], ..., (ek, inf) with the given distribution function at the edges.
  static void expectFit(const std::vector<double>& sorted, const std::vector<double>& edges,
                        const std::vector<double>& F) {
    const auto n = static_cast<double>(sorted.size());
    double statistic = 0.0;
    int cells = 0;
    double belowF = 0.0;
    double belowCount = 0.0;
    for (std::size_t i = 0; i <= edges.size(); ++i) {
      const double f = i < edges.size() ? F[i] : 1.0;
      const double count =
          i < edges.size()
              ? static_cast<double>(std::upper_bound(sorted.begin(), sorted.end(), edges[i]) -
                                    sorted.begin())
              : n;
      const double expected = n * (f - belowF);
      if (expected < 20.0 && i < edges.size()) {
        continue;  // joins the next cell
      }
      if (expected > 0.0) {
        statistic += (count - belowCount - expected) * (count - belowCount - expected) /
                     std::max(expected, 1.0);
        ++cells;
      }
      belowF = f;
      belowCount = count;
    }
    // The 1 - 1e-6 quantile of chi-square (Wilson and Hilferty, 1931).
    const double df = std::max(cells - 1, 1);
    const double w = 2.0 / (9.0 * df);
    EXPECT_LT(statistic, df * std::pow(1.0 - w + 4.753 * std::sqrt(w), 3.0)) << cells << " cells";
  }

  void expectFitsQuantiles(const std::string& family, const Params& params, int n = 1000000) {
    SCOPED_TRACE(family);
    std::vector<double> edges;
    std::vector<double> F;
    for (int i = 1; i < 1000; ++i) {
      edges.push_back(number(callWith(family + "Deviate", i / 1000.0, params)));
      F.push_back(i / 1000.0);
    }
    expectFit(sample(family, n, params), edges, F);
  }
  void expectFitsCdf(const std::string& family, const Params& params, const Cdf& cdf, double lo,
                     double hi, int steps = 500) {
    SCOPED_TRACE(family);
    std::vector<double> edges;
    std::vector<double> F;
    for (int i = 0; i <= steps; ++i) {
      edges.push_back(lo + (hi - lo) * i / steps);
      F.push_back(cdf(edges.back()));
    }
    expectFit(sample(family, 1000000, params), edges, F);
  }
};

double normalCdf(double x) { return 0.5 * std::erfc(-x / std::sqrt(2.0)); }

// The law of the exponential ziggurat, by quadrature over its strips, wedges and tail.
const std::vector<double> kZigguratEdges = {0.05, 0.1, 0.19, 0.5, 1.0, 2.0, 3.0, 5.0, 10.0};
const std::vector<double> kZigguratLaw = {0.049111032, 0.095928896, 0.173990723,
                                          0.394121272, 0.632134268, 0.864074345,
                                          0.949548954, 0.992857721, 0.999977550};

}  // namespace

TEST_F(GoodnessOfFitTest, ContinuousFamiliesWithQuantiles) {
  const struct {
    const char* name;
    Params params;
  } families[] = {
      {"Uniform", {-1.0, 2.0}}, {"Triangular", {0.0, 3.0, 1.0}},
      {"Weibull", {2.0, 1.5}},  {"Rayleigh", {2.0}},
      {"Power", {2.0, 3.0}},    {"Pareto", {1.0, 2.5}},
      {"Laplace", {1.0, 2.0}},  {"Logistic", {1.0, 2.0}},
      {"Gumbel", {1.0, 2.0}},   {"Cauchy", {1.0, 2.0}},
      {"Normal", {1.0, 2.0}},   {"LogNormal", {0.0, 0.5}},
      {"ChiSquare", {3.0}},     {"FRatio", {3.0, 7.0}},
      {"Gamma", {2.0, 2.5}},    {"Gamma", {2.0, 0.3}},
      {"Beta", {2.5, 0.5}},     {"StudentT", {4.5}},
  };
  for (const auto& family : families) {
    // Student's variates invert a quantile, a thousand times dearer than the rest.
    expectFitsQuantiles(family.name, family.params,
                        std::string(family.name) == "StudentT" ? 100000 : 1000000);
  }
}

TEST_F(GoodnessOfFitTest, FamiliesWithVariatesOnly) {
  expectFitsCdf(
      "Moyal", {1.0, 2.0},
      [](double x) { return std::erfc(std::exp(-(x - 1.0) / 4.0) / std::sqrt(2.0)); }, -6.0, 30.0);
  expectFitsCdf(
      "Maxwell", {2.0},
      [](double x) {
        const double z = x / 2.0;
        return std::erf(z / std::sqrt(2.0)) -
               std::sqrt(2.0 / std::acos(-1.0)) * z * std::exp(-z * z / 2.0);
      },
      0.0, 10.0);
  const double mu = 2.0;
  const double lambda = 3.0;
  expectFitsCdf(
      "InverseGaussian", {mu, lambda},
      [=](double x) {
        const double r = std::sqrt(lambda / x);
        return normalCdf(r * (x / mu - 1.0)) +
               std::exp(2.0 * lambda / mu) * normalCdf(-r * (x / mu + 1.0));
      },
      0.01, 15.0);
  // Shape 3: |x| / b = (2 G)^(3/2) with G gamma of shape 3/2.
  expectFitsCdf(
      "Error", {0.0, 1.0, 3.0},
      [this](double x) {
        const double g = std::pow(std::fabs(x), 2.0 / 3.0) / 2.0;
        const double half = 0.5 * number(callWith("GammaProbability", g, {1.0, 1.5}));
        return x < 0.0 ? 0.5 - half : 0.5 + half;
      },
      -20.0, 20.0);
}

TEST_F(GoodnessOfFitTest, TheExponentialZigguratHasItsOwnLaw) {
  expectFit(sample("Exponential", 1000000, {1.0}), kZigguratEdges, kZigguratLaw);
  expectFit(sample("Gamma", 1000000, {1.0, 1.0}), kZigguratEdges, kZigguratLaw);
  // Geometric samples are its variates rounded down in units of 1/2: X <= k where E < (k + 1)/2.
  expectFit(sample("Geometric", 1000000, {-std::expm1(-0.5)}), {0.0, 1.0, 3.0, 5.0, 9.0, 19.0},
            {0.394121272, 0.632134268, 0.864074345, 0.949548954, 0.992857721, 0.999977550});
}

TEST_F(GoodnessOfFitTest, DiscreteFamilies) {
  const struct {
    const char* name;
    Params params;
    int lo, hi;
  } families[] = {
      {"Poisson", {4.2}, 0, 30},
      {"Binomial", {20, 0.3}, 0, 20},
      {"Hypergeometric", {30, 10, 12}, 0, 10},
      {"NegativeBinomial", {3.5, 0.4}, 0, 60},
      {"DiscreteUniform", {-3, 12}, -3, 12},
  };
  for (const auto& family : families) {
    SCOPED_TRACE(family.name);
    std::vector<double> edges;
    std::vector<double> F;
    for (int k = family.lo; k < family.hi; ++k) {
      edges.push_back(k);
      F.push_back(number(callWith(std::string(family.name) + "Probability", k, family.params)));
    }
    expectFit(sample(family.name, 1000000, family.params), edges, F);
  }
  expectFit(sample("Bernoulli", 1000000, {0.3}), {0.0}, {0.7});
}

TEST_F(GoodnessOfFitTest, LargeBinomialsAreRoundedNormals) {
  const double n = 1000;
  const double p = 0.015;
  const double sd = std::sqrt(n * p * (1.0 - p));
  std::vector<double> edges;
  std::vector<double> F;
  for (int k = 0; k < 40; ++k) {
    edges.push_back(k);
    F.push_back(normalCdf((k + 0.5 - n * p) / sd));
  }
  expectFit(sample("Binomial", 1000000, {n, p}), edges, F);
}

TEST_F(GoodnessOfFitTest, NonCentralFamilies) {
  const auto probability = [this](const std::string& family, const Params& params) {
    return [this, family, params](double x) {
      return number(callWith(family + "Probability", x, params));
    };
  };
  expectFitsCdf("NonCentralStudentT", {5.0, 1.5}, probability("NonCentralStudentT", {5.0, 1.5}),
                -2.0, 12.0, 200);
  expectFitsCdf("NonCentralBeta", {2.0, 3.0, 2.0}, probability("NonCentralBeta", {2.0, 3.0, 2.0}),
                0.01, 0.99, 200);
  expectFitsQuantiles("NonCentralFRatio", {3.0, 7.0, 2.0}, 20000);
}
