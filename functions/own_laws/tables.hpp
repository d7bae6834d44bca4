// What a law of one's own computes from: the segments of its distribution function, and how it is
// sampled.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

#include "functions/own_laws/builder.hpp"
#include "functions/own_laws/envelope.hpp"
#include "functions/own_laws/evaluator.hpp"
#include "functions/own_laws/inverse_table.hpp"
#include "vexel/own_laws.hpp"

namespace vexel::detail {

class OwnLawTables {
 public:
  OwnLawTables(FunctionOfSpans f, const DensityOptions& options);
  OwnLawTables(FunctionOfSpans f, const CumulativeDistributionOptions& options);

  double pdf(double x) const;
  double logpdf(double x) const;
  double cdf(double x) const;
  double sf(double x) const;
  double quantile(double p) const;
  double isf(double q) const;
  // The expectation of (x - center)^order; NaN or infinite where it is.
  double moment(int order, double center) const;

  double sample(Random& rng) const {
    if (envelope_) {
      return envelope_->sample(*density_, rng);
    }
    const std::uint64_t bits = rng.bits();
    return inverse_.at(bits, kernels::unitInterval(bits));
  }

  Interval support() const { return support_; }
  bool logConcave() const { return envelope_.has_value(); }
  double logIntegral() const { return logIntegral_; }
  double error() const { return error_; }
  std::size_t evaluations() const { return evaluations_; }

 private:
  void finish(own_laws::Built built, double error);
  const own_laws::Segment* segmentOf(double x) const;
  // The part of a moment beyond the last segment to a side.
  double momentBeyond(const own_laws::Segment& last, int side, int order, double center,
                      double sum) const;
  double powerBeyond(int side, int order) const;

  Interval support_;
  std::vector<own_laws::Segment> segments_;
  own_laws::InverseTable inverse_;
  std::optional<own_laws::DensityValues> density_;
  std::function<double(double)> given_;  // density of a distribution function
  std::optional<own_laws::Envelope> envelope_;
  double logIntegral_ = 0;
  double error_ = 0;
  std::size_t evaluations_ = 0;
};

}  // namespace vexel::detail
