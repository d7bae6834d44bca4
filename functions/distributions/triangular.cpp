// The triangular law.
//
// Method  Closed forms from the nearer end. Fits solve the likelihood's equations.
// Source  N. L. Johnson, S. Kotz and N. Balakrishnan, Continuous Univariate Distributions, volume
//         2, 2nd edition (1995), chapter 26.
// Draws   One uniform, by inversion from the nearer end.
// Error   Below 0.03 of 1e-14 max(1, condition) over 475 points of all methods
//         (docs/functions/accuracy.md).
#include <algorithm>
#include <cstddef>
#include <numbers>
#include <utility>

#include "functions/data/text.hpp"
#include "functions/distributions/frame.hpp"
#include "functions/distributions/maximize.hpp"
#include "functions/distributions/precise.hpp"
#include "vexel/distributions/elementary.hpp"

namespace vexel {

namespace detail {

template <>
struct Formulas<Triangular> {
  const Triangular& law;

  double a() const { return law.parameters_.a; }
  double b() const { return law.parameters_.b; }
  double mode() const { return law.parameters_.mode; }
  double width() const { return b() - a(); }
  // The probabilities to both sides of the mode.
  double left() const { return (mode() - a()) / width(); }
  double right() const { return (b() - mode()) / width(); }

  Interval support() const { return {a(), b()}; }
  double pdf(double x) const {
    const double top = 2.0 / width();
    return x == mode()  ? top
           : x < mode() ? top * ((x - a()) / (mode() - a()))
                        : top * ((b() - x) / (b() - mode()));
  }
  double logpdf(double x) const {
    const double top = std::log(2.0 / width());
    return x == mode()  ? top
           : x < mode() ? top + std::log((x - a()) / (mode() - a()))
                        : top + std::log((b() - x) / (b() - mode()));
  }
  double cdf(double x) const { return x <= mode() ? below(x) : notAbove(x); }
  double sf(double x) const { return x <= mode() ? notBelow(x) : above(x); }
  double logcdf(double x) const {
    return x > mode()       ? logOfTail(notAbove(x), above(x))
           : below(x) > 0.5 ? std::log1p(-notBelow(x))
                            : logPart(x - a(), mode() - a(), below(x));
  }
  double logsf(double x) const {
    return x <= mode()      ? logOfTail(notBelow(x), below(x))
           : above(x) > 0.5 ? std::log1p(-notAbove(x))
                            : logPart(b() - x, b() - mode(), above(x));
  }
  double quantile(double p) const {
    return p <= left() ? fromLeft(p, 1.0 - p) : fromRight(1.0 - p, p);
  }
  double isf(double q) const { return q <= right() ? fromRight(q, 1.0 - q) : fromLeft(1.0 - q, q); }

  double mean() const { return a() + ((mode() - a()) + width()) / 3.0; }
  double var() const { return spread() / 18.0; }
  double skewness() const {
    const double u = mode() - a();
    const double v = b() - mode();
    const double root = std::sqrt(spread());
    return std::numbers::sqrt2 / 5.0 * ((v - u) / root) * ((2.0 * u + v) / root) *
           ((u + 2.0 * v) / root);
  }
  double kurtosis() const { return -0.6; }

