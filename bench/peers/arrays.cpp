// Statistics of arrays: this library's functions, and its entry points called through the host,
// beside the standard library and GSL.

#include <gsl/gsl_filter.h>
#include <gsl/gsl_histogram.h>
#include <gsl/gsl_movstat.h>
#include <gsl/gsl_sort.h>
#include <gsl/gsl_statistics.h>

#include <cstdint>
#include <numeric>
#include <random>
#include <unordered_map>
#include <vector>
#include <vexel/kernel.hpp>
#include <vexel/statistics.hpp>

#include "stopwatch.hpp"

namespace {

using Doubles = std::vector<double>;

Doubles normals(std::size_t n) {
  std::mt19937_64 random(1);
  std::normal_distribution<double> normal(10.0, 2.0);
  Doubles x(n);
  for (double& v : x) {
    v = normal(random);
  }
  return x;
}

// Runs f on fresh copies; the copy is part of the time for every peer that works in place, as it is
// part of what the entry points do.
template <typename F>
auto onCopy(const Doubles& x, F f) {
  return [&x, f] {
    Doubles copy = x;
    f(copy);
    keep(copy.data());
  };
}

class Arrays {
 public:
  Arrays() : large_(normals(10'000'000)), medium_(large_.begin(), large_.begin() + 1'000'000) {
    kernel_.loadLibrary(STATS_LIBRARY_PATH);
  }

  void run() {
    summaries();
    order();
    counts();
    smoothing();
  }

 private:
  vexel::Value none() { return kernel_.array({}); }
  template <typename... Args>
  auto entry(const char* name, Args... args) {
    return [=, this] { kernel_.call(name, args...); };
  }

  void summaries() {
    const vexel::Value large = kernel_.wrap(large_);
    const vexel::Value medium = kernel_.wrap(medium_);
    const double m = std::accumulate(medium_.begin(), medium_.end(), 0.0) / 1e6;

    measure("mean of 10^7", "vexel", 1, entry("STATS_VexelMean_HW", large, none(), false, 0));
    measure("mean of 10^7", "C++", 1,
            [&] { keep(std::accumulate(large_.begin(), large_.end(), 0.0)); });
    measure("mean of 10^7", "GSL", 1, [&] { keep(gsl_stats_mean(large_.data(), 1, 10'000'000)); });

    measure("moments 2, 3, 4 of 10^6", "vexel", 1,
            entry("STATS_VexelMoment_HW", medium, none(), kernel_.eval("[2, 3, 4]"), m, false));
    measure("moments 2, 3, 4 of 10^6", "GSL", 1, [&] {
      const double sd = gsl_stats_sd_m(medium_.data(), 1, medium_.size(), m);
      keep(gsl_stats_skew_m_sd(medium_.data(), 1, medium_.size(), m, sd));
      keep(gsl_stats_kurtosis_m_sd(medium_.data(), 1, medium_.size(), m, sd));
    });

    measure("median of 10^7", "vexel", 1,
            entry("STATS_VexelMedian_HW", large, none(), false, false));
    measure("median of 10^7", "C++", 1, onCopy(large_, [](Doubles& x) {
              std::nth_element(x.begin(), x.begin() + 5'000'000, x.end());
            }));
    measure("median of 10^7", "GSL", 1,
            onCopy(large_, [](Doubles& x) { keep(gsl_stats_median(x.data(), 1, x.size())); }));

    const vexel::Value probabilities = kernel_.eval("[seq(evalf(i/26), i = 1 .. 25)]");
    measure("25 quantiles of 10^6", "vexel", 1,
            entry("STATS_VexelQuantile_HW", medium, probabilities, none(), false, 6, false));
    measure("25 quantiles of 10^6", "GSL", 1, onCopy(medium_, [](Doubles& x) {
              gsl_sort(x.data(), 1, x.size());
              for (int i = 1; i <= 25; ++i) {
                keep(gsl_stats_quantile_from_sorted_data(x.data(), 1, x.size(), i / 26.0));
              }
            }));

    Doubles few(medium_.begin(), medium_.begin() + 5000);
    measure("Shapiro-Wilk, n = 5000", "functions", 1, [few] { keep(vexel::shapiro(few).pvalue); });
    measure("Shapiro-Wilk, n = 5000", "vexel", 1,
            entry("STATS_VexelShapiroWilk_HW", kernel_.toValue(few), none(), false));
  }

