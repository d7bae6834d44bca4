// Student's t law.
//
// Method  The incomplete beta function (numerics/laws/student_law.hpp); arrays by the series of
//         many numbers side by side. Fits solve the likelihood's equations.
// Source  N. L. Johnson, S. Kotz and N. Balakrishnan, Continuous Univariate Distributions, volume
//         2, 2nd edition (1995), chapter 28.
// Draws   One normal variate, then a gamma variate.
// Error   Below 0.1 of 1e-14 max(1, condition) over 446 points of all methods
//         (docs/functions/accuracy.md).
#include <algorithm>
#include <array>
#include <span>
#include <utility>

#include "functions/distributions/beta_arrays.hpp"
#include "functions/distributions/frame.hpp"
#include "functions/distributions/gamma_functions.hpp"
#include "functions/distributions/maximize.hpp"
#include "numerics/laws/student_law.hpp"
#include "vexel/distributions/beta.hpp"

namespace vexel {

namespace detail {

template <>
struct Formulas<StudentT> {
  const StudentT& law;

  double df() const { return law.parameters_.df; }
  const nag2::StudentLaw& t() const { return law.t_.get<nag2::StudentLaw>(); }

  Interval support() const { return {-infinity, infinity}; }
  double pdf(double x) const { return t().density(x); }
  double logpdf(double x) const { return t().logDensity(x); }
  double cdf(double x) const { return t().tail(x, nag2::Tail::lower); }
  double sf(double x) const { return t().tail(x, nag2::Tail::upper); }
  // Arrays: the series of many numbers side by side.
  using In = std::span<const double>;
  void cdf(In x, std::span<double> out) const { tails(x, out, nag2::Tail::lower); }
  void sf(In x, std::span<double> out) const { tails(x, out, nag2::Tail::upper); }
  double logcdf(double x) const { return t().logTail(x, nag2::Tail::lower); }
  double logsf(double x) const { return t().logTail(x, nag2::Tail::upper); }
  double quantile(double p) const { return t().quantile(p, nag2::Tail::lower); }
  double isf(double q) const { return t().quantile(q, nag2::Tail::upper); }

  double mean() const { return df() > 1.0 ? 0.0 : nan; }
  double var() const { return df() > 2.0 ? df() / (df() - 2.0) : df() > 1.0 ? infinity : nan; }
  double skewness() const { return df() > 3.0 ? 0.0 : nan; }
  double kurtosis() const { return df() > 4.0 ? 6.0 / (df() - 4.0) : df() > 2.0 ? infinity : nan; }

 private:
  static constexpr std::size_t kChunk = 256;

  // The numbers of a chunk at one kind of place.
  struct Together {
    std::array<std::size_t, kChunk> index;
    std::array<double, kChunk> argument;
    std::array<double, kChunk> excess;
    std::array<double, kChunk> factor;
    std::array<double, kChunk> value;
    std::size_t size = 0;

    void add(std::size_t i, const nag2::StudentLaw::Parts& parts) {
      index[size] = i;
      argument[size] = parts.argument;
      excess[size] = parts.excess;
      factor[size++] = parts.factor;
    }
  };

  void tails(In x, std::span<double> out, nag2::Tail which) const {
    for (std::size_t i = 0; i < x.size(); i += kChunk) {
      const std::size_t n = std::min(kChunk, x.size() - i);
      // In place, out may be x: everything is read before its place is written.
      std::array<double, kChunk> chunk;
      std::copy_n(x.begin() + static_cast<std::ptrdiff_t>(i), n, chunk.begin());
      tailsOfChunk({chunk.data(), n}, out.data() + i, which);
    }
  }

  void tailsOfChunk(In x, double* out, nag2::Tail which) const {
    using Place = nag2::StudentLaw::Place;
    std::array<Together, 3> places;
    for (std::size_t i = 0; i < x.size(); ++i) {
      if (!std::isfinite(x[i])) {
        out[i] = std::isnan(x[i]) ? x[i] : (which == nag2::Tail::lower) == (x[i] > 0.0) ? 1.0 : 0.0;
        continue;
      }
      nag2::StudentLaw::Parts parts{};
      const Place place = t().partsAt(x[i], parts);
      if (place == Place::normal) {
        out[i] = t().tail(x[i], which);
      } else {
        places[static_cast<std::size_t>(place)].add(i, parts);
      }
    }
    for (const Place place : {Place::centre, Place::between, Place::far}) {
      Together& some = places[static_cast<std::size_t>(place)];
      const std::span<const double> arguments(some.argument.data(), some.size);
      if (place == Place::between) {
        betaFractionOf(arguments, some.excess.data(), 0.5 * df(), 0.5, some.value.data());
      } else {
        betaSeriesOf(arguments, t().seriesA(place), t().seriesN(), some.value.data());
      }
      for (std::size_t k = 0; k < some.size; ++k) {
        const std::size_t i = some.index[k];
        out[i] = nag2::StudentLaw::tailFrom(t().outer(place, some.factor[k], some.value[k]), x[i],
                                            which);
      }
    }
  }
};

}  // namespace detail

StudentT::StudentT(const Parameters& parameters) : parameters_(parameters) {
  detail::requirePositive(name, "df", parameters.df);
  t_.set(nag2::StudentLaw(parameters.df));
}

// The largest likelihood of df from 1/1000 to 10^6, from a grid of its logarithm.
StudentT StudentT::fit(Data x, const FitOptions& options) {
  const detail::Observations data =
      detail::observe(name, x, options, {-detail::infinity, detail::infinity});
  const auto likelihood = [&](double logDf) {
    const StudentT law(std::exp(logDf));
    return data.mean([&](double t) { return law.logpdf(t); });
  };
  // Twice the derivative with respect to df.
  const auto slope = [&](double df) {
    const double half = 0.5 * df;
    const double own = std::log1p(1.0 / df) - 1.0 / df + detail::logMinusDigamma(half) -
                       detail::logMinusDigamma(half + 0.5);
    return own + data.mean([=](double t) {
      const double r = t / df * t;
      return (1.0 + 1.0 / df) * (r / (1.0 + r)) - std::log1p(r);
    });
  };
  constexpr int grid = 60;
  const double low = std::log(1e-3);
  const double step = (std::log(1e6) - low) / grid;
  int best = 0;
  double highest = -detail::infinity;
  for (int i = 0; i <= grid; ++i) {
    if (const double value = likelihood(low + step * i); value > highest) {
      highest = value;
      best = i;
    }
  }
  if (best == 0 || best == grid) {
    detail::refuseFit(name, std::string("the tails of x are ") +
                                (best == 0 ? "heavier than those of 1/1000 degrees of freedom"
                                           : "lighter than those of 10^6 degrees of freedom"));
  }
  const double df =
      detail::increasingRoot([&](double t) { return std::pair(-slope(t), detail::nan); },
                             std::exp(low + step * (best - 1)), std::exp(low + step * (best + 1)),
                             std::exp(low + step * best));
  return StudentT(df);
}

VEXEL_CONTINUOUS_LAW(StudentT)

}  // namespace vexel
