// Densities and quantiles of the beta law, and Fisher's F.
//
// Quantiles start from the normal law of a cube root's kind or from the leading term of the nearer
// end, and go on in steps of third order in the logarithm of the smaller of x and 1 - x.
// K. L. Majumder and G. P. Bhattacharjee, Algorithm AS 64 (1973); G. W. Cran, K. J. Martin and G.
// E. Thomas, Algorithm AS 109, Applied Statistics 26 (1977), for the start.

#include <algorithm>
#include <limits>

#include "numerics/laws/beta_law.hpp"
#include "numerics/special/inversion.hpp"
#include "numerics/special/normal_functions.hpp"

namespace nag2 {

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double mostOfOne = 1.0 - 1.1102230246251565e-16;
constexpr double infinity = std::numeric_limits<double>::infinity();
// From here on F equals its limit, times the other degrees of freedom.
constexpr double hugeFreedom = 1e17;

bool asIfInfinite(double nu, double other) { return nu >= hugeFreedom * std::max(1.0, other); }
Tail other(Tail which) { return which == Tail::lower ? Tail::upper : Tail::lower; }

// a / b x, whose quotient may be no number of all digits.
double timesQuotient(double a, double b, double x) {
  const double quotient = a / b;
  return std::isnormal(quotient) || std::isinf(a) || std::isinf(b) ? quotient * x
         : x > 1.0                                                 ? a * x / b
                                                                   : a * (x / b);
}

double logOfQuotient(double x, double y) {
  const double quotient = x / y;
  return std::isnormal(quotient) ? std::log(quotient) : std::log(x) - std::log(y);
}

}  // namespace

double BetaLaw::density(UnitPair at) const {
  if (std::isnan(at.x) || std::isnan(at.y)) {
    return nan;
  }
  if (at.x <= 0.0 || at.y <= 0.0) {
    const double own = at.x <= 0.0 ? a_ : b_;
    if (at.x < 0.0 || at.y < 0.0 || own > 1.0) {
      return 0.0;
    }
    if (own < 1.0) {
      return infinity;
    }
    return at.x <= 0.0 ? b_ : a_;
  }
  const double w = weight(at);
  const double value = w * (a_ / at.x) * (b_ / n_) / at.y;
  if (w > 1e-280 && std::isfinite(value)) {
    return value;
  }
  // Parameters lower by one, where x or y is not multiplied in for nothing.
  if (at.x < at.y && a_ >= 1.0) {
    return BetaLaw(a_ - 1.0, b_).weight(at) * (b_ / at.y);
  }
  if (at.x >= at.y && b_ >= 1.0) {
    return BetaLaw(a_, b_ - 1.0).weight(at) * (a_ / at.x);
  }
  return std::exp(logDensity(at));
}

double BetaLaw::logDensity(UnitPair at) const {
  if (!(at.x > 0.0 && at.y > 0.0)) {
    return std::log(density(at));
  }
  if (a_ == 1.0 || b_ == 1.0) {
    const double logX = at.x > 0.5 ? std::log1p(-at.y) : std::log(at.x);
    const double logY = at.x < 0.5 ? std::log1p(-at.x) : std::log(at.y);
    return (a_ - 1.0) * logX + (b_ - 1.0) * logY + std::log(a_) + std::log(b_);
  }
  return logWeight(at) + logOfQuotient(a_, at.x) + logOfQuotient(b_, n_) -
         (at.y > 0.5 ? std::log1p(-at.x) : std::log(at.y));
}

