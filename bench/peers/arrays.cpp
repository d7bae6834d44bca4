// Order, counts, series and densities: this library's functions, and its entry points called
// through the host, beside the standard library and GSL.

#include <gsl/gsl_filter.h>
#include <gsl/gsl_histogram.h>
#include <gsl/gsl_movstat.h>
#include <gsl/gsl_sort.h>

#include <algorithm>
#include <boost/container/flat_map.hpp>
#include <cstdint>
#include <numeric>
#include <random>
#include <unordered_map>
#include <vector>
#include <vexel/kernel.hpp>
#include <vexel/kernel_density.hpp>
#include <vexel/ordering.hpp>
#include <vexel/series.hpp>

#include "samples.hpp"
#include "stopwatch.hpp"

namespace {

class Arrays {
 public:
  Arrays() : large_(normals(10'000'000)), medium_(large_.begin(), large_.begin() + 1'000'000) {
    kernel_.loadLibrary(STATS_LIBRARY_PATH);
  }

  void run() {
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

  void order() {
    const vexel::Value large = kernel_.wrap(large_);
    measure("sort of 10^7", "functions", 1, [&] { keep(vexel::sort(large_).data()); });
    measure("sort of 10^7", "entry points", 1, entry("STATS_VexelSort_HW", large, true, false));
    measure("sort of 10^7", "C++", 1,
            onCopy(large_, [](Doubles& x) { std::sort(x.begin(), x.end()); }));
    measure("sort of 10^7", "GSL", 1,
            onCopy(large_, [](Doubles& x) { gsl_sort(x.data(), 1, x.size()); }));

    std::mt19937 random(2);
    std::vector<std::int32_t> integers(10'000'000);
    std::generate(integers.begin(), integers.end(),
                  [&] { return static_cast<std::int32_t>(random()); });
    measure("sort of 10^7 integers of 32 bits", "functions", 1,
            [&] { keep(vexel::sorted<std::int32_t>(integers).data()); });
    measure("sort of 10^7 integers of 32 bits", "entry points", 1,
            entry("STATS_VexelSort_HW", kernel_.array(std::span<const std::int32_t>(integers)),
                  true, false));
    measure("sort of 10^7 integers of 32 bits", "C++", 1, [&] {
      std::vector<std::int32_t> copy = integers;
      std::sort(copy.begin(), copy.end());
      keep(copy.data());
    });
    ranks();
  }

  void ranks() {
    const vexel::Value medium = kernel_.wrap(medium_);
    measure("stable argsort of 10^6", "functions", 1,
            [&] { keep(vexel::argsort(medium_).data()); });
    measure("ranks of 10^6", "functions", 1,
            [&] { keep(vexel::rank(medium_, {.method = vexel::RankMethod::ordinal}).data()); });
    measure("ranks of 10^6", "entry points", 1, entry("STATS_VexelRankSort_HW", medium, 1, true));
    std::vector<std::int32_t> index(medium_.size());
    measure("stable argsort of 10^6", "C++", 1, [&] {
      std::iota(index.begin(), index.end(), 0);
      std::stable_sort(index.begin(), index.end(), [&](std::int32_t a, std::int32_t b) {
        return medium_[static_cast<std::size_t>(a)] < medium_[static_cast<std::size_t>(b)];
      });
    });
    std::vector<std::size_t> permutation(medium_.size());
    measure("stable argsort of 10^6", "GSL", 1,
            [&] { gsl_sort_index(permutation.data(), medium_.data(), 1, medium_.size()); });
  }

  void counts() {
    std::mt19937 random(1);
    std::vector<std::int32_t> numbers(1'000'000);
    for (std::int32_t& number : numbers) {
      number = static_cast<std::int32_t>(random() % 1000);
    }
    const vexel::Value array = kernel_.array(std::span<const std::int32_t>(numbers));
    measure("tally of 10^6, 1000 values", "functions", 1,
            [&] { keep(vexel::tally(numbers).counts.data()); });
    measure("tally of 10^6, 1000 values", "entry points", 1,
            entry("STATS_VexelTally_HW", array, none()));
    measure("tally of 10^6, 1000 values", "C++", 1, [&] {
      std::unordered_map<std::int32_t, int> tally;
      for (const std::int32_t number : numbers) {
        ++tally[number];
      }
      keep(tally.size());
    });

    const Doubles levels(numbers.begin(), numbers.end());
    measure("tally of 10^6 doubles, 1000 values", "functions", 1,
            [&] { keep(vexel::tally(levels).counts.data()); });
    measure("tally of 10^6 doubles, 1000 values", "entry points", 1,
            entry("STATS_VexelTally_HW", kernel_.wrap(levels), none()));
    measure("tally of 10^6 doubles, 1000 values", "C++", 1, [&] {
      std::unordered_map<double, int> tally;
      for (const double level : levels) {
        ++tally[level];
      }
      keep(tally.size());
    });
    measure("tally of 10^6 doubles, 1000 values", "Boost", 1, [&] {
      boost::container::flat_map<double, int> tally;
      for (const double level : levels) {
        ++tally[level];
      }
      keep(tally.size());
    });
    bins();
  }

  void bins() {
    const vexel::Value large = kernel_.wrap(large_);
    measure("10^7 into 100 bins", "functions", 1, [&] {
      keep(vexel::histogram(large_, 100, {.range = vexel::Interval{-2, 22}}).counts.data());
    });
    measure(
        "10^7 into 100 bins", "entry points", 1,
        entry("STATS_VexelTallyInto_HW", large, none(), false, kernel_.eval("[-2 .. 22]"), 100));
    gsl_histogram* histogram = gsl_histogram_alloc(100);
    gsl_histogram_set_ranges_uniform(histogram, -2.0, 22.0);
    measure("10^7 into 100 bins", "GSL", 1, [&] {
      for (const double v : large_) {
        gsl_histogram_increment(histogram, v);
      }
    });
    gsl_histogram_free(histogram);

    Doubles sums(large_.size());
    measure("cumulative sum of 10^7", "functions", 1,
            [&] { vexel::cumulative(large_, std::span<double>(sums)); });
    measure("cumulative sum of 10^7", "entry points", 1,
            entry("STATS_VexelCumulative_HW", large, none(), kernel_.wrap(sums), 0));
    measure("cumulative sum of 10^7", "C++", 1,
            [&] { std::partial_sum(large_.begin(), large_.end(), sums.begin()); });
  }

  void smoothing() {
    const vexel::Value medium = kernel_.wrap(medium_);
    measure("moving mean, 101 over 10^6", "functions", 1,
            [&] { keep(vexel::moving(medium_, 101, vexel::Statistic::mean).data()); });
    measure("moving mean, 101 over 10^6", "entry points", 1,
            entry("STATS_VexelMovingMean_HW", medium, 101, 50, none(), false, 0, false));
    measure("moving median, 101 over 10^6", "functions", 1,
            [&] { keep(vexel::moving(medium_, 101, vexel::Statistic::median).data()); });
    measure("moving median, 101 over 10^6", "entry points", 1,
            entry("STATS_VexelMovingMedian_HW", medium, 101, 50, none(), false, false));
    gsl_vector_view in = gsl_vector_view_array(medium_.data(), medium_.size());
    gsl_vector* out = gsl_vector_alloc(medium_.size());
    gsl_movstat_workspace* work = gsl_movstat_alloc(101);
    measure("moving median, 101 over 10^6", "GSL", 1,
            [&] { gsl_movstat_median(GSL_MOVSTAT_END_TRUNCATE, &in.vector, out, work); });
    measure("moving mean, 101 over 10^6", "GSL", 1,
            [&] { gsl_movstat_mean(GSL_MOVSTAT_END_TRUNCATE, &in.vector, out, work); });
    gsl_movstat_free(work);
    gsl_vector_free(out);

    filter("filter, 16 taps over 10^6", 16);
    filter("filter, 101 taps over 10^6", 101);
    measure("density of 10^6 at 4096 points", "functions", 1, [&] {
      keep(
          vexel::kde(medium_, {.bandwidth = 0.1, .points = 4096, .bounds = vexel::Interval{-2, 22}})
              .y()
              .data());
    });
    measure("density of 10^6 at 4096 points", "entry points", 1,
            entry("STATS_VexelKernelDensity_HW", medium, none(), 0, 0.1, 4096, true, -2.0, 22.0));
  }

  void filter(const char* job, std::size_t count) {
    const Doubles taps(count, 1.0 / static_cast<double>(count));
    measure(job, "functions", 1, [&] { keep(vexel::filter(medium_, taps).data()); });
    measure(job, "entry points", 1,
            entry("STATS_VexelLinearFilter_HW", kernel_.wrap(medium_), kernel_.toValue(taps),
                  none(), false, false));
    measure(job, "C++", 1, [&] {
      Doubles y(medium_.size());
      for (std::size_t i = taps.size() - 1; i < y.size(); ++i) {
        double sum = 0.0;
        for (std::size_t k = 0; k < taps.size(); ++k) {
          sum += taps[k] * medium_[i - k];
        }
        y[i] = sum;
      }
      keep(y.data());
    });
  }

  vexel::Kernel kernel_;
  Doubles large_;
  Doubles medium_;
};

}  // namespace

void measureArrays() { Arrays().run(); }
