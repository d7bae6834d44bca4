#include "numerics/laws/noncentral_laws.hpp"

#include <algorithm>
#include <limits>

#include "kernels/lookout.hpp"
#include "numerics/laws/mixture_families.hpp"
#include "numerics/laws/noncentral_chi_square_saddle.hpp"
#include "numerics/laws/noncentral_mixture.hpp"
#include "numerics/special/inversion.hpp"
#include "numerics/special/normal_functions.hpp"

namespace nag2 {

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double mostOfOne = 1.0 - 1.1102230246251565e-16;
constexpr double infinity = std::numeric_limits<double>::infinity();

// The noncentrality is nothing against this share of the central parameter.
constexpr double centralFrom = 1e16;

// Of y, where the F law's upper tail is a power of it.
constexpr double leastShare = 1e-270;

Tail other(Tail which) { return which == Tail::lower ? Tail::upper : Tail::lower; }

// The steps of an inversion, polling.  Where the last one is far from the probability the quantile
// is no number, unless it is the low end.
class Steps {
 public:
  double gap(double tail, double p) {
    lookout_.done(stepCost);
    gap_ = logQuotient(tail, p);
    return gap_;
  }
  double root(double found) const {
    return found > 1e-300 && !(std::fabs(gap_) < 0.01) ? nan : found;
  }

 private:
  static constexpr int stepCost = 1000000;
  vexel::kernels::Lookout lookout_;
  double gap_ = 0.0;
};

// A normal start for the quantile of the chi-square law with df degrees of freedom.
double chiSquareStart(double df, double p, Tail which) {
  const double z = which == Tail::lower ? normalInverse(p) : -normalInverse(p);
  const double c = 2.0 / (9.0 * df);
  const double root = 1.0 - c + z * std::sqrt(c);
  return root > 0.2 ? df * root * root * root : 0.0;
}

}  // namespace

bool NoncentralChiSquareLaw::central() const { return nc_ == 0.0 || df_ > centralFrom * nc_; }

double NoncentralChiSquareLaw::tail(double x, Tail which) const {
  const double y = 0.5 * x;
  if (central() || !(x > 0.0) || std::isinf(x)) {
    return GammaLaw(0.5 * df_).tail(y, which);
  }
  if (nc_ >= saddleFrom) {
    return NoncentralChiSquareSaddle(df_, nc_).tail(x, which);
  }
  return std::min(mixtureTail(GammaFamily(0.5 * df_, y), 0.5 * nc_, which), 1.0);
}

double NoncentralChiSquareLaw::logTail(double x, Tail which) const {
  const double y = 0.5 * x;
  if (central() || !(x > 0.0) || std::isinf(x)) {
    return GammaLaw(0.5 * df_).logTail(y, which);
  }
  if (nc_ >= saddleFrom) {
    return NoncentralChiSquareSaddle(df_, nc_).logTail(x, which);
  }
  return std::min(logMixtureTail(GammaFamily(0.5 * df_, y), 0.5 * nc_, which), 0.0);
}

double NoncentralChiSquareLaw::density(double x) const {
  const double y = 0.5 * x;
  if (central()) {
    return 0.5 * GammaLaw(0.5 * df_).density(y);
  }
  if (!(x > 0.0) || std::isinf(x)) {
    return std::exp(-0.5 * nc_) * 0.5 * GammaLaw(0.5 * df_).density(y);
  }
  if (nc_ >= saddleFrom) {
    return std::exp(NoncentralChiSquareSaddle(df_, nc_).logDensity(x));
  }
  const GammaFamily family(0.5 * df_, y);
  const MixtureSums sums = mixtureSums(family, 0.5 * nc_, shortSide(family, 0.5 * nc_), false);
  return inUnits(sums.density, sums) / x;
}

double NoncentralChiSquareLaw::logDensity(double x) const {
  const double y = 0.5 * x;
  if (central() || !(x > 0.0) || std::isinf(x)) {
    const double lost = central() ? 0.0 : 0.5 * nc_;
    return GammaLaw(0.5 * df_).logDensity(y) - lost - 0.69314718055994530942;
  }
  if (nc_ >= saddleFrom) {
    return NoncentralChiSquareSaddle(df_, nc_).logDensity(x);
  }
  const GammaFamily family(0.5 * df_, y);
  const MixtureSums sums = mixtureSums(family, 0.5 * nc_, shortSide(family, 0.5 * nc_), true);
  return logInUnits(sums.density, sums) - std::log(x);
}