  void order() {
    const vexel::Value large = kernel_.wrap(large_);
    const vexel::Value medium = kernel_.wrap(medium_);
    measure("sort of 10^7", "functions", 1, [&] { keep(vexel::sort(large_).data()); });
    measure("sort of 10^7", "vexel", 1, entry("STATS_VexelSort_HW", large, true, false));
    measure("sort of 10^7", "C++", 1,
            onCopy(large_, [](Doubles& x) { std::sort(x.begin(), x.end()); }));
    measure("sort of 10^7", "GSL", 1,
            onCopy(large_, [](Doubles& x) { gsl_sort(x.data(), 1, x.size()); }));

    measure("ranks of 10^6", "functions", 1, [&] { keep(vexel::rank(medium_).data()); });
    measure("ranks of 10^6", "vexel", 1, entry("STATS_VexelRankSort_HW", medium, 1, true));
    std::vector<std::int32_t> index(medium_.size());
    measure("ranks of 10^6", "C++", 1, [&] {
      std::iota(index.begin(), index.end(), 0);
      std::stable_sort(index.begin(), index.end(), [&](std::int32_t a, std::int32_t b) {
        return medium_[static_cast<std::size_t>(a)] < medium_[static_cast<std::size_t>(b)];
      });
    });
    std::vector<std::size_t> permutation(medium_.size());
    measure("ranks of 10^6", "GSL", 1,
            [&] { gsl_sort_index(permutation.data(), medium_.data(), 1, medium_.size()); });
  }

  void counts() {
    const vexel::Value large = kernel_.wrap(large_);
    std::mt19937 random(1);
    std::vector<std::int32_t> numbers(1'000'000);
    for (std::int32_t& number : numbers) {
      number = static_cast<std::int32_t>(random() % 1000);
    }
    const vexel::Value array = kernel_.array(std::span<const std::int32_t>(numbers));
    measure("tally of 10^6, 1000 values", "functions", 1,
            [&] { keep(vexel::tally(numbers).counts.data()); });
    measure("tally of 10^6, 1000 values", "vexel", 1, entry("STATS_VexelTally_HW", array, none()));
    measure("tally of 10^6, 1000 values", "C++", 1, [&] {
      std::unordered_map<std::int32_t, int> tally;
      for (const std::int32_t number : numbers) {
        ++tally[number];
      }
      keep(tally.size());
    });

    measure("10^7 into 100 bins", "functions", 1, [&] {
      keep(vexel::histogram(large_, 100, {.range = vexel::Interval{-2, 22}}).counts.data());
    });
    measure(
        "10^7 into 100 bins", "vexel", 1,
        entry("STATS_VexelTallyInto_HW", large, none(), false, kernel_.eval("[-2 .. 22]"), 100));
    gsl_histogram* histogram = gsl_histogram_alloc(100);
    gsl_histogram_set_ranges_uniform(histogram, -2.0, 22.0);
    measure("10^7 into 100 bins", "GSL", 1, [&] {
      for (const double v : large_) {
        gsl_histogram_increment(histogram, v);
      }
    });
    gsl_histogram_free(histogram);
  }

  void smoothing() {
    const vexel::Value medium = kernel_.wrap(medium_);
    measure("moving median, 101 over 10^6", "functions", 1,
            [&] { keep(vexel::moving(medium_, 101, vexel::Statistic::median).data()); });
    measure("moving median, 101 over 10^6", "vexel", 1,
            entry("STATS_VexelMovingMedian_HW", medium, 101, 50, none(), false, false));
    gsl_vector_view in = gsl_vector_view_array(medium_.data(), medium_.size());
    gsl_vector* out = gsl_vector_alloc(medium_.size());
    gsl_movstat_workspace* work = gsl_movstat_alloc(101);
    measure("moving median, 101 over 10^6", "GSL", 1,
            [&] { gsl_movstat_median(GSL_MOVSTAT_END_TRUNCATE, &in.vector, out, work); });
    gsl_movstat_free(work);
    gsl_vector_free(out);

    const Doubles taps(101, 1.0 / 101.0);
    measure("filter, 101 taps over 10^6", "functions", 1,
            [&] { keep(vexel::filter(medium_, taps).data()); });
    measure(
        "filter, 101 taps over 10^6", "vexel", 1,
        entry("STATS_VexelLinearFilter_HW", medium, kernel_.toValue(taps), none(), false, false));
    measure("filter, 101 taps over 10^6", "C++", 1, [&] {
      Doubles y(medium_.size());
      for (std::size_t i = 100; i < y.size(); ++i) {
        double sum = 0.0;
        for (std::size_t k = 0; k < taps.size(); ++k) {
          sum += taps[k] * medium_[i - k];
        }
        y[i] = sum;
      }
      keep(y.data());
    });
    measure("density of 10^6 at 4096 points", "functions", 1, [&] {
      keep(
          vexel::kde(medium_, {.bandwidth = 0.1, .points = 4096, .bounds = vexel::Interval{-2, 22}})
              .y()
              .data());
    });
    measure("density of 10^6 at 4096 points", "vexel", 1,
            entry("STATS_VexelKernelDensity_HW", medium, none(), 0, 0.1, 4096, true, -2.0, 22.0));
  }

  vexel::Kernel kernel_;
  Doubles large_;
  Doubles medium_;
};

}  // namespace

void measureArrays() { Arrays().run(); }
