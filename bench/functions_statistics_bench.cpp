// Descriptive functions beside plain loops, the standard library, Boost.Accumulators and GSL: 10^7
// doubles, one thread, time per element.
#include <benchmark/benchmark.h>
#include <gsl/gsl_statistics_double.h>

#include <algorithm>
#include <boost/accumulators/accumulators.hpp>
#include <boost/accumulators/statistics/covariance.hpp>
#include <boost/accumulators/statistics/kurtosis.hpp>
#include <boost/accumulators/statistics/mean.hpp>
#include <boost/accumulators/statistics/skewness.hpp>
#include <boost/accumulators/statistics/stats.hpp>
#include <boost/accumulators/statistics/variance.hpp>
#include <boost/accumulators/statistics/variates/covariate.hpp>
#include <random>
#include <string>
#include <vector>
#include <vexel/descriptive.hpp>
#include <vexel/states.hpp>

namespace {

namespace ba = boost::accumulators;
using Vector = std::vector<double>;

constexpr std::size_t kSize = 10000000;

const Vector& normals() {
  static const Vector x = [] {
    std::mt19937_64 random(1);
    std::normal_distribution<double> normal(1.0, 1.0);
    Vector all(kSize);
    std::generate(all.begin(), all.end(), [&] { return normal(random); });
    return all;
  }();
  return x;
}

const Vector& weights() {
  static const Vector w = [] {
    std::mt19937_64 random(2);
    std::uniform_real_distribution<double> uniform(0.5, 1.5);
    Vector all(kSize);
    std::generate(all.begin(), all.end(), [&] { return uniform(random); });
    return all;
  }();
  return w;
}

const Vector& probabilities() {
  static const Vector q = [] {
    Vector all;
    for (int i = 0; i < 25; ++i) {
      all.push_back((i + 0.5) / 25.0);
    }
    return all;
  }();
  return q;
}

double plainSum(const Vector& x) {
  double sum = 0.0;
  for (const double v : x) {
    sum += v;
  }
  return sum;
}

double plainWeighted(const Vector& x, const Vector& w) {
  double sum = 0.0;
  double total = 0.0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    sum += x[i] * w[i];
    total += w[i];
  }
  return sum / total;
}

double nthElement(const Vector& x, const Vector& q) {
  Vector copy = x;
  double sum = 0.0;
  auto from = copy.begin();
  for (const double p : q) {
    const auto at =
        copy.begin() + static_cast<std::ptrdiff_t>(p * static_cast<double>(x.size() - 1));
    std::nth_element(from, at, copy.end());
    sum += *at;
    from = at + 1;
  }
  return sum;
}

double boostMoments(const Vector& x) {
  ba::accumulator_set<
      double, ba::stats<ba::tag::mean, ba::tag::variance, ba::tag::skewness, ba::tag::kurtosis>>
      all;
  for (const double v : x) {
    all(v);
  }
  return ba::kurtosis(all) + ba::skewness(all);
}

double boostCovariance(const Vector& x, const Vector& y) {
  ba::accumulator_set<double, ba::stats<ba::tag::covariance<double, ba::tag::covariate1>>> all;
  for (std::size_t i = 0; i < x.size(); ++i) {
    all(x[i], ba::covariate1 = y[i]);
  }
  return ba::covariance(all);
}

template <typename Job>
void add(const char* name, Job job) {
  benchmark::RegisterBenchmark(name, [=](benchmark::State& state) {
    for (auto _ : state) {
      benchmark::DoNotOptimize(job());
    }
    state.counters["per_element"] = benchmark::Counter(
        static_cast<double>(kSize),
        benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
  })->Unit(benchmark::kMillisecond);
}

const int registered = [] {
  const Vector& x = normals();
  const Vector& w = weights();
  const double middle[] = {0.5};
  static const Vector half(middle, middle + 1);
  add("mean/plain loop", [&] { return plainSum(x); });
  add("mean/GSL", [&] { return gsl_stats_mean(x.data(), 1, x.size()); });
  add("mean/vexel", [&] { return vexel::mean(x); });
  add("weighted mean/plain loop", [&] { return plainWeighted(x, w); });
  add("weighted mean/vexel", [&] { return vexel::mean(x, {.weights = w}); });
  add("moments 1-4/Boost", [&] { return boostMoments(x); });
  add("moments 1-4/vexel", [&] { return vexel::moment(x, {1, 2, 3, 4})[3]; });
  add("variance/GSL", [&] { return gsl_stats_variance(x.data(), 1, x.size()); });
  add("variance/vexel", [&] { return vexel::var(x); });
  add("covariance/Boost", [&] { return boostCovariance(x, w); });
  add("covariance/GSL", [&] { return gsl_stats_covariance(x.data(), 1, w.data(), 1, x.size()); });
  add("covariance/vexel", [&] { return vexel::cov(x, w); });
  add("median/nth_element", [&] { return nthElement(x, half); });
  add("median/vexel", [&] { return vexel::median(x); });
  add("weighted median/vexel", [&] { return vexel::median(x, {.weights = w}); });
  add("25 quantiles/nth_element", [&] { return nthElement(x, probabilities()); });
  add("25 quantiles/vexel", [&] { return vexel::quantile(x, probabilities())[12]; });
  add("25 weighted quantiles/vexel",
      [&] { return vexel::quantile(x, probabilities(), {.weights = w})[12]; });
  add("trimmed mean/vexel", [&] { return vexel::trimmed_mean(x, 0.1); });
  add("describe/vexel", [&] { return vexel::describe(x).kurtosis; });
  add("state Sums/vexel", [&] { return vexel::Sums().update(x).sum(); });
  add("state Moments(4)/vexel", [&] { return vexel::Moments(4).update(x).kurtosis(); });
  return 0;
}();

}  // namespace
