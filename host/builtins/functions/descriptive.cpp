// Descriptive statistics of the language: rows over vexel/descriptive.hpp.

#include <algorithm>
#include <vexel/descriptive.hpp>

#include "builtins/functions/call.hpp"
#include "builtins/functions/objects.hpp"
#include "builtins/functions/statistics.hpp"
#include "mathematics/elementwise.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"

namespace vexel {

namespace {

// A moment of a law or a result of a state, where x is one.
ALGEB momentOfLaw(Call& call, LawMoment m) {
  const LawObject* const law = objectOf<LawObject>(call.value("x"));
  return law == nullptr ? resultOfState(call.state(), call.value("x"), call.signature().function)
                        : call.real(law->moment(m));
}

ALGEB mean(Call& call) {
  if (const ALGEB m = momentOfLaw(call, LawMoment::mean)) {
    return m;
  }
  return call.real(mean(call.data("x"), {.weights = call.data("weights"),
                                         .kind = call.choice("kind", Mean::arithmetic),
                                         .missing = call.missing()}));
}

ALGEB trimmedMean(Call& call) {
  return call.real(trimmed_mean(call.data("x"), cutOf(call),
                                {.weights = call.data("weights"), .missing = call.missing()}));
}

ALGEB winsorizedMean(Call& call) {
  return call.real(winsorized_mean(call.data("x"), cutOf(call),
                                   {.weights = call.data("weights"), .missing = call.missing()}));
}

ALGEB moment(Call& call) {
  if (const ALGEB held = momentOfState(call)) {
    return held;
  }
  MomentOptions options{.weights = call.data("weights"), .missing = call.missing()};
  if (call.given("center")) {
    options.center = call.number("center");
  }
  const ALGEB orders = call.value("order");
  if (!isContainer(orders)) {
    return call.real(moment(
        call.data("x"), static_cast<int>(std::clamp<std::int64_t>(call.integer("order"), -1, 1000)),
        options));
  }
  const Data wanted = call.data("order");
  std::vector<int> list;
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    const double order = wanted[i];
    if (!(order >= 0 && order <= 64 && order == static_cast<int>(order))) {
      call.refuse("order", "whole numbers from 0 to 64");
    }
    list.push_back(static_cast<int>(order));
  }
  return call.reals(moment(call.data("x"), list, options), orders);
}

VarianceOptions varianceOptions(Call& call) {
  return {
      .weights = call.data("weights"), .ddof = call.number("ddof", 1), .missing = call.missing()};
}

ALGEB var(Call& call) {
  const ALGEB m = momentOfLaw(call, LawMoment::var);
  return m != nullptr ? m : call.real(var(call.data("x"), varianceOptions(call)));
}

ALGEB standardDeviation(Call& call) {
  const ALGEB m = momentOfLaw(call, LawMoment::std);
  return m != nullptr ? m : call.real(vexel::std(call.data("x"), varianceOptions(call)));
}

ShapeOptions shapeOptions(Call& call) {
  return {.weights = call.data("weights"),
          .bias = call.boolean("bias", true),
          .missing = call.missing()};
}

ALGEB skewness(Call& call) {
  const ALGEB m = momentOfLaw(call, LawMoment::skewness);
  return m != nullptr ? m : call.real(skewness(call.data("x"), shapeOptions(call)));
}

ALGEB kurtosis(Call& call) {
  const ALGEB m = momentOfLaw(call, LawMoment::kurtosis);
  return m != nullptr ? m : call.real(kurtosis(call.data("x"), shapeOptions(call)));
}

ALGEB meanAbsoluteDeviation(Call& call) {
  return call.real(
      mean_absolute_deviation(call.data("x"), {.weights = call.data("weights"),
                                               .center = call.choice("center", Center::mean),
                                               .missing = call.missing()}));
}

ALGEB medianAbsoluteDeviation(Call& call) {
  return call.real(median_absolute_deviation(call.data("x"), {.weights = call.data("weights"),
                                                              .scale = call.number("scale", 1),
                                                              .missing = call.missing()}));
}

QuantileOptions quantileOptions(Call& call) {
  return {
      .weights = call.data("weights"), .method = quantileMethodOf(call), .missing = call.missing()};
}

ALGEB quantile(Call& call) {
  const ALGEB q = call.value("q");
  const LawObject* const law = objectOf<LawObject>(call.value("x"));
  if (law != nullptr) {
    return lawValues(call, *law, LawFunction::quantile, "q");
  }
  if (!isContainer(q)) {
    return call.real(quantile(call.data("x"), call.number("q"), quantileOptions(call)));
  }
  return call.reals(quantile(call.data("x"), call.data("q"), quantileOptions(call)), q);
}

ALGEB median(Call& call) {
  const ALGEB m = momentOfLaw(call, LawMoment::median);
  return m != nullptr ? m
                      : call.real(median(call.data("x"), {.weights = call.data("weights"),
                                                          .missing = call.missing()}));
}

ALGEB interquartileRange(Call& call) {
  return call.real(iqr(call.data("x"), quantileOptions(call)));
}

ALGEB orderStatistic(Call& call) {
  const WeightedOptions options{.weights = call.data("weights"), .missing = call.missing()};
  const ALGEB k = call.value("k");
  if (!isContainer(k)) {
    return call.real(order_statistic(call.data("x"), call.integer("k"), options));
  }
  const Data wanted = call.data("k");
  std::vector<std::int64_t> list;
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    if (!(wanted[i] >= 1 && wanted[i] < 0x1p53)) {
      call.refuse("k", "positions from 1");
    }
    list.push_back(static_cast<std::int64_t>(wanted[i]));
  }
  return call.reals(order_statistic(call.data("x"), list, options), k);
}

