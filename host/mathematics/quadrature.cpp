// Quadrature with tanh-sinh nodes (Takahasi and Mori 1974, Double exponential formulas for
// numerical integration), Boost's, in numbers of more than twice the digits asked for: so many are
// needed next to an end where the integrand has a singularity, because the distance from the end is
// what is left of a difference.  Intervals on which the values of two successive refinements differ
// too much are halved.

#include "mathematics/quadrature.hpp"

#include <algorithm>
#include <boost/math/quadrature/tanh_sinh.hpp>
#include <boost/multiprecision/mpfr.hpp>
#include <cmath>
#include <stdexcept>

#include "mathematics/evaluation.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"

namespace vexel {

namespace {

using boost::multiprecision::et_off;
using boost::multiprecision::mpfr_float_backend;
using Real = boost::multiprecision::number<mpfr_float_backend<0>, et_off>;
using Rule = boost::math::quadrature::tanh_sinh<Real>;

constexpr int kMostDigits = 300;
constexpr std::int64_t kMostEvaluations = 150'000;
constexpr int kMostHalvings = 80;

// Sets the precision of new numbers for as long as it lives.
class PrecisionScope {
 public:
  explicit PrecisionScope(int digits) : saved_(Real::default_precision()) {
    Real::default_precision(static_cast<unsigned>(digits));
  }
  ~PrecisionScope() { Real::default_precision(saved_); }
  PrecisionScope(const PrecisionScope&) = delete;
  PrecisionScope& operator=(const PrecisionScope&) = delete;

 private:
  unsigned saved_;
};

Real realOf(State& state, ALGEB x) {
  Real r;
  toMpfr(state, r.backend().data(), x);
  return r;
}

struct Estimate {
  Real value = 0;
  Real error = 0;
  Real magnitude = 0;  // of the absolute value's integral
};

class Quadrature {
 public:
  Quadrature(State& state, ALGEB f, int digits, int workingDigits)
      : state_(state),
        f_(f),
        workingDigits_(workingDigits),
        tolerance_(pow(Real(10), -(digits + 1))),
        whole_(refinements(digits) + 2, smallest(workingDigits)),
        part_(refinements(digits), smallest(workingDigits)),
        look_(refinements(digits) - 2, smallest(workingDigits)) {}

  Estimate over(const Real& lower, const Real& upper) {
    // To more digits than are needed, so that a narrow peak is not passed over by few nodes.
    const Real strict = tolerance_ * sqrt(tolerance_);
    const Estimate first = apply(whole_, lower, upper, strict);
    Real peak = 0;
    if ((!isinf(lower) && !isinf(upper)) || !hasPeak(first, lower, upper, peak)) {
      goal_ = tolerance_ * first.magnitude;
      return isSettled(first) ? first : halved(lower, upper, 1);
    }
    const Estimate left = apply(whole_, lower, peak, strict);
    const Estimate right = apply(whole_, peak, upper, strict);
    goal_ = tolerance_ * (left.magnitude + right.magnitude);
    return sum(isSettled(left) ? left : halved(lower, peak, 1),
               isSettled(right) ? right : halved(peak, upper, 1));
  }

 private:
  // Each doubles the number of nodes and, for smooth integrands, of correct digits.
  static std::size_t refinements(int digits) {
    return 6 + static_cast<std::size_t>(std::ceil(std::log2(std::max(1.0, digits / 15.0))));
  }

  static Real smallest(int workingDigits) { return pow(Real(10), -4 * workingDigits); }

  bool isEnough(const Estimate& e) const {
    return isfinite(e.value) && isfinite(e.error) &&
           (e.error <= tolerance_ * e.magnitude || e.error <= goal_);
  }

  bool isSettled(const Estimate& e) const { return isfinite(e.value) && e.error <= 10 * goal_; }

  static Estimate sum(const Estimate& a, const Estimate& b) {
    return {a.value + b.value, a.error + b.error, a.magnitude + b.magnitude};
  }

  // The rule leaves out the outer nodes of an infinite interval where their terms are small, and
  // with them a peak that lies farther out.  Looks for one from 1/8 to 2^17 away from the end, or
  // from 0: a point around which there is more of the integral than has been found.
  bool hasPeak(const Estimate& e, const Real& lower, const Real& upper, Real& peak) {
    constexpr double kRatio = 1.125;
    const Real origin = !isinf(lower) ? lower : !isinf(upper) ? upper : Real(0);
    Real most = e.magnitude;
    for (Real distance(0.125); distance < 131072; distance *= kRatio) {
      for (const Real& x : {Real(origin - distance), Real(origin + distance)}) {
        if (x < lower || x > upper) {
          continue;
        }
        const Real around = abs(valueAt(x, lower, upper)) * distance * (kRatio - 1);
        if (around > most) {
          most = around;
          peak = x;
        }
      }
    }
    return most > e.magnitude;
  }

