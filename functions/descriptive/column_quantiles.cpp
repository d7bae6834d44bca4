// Quantiles, order statistics and what is made of them, of many variables at once.
//
// A value of a rank is the same however it is found, but for zeros of both signs, and the value
// between two of them is that of one variable: so the results are those of each variable alone, to
// the last bit.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

#include "functions/data/sample.hpp"
#include "functions/descriptive/column_ranks.hpp"
#include "functions/descriptive/quantiles.hpp"
#include "kernels/watch.hpp"
#include "vexel/columns.hpp"

namespace vexel {

namespace {

// With weights each variable is done by itself.
void eachColumn(const Columns& columns, const Data& weights, const RanksOfColumns& wanted) {
  if (!weights.given()) {
    ranksOfColumns(columns, wanted);
    return;
  }
  for (std::size_t j = 0; j < columns.count(); ++j) {
    wanted.alone(j);
    kernels::poll(static_cast<double>(j + 1) / static_cast<double>(columns.count()));
  }
}

// The places of some probabilities; NaN may be among them.
std::vector<Place> placesOf(std::span<const double> q, double n, QuantileMethod method) {
  std::vector<Place> places;
  for (const double p : q) {
    places.push_back(placeOf(std::isnan(p) ? 0.0 : p, n, method));
  }
  return places;
}

// Every so many numbers from the first on.
void scatter(std::span<const double> values, double* to, std::size_t apart) {
  for (std::size_t i = 0; i < values.size(); ++i) {
    to[i * apart] = values[i];
  }
}

// Number i of column j to out[i * count + j].
auto takeAll(std::span<double> out, std::size_t count) {
  return [=](const ColumnValues& found) {
    for (std::size_t i = 0; i * count < out.size(); ++i) {
      std::copy_n(found.values + i * found.apart, found.count,
                  out.data() + i * count + found.first);
    }
  };
}

bool areEnds(std::span<const double> q) {
  return std::all_of(q.begin(), q.end(), [](double p) { return p == 0.0 || p == 1.0; });
}

}  // namespace

void quantile(const Columns& columns, Data q, std::span<double> out,
              const QuantileOptions& options) {
  std::vector<double> probabilities(q.size());
  for (std::size_t i = 0; i < q.size(); ++i) {
    probabilities[i] = q[i];
    requireProbability(probabilities[i], "quantile");
  }
  requireRoom("quantile", columns, q.size(), out);
  const std::size_t count = columns.count();
  const auto alone = [&](std::size_t j) {
    scatter(quantile(columns[j], q, options), out.data() + j, count);
  };
  const auto all = takeAll(out, count);
  const auto take = [&](const ColumnValues& found) {
    all(found);
    for (std::size_t i = 0; i < probabilities.size(); ++i) {
      if (std::isnan(probabilities[i])) {
        std::fill_n(out.data() + i * count + found.first, found.count, kNaN);
      }
    }
  };
  const auto places = [&](double n) { return placesOf(probabilities, n, options.method); };
  eachColumn(columns, options.weights,
             {places, areEnds(probabilities), options.missing, take, alone});
}

void median(const Columns& columns, std::span<double> out, const WeightedOptions& options) {
  requireRoom("median", columns, 1, out);
  const double half = 0.5;
  const auto places = [&](double n) { return placesOf({&half, 1}, n, QuantileMethod::linear); };
  eachColumn(columns, options.weights,
             {places, false, options.missing, takeAll(out, columns.count()),
              [&](std::size_t j) { out[j] = median(columns[j], options); }});
}

void iqr(const Columns& columns, std::span<double> out, const QuantileOptions& options) {
  requireRoom("iqr", columns, 1, out);
  const double q[] = {0.25, 0.75};
  eachColumn(columns, options.weights,
             {[&](double n) { return placesOf(q, n, options.method); }, false, options.missing,
              [&](const ColumnValues& found) {
                for (std::size_t j = 0; j < found.count; ++j) {
                  out[found.first + j] = found.values[found.apart + j] - found.values[j];
                }
              },
              [&](std::size_t j) { out[j] = iqr(columns[j], options); }});
}

void order_statistic(const Columns& columns, std::span<const std::int64_t> k, std::span<double> out,
                     const WeightedOptions& options) {
  requireRoom("order_statistic", columns, k.size(), out);
  const std::size_t count = columns.count();
  const auto alone = [&](std::size_t j) {
    scatter(order_statistic(columns[j], k, options), out.data() + j, count);
  };
  const std::int64_t n = static_cast<std::int64_t>(columns.first().size());
  if (std::any_of(k.begin(), k.end(), [n](std::int64_t r) { return r < 1 || r > n; })) {
    for (std::size_t j = 0; j < count; ++j) {
      alone(j);  // some may have nothing to refuse it for
    }
    return;
  }
  const auto places = [&](double m) { return placesOfRanks(k, m); };
  const bool first = std::all_of(k.begin(), k.end(), [](std::int64_t r) { return r == 1; });
  eachColumn(columns, options.weights,
             {places, first, options.missing, takeAll(out, count), alone});
}

void five_number(const Columns& columns, std::span<FiveNumber> out,
                 const WeightedOptions& options) {
  if (out.size() != columns.count()) {
    requireRoom("five_number", columns, 1, {static_cast<const double*>(nullptr), out.size()});
  }
  eachColumn(columns, options.weights,
             {placesOfFive, false, options.missing,
              [&](const ColumnValues& found) {
                for (std::size_t j = 0; j < found.count; ++j) {
                  const double* const v = found.values + j;
                  out[found.first + j] = fiveInOrder({v[0], v[found.apart], v[2 * found.apart],
                                                      v[3 * found.apart], v[4 * found.apart]});
                }
              },
              [&](std::size_t j) { out[j] = five_number(columns[j], options); }});
}

}  // namespace vexel