ALGEB fiveNumber(Call& call) {
  const FiveNumber f =
      five_number(call.data("x"), {.weights = call.data("weights"), .missing = call.missing()});
  return call.parts({{"min", call.real(f.min)},
                     {"lower_hinge", call.real(f.lower_hinge)},
                     {"median", call.real(f.median)},
                     {"upper_hinge", call.real(f.upper_hinge)},
                     {"max", call.real(f.max)}});
}

ALGEB describe(Call& call) {
  const Description d = describe(
      call.data("x"), {.weights = call.data("weights"), .missing = call.missing(Missing::omit)});
  return call.parts({{"count", call.real(d.count)},
                     {"missing", newInteger(call.state(), static_cast<std::int64_t>(d.missing))},
                     {"mean", call.real(d.mean)},
                     {"std", call.real(d.std)},
                     {"min", call.real(d.min)},
                     {"q1", call.real(d.q1)},
                     {"median", call.real(d.median)},
                     {"q3", call.real(d.q3)},
                     {"max", call.real(d.max)},
                     {"skewness", call.real(d.skewness)},
                     {"kurtosis", call.real(d.kurtosis)}});
}

// Of two vectors a number, of one matrix the matrix of its columns.
template <typename Options>
ALGEB pairOrMatrix(Call& call, double (*ofTwo)(Data, Data, const Options&),
                   SquareMatrix (*ofMany)(std::span<const Data>, const Options&),
                   const Options& options) {
  if (call.given("y")) {
    return call.real(ofTwo(call.data("x"), call.data("y"), options));
  }
  const SquareMatrix m = ofMany(call.columns("x"), options);
  return call.matrix(m.values, m.size, m.size);
}

// A result of a state, where x is one.
ALGEB resultOf(Call& call) {
  return resultOfState(call.state(), call.value("x"), call.signature().function);
}

ALGEB covariance(Call& call) {
  if (const ALGEB held = resultOf(call)) {
    return held;
  }
  return pairOrMatrix<CovarianceOptions>(
      call, cov, cov,
      {.weights = call.data("weights"), .ddof = call.number("ddof", 1), .missing = call.missing()});
}

ALGEB correlation(Call& call) {
  if (const ALGEB held = resultOf(call)) {
    return held;
  }
  return pairOrMatrix<CorrelationOptions>(call, corr, corr,
                                          {.weights = call.data("weights"),
                                           .method = call.choice("method", Correlation::pearson),
                                           .missing = call.missing()});
}

