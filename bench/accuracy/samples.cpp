// Variates of every law against its distribution function: rows of docs/functions/samples.md.
//
// Each law's variates are counted in a thousand cells that end at quantiles, and in cells of the
// far tails, to one in 10^6 on each side.  A row has the chi-square statistic's probability and the
// greatest distance between the shares up to an end and the cdf there, times sqrt(n).
//
// usage: samples [variates] [law ...]     10^8 variates of every law without arguments

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <set>
#include <string>
#include <vector>

#include "vexel/distributions.hpp"

using namespace vexel;

namespace {

std::size_t variates = 100000000;
std::set<std::string> wanted;

struct Cells {
  std::vector<double> ends;    // a variate x is in the first cell with x <= end, the last has none
  std::vector<double> shares;  // of each cell
};

// An end lies where the law has no rounding: the probability of one double there is nothing.
template <typename L>
bool holds(const L& law, double end) {
  if constexpr (L::discrete) {
    return true;
  } else {
    const double next = std::nextafter(end, std::numeric_limits<double>::infinity());
    return law.cdf(next) - law.cdf(end) < 1e-9;
  }
}

template <typename L>
Cells cellsOf(const L& law) {
  std::vector<double> ends;
  for (const double p : {1e-6, 1e-5, 1e-4}) {
    ends.push_back(law.quantile(p));
    ends.push_back(law.isf(p));
  }
  for (int i = 1; i < 1000; ++i) {
    ends.push_back(law.quantile(i / 1000.0));
  }
  std::sort(ends.begin(), ends.end());
  Cells cells;
  const double least = 20 / static_cast<double>(variates);
  double below = 0;
  double above = 1;
  for (const double end : ends) {
    const double lower = law.cdf(end);
    const double upper = law.sf(end);
    const double share = lower < 0.5 ? lower - below : above - upper;
    if (!std::isfinite(end) || share < least || upper < least || !holds(law, end)) {
      continue;
    }
    cells.ends.push_back(end);
    cells.shares.push_back(share);
    below = lower;
    above = upper;
  }
  cells.shares.push_back(above);
  return cells;
}

std::size_t cellOf(const std::vector<double>& ends, double x) {
  const double* first = ends.data();
  for (std::size_t left = ends.size(); left > 0;) {
    const std::size_t half = (left + 1) / 2;
    first += first[half - 1] < x ? half : 0;
    left -= half;
  }
  return static_cast<std::size_t>(first - ends.data());
}

template <typename L>
void compare(const L& law, const std::string& text) {
  if (!wanted.empty() && !wanted.contains(L::name)) {
    return;
  }
  const Cells cells = cellsOf(law);
  std::vector<std::uint64_t> counts(cells.shares.size());
  static std::uint64_t seed = 20251122;  // of the family's first law
  Random rng(seed++);
  std::vector<double> x(std::min<std::size_t>(variates, 65536));
  std::uint64_t refused = 0;
  const Interval support = law.support();
  for (std::size_t left = variates; left > 0; left -= x.size()) {
    x.resize(std::min(left, x.size()));
    law.sample(x, rng);
    for (const double v : x) {
      refused += v >= support.low && v <= support.high ? 0 : 1;
      counts[cellOf(cells.ends, v)] += 1;
    }
  }
  const auto n = static_cast<double>(variates);
  double chiSquare = 0;
  double distance = 0;
  double difference = 0;
  for (std::size_t i = 0; i < counts.size(); ++i) {
    const double miss = static_cast<double>(counts[i]) - cells.shares[i] * n;
    chiSquare += miss * miss / std::max(cells.shares[i] * n, 1e-300);
    difference += miss;
    distance = std::max(distance, std::fabs(difference));
  }
  const auto freedom = static_cast<double>(counts.size() - 1);
  const double p = freedom > 0 ? ChiSquare(freedom).sf(chiSquare) : 1;
  std::printf("| `%s` | %zu | %.4g | %.2f |%s\n", text.c_str(), counts.size(), p,
              distance / std::sqrt(n), refused > 0 ? " OUTSIDE" : "");
  std::fflush(stdout);
}

#define COMPARE(...) compare(__VA_ARGS__, #__VA_ARGS__)

void elementary() {
  COMPARE(Uniform(0, 1));
  COMPARE(Uniform(-1e300, 1e300));
  COMPARE(Normal(0, 1));
  COMPARE(Normal(1e3, 1e-3));
  COMPARE(Normal(-3, 1e300));
  COMPARE(LogNormal(0, 1));
  COMPARE(LogNormal(-3, 1e-3));
  COMPARE(LogNormal(0, 50));
  COMPARE(Exponential(1));
  COMPARE(Exponential(1e300));
  COMPARE(Cauchy(0, 1));
  COMPARE(Cauchy(5, 1e-3));
  COMPARE(Laplace(0, 1));
  COMPARE(Laplace(1, 1e200));
  COMPARE(Logistic(0, 1));
  COMPARE(Logistic(-7, 1e-2));
  COMPARE(Gumbel(0, 1));
  COMPARE(Gumbel(3, 1e100));
  COMPARE(Moyal(0, 1));
  COMPARE(Moyal(-2, 1e-2));
  COMPARE(Weibull(0.02, 1));
  COMPARE(Weibull(0.5, 3));
  COMPARE(Weibull(1, 1));
  COMPARE(Weibull(7, 1));
  COMPARE(Weibull(1e4, 1));
  COMPARE(Pareto(0.05, 1));
  COMPARE(Pareto(1, 2));
  COMPARE(Pareto(1e3, 1));
  COMPARE(Power(0.05, 1));
  COMPARE(Power(1, 2));
  COMPARE(Power(1e3, 1));
  COMPARE(Rayleigh(1));
  COMPARE(Rayleigh(1e-200));
  COMPARE(Maxwell(1));
  COMPARE(Maxwell(1e200));
  COMPARE(Triangular(0, 2, 0.5));
  COMPARE(Triangular(0, 1, 0));
  COMPARE(Triangular(-1, 1, 1));
  COMPARE(Triangular(0, 1, 1e-6));
}

void positive() {
  COMPARE(Gamma(0.01));
  COMPARE(Gamma(0.1));
  COMPARE(Gamma(0.5));
  COMPARE(Gamma(0.999));
  COMPARE(Gamma(1));
  COMPARE(Gamma(2.5));
  COMPARE(Gamma(30));
  COMPARE(Gamma(1e4));
  COMPARE(Gamma(1e10));
  COMPARE(ChiSquare(0.05));
  COMPARE(ChiSquare(1));
  COMPARE(ChiSquare(2));
  COMPARE(ChiSquare(7.5));
  COMPARE(ChiSquare(1e3));
  COMPARE(ChiSquare(1e8));
  COMPARE(ExponentialPower(0, 1, 0.01));
  COMPARE(ExponentialPower(0, 1, 0.3));
  COMPARE(ExponentialPower(0, 1, 1));
  COMPARE(ExponentialPower(1, 2, 3));
  COMPARE(ExponentialPower(0, 1, 40));
  COMPARE(InverseGaussian(1, 1));
  COMPARE(InverseGaussian(1, 1e-4));
  COMPARE(InverseGaussian(1, 1e6));
  COMPARE(InverseGaussian(1e100, 1));
  COMPARE(InverseGaussian(1e3, 1e2));
  COMPARE(Beta(1, 1));
  COMPARE(Beta(2, 3));
  COMPARE(Beta(0.5, 0.5));
  COMPARE(Beta(0.01, 0.02));
  COMPARE(Beta(0.05, 40));
  COMPARE(Beta(300, 0.3));
  COMPARE(Beta(1e4, 3));
  COMPARE(Beta(1e7, 2e7));
  COMPARE(StudentT(0.05));
  COMPARE(StudentT(1));
  COMPARE(StudentT(2.5));
  COMPARE(StudentT(30));
  COMPARE(StudentT(1e9));
  COMPARE(FRatio(0.05, 0.1));
  COMPARE(FRatio(1, 1));
  COMPARE(FRatio(3, 7));
  COMPARE(FRatio(1e5, 2.5));
  COMPARE(FRatio(0.3, 1e7));
  COMPARE(FRatio(1e6, 1e6));
}

void nonCentral() {
  COMPARE(NonCentralChiSquare(2.5, 3));
  COMPARE(NonCentralChiSquare(0.05, 0.5));
  COMPARE(NonCentralChiSquare(1, 1e-3));
  COMPARE(NonCentralChiSquare(300, 50));
  COMPARE(NonCentralChiSquare(2, 1e6));
  COMPARE(NonCentralBeta(2, 3, 4));
  COMPARE(NonCentralBeta(0.1, 0.2, 1));
  COMPARE(NonCentralBeta(10, 2, 500));
  COMPARE(NonCentralFRatio(3, 7, 2));
  COMPARE(NonCentralFRatio(0.3, 2.5, 40));
  COMPARE(NonCentralFRatio(30, 50, 1e4));
  COMPARE(NonCentralStudentT(5, 1));
  COMPARE(NonCentralStudentT(0.7, -3));
  COMPARE(NonCentralStudentT(2, 30));
  COMPARE(NonCentralStudentT(1e6, 0.1));
}

void counts() {
  COMPARE(Bernoulli(0.5));
  COMPARE(Bernoulli(1e-4));
  COMPARE(Bernoulli(0.999));
  COMPARE(Binomial(1, 0.3));
  COMPARE(Binomial(10, 0.95));
  COMPARE(Binomial(50, 0.3));
  COMPARE(Binomial(60, 0.45));
  COMPARE(Binomial(1000, 1e-4));
  COMPARE(Binomial(1000000, 0.4));
  COMPARE(Binomial(1000000000000, 0.001));
  COMPARE(Binomial(9e15, 0.5));
  COMPARE(Poisson(1e-3));
  COMPARE(Poisson(1));
  COMPARE(Poisson(7.9));
  COMPARE(Poisson(20.5));
  COMPARE(Poisson(101));
  COMPARE(Poisson(1e6));
  COMPARE(Poisson(1e14));
  COMPARE(Geometric(0.999));
  COMPARE(Geometric(0.5));
  COMPARE(Geometric(0.01));
  COMPARE(Geometric(1e-9));
  COMPARE(NegativeBinomial(0.01, 0.001));
  COMPARE(NegativeBinomial(1, 0.3));
  COMPARE(NegativeBinomial(2.5, 0.3));
  COMPARE(NegativeBinomial(1e4, 0.5));
  COMPARE(NegativeBinomial(3, 1e-6));
  COMPARE(Hypergeometric(10, 3, 5));
  COMPARE(Hypergeometric(200, 100, 120));
  COMPARE(Hypergeometric(1000, 900, 950));
  COMPARE(Hypergeometric(1000000000, 400000000, 1000));
  COMPARE(Hypergeometric(1000000000, 400000000, 1000000));
  COMPARE(DiscreteUniform(-3, 7));
  COMPARE(DiscreteUniform(0, 2000000000));
  COMPARE(DiscreteUniform(-4e15, 4e15));
  const std::vector<double> x = {9, 2, 1, 2, 5};
  const std::vector<double> weights = {0.5, 2, 1, 3, 0};
  compare(Empirical(x), "Empirical of five values");
  compare(Empirical(x, weights), "Empirical of five weighted values");
}

}  // namespace

int main(int count, char** words) {
  if (count > 1) {
    variates = static_cast<std::size_t>(std::stod(words[1]));
  }
  wanted = std::set<std::string>(words + std::min(count, 2), words + count);
  elementary();
  positive();
  nonCentral();
  ::counts();
}