// P. B. Patnaik, The non-central chi-square and F distributions and their applications, Biometrika
// 36 (1949), for the start.
double NoncentralChiSquareLaw::quantile(double p, Tail which) const {
  if (central() || !(p > 0.0) || p >= 1.0) {
    return 2.0 * GammaLaw(0.5 * df_).quantile(p, which);
  }
  if (nc_ >= saddleFrom) {
    return NoncentralChiSquareSaddle(df_, nc_).quantile(p, which);
  }
  const double scale = (df_ + 2.0 * nc_) / (df_ + nc_);
  const double freedom = (df_ + nc_) / scale;
  double start = scale * chiSquareStart(freedom, p, which);
  if (!(start > 0.0)) {
    // The first term of the mixture, the leading term of its tail.
    const double lowerP = which == Tail::lower ? p : 1.0 - p;
    const double a = 0.5 * df_;
    start = 2.0 * GammaLaw(a).quantile(std::min(0.5, lowerP * std::exp(std::min(0.5 * nc_, 700.0))),
                                       Tail::lower);
    start = std::max(std::min(start, df_ + nc_), 1e-300);
  }
  if (p > 0.5) {
    p = 1.0 - p;
    which = other(which);
  }
  const double sign = which == Tail::lower ? 1.0 : -1.0;
  Steps steps;
  const double root = invertTail(
      [&](double x) {
        const GammaFamily family(0.5 * df_, 0.5 * x);
        const MixturePoint at = mixturePoint(family, 0.5 * nc_, which);
        return TailSlope{steps.gap(at.tail, p), sign * at.density / at.tail,
                         family.bend(at.meanIndex)};
      },
      which == Tail::lower, start, 0.0, 1e15 * (df_ + nc_));
  return steps.root(root);
}

// A central law whose odds are scaled, of the same mean and variance of the numerator: Patnaik's.
struct NoncentralBetaLaw::Scaled {
  double scale;
  BetaLaw law;
  Scaled(double a, double b, double mean)
      : scale((a + 2.0 * mean) / (a + mean)), law((a + mean) / scale, b) {}
  // Where the central law has this tail.
  UnitPair unscaled(UnitPair at) const {
    const double total = at.x + scale * at.y;
    return {at.x / total, scale * at.y / total};
  }
  UnitPair scaled(UnitPair at) const {
    const double total = scale * at.x + at.y;
    return {scale * at.x / total, at.y / total};
  }
};

bool NoncentralBetaLaw::nearlyCentral() const {
  return a_ > centralFrom * nc_ || a_ + 0.5 * nc_ > 0.5 * widest;
}

double NoncentralBetaLaw::tail(UnitPair at, Tail which) const {
  if (nc_ == 0.0 || !(at.x > 0.0 && at.y > 0.0)) {
    return BetaLaw(a_, b_).tail(at, which);
  }
  if (nearlyCentral()) {
    const Scaled central(a_, b_, 0.5 * nc_);
    return central.law.tail(central.unscaled(at), which);
  }
  return std::min(mixtureTail(BetaFamily(a_, b_, at), 0.5 * nc_, which), 1.0);
}

double NoncentralBetaLaw::logTail(UnitPair at, Tail which) const {
  if (nc_ == 0.0 || !(at.x > 0.0 && at.y > 0.0)) {
    return BetaLaw(a_, b_).logTail(at, which);
  }
  if (nearlyCentral()) {
    if (const double deep = deepLogTail(at, which); !std::isnan(deep)) {
      return deep;
    }
    const Scaled central(a_, b_, 0.5 * nc_);
    return central.law.logTail(central.unscaled(at), which);
  }
  return std::min(logMixtureTail(BetaFamily(a_, b_, at), 0.5 * nc_, which), 0.0);
}

double NoncentralBetaLaw::deepLogTail(UnitPair at, Tail which) const {
  const BetaFamily family(a_, b_, at);
  const double peak = std::floor(family.peak(0.5 * nc_));
  MixtureSums sums{};
  return peak > wideFrom && deepSums(family, 0.5 * nc_, which, peak, &sums)
             ? logInUnits(sums.tail, sums)
             : nan;
}

double NoncentralBetaLaw::logScaledDensity(UnitPair at) const {
  const BetaFamily family(a_, b_, at);
  if (a_ > centralFrom * nc_) {
    return BetaLaw(a_, b_).logWeight(at) + std::log(a_ / (a_ + b_) * b_);
  }
  if (const double peak = std::floor(family.peak(0.5 * nc_)); peak > 1e13) {
    return PowerPiece(peak).logAt(0.5 * nc_, 0.5 * nc_ - peak) + family.logDecrement(peak) +
           std::log(a_ + peak) - 0.5 * std::log(family.curve(peak)) + logRootTwoPi;
  }
  const MixtureSums sums = mixtureSums(family, 0.5 * nc_, shortSide(family, 0.5 * nc_), true);
  return logInUnits(sums.density, sums);
}

