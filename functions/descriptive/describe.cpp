// The summary of a sample, and its text.

#include <algorithm>
#include <charconv>
#include <cmath>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "functions/data/sample.hpp"
#include "functions/descriptive/power_means.hpp"
#include "functions/descriptive/quantiles.hpp"
#include "functions/descriptive/selection.hpp"
#include "vexel/descriptive.hpp"

namespace vexel {

Description describe(Data x, const DescribeOptions& options) {
  Sample sample("describe", x, options.weights, options.missing);
  const Quartiles quartiles = quartilesOf(sample);
  const double* const q = quartiles.values;
  Description d{};
  d.count = quartiles.total;
  d.missing = quartiles.found.missing;
  d.min = q[0];
  d.q1 = q[1];
  d.median = q[2];
  d.q3 = q[3];
  d.max = q[4];
  const WeightedOptions same{options.weights, options.missing};
  d.mean = mean(x, {.weights = same.weights, .missing = same.missing});
  d.std = vexel::std(x, {.weights = same.weights, .missing = same.missing});
  const PowerMeans means = powerMeans(sample, 4);
  d.skewness = means.defined ? skewnessOf(means, true) : kNaN;
  d.kurtosis = means.defined ? kurtosisOf(means, true) : kNaN;
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