// A first value of x, below 1/2 for the side that the caller takes.
double BetaLaw::start(double p, Tail which) const {
  const bool lower = which == Tail::lower;
  if (a_ >= 1.0 && b_ >= 1.0) {
    const double z = lower ? -normalInverse(p) : normalInverse(p);
    const double ra = 1.0 / (2.0 * a_ - 1.0);
    const double rb = 1.0 / (2.0 * b_ - 1.0);
    const double h = 2.0 / (ra + rb);
    const double mean = (z * z - 3.0) / 6.0;
    if (h + mean > 0.0) {
      const double w =
          z * std::sqrt(h + mean) / h - (rb - ra) * (mean + 5.0 / 6.0 - 2.0 / (3.0 * h));
      return a_ / (a_ + b_ * std::exp(2.0 * w));
    }
  }
  // The law's two ends, as if each had its own power.
  const double left = std::exp(a_ * std::log(a_ / n_)) / a_;
  const double right = std::exp(b_ * std::log(b_ / n_)) / b_;
  const double all = left + right;
  const double lowerP = lower ? p : 1.0 - p;
  const double upperP = lower ? 1.0 - p : p;
  if (lowerP < left / all) {
    return std::min(std::pow(a_ * all * lowerP, 1.0 / a_), 0.99);
  }
  return std::max(1.0 - std::pow(b_ * all * upperP, 1.0 / b_), 0.01);
}

UnitPair BetaLaw::roughQuantile(double p, Tail which) const {
  const double x = start(p, which);
  return {x, x < 0.5 ? 1.0 - x : std::max(mirrored().start(p, other(which)), 1e-17)};
}

UnitPair BetaLaw::quantile(double p, Tail which) const {
  if (!(p > 0.0) || p >= 1.0) {
    if (std::isnan(p)) {
      return {nan, nan};
    }
    return (p <= 0.0) == (which == Tail::lower) ? UnitPair{0.0, 1.0} : UnitPair{1.0, 0.0};
  }
  if (std::isinf(a_) || std::isinf(b_)) {
    return !std::isinf(a_)  ? UnitPair{0.0, 1.0}
           : std::isinf(b_) ? UnitPair{0.5, 0.5}
                            : UnitPair{1.0, 0.0};
  }
  if (std::min(a_, b_) > 1e38) {  // all quantiles are the mean
    return {1.0 / (1.0 + b_ / a_), 1.0 / (1.0 + a_ / b_)};
  }
  const double x = start(p, which);
  const bool right = x > 0.5;
  const BetaLaw turned = mirrored();
  // In the smaller of x and 1 - x; the start may be on the wrong side.
  double root = x > 0.9999 ? turned.quantileBelow(p, other(which), turned.start(p, other(which)))
                : right    ? turned.quantileBelow(p, other(which), 1.0 - x)
                           : quantileBelow(p, which, x);
  if (root < 0.9) {
    return right ? UnitPair{1.0 - root, root} : UnitPair{root, 1.0 - root};
  }
  root = right ? quantileBelow(p, which, 1.0 - root)
               : turned.quantileBelow(p, other(which), 1.0 - root);
  return right ? UnitPair{root, 1.0 - root} : UnitPair{1.0 - root, root};
}

// The point as a plain number, from a start.
double BetaLaw::quantileBelow(double p, Tail which, double from) const {
  if (p > 0.5) {
    p = 1.0 - p;
    which = other(which);
  }
  const double sign = which == Tail::lower ? 1.0 : -1.0;
  const bool subnormal = p < std::numeric_limits<double>::min();  // tails of few digits
  const auto slopeAt = [&](double x) {
    const UnitPair point{x, 1.0 - x};
    if (subnormal) {
      const double log = logTail(point, which);
      const double w = std::exp(logWeight(point) - log) * (a_ / n_) * b_ / point.y;
      return TailSlope{log - std::log(p), sign * w, a_ - (b_ - 1.0) * (x / point.y)};
    }
    const double t = tail(point, which);
    const double w = weight(point) * (a_ / n_) * b_ / point.y;
    return TailSlope{logQuotient(t, p), sign * w / t, a_ - (b_ - 1.0) * (x / point.y)};
  };
  return invertTail(slopeAt, which == Tail::lower, std::clamp(from, 1e-300, mostOfOne), 0.0,
                    mostOfOne);
}