constexpr FunctionRow kRows[] = {
    {"mean", "x; weights, kind = arithmetic, missing = propagate",
     "the mean: arithmetic, geometric, harmonic or quadratic; of a law its mean",
     "mean([1, 2, 4], weights = [1, 1, 2]), mean([1, 2, 4], kind = geometric), mean(Gamma(2, 3));",
     mean},
    {"trimmed_mean", "x, cut; weights, missing = propagate",
     "the mean without the fraction cut of the data at each end",
     "trimmed_mean([1, 2, 3, 4, 100], 1/5);", trimmedMean},
    {"winsorized_mean", "x, cut; weights, missing = propagate",
     "the mean with the fraction cut at each end moved to the nearest value that stays",
     "winsorized_mean([1, 2, 3, 4, 100], 1/5);", winsorizedMean},
    {"moment", "x, order; center, weights, missing = propagate",
     "the mean of (x - center)^order; of a list of orders all in one pass",
     "moment([1, 2, 3, 4], 2), moment([1, 2, 3, 4], [1, 2, 3], center = 0);", moment},
    {"var", "x; ddof = 1, weights, missing = propagate", "the variance, divisor n - ddof",
     "var([1, 2, 3, 4]), var([1, 2, 3, 4], ddof = 0);", var},
    {"std", "x; ddof = 1, weights, missing = propagate", "the standard deviation, divisor n - ddof",
     "std([1, 2, 3, 4]);", standardDeviation},
    {"skewness", "x; bias = true, weights, missing = propagate", "the skewness",
     "skewness([1, 2, 6]);", skewness},
    {"kurtosis", "x; bias = true, weights, missing = propagate",
     "the excess kurtosis, 0 for the normal law", "kurtosis([1, 2, 3, 4]);", kurtosis},
    {"mean_absolute_deviation", "x; center = mean, weights, missing = propagate",
     "the mean distance from the mean or the median", "mean_absolute_deviation([1, 2, 6]);",
     meanAbsoluteDeviation},
    {"median_absolute_deviation", "x; scale = 1, weights, missing = propagate",
     "the median distance from the median, times scale", "median_absolute_deviation([1, 2, 6]);",
     medianAbsoluteDeviation},
    {"quantile", "x, q; method = linear, weights, missing = propagate",
     "quantiles of data by one of nine definitions, or of a law",
     "quantile([1, 2, 3, 4], [1/4, 1/2], method = hazen), quantile(Exponential(), 0.5);", quantile},
    {"median", "x; weights, missing = propagate", "the median of data or of a law",
     "median([3, 1, undefined, 2], missing = omit);", median},
    {"iqr", "x; method = linear, weights, missing = propagate", "the third quartile less the first",
     "iqr([1, 2, 3, 4, 5]);", interquartileRange},
    {"order_statistic", "x, k; weights, missing = propagate", "the k-th smallest value, k from 1",
     "order_statistic([30, 10, 20], 2);", orderStatistic},
    {"five_number", "x; weights, missing = propagate", "extremes, hinges and median",
     "five_number([1, 2, 3, 4, 5, 6]);", fiveNumber},
    {"describe", "x; weights, missing = omit",
     "a table: count, missing, mean, std, min, q1, median, q3, max, skewness, kurtosis",
     "d := describe([1, 2, undefined, 4]): d[count], d[missing], d[mean];", describe},
    {"cov", "x, y = none; ddof = 1, weights, missing = propagate",
     "the covariance of two samples, or the matrix of a matrix's columns",
     "cov([1, 2, 3], [2, 4, 7]);", covariance},
    {"corr", "x, y = none; method = pearson, weights, missing = propagate",
     "the correlation (pearson, spearman, kendall) of two samples, or of a matrix's columns",
     "corr([1, 2, 3, 4], [1, 3, 2, 4], method = kendall);", correlation},
};

}  // namespace

Cut cutOf(Call& call) {
  const ALGEB cut = call.value("cut");
  if (!isContainer(cut)) {
    return call.number("cut");
  }
  const Data ends = call.data("cut");
  if (ends.size() != 2) {
    call.refuse("cut", "a fraction or two");
  }
  return {ends[0], ends[1]};
}

QuantileMethod quantileMethodOf(Call& call) {
  return call.choice("method", QuantileMethod::linear);
}

void defineDescriptiveFunctions(State& state) { defineRows(state, kRows); }

}  // namespace vexel
