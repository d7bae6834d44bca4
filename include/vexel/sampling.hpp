// The bootstrap: what a statistic of a sample would be in other samples of the same size.
//
//   vexel::Bootstrap b = vexel::bootstrap(x, vexel::Statistic::median, rng, {.confidence = 0.99});
//   b.interval.low, b.interval.high
//   vexel::bootstrap(x, [](std::span<const double> y) { return y.back() - y.front(); }, rng);
#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <vector>
#include <vexel/data.hpp>
#include <vexel/export.hpp>
#include <vexel/interval.hpp>
#include <vexel/random.hpp>

namespace vexel {

// Of the distribution of the replicates: the bias-corrected and accelerated interval (B. Efron,
// Better bootstrap confidence intervals, Journal of the American Statistical Association 82, 1987),
// their quantiles, or their quantiles reflected about the estimate.
enum class BootstrapMethod : std::uint8_t { BCa, percentile, basic };

struct BootstrapOptions {
  std::size_t replicates = 9999;
  double confidence = 0.95;
  BootstrapMethod method = BootstrapMethod::BCa;
  Missing missing = Missing::propagate;
};

struct Bootstrap {
  double estimate;  // of the sample itself
  double
      standard_error;  // standard deviation of the replicates, divisor one less than their number
  Interval interval;
  std::vector<double> replicates;  // in the order drawn
};

// Each replicate is the statistic of x.size() elements drawn from x with replacement.  Quantiles of
// replicates are "linear"; for BCa half of the replicates that tie with the estimate count as below
// it.  std::invalid_argument for no replicate or a confidence outside (0, 1).
VEXEL_API Bootstrap bootstrap(Data x, Statistic statistic, Random& rng,
                              const BootstrapOptions& options = {});
VEXEL_API Bootstrap bootstrap(Data x,
                              const std::function<double(std::span<const double>)>& statistic,
                              Random& rng, const BootstrapOptions& options = {});

}  // namespace vexel
