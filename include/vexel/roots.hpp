// Roots of functions: where f(x) = target, and the smallest integer at which f reaches a target.
//
//   auto r = vexel::find_root([](double t) { return std::cos(t) - t; }, {0.0, 1.0});
//   r.root, r.value, r.evaluations, r.converged
//   vexel::find_root(f, {0.0, vexel::open}, {.target = 0.5, .derivative = df});
//   std::int64_t k = vexel::find_integer(F, 0, 1000, {.target = 0.5});
//
// Templates: a lambda is inlined.  Nothing is allocated.
#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
#include <vexel/export.hpp>

namespace vexel {

// A side of a bracket that is not known; so is any infinity.
inline constexpr double open = std::numeric_limits<double>::infinity();

// Where to look.  f is evaluated at closed ends.  With an open side f must be monotone; the other
// end, or 0 when both are open, is where the search for a change of sign begins.
struct Bracket {
  double low = -open;
  double high = open;
};

struct RootOptions {
  double target = 0;
  // Of f; with it Newton's method is used, inside the bracket.
  std::function<double(double)> derivative{};
  // How far the root may be off, relative to its size: 2^-50 is four units in the last place.
  double tolerance = 0x1p-50;
  int max_iterations = 100;
};

// value is f(root) - target of the point at which it was smallest.
struct Root {
  double root;
  double value;
  int evaluations;  // of f
  bool converged;
};

// What a search ends with that cannot go on: a NaN, no change of sign, a spent budget.  best is the
// point with the smallest |f - target| so far, value that difference; NaN when there is none.
class VEXEL_API RootError : public std::domain_error {
 public:
  RootError(const std::string& text, double bestPoint, double bestValue)
      : std::domain_error(text), best(bestPoint), value(bestValue) {}
  double best;
  double value;
};

namespace detail {

struct RootPoint {
  double x;
  double f;
};

[[noreturn]] VEXEL_API void raiseRootError(const char* what, double low, double high,
                                           RootPoint best);
// Puts the ends in order.
VEXEL_API void checkRootOptions(Bracket& bracket, const RootOptions& options);
[[noreturn]] VEXEL_API void raiseBadIntegers(std::int64_t low, std::int64_t high);

// Doubles as integers in the same order, so that halves of an interval hold equally many doubles.
inline std::int64_t ordinal(double x) {
  const auto bits = std::bit_cast<std::int64_t>(x);
  return bits >= 0 ? bits : std::numeric_limits<std::int64_t>::min() - bits;
}
inline double fromOrdinal(std::int64_t n) {
  return std::bit_cast<double>(n >= 0 ? n : std::numeric_limits<std::int64_t>::min() - n);
}
inline double middleDouble(double a, double b) {
  const std::int64_t i = ordinal(a);
  const std::int64_t j = ordinal(b);
  return fromOrdinal((i & j) + ((i ^ j) >> 1));
}
// How many halvings, each by middleDouble, part a from b.
inline int halvings(double a, double b) {
  const auto i = static_cast<std::uint64_t>(ordinal(a));
  const auto j = static_cast<std::uint64_t>(ordinal(b));
  return static_cast<int>(std::bit_width(ordinal(a) < ordinal(b) ? j - i : i - j));
}

// f - target, with the number of evaluations and the best point; raises at a NaN.
template <typename F>
class RootProblem {
 public:
  RootProblem(F& f, double target) : f_(f), target_(target) {}

  RootPoint at(double x) {
    const RootPoint p{x, static_cast<double>(f_(x)) - target_};
    ++evaluations_;
    if (p.f != p.f) [[unlikely]] {
      raiseRootError("f - target is NaN", x, x, best_);
    }
    if (!(std::abs(p.f) >= std::abs(best_.f))) {
      best_ = p;
    }
    return p;
  }
  RootPoint best() const { return best_; }
  Root result(const RootPoint& p) const { return {p.x, p.f, evaluations_, true}; }
  [[noreturn]] void exhausted(double low, double high) const {
    raiseRootError("max_iterations were not enough: the root lies", low, high, best_);
  }