// At 1 the limit from within is that of the whole sum, of mean index nc / 2.
double NoncentralBetaLaw::density(UnitPair at) const {
  if (nc_ == 0.0 || !(at.x > 0.0 && at.y > 0.0)) {
    const double central = BetaLaw(a_, b_).density(at);
    return nc_ == 0.0 || std::isnan(central) ? central
           : at.y == 0.0 && b_ == 1.0        ? a_ + 0.5 * nc_
           : at.x == 0.0                     ? std::exp(-0.5 * nc_) * central
                                             : central;
  }
  const BetaFamily family(a_, b_, at);
  if (nearlyCentral() || family.peak(0.5 * nc_) > 1e13) {
    return std::exp(logScaledDensity(at)) / at.x / at.y;
  }
  const MixtureSums sums = mixtureSums(family, 0.5 * nc_, shortSide(family, 0.5 * nc_), false);
  return inUnits(sums.density, sums) / at.x / at.y;
}

double NoncentralBetaLaw::logDensity(UnitPair at) const {
  if (nc_ == 0.0 || !(at.x > 0.0 && at.y > 0.0)) {
    return nc_ == 0.0 ? BetaLaw(a_, b_).logDensity(at) : std::log(density(at));
  }
  return logScaledDensity(at) - std::log(at.x) - (at.x < 0.5 ? std::log1p(-at.x) : std::log(at.y));
}

UnitPair NoncentralBetaLaw::quantile(double p, Tail which) const {
  const double mean = 0.5 * nc_;
  if (nc_ == 0.0 || !(p > 0.0) || p >= 1.0) {
    return BetaLaw(a_, b_).quantile(p, which);
  }
  const Scaled central(a_, b_, mean);
  if (nearlyCentral()) {
    return central.scaled(central.law.quantile(p, which));
  }
  double x = central.scaled(central.law.roughQuantile(p, which)).x;
  double y = 1.0 - x;
  if (mean > 1e6 && mean > 16.0 * b_) {  // the numerator hardly varies
    const double g = GammaLaw(b_).quantile(p, other(which));
    x = (a_ + mean) / (a_ + mean + g);
    y = g / (a_ + mean + g);
  }
  if (p > 0.5) {
    p = 1.0 - p;
    which = other(which);
  }
  // In the smaller of x and 1 - x; the start may be on the wrong side.
  Steps steps;
  const auto solve = [&](double from, bool mirrored) {
    const double sign = (which == Tail::lower) != mirrored ? 1.0 : -1.0;
    const auto at = [&](double u) {
      const UnitPair point = mirrored ? UnitPair{1.0 - u, u} : UnitPair{u, 1.0 - u};
      const MixturePoint value = mixturePoint(BetaFamily(a_, b_, point), mean, which);
      const double power = a_ + value.meanIndex;
      const double bend = mirrored ? b_ - (power - 1.0) * (point.y / point.x)
                                   : power - (b_ - 1.0) * (point.x / point.y);
      return TailSlope{steps.gap(value.tail, p), sign * value.density / (1.0 - u) / value.tail,
                       bend};
    };
    return steps.root(invertTail(at, (which == Tail::lower) != mirrored, from, 0.0, mostOfOne));
  };
  const bool right = x > 0.5;
  double root = solve(std::clamp(right ? y : x, 1e-300, mostOfOne), right);
  if (root < 0.9) {
    return right ? UnitPair{1.0 - root, root} : UnitPair{root, 1.0 - root};
  }
  root = solve(std::isnan(root) ? 0.5 : 1.0 - root, !right);
  return right ? UnitPair{root, 1.0 - root} : UnitPair{1.0 - root, root};
}

NoncentralFLaw::NoncentralFLaw(double df1, double df2, double nc)
    : df1_(df1), df2_(df2), beta_(0.5 * df1, 0.5 * df2, nc), limit_(df1, nc) {}

bool NoncentralFLaw::central() const { return beta_.nc_ == 0.0 || df1_ > centralFrom * beta_.nc_; }

// The denominator is, however deep the tail.
bool NoncentralFLaw::constant() const {
  constexpr double from = 1e34;
  return df2_ > from * std::max({1.0, df1_, beta_.nc_});
}

double NoncentralFLaw::reduced(double x) const {
  const double ratio = df1_ / df2_ * x;
  return ratio > 1e-10 ? df2_ * std::log1p(ratio) : df1_ * x;
}

