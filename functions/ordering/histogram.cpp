// Histograms and frequency tables.
#include <algorithm>

#include "functions/ordering/binning.hpp"
#include "kernels/binning.hpp"
#include "kernels/watch.hpp"

namespace vexel {

namespace {

// More bins than this are a mistake in the width, not a histogram.
constexpr std::int64_t kMostBins = std::int64_t{1} << 27;

// The smallest and largest of the present pairs; low > high where there are none.
template <typename T>
Interval extremes(std::span<const T> x, Data w) {
  Interval found{std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};
  kernels::forEach(x.size(), [&](std::size_t i) {
    if (w.given() && !(w[i] > 0)) {
      return;
    }
    const auto v = static_cast<double>(x[i]);
    found.low = v < found.low ? v : found.low;
    found.high = v > found.high ? v : found.high;
  });
  return found;
}

Interval rangeOf(Data x, const HistogramOptions& options) {
  if (options.range) {
    const Interval given = *options.range;
    if (!(std::isfinite(given.low) && std::isfinite(given.high) && given.low <= given.high)) {
      throw std::invalid_argument(mustBe("range", "finite ends that do not fall",
                                         number(given.low) + " and " + number(given.high)));
    }
    return given;
  }
  const Interval found = onElements(
      x, [&]<typename T>(std::span<const T> points) { return extremes(points, options.weights); });
  if (found.low > found.high) {
    return {0, 1};
  }
  if (!std::isfinite(found.low) || !std::isfinite(found.high)) {
    throw std::invalid_argument("range: the data hold infinities, so it has to be given");
  }
  return found;
}

// Equal ends are half a unit away from the only value.
Interval widened(Interval range) {
  return range.low == range.high ? Interval{range.low - 0.5, range.high + 0.5} : range;
}

std::vector<double> edgesFor(Data x, const Bins& bins, const HistogramOptions& options) {
  if (bins.kind() == Bins::Kind::edges) {
    return checkedEdges(bins.edges(), "bins");
  }
  std::int64_t count = bins.count();
  if (bins.kind() == Bins::Kind::count && (count < 1 || count > kMostBins)) {
    throw std::invalid_argument(mustBe("bins", "1 to 2^27", std::to_string(count)));
  }
  const Interval range = widened(rangeOf(x, options));
  if (bins.kind() == Bins::Kind::rule) {
    count = static_cast<std::int64_t>(ruleBins(x, bins.rule(), range, options));
  }
  return equalEdges(range, static_cast<std::size_t>(count));
}

}  // namespace

HistogramResult histogram(Data x, const Bins& bins, const HistogramOptions& options) {
  requireWeights(options.weights, x.size());
  HistogramResult result;
  result.edges = edgesFor(x, bins, options);
  const Binning binning(result.edges, bins.kind() != Bins::Kind::edges);
  result.counts.resize(binning.bins());
  onElements(x, [&]<typename T>(std::span<const T> points) {
    if (options.weights.given()) {
      kernels::ExactTotals totals(binning.bins());
      result.missing = addWeights(binning, points, options.weights, totals);
      for (std::size_t b = 0; b < result.counts.size(); ++b) {
        result.counts[b] = totals.total(b);
      }
    } else {
      std::vector<std::uint64_t> counts(binning.bins());
      result.missing = binning.count(points, counts);
      std::copy(counts.begin(), counts.end(), result.counts.begin());
    }
  });
  if (options.missing == Missing::raise && result.missing > 0) {
    requireNoneMissing("histogram", x, options.weights);
  }
  if (options.density) {
    kernels::ExactTotals total(1);
    for (const double c : result.counts) {
      total.add(0, c);
    }
    for (std::size_t b = 0; b < result.counts.size(); ++b) {
      result.counts[b] /= total.total(0) * (result.edges[b + 1] - result.edges[b]);
    }
  }
  return result;
}

FrequencyTable frequency_table(Data x, const Bins& bins, const HistogramOptions& options) {
  HistogramOptions counted = options;
  counted.density = false;
  const HistogramResult h = histogram(x, bins, counted);
  requireSomeWeight("frequency_table", x, options.weights);
  kernels::ExactTotals total(1);
  std::vector<double> upTo;
  for (const double c : h.counts) {
    total.add(0, c);
    upTo.push_back(total.total(0));
  }
  FrequencyTable table;
  table.lower.assign(h.edges.begin(), h.edges.end() - 1);
  table.upper.assign(h.edges.begin() + 1, h.edges.end());
  table.count = h.counts;
  for (std::size_t b = 0; b < h.counts.size(); ++b) {
    table.relative.push_back(h.counts[b] / upTo.back());
    table.cumulative.push_back(upTo[b] / upTo.back());
  }
  return table;
}

}  // namespace vexel