 private:
  F& f_;
  double target_;
  int evaluations_ = 0;
  RootPoint best_{std::numeric_limits<double>::quiet_NaN(),
                  std::numeric_limits<double>::quiet_NaN()};
};

inline bool straddle(const RootPoint& a, const RootPoint& b) {
  return (a.f <= 0 && b.f >= 0) || (a.f >= 0 && b.f <= 0);
}

// At a change of sign f is near 0, or near what a jump makes of it; where it has grown to this much
// more than at the ends of the bracket, it has a pole there.
inline bool isPole(double f, double atLow, double atHigh) {
  return std::abs(f) > 1e4 * std::max(std::abs(atLow), std::abs(atHigh));
}

// How far b may be off.
inline double allowance(double x, const RootOptions& options) {
  return std::max(options.tolerance, 0x1p-52) * std::abs(x) + std::numeric_limits<double>::min();
}

// The next step from b: the secant or the inverse parabola where they can be trusted, else half of
// the bracket.
inline void brentStep(const RootPoint& a, const RootPoint& b, const RootPoint& c, double half,
                      double tolerance, double& step, double& stepBefore) {
  if (std::abs(stepBefore) >= tolerance && std::abs(a.f) > std::abs(b.f) &&
      std::abs(a.f) <= std::numeric_limits<double>::max()) {
    const double s = b.f / a.f;
    double p = 2 * half * s;
    double q = 1 - s;
    if (a.x != c.x) {
      const double u = a.f / c.f;
      const double r = b.f / c.f;
      p = s * (2 * half * u * (u - r) - (b.x - a.x) * (r - 1));
      q = (u - 1) * (r - 1) * (s - 1);
    }
    if (p > 0) {
      q = -q;
    }
    p = std::abs(p);
    if (2 * p < std::min(3 * half * q - std::abs(tolerance * q), std::abs(stepBefore * q))) {
      stepBefore = step;
      step = p / q;
      return;
    }
  }
  step = stepBefore = half;
}

// R. P. Brent, Algorithms for Minimization without Derivatives (1973), chapter 4, with a second
// kind of bisection, of the doubles in the bracket in place of its length: it is used when four
// steps have not quartered their number, and from when on what is left of the budget is just enough
// for it.  So 70 iterations are enough for any function, and roots at 0 and of high order cost
// little more.
template <typename F>
Root brent(RootProblem<F>& f, RootPoint a, RootPoint b, const RootOptions& options) {
  RootPoint c = a;
  double step = b.x - a.x;
  double stepBefore = step;
  int widthBefore = 65;
  for (int used = 0;; ++used) {
    if ((b.f > 0) == (c.f > 0)) {
      c = a;
      step = stepBefore = b.x - a.x;
    }
    if (std::abs(c.f) < std::abs(b.f)) {
      a = b;
      b = c;
      c = a;
    }
    const double tolerance = 0.5 * allowance(b.x, options);
    const double half = 0.5 * c.x - 0.5 * b.x;
    if (b.f == 0 || std::abs(half) <= tolerance) {
      return f.result(b);
    }
    const int left = options.max_iterations - used;
    if (left <= 0) {
      f.exhausted(b.x, c.x);
    }
    bool slow = false;
    if (left <= 66 || used % 4 == 3) {
      const int width = halvings(b.x, c.x);
      slow = width >= left - 1;
      if (used % 4 == 3) {
        slow = slow || width > widthBefore - 2;
        widthBefore = width;
      }
    }
    double next = 0;
    if (slow) {
      next = middleDouble(b.x, c.x);
      step = stepBefore = next - b.x;
    } else {
      brentStep(a, b, c, half, tolerance, step, stepBefore);
      next = b.x + (std::abs(step) > tolerance ? step : std::copysign(tolerance, half));
    }
    a = b;
    b = f.at(next);
  }
}

// Newton's method from the better end, inside the bracket [a, b] and with its bisections.
template <typename F>
Root newton(RootProblem<F>& f, RootPoint a, RootPoint b, const RootOptions& options) {
  RootPoint x = std::abs(a.f) < std::abs(b.f) ? a : b;
  double stepBefore = std::abs(b.x - a.x);
  double step = stepBefore;
  for (int used = 0;; ++used) {
    const int left = options.max_iterations - used;
    if (x.f == 0 || halvings(a.x, b.x) <= 1) {
      return f.result(x);
    }
    const double wanted = x.f / options.derivative(x.x);
    const double next = x.x - wanted;
    if (std::abs(wanted) <= 0.5 * allowance(x.x, options)) {
      return f.result(x);
    }
    if (left <= 0) {
      f.exhausted(a.x, b.x);
    }
    const bool inside = (next > a.x && next < b.x) || (next < a.x && next > b.x);
    if (!inside || 2 * std::abs(wanted) > stepBefore || halvings(a.x, b.x) >= left - 1) {
      const double middle = middleDouble(a.x, b.x);
      stepBefore = step;
      step = std::abs(middle - x.x);
      x = f.at(middle);
    } else {
      stepBefore = step;
      step = std::abs(wanted);
      x = f.at(next);
    }
    (((x.f > 0) == (a.f > 0)) ? a : b) = x;
  }
}

// From one closed end outwards, in steps that grow ever faster: 1, 2, 8, 64, 1024, ...
template <typename F>
std::pair<RootPoint, RootPoint> searchFrom(RootProblem<F>& f, RootPoint from, double direction) {
  double step = direction * std::max(1.0, std::abs(from.x));
  double factor = 2;
  for (;;) {
    const double limit = std::copysign(std::numeric_limits<double>::max(), direction);
    const double x = std::abs(step) < std::abs(limit) ? from.x + step : limit;
    const RootPoint to = f.at(std::abs(x) <= std::abs(limit) ? x : limit);
    if (straddle(from, to)) {
      return {from, to};
    }
    if (to.x == limit) {
      raiseRootError("f - target does not change its sign", from.x, to.x, f.best());
    }
    from = to;
    step *= factor;
    factor *= 2;
  }
}

// Both ways from 0.
template <typename F>
std::pair<RootPoint, RootPoint> searchBothWays(RootProblem<F>& f) {
  RootPoint low = f.at(0);
  RootPoint high = low;
  double reach = 1;
  double factor = 2;
  for (;;) {
    const RootPoint right = f.at(reach);
    if (straddle(high, right)) {
      return {high, right};
    }
    const RootPoint left = f.at(-reach);
    if (straddle(left, low)) {
      return {left, low};
    }
    high = right;
    low = left;
    if (reach == std::numeric_limits<double>::max()) {
      raiseRootError("f - target does not change its sign", low.x, high.x, f.best());
    }
    reach = std::min(reach * factor, std::numeric_limits<double>::max());
    factor *= 2;
  }
}

}  // namespace detail

// The root of f(x) = target in a bracket: f - target has different signs at its ends, or is 0 at
// one of them.  f may rise or fall, jump (then the place of the jump is found) and be infinite at
// the ends; it is evaluated at the ends first and never outside them.
//
// Brent's method, or Newton's with a derivative.  The root is within the tolerance of a change of
// sign of f as computed.  RootError for a NaN, for ends with the same sign and for a spent budget;
// std::invalid_argument for a bracket, tolerance or budget that is none.
template <typename F>
Root find_root(F&& f, Bracket bracket, const RootOptions& options = {}) {
  detail::checkRootOptions(bracket, options);
  detail::RootProblem<std::remove_reference_t<F>> problem(f, options.target);
  const bool lowIsOpen = std::abs(bracket.low) == open;
  const bool highIsOpen = std::abs(bracket.high) == open;
  detail::RootPoint a{};
  detail::RootPoint b{};
  if (lowIsOpen && highIsOpen) {
    std::tie(a, b) = detail::searchBothWays(problem);
  } else if (lowIsOpen || highIsOpen) {
    a = problem.at(lowIsOpen ? bracket.high : bracket.low);
    if (a.f == 0) {
      return problem.result(a);
    }
    std::tie(a, b) = detail::searchFrom(problem, a, lowIsOpen ? -1 : 1);
  } else {
    a = problem.at(bracket.low);
    if (a.f == 0) {
      return problem.result(a);
    }
    b = problem.at(bracket.high);
    if (!detail::straddle(a, b)) {
      detail::raiseRootError("f - target has the same sign at both ends of the bracket", a.x, b.x,
                             problem.best());
    }
  }
  if (b.f == 0) {
    return problem.result(b);
  }
  const Root root = options.derivative ? detail::newton(problem, a, b, options)
                                       : detail::brent(problem, a, b, options);
  if (detail::isPole(root.value, a.f, b.f)) {
    detail::raiseRootError("f - target changes its sign at a pole, not at a root", root.root,
                           root.root, {root.root, root.value});
  }
  return root;
}

struct IntegerOptions {
  double target = 0;
};

// A side of the integers that is not known.
inline constexpr std::int64_t openLow = std::numeric_limits<std::int64_t>::min();
inline constexpr std::int64_t openHigh = std::numeric_limits<std::int64_t>::max();

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"  // f may take a double

// The smallest integer k in [low, high] with f(k) >= target, for a nondecreasing f: by bisection,
// after doubling steps from the known end where the other is open.  At most 130 evaluations.
//
// RootError when f(high) < target, and for a NaN; std::invalid_argument for low > high.
template <typename F>
std::int64_t find_integer(F&& f, std::int64_t low, std::int64_t high,
                          const IntegerOptions& options) {
  constexpr double none = std::numeric_limits<double>::quiet_NaN();
  detail::RootPoint best{none, none};
  const auto reaches = [&](std::int64_t k) {
    const detail::RootPoint p{static_cast<double>(k), static_cast<double>(f(k)) - options.target};
    if (p.f != p.f) {
      detail::raiseRootError("f - target is NaN", p.x, p.x, best);
    }
    if (!(std::abs(p.f) >= std::abs(best.f))) {
      best = p;
    }
    return p.f >= 0;
  };
  if (low > high) {
    detail::raiseBadIntegers(low, high);
  }
  // Below: f < target at `below`, or below = low - 1; above: f >= target there, once found.
  std::int64_t from = low != openLow ? low : (high != openHigh ? high : 0);
  std::uint64_t step = 1;
  if (low != openLow && high != openHigh) {
    if (!reaches(high)) {
      detail::raiseRootError("f does not reach target", static_cast<double>(low),
                             static_cast<double>(high), best);
    }
  } else if (reaches(from)) {
    high = from;  // and down
    for (; low == openLow && high != openLow; step *= 2) {
      const std::uint64_t room =
          static_cast<std::uint64_t>(high) - static_cast<std::uint64_t>(openLow);
      const std::int64_t k = step < room ? high - static_cast<std::int64_t>(step) : openLow;
      if (!reaches(k)) {
        low = k + 1;
        break;
      }
      high = k;
    }
    if (high == openLow) {
      return high;
    }
  } else {
    for (low = from + 1;; step *= 2) {  // and up
      const std::uint64_t room =
          static_cast<std::uint64_t>(high) - static_cast<std::uint64_t>(from);
      if (room == 0) {
        detail::raiseRootError("f does not reach target", static_cast<double>(from),
                               static_cast<double>(high), best);
      }
      from = step < room ? from + static_cast<std::int64_t>(step) : high;
      if (reaches(from)) {
        high = from;
        break;
      }
      low = from == openHigh ? from : from + 1;
    }
  }
  while (low < high) {
    const std::int64_t middle = (low & high) + ((low ^ high) >> 1);
    if (reaches(middle)) {
      high = middle;
    } else {
      low = middle + 1;
    }
  }
  return high;
}

#pragma GCC diagnostic pop

}  // namespace vexel