FLaw::FLaw(double nu1, double nu2) : nu1_(nu1), nu2_(nu2), beta_(0.5 * nu1, 0.5 * nu2) {}

UnitPair FLaw::point(double x, double df1, double df2) {
  const double ratio = timesQuotient(df1, df2, x);
  if (ratio <= 1.0) {
    const double y = 1.0 / (1.0 + ratio);
    return {ratio * y, y};
  }
  const double inverse =
      std::isnormal(df2 / df1) ? df2 / df1 / x : timesQuotient(df2, df1, 1.0 / x);
  const double y = 1.0 / (1.0 + inverse);
  return {y, inverse * y};
}

// The gamma law that is the limit: of X in units of Y, or of Y in units of X where X is the
// constant one; at u = 1 / x then.
struct FLaw::Limit {
  GammaLaw law;
  double least;  // degrees of freedom of the variable, and of the constant
  double most;
  bool mirrored;

  static bool serves(double nu1, double nu2) {
    return asIfInfinite(nu2, nu1) || asIfInfinite(nu1, nu2);
  }
  Limit(double nu1, double nu2)
      : law(0.5 * std::min(nu1, nu2)),
        least(std::min(nu1, nu2)),
        most(std::max(nu1, nu2)),
        mirrored(nu1 > nu2) {}

  Tail side(Tail which) const { return mirrored ? other(which) : which; }
  // least / most u.
  double ratio(double x) const { return mirrored ? least / most / x : least / most * x; }
  double reduced(double x) const {
    const double r = ratio(x);
    return r > 1e-10 ? 0.5 * most * std::log1p(r) : mirrored ? 0.5 * least / x : 0.5 * least * x;
  }
  // Of the density of x: log of the derivative of reduced.
  double logSlope(double x) const {
    return std::log(0.5 * least) - std::log1p(ratio(x)) - (mirrored ? 2.0 * std::log(x) : 0.0);
  }
  double point(double t) const {
    const double r = t / (0.5 * most);
    const double u = r > 1e-10 ? std::expm1(r) * (most / least) : t / (0.5 * least);
    return mirrored ? 1.0 / u : u;
  }
};

// Where df1 x / df2 or its inverse is so small that a tail is a power of it: over its value at
// least, which the beta law knows.
struct FLaw::Edge {
  static constexpr double least = 1e-270;

  static bool serves(double x, double nu1, double nu2) {
    const double ratio = timesQuotient(nu1, nu2, x);
    return !(ratio > least && ratio < 1.0 / least);
  }
  Edge(const FLaw& f, bool upperEnd)
      : upper(upperEnd),
        power(0.5 * (upper ? f.nu2_ : f.nu1_)),
        outside(f.beta_.tail(end(), upper ? Tail::upper : Tail::lower)),
        logOutside(f.beta_.logTail(end(), upper ? Tail::upper : Tail::lower)),
        above(upper ? f.nu1_ : f.nu2_),
        below(upper ? f.nu2_ : f.nu1_),
        ratio(above / below) {}

  UnitPair end() const { return upper ? UnitPair{1.0, least} : UnitPair{least, 1.0}; }
  // In units of the place where the tail is outside, at most 1 or little above.
  double place(double x) const {
    return std::isnormal(ratio) ? (upper ? 1.0 / (x * least) : x / least) / ratio : 0.0;
  }
  double logPlace(double x) const {
    const double u = place(x);
    return u > 1e-280 && std::isfinite(u) ? std::log(u)
                                          : (upper ? -std::log(x) : std::log(x)) -
                                                logOfQuotient(above, below) - std::log(least);
  }
  double logTail(double x) const { return logOutside + power * logPlace(x); }
  double tail(double x) const {
    const double u = place(x);
    return u > 1e-280 && std::isfinite(u) ? outside * std::pow(u, power) : std::exp(logTail(x));
  }
  // From the logarithm of p over outside; over is that quotient.
  double point(double over, double logOver) const {
    const bool precise = over > 1e-280 && over < 0.5;
    const double u = precise ? std::pow(over, 1.0 / power) : std::exp(logOver / power);
    const double x = !std::isnormal(ratio) ? timesQuotient(above, below, u * least)
                     : ratio > 1.0         ? u * (ratio * least)
                                           : u * ratio * least;
    return upper ? 1.0 / x : x;
  }

