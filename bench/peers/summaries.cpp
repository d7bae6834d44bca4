// Means, moments, quantiles, covariance, normality: this library's functions, and its entry points
// called through the host, beside the standard library, Boost and GSL.

#include <gsl/gsl_sort.h>
#include <gsl/gsl_statistics.h>

#include <algorithm>
#include <boost/accumulators/accumulators.hpp>
#include <boost/accumulators/statistics/covariance.hpp>
#include <boost/accumulators/statistics/kurtosis.hpp>
#include <boost/accumulators/statistics/mean.hpp>
#include <boost/accumulators/statistics/skewness.hpp>
#include <boost/accumulators/statistics/stats.hpp>
#include <boost/accumulators/statistics/variance.hpp>
#include <boost/accumulators/statistics/variates/covariate.hpp>
#include <cmath>
#include <numeric>
#include <vexel/descriptive.hpp>
#include <vexel/hypothesis.hpp>
#include <vexel/kernel.hpp>
#include <vexel/states.hpp>

#include "samples.hpp"
#include "stopwatch.hpp"

namespace {

namespace ba = boost::accumulators;

class Summaries {
 public:
  Summaries()
      : x_(normals(10'000'000)),
        y_(x_.rbegin(), x_.rend()),
        medium_(x_.begin(), x_.begin() + kMedium) {
    for (double& y : y_) {
      y = std::fabs(y);  // weights, too
    }
    kernel_.loadLibrary(STATS_LIBRARY_PATH);
  }

  void run() {
    means();
    moments();
    covariance();
    quantiles();
    shapiro();
  }

 private:
  static constexpr int kMedium = 1'000'000;

  vexel::Value none() { return kernel_.array({}); }
  template <typename... Args>
  auto entry(const char* name, Args... args) {
    return [=, this] { kernel_.call(name, args...); };
  }

  void means() {
    const vexel::Value large = kernel_.wrap(x_);
    const vexel::Value weights = kernel_.wrap(y_);
    measure("mean of 10^7", "functions", 1, [&] { keep(vexel::mean(x_)); });
    measure("mean of 10^7", "entry points", 1,
            entry("STATS_VexelMean_HW", large, none(), false, 0));
    measure("mean of 10^7", "C++", 1, [&] { keep(std::accumulate(x_.begin(), x_.end(), 0.0)); });
    measure("mean of 10^7", "GSL", 1, [&] { keep(gsl_stats_mean(x_.data(), 1, x_.size())); });

    measure("weighted mean of 10^7", "functions", 1,
            [&] { keep(vexel::mean(x_, {.weights = y_})); });
    measure("weighted mean of 10^7", "entry points", 1,
            entry("STATS_VexelMean_HW", large, weights, false, 0));
    measure("weighted mean of 10^7", "C++", 1, [&] {
      double sum = 0.0;
      double total = 0.0;
      for (std::size_t i = 0; i < x_.size(); ++i) {
        sum += x_[i] * y_[i];
        total += y_[i];
      }
      keep(sum / total);
    });
    measure("weighted mean of 10^7", "GSL", 1,
            [&] { keep(gsl_stats_wmean(y_.data(), 1, x_.data(), 1, x_.size())); });
  }

  void moments() {
    const double m = std::accumulate(medium_.begin(), medium_.end(), 0.0) / kMedium;
    measure("moments 2, 3, 4 of 10^6", "functions", 1, [&] {
      keep(vexel::moment(medium_, {2, 3, 4}, {.center = m})[2]);
    });
    measure("moments 2, 3, 4 of 10^6", "entry points", 1,
            entry("STATS_VexelMoment_HW", kernel_.wrap(medium_), none(), kernel_.eval("[2, 3, 4]"),
                  m, false));
    measure("moments 2, 3, 4 of 10^6", "GSL", 1, [&] {
      const double sd = gsl_stats_sd_m(medium_.data(), 1, medium_.size(), m);
      keep(gsl_stats_skew_m_sd(medium_.data(), 1, medium_.size(), m, sd));
      keep(gsl_stats_kurtosis_m_sd(medium_.data(), 1, medium_.size(), m, sd));
    });
    measure("moments 1 to 4 of 10^6, in one read", "functions", 1, [&] {
      keep(vexel::moment(medium_, {1, 2, 3, 4})[3]);
    });
    const auto boost = [&](const char* job) {
      measure(job, "Boost", 1, [&] {
        ba::accumulator_set<double, ba::stats<ba::tag::mean, ba::tag::variance, ba::tag::skewness,
                                              ba::tag::kurtosis>>
            all;
        for (const double v : medium_) {
          all(v);
        }
        keep(ba::kurtosis(all) + ba::skewness(all));
      });
    };
    boost("moments 1 to 4 of 10^6, in one read");
    measure("moments 1 to 4 of 10^6, a state", "functions", 1,
            [&] { keep(vexel::Moments(4).update(medium_).kurtosis()); });
    boost("moments 1 to 4 of 10^6, a state");
  }

