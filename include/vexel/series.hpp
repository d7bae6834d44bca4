// Series: moving statistics, linear filters, autocorrelation.
//
//   auto m = vexel::moving(x, 101, vexel::Statistic::median);
//   auto p = vexel::moving(x, 24, vexel::Quantile{0.9}, {.align = vexel::Align::right});
//   auto y = vexel::filter(x, {0.25, 0.5, 0.25});
//
// Results are in doubles and have the data's time axis.
#pragma once

#include <concepts>
#include <cstddef>
#include <functional>
#include <initializer_list>
#include <span>
#include <utility>
#include <vector>
#include <vexel/data.hpp>
#include <vexel/export.hpp>

namespace vexel {

// Where the window of element i lies: around i (an even one has its extra element on the left),
// up to i, or from i on.
enum class Align : std::uint8_t { center, right, left };

// What windows see beyond the ends: nothing (they shrink), nothing (their result is NaN), the
// series mirrored about its ends, the end elements once more (d c b a | a b c d | d c b a), or the
// end elements all the way.
enum class Edges : std::uint8_t { shrink, nan, reflect, nearest };

struct MovingOptions {
  Data weights = {};          // of the data; a point of weight 0 is not there
  std::size_t min_count = 1;  // a window with fewer present values gives NaN
  Edges edges = Edges::shrink;
  Align align = Align::center;
  Missing missing = Missing::propagate;  // propagate: windows that hold one give NaN
};

// The q-quantile, by linear interpolation (the default definition of quantile()).
struct Quantile {
  double q;
};

// out[i] is the statistic of the window of i.  Whatever a window does not hold leaves no trace in
// its result: no drift, no infinity carried on.  std and var divide by count - 1.
VEXEL_API void moving(Data x, std::size_t window, Statistic statistic, std::span<double> out,
                      const MovingOptions& options = {});
VEXEL_API void moving(Data x, std::size_t window, Quantile quantile, std::span<double> out,
                      const MovingOptions& options = {});
// statistic(values): of the present values of a window in their order, without weights.
using WindowStatistic = std::function<double(std::span<const double>)>;
VEXEL_API void moving(Data x, std::size_t window, const WindowStatistic& statistic,
                      std::span<double> out, const MovingOptions& options = {});

inline std::vector<double> moving(Data x, std::size_t window, Statistic statistic = Statistic::mean,
                                  const MovingOptions& options = {}) {
  std::vector<double> out(x.size());
  moving(x, window, statistic, std::span<double>(out), options);
  return out;
}
inline std::vector<double> moving(Data x, std::size_t window, Quantile quantile,
                                  const MovingOptions& options = {}) {
  std::vector<double> out(x.size());
  moving(x, window, quantile, std::span<double>(out), options);
  return out;
}
template <std::invocable<std::span<const double>> F>
std::vector<double> moving(Data x, std::size_t window, F statistic,
                           const MovingOptions& options = {}) {
  std::vector<double> out(x.size());
  moving(x, window, WindowStatistic(std::move(statistic)), std::span<double>(out), options);
  return out;
}

struct FilterOptions {
  bool recursive = false;
  Data initial = {};  // what lies before the start, latest first; 0 where it is not given
};
// y[i] = sum over k of taps[k] x[i-k]; recursive: y[i] = x[i] + sum over k of taps[k] y[i-1-k].
// initial holds earlier x, at most taps - 1 of them, or (recursive) earlier y, at most taps.
VEXEL_API void filter(Data x, Data taps, std::span<double> out, const FilterOptions& options = {});
VEXEL_API std::vector<double> filter(Data x, Data taps, const FilterOptions& options = {});

struct AutocorrelationOptions {
  Missing missing = Missing::propagate;  // omit: products with a missing factor count nothing
};
// r[k] = c[k] / c[0], c[k] = sum over i of (x[i] - mean)(x[i+k] - mean) / n, for lags 0 to last or
// for a list of lags.
VEXEL_API std::vector<double> autocorrelation(Data x, std::size_t last,
                                              const AutocorrelationOptions& options = {});
VEXEL_API std::vector<double> autocorrelation(Data x, std::span<const std::size_t> lags,
                                              const AutocorrelationOptions& options = {});
inline std::vector<double> autocorrelation(Data x, std::initializer_list<std::size_t> lags,
                                           const AutocorrelationOptions& options = {}) {
  return autocorrelation(x, std::span<const std::size_t>(lags.begin(), lags.size()), options);
}

}  // namespace vexel