  bool upper;
  double power;
  double outside;
  double logOutside;
  double above;
  double below;
  double ratio;  // above / below
};

double FLaw::tail(double x, Tail which) const {
  if (std::isnan(x)) {
    return nan;
  }
  const bool lower = which == Tail::lower;
  if (x <= 0.0 || std::isinf(x)) {
    return (x > 0.0) == lower ? 1.0 : 0.0;
  }
  if (std::isinf(nu1_) && std::isinf(nu2_)) {  // all mass at 1
    return (x >= 1.0) == lower ? 1.0 : 0.0;
  }
  if (Limit::serves(nu1_, nu2_)) {
    const Limit limit(nu1_, nu2_);
    return limit.law.tail(limit.reduced(x), limit.side(which));
  }
  if (Edge::serves(x, nu1_, nu2_)) {
    const Edge edge(*this, timesQuotient(nu1_, nu2_, x) > 1.0);
    const double tail = edge.tail(x);
    return edge.upper != lower ? tail : tail < 0.5 ? 1.0 - tail : -std::expm1(edge.logTail(x));
  }
  return beta_.tail(point(x, nu1_, nu2_), which);
}

bool FLaw::partsAt(double x, BetaLaw::Parts& parts) const {
  return x > 0.0 && std::isfinite(x) && !Limit::serves(nu1_, nu2_) &&
         !Edge::serves(x, nu1_, nu2_) && beta_.partsAt(point(x, nu1_, nu2_), parts);
}

double FLaw::logTail(double x, Tail which) const {
  if (!(x > 0.0) || std::isinf(x) || (std::isinf(nu1_) && std::isinf(nu2_))) {
    return std::log(tail(x, which));
  }
  if (Limit::serves(nu1_, nu2_)) {
    const Limit limit(nu1_, nu2_);
    return limit.law.logTail(limit.reduced(x), limit.side(which));
  }
  if (Edge::serves(x, nu1_, nu2_)) {
    const Edge edge(*this, timesQuotient(nu1_, nu2_, x) > 1.0);
    if (edge.upper == (which == Tail::upper)) {
      return edge.logTail(x);
    }
    const double tail = edge.tail(x);
    return tail < 0.5 ? std::log1p(-tail) : log1mexp(edge.logTail(x));
  }
  return beta_.logTail(point(x, nu1_, nu2_), which);
}

double FLaw::density(double x) const {
  if (std::isnan(x)) {
    return nan;
  }
  if (x < 0.0 || std::isinf(x)) {
    return 0.0;
  }
  if (x == 0.0) {
    return nu1_ < 2.0 ? infinity : nu1_ == 2.0 ? 1.0 : 0.0;
  }
  if (std::isinf(nu1_) && std::isinf(nu2_)) {
    return x == 1.0 ? infinity : 0.0;
  }
  if (Limit::serves(nu1_, nu2_)) {
    const Limit limit(nu1_, nu2_);
    const double t = limit.reduced(x);
    const double slope = 0.5 * limit.least / (1.0 + limit.ratio(x)) / (limit.mirrored ? x : 1.0);
    const double at = limit.law.density(t);
    const double value = at * slope / (limit.mirrored ? x : 1.0);
    return slope > 1e-290 && at > 1e-290 && std::isfinite(value) ? value : std::exp(logDensity(x));
  }
  if (Edge::serves(x, nu1_, nu2_)) {
    const Edge edge(*this, timesQuotient(nu1_, nu2_, x) > 1.0);
    const double tail = edge.tail(x);
    if (tail > 1e-290 && tail * edge.power > 1e-290) {
      return tail * edge.power / x;
    }
    const double slope = edge.power / x;
    return tail > 1e-290 && std::isnormal(slope) && std::isnormal(tail * slope)
               ? tail * slope
               : std::exp(logDensity(x));
  }
  // x times the density is that of the beta law times x y.
  const double w = beta_.weight(point(x, nu1_, nu2_));
  const double value = w * (nu1_ / (nu1_ + nu2_)) * (0.5 * nu2_) / x;
  return w > 1e-280 && std::isfinite(value) && std::isnormal(nu1_ / (nu1_ + nu2_))
             ? value
             : std::exp(logDensity(x));
}