// Where df2 / (df1 x) is so small that the upper tail is a power of it.
bool NoncentralFLaw::farOut(double x) const { return !(df1_ / df2_ * x < 1.0 / leastShare); }

double NoncentralFLaw::logFarTail(double x) const {
  const double place = 1.0 / (x * leastShare) / (df1_ / df2_);
  const double log = std::isnormal(place)
                         ? std::log(place)
                         : std::log(df2_) - std::log(df1_) - std::log(x) - std::log(leastShare);
  return beta_.logTail({1.0, leastShare}, Tail::upper) + 0.5 * df2_ * log;
}

double NoncentralFLaw::tail(double x, Tail which) const {
  if (!(x > 0.0) || std::isinf(x)) {
    return std::isnan(x) ? nan : (x > 0.0) == (which == Tail::lower) ? 1.0 : 0.0;
  }
  if (central()) {
    return FLaw(df1_, df2_).tail(x, which);
  }
  if (!constant() && farOut(x)) {
    const double log = logFarTail(x);
    return which == Tail::upper ? std::exp(log) : -std::expm1(log);
  }
  return constant() ? limit_.tail(reduced(x), which)
                    : beta_.tail(FLaw::point(x, df1_, df2_), which);
}

double NoncentralFLaw::logTail(double x, Tail which) const {
  if (!(x > 0.0) || std::isinf(x)) {
    return std::log(tail(x, which));
  }
  if (central()) {
    return FLaw(df1_, df2_).logTail(x, which);
  }
  if (!constant() && farOut(x)) {
    return which == Tail::upper ? logFarTail(x) : log1mexp(logFarTail(x));
  }
  return constant() ? limit_.logTail(reduced(x), which)
                    : beta_.logTail(FLaw::point(x, df1_, df2_), which);
}

double NoncentralFLaw::density(double x) const {
  if (!(x > 0.0) || std::isinf(x)) {
    return std::isnan(x) ? nan
           : x == 0.0    ? FLaw(df1_, df2_).density(0.0) * std::exp(-0.5 * beta_.nc_)
                         : 0.0;
  }
  if (central()) {
    return FLaw(df1_, df2_).density(x);
  }
  if (constant()) {
    const double at = limit_.density(reduced(x));
    const double slope = df1_ / (1.0 + df1_ / df2_ * x);
    return at > 1e-290 && slope > 1e-290 ? at * slope : std::exp(logDensity(x));
  }
  if (farOut(x)) {
    return std::exp(logDensity(x));
  }
  const UnitPair at = FLaw::point(x, df1_, df2_);
  const double value = beta_.density(at) * at.x * at.y / x;
  return value > 1e-280 && std::isfinite(value) ? value : std::exp(logDensity(x));
}

double NoncentralFLaw::logDensity(double x) const {
  if (!(x > 0.0) || std::isinf(x)) {
    return std::log(density(x));
  }
  if (central()) {
    return FLaw(df1_, df2_).logDensity(x);
  }
  if (constant()) {
    return std::log(df1_) - std::log1p(df1_ / df2_ * x) + limit_.logDensity(reduced(x));
  }
  if (farOut(x)) {
    return logFarTail(x) + std::log(0.5 * df2_) - std::log(x);
  }
  const UnitPair at = FLaw::point(x, df1_, df2_);
  return beta_.logScaledDensity(at) - std::log(x);
}

double NoncentralFLaw::quantile(double p, Tail which) const {
  if (std::isnan(p) || p <= 0.0 || p >= 1.0) {
    return std::isnan(p) ? p : (p <= 0.0) == (which == Tail::lower) ? 0.0 : infinity;
  }
  if (central()) {
    return FLaw(df1_, df2_).quantile(p, which);
  }
  if (constant()) {
    const double t = limit_.quantile(p, which);
    return t / df2_ > 1e-10 ? std::expm1(t / df2_) * (df2_ / df1_) : t / df1_;
  }
  const double outside = df2_ > 2.5 ? 0.0 : beta_.tail({1.0, leastShare}, Tail::upper);
  if (which == Tail::upper ? p < outside : 1.0 - p < outside) {
    const double log = which == Tail::upper ? std::log(p) : std::log1p(-p);
    const double place =
        std::exp((log - beta_.logTail({1.0, leastShare}, Tail::upper)) / (0.5 * df2_));
    return df2_ / df1_ / leastShare / place;
  }
  const UnitPair at = beta_.quantile(p, which);
  const double ratio = df2_ / df1_;
  return ratio > 1.0 && at.x < at.y ? ratio * at.x / at.y : ratio * (at.x / at.y);
}

}  // namespace nag2
