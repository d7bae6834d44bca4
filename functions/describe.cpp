// The summary of a sample, and its text.

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "functions/power_means.hpp"
#include "functions/quantiles.hpp"
#include "functions/sample.hpp"
#include "functions/selection.hpp"
#include "vexel/descriptive.hpp"

namespace vexel {

Description describe(Data x, const DescribeOptions& options) {
  Sample sample("describe", x, options.weights, options.missing);
  const Selection selection(sample);
  Description d{};
  d.count = selection.total();
  d.missing = selection.found().missing;
  double* const numbers[] = {&d.mean, &d.std, &d.min,      &d.q1,      &d.median,
                             &d.q3,   &d.max, &d.skewness, &d.kurtosis};
  for (double* const n : numbers) {
    *n = kNaN;
  }
  if (selection.undefined()) {
    return d;
  }
  const Target ends[] = {{0.0}, {std::numeric_limits<double>::infinity()}};
  const double q[] = {0.25, 0.5, 0.75};
  const std::vector<double> range = selection.values(ends);
  const std::vector<double> quartiles = quantilesOf(selection, q, QuantileMethod::linear);
  d.min = range[0];
  d.max = range[1];
  d.q1 = quartiles[0];
  d.median = quartiles[1];
  d.q3 = quartiles[2];
  const WeightedOptions same{options.weights, options.missing};
  d.mean = mean(x, {.weights = same.weights, .missing = same.missing});
  d.std = vexel::std(x, {.weights = same.weights, .missing = same.missing});
  const PowerMeans means = powerMeans(sample, 4);
  if (means.defined) {
    d.skewness = skewnessOf(means, true);
    d.kurtosis = kurtosisOf(means, true);
  }
  return d;
}

std::string Description::table() const {
  const std::pair<const char*, double> rows[] = {
      {"count", count},      {"missing", static_cast<double>(missing)},
      {"mean", mean},        {"std", std},
      {"min", min},          {"q1", q1},
      {"median", median},    {"q3", q3},
      {"max", max},          {"skewness", skewness},
      {"kurtosis", kurtosis}};
  std::vector<std::string> texts;
  std::size_t width = 0;
  for (const auto& [name, value] : rows) {
    char digits[32];
    const bool whole = std::fabs(value) < 1e15 && value == std::floor(value);
    const auto end =
        whole ? std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, 0)
              : std::to_chars(digits, digits + sizeof digits, value, std::chars_format::general, 6);
    texts.emplace_back(digits, end.ptr);
    width = std::max(width, texts.back().size());
  }
  std::string result;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    const std::string name = rows[i].first;
    result += name + std::string(10 - name.size() + width - texts[i].size(), ' ') + texts[i] + '\n';
  }
  return result;
}

std::ostream& operator<<(std::ostream& out, const Description& description) {
  return out << description.table();
}

}  // namespace vexel
