// Order and counts: sorting, ranks, tallies, histograms, cumulative sums, trimming.
//
//   std::vector<std::int64_t> s = vexel::sort(ids);           the element type stays
//   auto [values, counts, missing] = vexel::tally(x, {.weights = w});
//   auto h = vexel::histogram(x, vexel::BinRule::fd);
//
// NaN is a missing value.  Nothing is changed in place; where an `out` is taken it may not overlap
// the data.  std::invalid_argument and std::length_error say which parameter was wrong.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <optional>
#include <span>
#include <type_traits>
#include <utility>
#include <vector>
#include <vexel/data.hpp>
#include <vexel/export.hpp>
#include <vexel/interval.hpp>

namespace vexel {

// A vector, array or span whose element type is known when compiling, so that results can have it.
template <typename R>
concept Numbers = requires(const R& x) {
  std::data(x);
  std::size(x);
  requires DataElement<std::remove_cvref_t<decltype(*std::data(x))>>;
};
template <Numbers R>
using ElementOf = std::remove_cvref_t<decltype(*std::data(std::declval<const R&>()))>;

// ---- sorting and ranks

struct SortOptions {
  Missing missing = Missing::propagate;  // propagate: NaN last; omit: left out
};

// Ascending, NaN last; -0.0 and 0.0 keep their order.  Returns how many elements were written: all,
// or those that are not missing.  T is the element type of x, or double.
template <DataElement T>
VEXEL_API std::size_t sort(Data x, std::span<T> out, const SortOptions& options = {});
template <DataElement T>
std::vector<T> sorted(Data x, const SortOptions& options = {}) {
  std::vector<T> out(x.size());
  out.resize(sort(x, std::span<T>(out), options));
  return out;
}
template <Numbers R>
std::vector<ElementOf<R>> sort(const R& x, const SortOptions& options = {}) {
  return sorted<ElementOf<R>>(Data(std::data(x), std::size(x)), options);
}
inline std::vector<double> sort(Data x, const SortOptions& options = {}) {
  return sorted<double>(x, options);
}

// The positions, from 0, that sort x: stable, NaN last.
VEXEL_API std::size_t argsort(Data x, std::span<std::int64_t> out, const SortOptions& options = {});
VEXEL_API std::vector<std::int64_t> argsort(Data x, const SortOptions& options = {});

enum class RankMethod : std::uint8_t { average, min, max, dense, ordinal };
struct RankOptions {
  RankMethod method = RankMethod::average;
  Missing missing = Missing::propagate;  // propagate and omit: NaN keep their place, unranked
};
// Ranks from 1; equal elements share one as the method says, ordinal counts them in their order.
VEXEL_API void rank(Data x, std::span<double> out, const RankOptions& options = {});
VEXEL_API std::vector<double> rank(Data x, const RankOptions& options = {});

// ---- tallies

struct TallyOptions {
  Data weights = {};
  Missing missing = Missing::propagate;  // propagate and omit: left out and counted
};
template <DataElement T>
struct TallyResult {
  std::vector<T> values;       // distinct, ascending; -0.0 counts as 0.0
  std::vector<double> counts;  // or total weights, each rounded once
  std::size_t missing = 0;     // pairs left out
};
// T is the element type of x, or double.
template <DataElement T>
VEXEL_API TallyResult<T> tallyOf(Data x, const TallyOptions& options = {});
template <Numbers R>
TallyResult<ElementOf<R>> tally(const R& x, const TallyOptions& options = {}) {
  return tallyOf<ElementOf<R>>(Data(std::data(x), std::size(x)), options);
}
inline TallyResult<double> tally(Data x, const TallyOptions& options = {}) {
  return tallyOf<double>(x, options);
}

// The most frequent value, the smallest of several; NaN of nothing, or (propagate) of missing data.
VEXEL_API double mode(Data x, const TallyOptions& options = {});

// ---- histograms

enum class BinRule : std::uint8_t { automatic, fd, scott, sturges };

// How to bin: a number of equal bins, edges, or a rule.  Edges are viewed, not copied.
class Bins {
 public:
  template <std::integral I>
  constexpr Bins(I count) : kind_(Kind::count), count_(static_cast<std::int64_t>(count)) {}
  constexpr Bins(BinRule rule) : kind_(Kind::rule), rule_(rule) {}
  constexpr Bins(Data edges) : kind_(Kind::edges), edges_(edges) {}
  template <Numbers R>
  constexpr Bins(const R& edges) : Bins(Data(std::data(edges), std::size(edges))) {}
  constexpr Bins(std::initializer_list<double> edges) : Bins(Data(edges)) {}