 private:
  double below(double x) const { return ((x - a()) / width()) * ((x - a()) / (mode() - a())); }
  double above(double x) const { return ((b() - x) / width()) * ((b() - x) / (b() - mode())); }
  // Their complements, as sums where they are small.
  double notAbove(double x) const {
    const double tail = above(x);
    const double part = x - mode();
    return tail < 0.5 ? 1.0 - tail : left() + part / width() * (1.0 + (b() - x) / (b() - mode()));
  }
  double notBelow(double x) const {
    const double tail = below(x);
    const double part = mode() - x;
    return tail < 0.5 ? 1.0 - tail : right() + part / width() * (1.0 + (x - a()) / (mode() - a()));
  }
  // log of part^2 / (width side), which is tail.
  double logPart(double part, double side, double tail) const {
    return tail > 1e-290 ? std::log(tail) : std::log(part / width()) + std::log(part / side);
  }
  double fromLeft(double p, double rest) const {
    const double u = mode() - a();
    const double square = p * (width() / u);
    return square < 0.5 ? a() + u * std::sqrt(square)
                        : mode() - nearMode(u, square, rest - p * ((b() - mode()) / u));
  }
  double fromRight(double q, double rest) const {
    const double v = b() - mode();
    const double square = q * (width() / v);
    return square < 0.5 ? b() - v * std::sqrt(square)
                        : mode() + nearMode(v, square, rest - q * ((mode() - a()) / v));
  }
  // side (1 - sqrt(square)), gap = 1 - square being known without cancellation.
  static double nearMode(double side, double square, double gap) {
    return side * (std::fmax(0.0, gap) / (1.0 + std::sqrt(square)));
  }
  double spread() const {
    const double u = mode() - a();
    const double v = b() - mode();
    return u * u + u * v + v * v;
  }
};

namespace {

// The ends of largest likelihood for a mode at the value x[k] of sorted data, with the mean log
// density there.  An end coincides with the mode where that is the outermost value.
struct Ends {
  double a;
  double b;
  double value;
};

// In u = log(x[0] - a) and v = log(b - x[n - 1]).
Ends endsForMode(const Observations& data, std::size_t k) {
  const double mode = data.x[k];
  const double low = data.x.front();
  const double high = data.x.back();
  const bool leftEdge = mode == low;
  const bool rightEdge = mode == high;
  const auto likelihood = [&](const std::array<double, 2>& at) {
    Local<2> local;
    const double p = leftEdge ? 0.0 : std::exp(at[0]);   // low - a
    const double q = rightEdge ? 0.0 : std::exp(at[1]);  // b - high
    const double width = (high - low) + p + q;
    addUp(data, local, [&](double x, auto& gradient, auto& hessian) {
      const double first = p / width;
      const double second = q / width;
      gradient = {-first, -second};
      hessian = {first * first - first, first * second, second * second - second};
      double value = std::log(2.0 / width);
      if (x < mode) {  // log((x - low + p) / (mode - low + p))
        const double r = p / (x - low + p);
        const double s = p / (mode - low + p);
        gradient[0] += r - s;
        hessian[0] += (r - r * r) - (s - s * s);
        value += std::log(s / r);
      } else if (x > mode) {
        const double r = q / (high - x + q);
        const double s = q / (high - mode + q);
        gradient[1] += r - s;
        hessian[2] += (r - r * r) - (s - s * s);
        value += std::log(s / r);
      }
      return value;
    });
    if (leftEdge) {
      local.gradient[0] = local.hessian[1] = 0.0;
      local.hessian[0] = -1.0;
    }
    if (rightEdge) {
      local.gradient[1] = local.hessian[1] = 0.0;
      local.hessian[2] = -1.0;
    }
    return local;
  };
  const double start = std::log(0.2 * (high - low));
  const auto best = maximize<2>(Triangular::name, likelihood, {start, start});
  return {leftEdge ? low : low - std::exp(best[0]), rightEdge ? high : high + std::exp(best[1]),
          likelihood(best).value};
}

// The value at which the mode has the largest likelihood for these ends, by running sums of the
// logarithms of the distances from both.
std::size_t modeForEnds(const Observations& data, double a, double b) {
  const std::size_t n = data.x.size();
  Sum above;
  double weightAbove = 0.0;
  for (std::size_t i = 0; i < n; ++i) {
    if (data.x[i] < b) {
      above.addProduct(data.w[i], std::log(b - data.x[i]));
      weightAbove += data.w[i];
    }
  }
  Sum below;
  double weightBelow = 0.0;
  double best = -infinity;
  std::size_t where = 0;
  for (std::size_t k = 0; k < n; ++k) {
    const double left = data.x[k] - a;
    const double right = b - data.x[k];
    if (right > 0.0) {
      above.addProduct(-data.w[k], std::log(right));
      weightAbove -= data.w[k];
    }
    // What lies at the mode itself adds log 1 on either side.
    const double value = (left > 0.0 ? below.value() - weightBelow * std::log(left) : 0.0) +
                         (right > 0.0 ? above.value() - weightAbove * std::log(right) : 0.0);
    if (value > best) {
      best = value;
      where = k;
    }
    if (left > 0.0) {
      below.addProduct(data.w[k], std::log(left));
      weightBelow += data.w[k];
    }
  }
  return where;
}

}  // namespace

}  // namespace detail

Triangular::Triangular(const Parameters& parameters) : parameters_(parameters) {
  detail::requireFinite(name, "a", parameters.a);
  detail::requireFinite(name, "b", parameters.b);
  if (!(parameters.a < parameters.b) || std::isinf(parameters.b - parameters.a)) {
    const std::string allowed =
        "greater than a, " + number(parameters.a) + ", at a finite distance";
    detail::refuse(name, "b", allowed.c_str(), parameters.b);
  }
  if (!(parameters.mode >= parameters.a && parameters.mode <= parameters.b)) {
    detail::refuse(name, "mode", "in [a, b]", parameters.mode);
  }
}

// The best mode is one of the values (R. A. Oliver, A maximum likelihood oddity, 1972): mode and
// ends in turn, from several values.
Triangular Triangular::fit(Data x, const FitOptions& options) {
  detail::Observations data =
      detail::observe(name, x, options, {-detail::infinity, detail::infinity});
  data.sortByValue();
  if (!(data.x.front() < data.x.back())) {
    detail::refuseEqual(name, data.x.front());
  }
  Parameters best{};
  double highest = -detail::infinity;
  constexpr std::size_t starts = 8;
  const std::size_t last = data.x.size() - 1;
  for (std::size_t i = 0; i <= starts; ++i) {
    std::size_t k = last * i / starts;
    for (int turn = 0; turn < 50; ++turn) {
      const detail::Ends ends = detail::endsForMode(data, k);
      if (ends.value > highest) {
        highest = ends.value;
        best = {ends.a, ends.b, data.x[k]};
      }
      const std::size_t next = detail::modeForEnds(data, ends.a, ends.b);
      if (data.x[next] == data.x[k]) {
        break;
      }
      k = next;
    }
  }
  return Triangular(best);
}

VEXEL_CONTINUOUS_LAW(Triangular)

}  // namespace vexel
