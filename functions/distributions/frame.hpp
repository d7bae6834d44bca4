// What the methods of the laws do before and after a law's own mathematics: NaN, the ends of the
// support, probabilities out of range, arrays.
//
// A law's file defines detail::Formulas<L>, a view of the law with functions of one argument, and
// instantiates the frame by VEXEL_CONTINUOUS_LAW(L) or VEXEL_DISCRETE_LAW(L).  Of a continuous law
// Formulas has
//   support mean var skewness kurtosis        skewness and kurtosis may be NaN or infinite
//   pdf logpdf                                called at finite x of the closed support
//   cdf sf logcdf logsf                       called inside the support
//   quantile isf                              called at 0 < p < 1
// and of a discrete one
//   place                                     the argument at which a tail is taken, for any x
//   holds                                     whether a finite x is in the support
//   pmf logpmf                                called at values of the support
//   cdf sf logcdf logsf                       called at places other than the ends
//   quantile isf                              called at 0 < p < 1
// Each of them may have a second form of two spans, for any arguments, with the same results.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <span>
#include <vector>

#include "functions/distributions/checks.hpp"
#include "functions/distributions/observations.hpp"
#include "vexel/distributions/law.hpp"

namespace vexel {

namespace detail {

inline constexpr double nan = std::numeric_limits<double>::quiet_NaN();
inline constexpr double infinity = std::numeric_limits<double>::infinity();

// Elements of x at a time, converted where they are not doubles, through f into out.
template <typename F>
void mapInto(const char* method, const Data& x, std::span<double> out, F f) {
  requireSize(method, out.size(), x.size());
  if (x.dense()) {
    const std::span<const double> in = x.doubles();
    for (std::size_t i = 0; i < in.size(); ++i) {
      out[i] = f(in[i]);
    }
    return;
  }
  for (std::size_t i = 0; i < x.size(); ++i) {
    out[i] = f(x[i]);
  }
}

// The same for f(in, out) of arrays of doubles.
template <typename F>
void mapArrays(const char* method, const Data& x, std::span<double> out, F f) {
  requireSize(method, out.size(), x.size());
  if (x.dense()) {
    f(x.doubles(), out);
    return;
  }
  std::array<double, 256> part;
  for (std::size_t i = 0; i < x.size(); i += part.size()) {
    const std::size_t size = std::min(part.size(), x.size() - i);
    for (std::size_t j = 0; j < size; ++j) {
      part[j] = x[i + j];
    }
    f(std::span<const double>(part.data(), size), out.subspan(i, size));
  }
}

// A tail at x: 0 or 1 from the ends of the support on, or the formula's value.  A discrete law's
// argument is rounded down to a value of the support first.
template <typename L, typename F>
double tailAt(const Formulas<L>& formulas, double x, double below, double above, F f) {
  if (std::isnan(x)) {
    return x;
  }
  const Interval support = formulas.support();
  if constexpr (L::discrete) {
    if (x < support.low || x >= support.high) {
      return x < support.low ? below : above;
    }
  } else if (x <= support.low || x >= support.high) {
    return x <= support.low ? below : above;
  }
  if constexpr (L::discrete) {
    x = formulas.place(x);
  }
  return f(x);
}

template <typename L, typename F>
double quantileAt(const char* parameter, const Formulas<L>& formulas, double p, bool upper, F f) {
  if (p > 0.0 && p < 1.0) [[likely]] {
    return f(p);
  }
  if (std::isnan(p)) {
    return p;
  }
  requireProbability(L::name, parameter, p);
  const Interval support = formulas.support();
  return (p == 0.0) != upper ? support.low : support.high;
}

// A density or point probability, its logarithm where outside is -infinity.
template <typename L, typename F>
double densityAt(const Formulas<L>& formulas, double x, double outside, F f) {
  if (std::isnan(x)) {
    return x;
  }
  if constexpr (L::discrete) {
    if (!formulas.holds(x)) {
      return outside;
    }
  }
  const Interval support = formulas.support();
  return x < support.low || x > support.high || std::isinf(x) ? outside : f(x);
}

}  // namespace detail

template <typename L>
double Law<L>::cdf(double x) const {
  const detail::Formulas<L> formulas{self()};
  return detail::tailAt<L>(formulas, x, 0.0, 1.0, [&](double t) { return formulas.cdf(t); });
}

template <typename L>
double Law<L>::sf(double x) const {
  const detail::Formulas<L> formulas{self()};
  return detail::tailAt<L>(formulas, x, 1.0, 0.0, [&](double t) { return formulas.sf(t); });
}

template <typename L>
double Law<L>::logcdf(double x) const {
  const detail::Formulas<L> formulas{self()};
  return detail::tailAt<L>(formulas, x, -detail::infinity, 0.0,
                           [&](double t) { return formulas.logcdf(t); });
}

template <typename L>
double Law<L>::logsf(double x) const {
  const detail::Formulas<L> formulas{self()};
  return detail::tailAt<L>(formulas, x, 0.0, -detail::infinity,
                           [&](double t) { return formulas.logsf(t); });
}

template <typename L>
double Law<L>::quantile(double p) const {
  const detail::Formulas<L> formulas{self()};
  return detail::quantileAt<L>("p", formulas, p, false,
                               [&](double t) { return formulas.quantile(t); });
}

template <typename L>
double Law<L>::isf(double q) const {
  const detail::Formulas<L> formulas{self()};
  return detail::quantileAt<L>("q", formulas, q, true, [&](double t) { return formulas.isf(t); });
}

template <typename L>
double ContinuousLaw<L>::pdf(double x) const {
  const detail::Formulas<L> formulas{static_cast<const L&>(*this)};
  return detail::densityAt<L>(formulas, x, 0.0, [&](double t) { return formulas.pdf(t); });
}

template <typename L>
double ContinuousLaw<L>::logpdf(double x) const {
  const detail::Formulas<L> formulas{static_cast<const L&>(*this)};
  return detail::densityAt<L>(formulas, x, -detail::infinity,
                              [&](double t) { return formulas.logpdf(t); });
}

template <typename L>
double DiscreteLaw<L>::pmf(double k) const {
  const detail::Formulas<L> formulas{static_cast<const L&>(*this)};
  return detail::densityAt<L>(formulas, k, 0.0, [&](double t) { return formulas.pmf(t); });
}

template <typename L>
double DiscreteLaw<L>::logpmf(double k) const {
  const detail::Formulas<L> formulas{static_cast<const L&>(*this)};
  return detail::densityAt<L>(formulas, k, -detail::infinity,
                              [&](double t) { return formulas.logpmf(t); });
}

// The array forms: the formulas' own, where they have one, or one number after the other.
#define VEXEL_ARRAY_FORMS(Frame, method)                                                         \
  template <typename L>                                                                          \
  void Frame<L>::method(Data x, std::span<double> out) const {                                   \
    const detail::Formulas<L> formulas{static_cast<const L&>(*this)};                            \
    if constexpr (requires { formulas.method(std::span<const double>(), out); }) {               \
      detail::mapArrays(#method, x, out, [&](std::span<const double> in, std::span<double> to) { \
        formulas.method(in, to);                                                                 \
      });                                                                                        \
    } else {                                                                                     \
      detail::mapInto(#method, x, out, [this](double t) { return method(t); });                  \
    }                                                                                            \
  }                                                                                              \
  template <typename L>                                                                          \
  std::vector<double> Frame<L>::method(Data x) const {                                           \
    std::vector<double> out(x.size());                                                           \
    method(x, out);                                                                              \
    return out;                                                                                  \
  }

VEXEL_ARRAY_FORMS(Law, cdf)
VEXEL_ARRAY_FORMS(Law, sf)
VEXEL_ARRAY_FORMS(Law, logcdf)
VEXEL_ARRAY_FORMS(Law, logsf)
VEXEL_ARRAY_FORMS(Law, quantile)
VEXEL_ARRAY_FORMS(Law, isf)
VEXEL_ARRAY_FORMS(ContinuousLaw, pdf)
VEXEL_ARRAY_FORMS(ContinuousLaw, logpdf)
VEXEL_ARRAY_FORMS(DiscreteLaw, pmf)
VEXEL_ARRAY_FORMS(DiscreteLaw, logpmf)
#undef VEXEL_ARRAY_FORMS

template <typename L>
Interval Law<L>::interval(double level) const {
  if (std::isnan(level)) {
    return {level, level};
  }
  detail::requireProbability(L::name, "level", level);
  const double tail = 0.5 * (1.0 - level);
  return {quantile(tail), isf(tail)};
}

template <typename L>
Interval Law<L>::support() const {
  return detail::Formulas<L>{self()}.support();
}

template <typename L>
double Law<L>::mean() const {
  return detail::Formulas<L>{self()}.mean();
}

template <typename L>
double Law<L>::var() const {
  return detail::Formulas<L>{self()}.var();
}

template <typename L>
double Law<L>::std() const {
  return std::sqrt(var());
}

template <typename L>
double Law<L>::skewness() const {
  return detail::Formulas<L>{self()}.skewness();
}

template <typename L>
double Law<L>::kurtosis() const {
  return detail::Formulas<L>{self()}.kurtosis();
}

template <typename L>
double Law<L>::log_likelihood(Data x, const LikelihoodOptions& options) const {
  return detail::sumOfLogs(x, options, [this](double t) {
    if constexpr (L::discrete) {
      return self().logpmf(t);
    } else {
      return self().logpdf(t);
    }
  });
}

// All members but sample, which has its own place.
#define VEXEL_CONTINUOUS_LAW(L) \
  template class Law<L>;        \
  template class ContinuousLaw<L>;
#define VEXEL_DISCRETE_LAW(L) \
  template class Law<L>;      \
  template class DiscreteLaw<L>;

}  // namespace vexel