  enum class Kind : std::uint8_t { count, rule, edges };
  constexpr Kind kind() const { return kind_; }
  constexpr std::int64_t count() const { return count_; }
  constexpr BinRule rule() const { return rule_; }
  constexpr Data edges() const { return edges_; }

 private:
  Kind kind_;
  BinRule rule_ = BinRule::automatic;
  std::int64_t count_ = 0;
  Data edges_;
};

struct HistogramOptions {
  Data weights = {};
  std::optional<Interval> range = {};    // of equal bins; the data's extremes where it is left out
  bool density = false;                  // counts / (total in the bins * width)
  Missing missing = Missing::propagate;  // propagate and omit: left out and counted
};
struct HistogramResult {
  std::vector<double> counts;
  std::vector<double> edges;  // one more; bin i is [edges[i], edges[i+1]), the last one closed
  std::size_t missing = 0;
};
VEXEL_API HistogramResult histogram(Data x, const Bins& bins, const HistogramOptions& options = {});

struct FrequencyTable {
  std::vector<double> lower;
  std::vector<double> upper;
  std::vector<double> count;
  std::vector<double> relative;    // count / total in the table
  std::vector<double> cumulative;  // share of the total up to upper
};
VEXEL_API FrequencyTable frequency_table(Data x, const Bins& bins,
                                         const HistogramOptions& options = {});

// ---- running and trimmed data

enum class Cumulative : std::uint8_t { sum, product, min, max };
struct CumulativeOptions {
  Data weights = {};  // sum of w x, product of x^w
  Cumulative kind = Cumulative::sum;
  Missing missing = Missing::propagate;  // propagate: NaN from there on; omit: as if not there
};
VEXEL_API void cumulative(Data x, std::span<double> out, const CumulativeOptions& options = {});
VEXEL_API std::vector<double> cumulative(Data x, const CumulativeOptions& options = {});

// What to cut off: a fraction of the data at each end, or one for the lower and one for the upper.
struct Cut {
  constexpr Cut(double both) : lower(both), upper(both) {}
  constexpr Cut(double below, double above) : lower(below), upper(above) {}
  double lower;
  double upper;
};
struct TrimOptions {
  Data weights = {};
  Missing missing = Missing::propagate;  // propagate: NaN keep their place; omit: left out
};
// x without its floor(cut n) smallest and largest elements, in the order of the data; of equal
// elements the outermost in a stable sort go first.
template <DataElement T>
VEXEL_API std::vector<T> trimmed(Data x, Cut cut, const TrimOptions& options = {});
template <Numbers R>
std::vector<ElementOf<R>> trim(const R& x, Cut cut, const TrimOptions& options = {}) {
  return trimmed<ElementOf<R>>(Data(std::data(x), std::size(x)), cut, options);
}
inline std::vector<double> trim(Data x, Cut cut, const TrimOptions& options = {}) {
  return trimmed<double>(x, cut, options);
}

// x with those elements set to the nearest one that trim keeps; NaN keep their place.
template <DataElement T>
VEXEL_API std::vector<T> winsorized(Data x, Cut cut, const TrimOptions& options = {});
template <Numbers R>
std::vector<ElementOf<R>> winsorize(const R& x, Cut cut, const TrimOptions& options = {}) {
  return winsorized<ElementOf<R>>(Data(std::data(x), std::size(x)), cut, options);
}
inline std::vector<double> winsorize(Data x, Cut cut, const TrimOptions& options = {}) {
  return winsorized<double>(x, cut, options);
}

}  // namespace vexel