double FLaw::logDensity(double x) const {
  if (!(x > 0.0) || std::isinf(x) || (std::isinf(nu1_) && std::isinf(nu2_))) {
    return std::log(density(x));
  }
  if (Limit::serves(nu1_, nu2_)) {
    const Limit limit(nu1_, nu2_);
    return limit.law.logDensity(limit.reduced(x)) + limit.logSlope(x);
  }
  if (Edge::serves(x, nu1_, nu2_)) {
    const Edge edge(*this, timesQuotient(nu1_, nu2_, x) > 1.0);
    const double slope =
        edge.power < 1e-200 ? logOfQuotient(edge.power, x) : std::log(edge.power) - std::log(x);
    return edge.logTail(x) + slope;
  }
  if (nu1_ == 2.0) {
    return -(0.5 * nu2_ + 1.0) * std::log1p(2.0 / nu2_ * x);
  }
  const double ratio = nu2_ / nu1_;
  return beta_.logWeight(point(x, nu1_, nu2_)) -
         (std::isfinite(ratio) ? std::log1p(ratio) : logOfQuotient(nu2_, nu1_)) +
         logOfQuotient(0.5 * nu2_, x);
}

// NaN where the quantile is not at either end.
double FLaw::edgeQuantile(double p, Tail which) const {
  for (const bool upper : {false, true}) {
    const double power = 0.5 * (upper ? nu2_ : nu1_);
    if (power > 1.25) {
      continue;  // the tail there is below all doubles
    }
    const bool own = upper == (which == Tail::upper);
    const double rest = 0.5 * (upper ? nu1_ : nu2_);
    if (power > 0.12 && rest < 1e4 && (!own || p > 1e-20)) {
      continue;  // the tail there is below 1e-24: least^power (power + rest)^power, about
    }
    const Edge edge(*this, upper);
    if (own ? p < edge.outside : p > -std::expm1(edge.logOutside)) {
      const double log = own ? std::log(p) : std::log1p(-p);
      return edge.point(own ? p / edge.outside : (1.0 - p) / edge.outside, log - edge.logOutside);
    }
  }
  return nan;
}

double FLaw::quantile(double p, Tail which) const {
  if (std::isnan(p)) {
    return nan;
  }
  if (p <= 0.0 || p >= 1.0) {
    return (p <= 0.0) == (which == Tail::lower) ? 0.0 : infinity;
  }
  if (std::isinf(nu1_) && std::isinf(nu2_)) {
    return 1.0;
  }
  if (Limit::serves(nu1_, nu2_)) {
    const Limit limit(nu1_, nu2_);
    return limit.point(limit.law.quantile(p, limit.side(which)));
  }
  if (const double found = edgeQuantile(p, which); !std::isnan(found)) {
    return found;
  }
  const UnitPair at = beta_.quantile(p, which);
  const double ratio = nu2_ / nu1_;
  if (!std::isnormal(ratio)) {
    return timesQuotient(nu2_, nu1_, at.x / at.y);
  }
  return ratio > 1.0 && at.x < at.y ? ratio * at.x / at.y : ratio * (at.x / at.y);
}

}  // namespace nag2