  void covariance() {
    measure("covariance of 10^7", "functions", 1, [&] { keep(vexel::cov(x_, y_)); });
    measure("covariance of 10^7", "entry points", 1,
            entry("STATS_VexelCovariance_HW", kernel_.wrap(x_), kernel_.wrap(y_), none(), 0));
    measure("covariance of 10^7", "Boost", 1, [&] {
      ba::accumulator_set<double, ba::stats<ba::tag::covariance<double, ba::tag::covariate1>>> all;
      for (std::size_t i = 0; i < x_.size(); ++i) {
        all(x_[i], ba::covariate1 = y_[i]);
      }
      keep(ba::covariance(all));
    });
    measure("covariance of 10^7", "GSL", 1,
            [&] { keep(gsl_stats_covariance(x_.data(), 1, y_.data(), 1, x_.size())); });
  }

  void quantiles() {
    const vexel::Value large = kernel_.wrap(x_);
    measure("median of 10^7", "functions", 1, [&] { keep(vexel::median(x_)); });
    measure("median of 10^7", "entry points", 1,
            entry("STATS_VexelMedian_HW", large, none(), false, false));
    measure("median of 10^7", "C++", 1, onCopy(x_, [](Doubles& x) {
              std::nth_element(x.begin(), x.begin() + 5'000'000, x.end());
            }));
    measure("median of 10^7", "GSL", 1,
            onCopy(x_, [](Doubles& x) { keep(gsl_stats_median(x.data(), 1, x.size())); }));

    Doubles some;
    for (int i = 1; i <= 25; ++i) {
      some.push_back(i / 26.0);
    }
    const vexel::Value probabilities = kernel_.eval("[seq(evalf(i/26), i = 1 .. 25)]");
    measure("25 quantiles of 10^7", "functions", 1,
            [&] { keep(vexel::quantile(x_, some).data()); });
    measure("25 quantiles of 10^7", "entry points", 1,
            entry("STATS_VexelQuantile_HW", large, probabilities, none(), false, 6, false));
    measure("25 quantiles of 10^7", "C++", 1, onCopy(x_, [&](Doubles& x) {
              auto from = x.begin();
              for (const double p : some) {
                const auto at =
                    x.begin() + static_cast<std::ptrdiff_t>(p * static_cast<double>(x.size() - 1));
                std::nth_element(from, at, x.end());
                from = at + 1;
              }
            }));
    measure("trimmed mean of 10^7", "functions", 1, [&] { keep(vexel::trimmed_mean(x_, 0.1)); });
    measure("trimmed mean of 10^7", "entry points", 1,
            entry("STATS_VexelTrimmedMean_HW", large, 10, 90, none(), false, 0));
  }

  void shapiro() {
    const Doubles few(medium_.begin(), medium_.begin() + 5000);
    measure("Shapiro-Wilk, n = 5000", "functions", 1, [few] { keep(vexel::shapiro(few).pvalue); });
    measure("Shapiro-Wilk, n = 5000", "entry points", 1,
            entry("STATS_VexelShapiroWilk_HW", kernel_.toValue(few), none(), false));
  }

  vexel::Kernel kernel_;
  Doubles x_;
  Doubles y_;
  Doubles medium_;
};

}  // namespace

void measureSummaries() { Summaries().run(); }