  Estimate apply(Rule& rule, const Real& lower, const Real& upper, const Real& tolerance) {
    Estimate e;
    const auto integrand = [&](const Real& x) { return valueAt(x, lower, upper); };
    try {
      e.value = rule.integrate(integrand, lower, upper, tolerance, &e.error, &e.magnitude);
    } catch (const std::logic_error&) {  // the rule's words for values that are no numbers
      raiseEndless();
    } catch (const std::runtime_error&) {
      raiseEndless();
    }
    if (!isinf(lower) && !isinf(upper)) {
      e.error *= (upper - lower) / 2;  // it comes for an interval of length 2
    }
    return e;
  }

  Estimate halved(const Real& lower, const Real& upper, int depth) {
    if (depth > kMostHalvings) {
      raiseEndless();
    }
    const Real middle = between(lower, upper);
    const Estimate left = part(lower, middle, depth);
    return sum(left, part(middle, upper, depth));
  }

  // A small part of the whole need not be known to all digits.  Few nodes tell a corner or a jump,
  // where more of them are of no use.
  Estimate part(const Real& lower, const Real& upper, int depth) {
    const Real unclear(1e-3);
    Estimate e =
        apply(look_, lower, upper, std::min<Real>(tolerance_ * pow(Real(2), depth), unclear));
    if (!isEnough(e) && e.error < unclear * e.magnitude) {
      e = apply(part_, lower, upper, std::max<Real>(tolerance_, goal_ / e.magnitude));
    }
    return isEnough(e) ? e : halved(lower, upper, depth + 1);
  }

  static Real between(const Real& lower, const Real& upper) {
    if (isinf(lower)) {
      return isinf(upper) ? Real(0) : Real(upper - 1 - abs(upper));
    }
    return isinf(upper) ? Real(lower + 1 + abs(lower)) : Real((lower + upper) / 2);
  }

  Real valueAt(const Real& x, const Real& lower, const Real& upper) {
    lookAtInterrupt();
    if (++evaluations_ > kMostEvaluations) {
      raiseEndless();
    }
    const ALGEB at = fromMpfr(state_, x.backend().data(), workingDigits_);
    ALGEB y = applied(at);
    if (!isReal(y) && (is(y, Tag::name) || isExpression(y))) {
      y = evalf(state_, y, workingDigits_);
    }
    if (!isReal(y)) {
      raise(state_, "the integrand has no real value at %1 but %2", shortened(at),
            isNumber(y) ? shortened(y) : y);
    }
    if (isSpecial(y)) {
      // At the very end, where nodes have next to no weight.
      const Real rounded = realOf(state_, at);
      if (rounded == lower || rounded == upper) {
        return Real(0);
      }
      raise(state_, "the integrand has no finite value at %1", shortened(at));
    }
    return realOf(state_, y);
  }

  // f(x); 0 where a float becomes smaller than any that there is, as exp(-x^2) does far out.
  ALGEB applied(ALGEB x) {
    const ALGEB args[] = {x};
    try {
      return vexel::apply(state_, f_, args);
    } catch (const HostErrorToken&) {
      if (state_.error.message != "exponent of a float out of range") {
        throw;
      }
      state_.error = PendingError();
      return newFloat(state_, 0.0);
    }
  }

  ALGEB shortened(ALGEB x) { return roundToDigits(state_, x, 15); }

  [[noreturn]] void raiseEndless() {
    raise(state_, "the integral of %2 does not converge to %1 digits",
          immediate((workingDigits_ - kSpareDigits) / 2), f_);
  }

 public:
  static constexpr int kSpareDigits = 16;

 private:
  State& state_;
  ALGEB f_;
  int workingDigits_;
  Real tolerance_;
  Real goal_ = 0;
  std::int64_t evaluations_ = 0;
  Rule whole_;
  Rule part_;
  Rule look_;
};

}  // namespace

ALGEB integral(State& state, ALGEB f, ALGEB lower, ALGEB upper) {
  const int digits = state.digits();
  if (digits > kMostDigits) {
    raise(state, "too many digits for %1, received: %2", name(state, "integrate"),
          immediate(digits));
  }
  const int workingDigits = 2 * digits + Quadrature::kSpareDigits;
  const PrecisionScope precision(workingDigits + 5);
  const DigitsScope scope(state, workingDigits);
  ALGEB ends[] = {evalf(state, lower, workingDigits), evalf(state, upper, workingDigits)};
  for (const ALGEB end : ends) {
    if (!isReal(end) || isUndefined(state, end)) {
      raise(state, "expected a range of numbers, received: %1 .. %2", lower, upper);
    }
  }
  const auto order = compare(state, ends[0], ends[1]);
  if (order == 0) {
    return newFloat(state, 0.0);
  }
  if (order > 0) {
    std::swap(ends[0], ends[1]);
  }
  const Estimate e = Quadrature(state, f, digits, workingDigits)
                         .over(realOf(state, ends[0]), realOf(state, ends[1]));
  if (abs(e.value) <= pow(Real(10), -(digits + 2)) * e.magnitude) {
    return newFloat(state, 0.0);
  }
  const ALGEB value = fromMpfr(state, e.value.backend().data(), digits);
  return order > 0 ? negate(state, value) : value;
}

}  // namespace vexel
