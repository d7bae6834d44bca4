// Closed forms: a term is split into its addends; powers of k are summed by the formula of
// Faulhaber with Bernoulli numbers, multiples of c^k as geometric series (Graham, Knuth and
// Patashnik 1994, Concrete Mathematics, sections 2.6 and 6.5).  The values are those of the sum
// where the upper end is not below the lower one by more than 1.

#include "mathematics/summation.hpp"

#include <algorithm>
#include <optional>
#include <unordered_set>
#include <vector>

#include "mathematics/algebra.hpp"
#include "mathematics/evaluation.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"

namespace vexel {

namespace {

// Coefficients of the powers 0, 1, ... of a name; the kernel keeps them alive.
using Polynomial = std::vector<ALGEB>;

constexpr std::size_t kMostDegree = 100;

class Summation {
 public:
  Summation(State& state, ALGEB k) : state_(state), alive_(state), k_(k) {}

  // Nothing where the term has no closed form.
  std::optional<ALGEB> closed(ALGEB term, ALGEB lower, ALGEB upper) {
    ALGEB total = immediate(0);
    Polynomial powers;
    const std::size_t count = is(term, Tag::sum) ? operandCount(term) : 1;
    for (std::size_t i = 1; i <= count; ++i) {
      lookAtInterrupt();
      const ALGEB addend = is(term, Tag::sum) ? operand(term, i) : term;
      if (const auto polynomial = polynomialIn(addend, k_)) {
        powers = sum(powers, *polynomial);
      } else if (const ALGEB value = geometric(addend, lower, upper)) {
        total = keep(sumOf(state_, total, value));
      } else {
        return std::nullopt;
      }
    }
    // S(upper) - S(lower - 1), S(n) the sum from 1 to n.
    const Polynomial antidifference = faulhaber(powers);
    const ALGEB before = keep(differenceOf(state_, lower, immediate(1)));
    total = keep(sumOf(state_, total, valueAt(antidifference, upper)));
    return differenceOf(state_, total, valueAt(antidifference, before));
  }

 private:
  ALGEB keep(ALGEB x) {
    alive_.push(x);
    return x;
  }

  bool mentions(ALGEB x, ALGEB name) {
    std::vector<ALGEB> open = {x};
    std::unordered_set<ALGEB> seen;
    while (!open.empty()) {
      const ALGEB part = open.back();
      open.pop_back();
      if (part == name) {
        return true;
      }
      if ((isExpression(part) || isRelation(part) || isRange(part) || isList(part)) &&
          seen.insert(part).second) {
        for (std::size_t i = 1; i < length(part); ++i) {
          open.push_back(operand(part, i));
        }
      }
    }
    return false;
  }

  Polynomial sum(const Polynomial& a, const Polynomial& b) {
    Polynomial result(std::max(a.size(), b.size()), immediate(0));
    for (std::size_t i = 0; i < result.size(); ++i) {
      const ALGEB x = i < a.size() ? a[i] : immediate(0);
      result[i] = keep(sumOf(state_, x, i < b.size() ? b[i] : immediate(0)));
    }
    return result;
  }

  Polynomial product(const Polynomial& a, const Polynomial& b) {
    Polynomial result(a.size() + b.size() - 1, immediate(0));
    for (std::size_t i = 0; i < a.size(); ++i) {
      for (std::size_t j = 0; j < b.size(); ++j) {
        lookAtInterrupt();
        result[i + j] = keep(sumOf(state_, result[i + j], productOf(state_, a[i], b[j])));
      }
    }
    return result;
  }

  // x as a polynomial in a name, nothing when it is none of moderate degree.
  std::optional<Polynomial> polynomialIn(ALGEB x, ALGEB name) {
    checkStack(state_);
    if (!mentions(x, name)) {
      return Polynomial{x};
    }
    if (x == name) {
      return Polynomial{immediate(0), immediate(1)};
    }
    std::int64_t exponent = 0;
    if (is(x, Tag::power) && isInteger(operand(x, 2)) && fitsInt64(operand(x, 2), &exponent) &&
        exponent > 0) {
      const auto base = polynomialIn(operand(x, 1), name);
      if (!base || exponent > static_cast<std::int64_t>(kMostDegree)) {
        return std::nullopt;
      }
      Polynomial result{immediate(1)};
      for (std::int64_t i = 0; i < exponent && result.size() <= kMostDegree; ++i) {
        result = product(result, *base);
      }
      return result.size() <= kMostDegree ? std::optional(result) : std::nullopt;
    }
    if (!is(x, Tag::sum) && !is(x, Tag::product)) {
      return std::nullopt;
    }
    Polynomial result{immediate(is(x, Tag::sum) ? 0 : 1)};
    for (std::size_t i = 1; i <= operandCount(x); ++i) {
      const auto part = polynomialIn(operand(x, i), name);
      if (!part) {
        return std::nullopt;
      }
      result = is(x, Tag::sum) ? sum(result, *part) : product(result, *part);
      if (result.size() > kMostDegree) {
        return std::nullopt;
      }
    }
    return result;
  }

  // The Bernoulli numbers up to n, the first of them +1/2.
  Polynomial bernoulliNumbers(std::size_t n) {
    Polynomial b;
    for (std::size_t m = 0; m <= n; ++m) {
      ALGEB rest = immediate(1);
      ALGEB choose = immediate(1);  // of m + 1 things j
      for (std::size_t j = 0; j < m; ++j) {
        const auto left = static_cast<std::int64_t>(m + 1 - j);
        rest =
            subtract(state_, rest, divide(state_, multiply(state_, choose, b[j]), immediate(left)));
        choose = divide(state_, multiply(state_, choose, immediate(left - 1)),
                        immediate(static_cast<std::int64_t>(j) + 1));
      }
      b.push_back(keep(rest));
    }
    return b;
  }

  // For every power k^m its sum from 1 to n, as a polynomial in n.
  Polynomial faulhaber(const Polynomial& powers) {
    Polynomial result{immediate(0)};
    if (powers.empty()) {
      return result;
    }
    const Polynomial b = bernoulliNumbers(powers.size());
    for (std::size_t m = 0; m < powers.size(); ++m) {
      Polynomial term(m + 2, immediate(0));
      const auto n = static_cast<std::int64_t>(m) + 1;
      ALGEB choose = immediate(1);  // of n things j
      for (std::size_t j = 0; j <= m; ++j) {
        const ALGEB c = divide(state_, multiply(state_, choose, b[j]), immediate(n));
        term[m + 1 - j] = keep(productOf(state_, c, powers[m]));
        choose =
            divide(state_, multiply(state_, choose, immediate(n - static_cast<std::int64_t>(j))),
                   immediate(static_cast<std::int64_t>(j) + 1));
      }
      result = sum(result, term);
    }
    return result;
  }

  // p(x), multiplied out where x is a polynomial in a name.
  ALGEB valueAt(const Polynomial& p, ALGEB x) {
    const ALGEB name = nameIn(x);
    const auto inner = name == nullptr ? std::nullopt : polynomialIn(x, name);
    if (!inner || inner->size() > 3) {
      ALGEB total = immediate(0);
      for (std::size_t i = 0; i < p.size(); ++i) {
        const ALGEB power = powerOf(state_, x, immediate(static_cast<std::int64_t>(i)));
        total = keep(sumOf(state_, total, productOf(state_, p[i], power)));
      }
      return total;
    }
    Polynomial total{immediate(0)};
    for (std::size_t i = p.size(); i > 0; --i) {
      total = sum(product(total, *inner), Polynomial{p[i - 1]});
    }
    ALGEB result = immediate(0);
    for (std::size_t i = 0; i < total.size(); ++i) {
      const ALGEB power = powerOf(state_, name, immediate(static_cast<std::int64_t>(i)));
      result = keep(sumOf(state_, result, productOf(state_, total[i], power)));
    }
    return result;
  }

  // The name that a sum or product is about; null for none.
  static ALGEB nameIn(ALGEB x) {
    if (is(x, Tag::name)) {
      return x;
    }
    if (is(x, Tag::sum) || is(x, Tag::product)) {
      for (std::size_t i = 1; i <= operandCount(x); ++i) {
        if (const ALGEB name = nameIn(operand(x, i))) {
          return name;
        }
      }
    }
    return nullptr;
  }

  // The sum of f r^k, f and r free of k; null for anything else.
  ALGEB geometric(ALGEB term, ALGEB lower, ALGEB upper) {
    ALGEB factor = immediate(1);
    ALGEB ratio = immediate(1);
    const std::size_t count = is(term, Tag::product) ? operandCount(term) : 1;
    for (std::size_t i = 1; i <= count; ++i) {
      const ALGEB part = is(term, Tag::product) ? operand(term, i) : term;
      if (!mentions(part, k_)) {
        factor = keep(productOf(state_, factor, part));
        continue;
      }
      ALGEB base = nullptr;  // null: that of exp
      ALGEB exponent = nullptr;
      if (is(part, Tag::power) && !mentions(operand(part, 1), k_)) {
        base = operand(part, 1);
        exponent = operand(part, 2);
      } else if (is(part, Tag::application) && operandCount(part) == 2 &&
                 operand(part, 1) == name(state_, "exp")) {
        exponent = operand(part, 2);
      } else {
        return nullptr;
      }
      const auto linear = polynomialIn(exponent, k_);
      if (!linear || linear->size() != 2) {
        return nullptr;
      }
      factor = keep(productOf(state_, factor, power(base, (*linear)[0])));
      ratio = keep(productOf(state_, ratio, power(base, (*linear)[1])));
    }
    const ALGEB beyond = sumOf(state_, upper, immediate(1));
    if (ratio == immediate(1)) {
      return productOf(state_, factor, differenceOf(state_, beyond, lower));
    }
    const ALGEB difference =
        differenceOf(state_, powerOf(state_, ratio, beyond), powerOf(state_, ratio, lower));
    return productOf(state_, factor,
                     quotientOf(state_, difference, differenceOf(state_, ratio, immediate(1))));
  }

  ALGEB power(ALGEB base, ALGEB exponent) {
    if (base != nullptr) {
      return keep(powerOf(state_, base, exponent));
    }
    return exponent == immediate(0) ? immediate(1) : keep(applicationOf(state_, "exp", exponent));
  }

  State& state_;
  Handles alive_;
  ALGEB k_;
};

ALGEB openSum(State& state, ALGEB term, ALGEB k, ALGEB lower, ALGEB upper) {
  const ALGEB range = newPair(state, Tag::range, lower, upper);
  const ALGEB operands[] = {term, newPair(state, Tag::equation, k, range)};
  return newApplication(state, name(state, "sum"), operands);
}

bool isOpen(State& state, ALGEB x) {
  return (is(x, Tag::name) || isExpression(x)) && !isNumber(evalf(state, x, 5));
}

}  // namespace

ALGEB symbolicSum(State& state, ALGEB term, ALGEB k, ALGEB lower, ALGEB upper) {
  for (const ALGEB end : {lower, upper}) {
    if (!(isReal(end) ? isFinite(state, end) : isOpen(state, end))) {
      raise(state, "expected a range of numbers, received: %1 .. %2", lower, upper);
    }
  }
  if (!isNumber(term) && !is(term, Tag::name) && !isExpression(term)) {
    raise(state, "unable to sum %1 over a range without numbers as ends", term);
  }
  const auto closed = Summation(state, k).closed(term, lower, upper);
  return closed ? *closed : openSum(state, term, k, lower, upper);
}

ALGEB sumOver(State& state, ALGEB term, ALGEB k, ALGEB lower, ALGEB upper) {
  if (!isReal(lower) || !isReal(upper)) {
    return symbolicSum(state, term, k, lower, upper);
  }
  const Unassigned unassigned(state, k);
  RunningSum total(state, immediate(0));
  ALGEB previous = nullptr;
  for (ALGEB i = lower; compare(state, i, upper) <= 0; i = add(state, i, immediate(1))) {
    lookAtInterrupt();
    if (i == previous || isSpecial(upper)) {
      raise(state, "the range %1 .. %2 has no end", lower, upper);
    }
    previous = i;
    setNameValue(state, k, i);
    total.add(evaluate(state, term));
  }
  return total.value();
}

bool isOpenSum(State& state, ALGEB x) {
  return is(x, Tag::application) && operandCount(x) == 3 && operand(x, 1) == name(state, "sum") &&
         isEquation(operand(x, 3)) && is(operand(operand(x, 3), 1), Tag::name) &&
         isRange(operand(operand(x, 3), 2));
}

ALGEB openSumAnew(State& state, ALGEB sum, const std::function<ALGEB(ALGEB)>& f) {
  checkStack(state);
  const ALGEB k = operand(operand(sum, 3), 1);
  const ALGEB range = operand(operand(sum, 3), 2);
  const ALGEB lower = f(operand(range, 1));
  const ALGEB upper = f(operand(range, 2));
  const Unassigned unassigned(state, k);
  return sumOver(state, f(operand(sum, 2)), k, lower, upper);
}

Unassigned::Unassigned(State& state, ALGEB name)
    : state_(state), name_(name), saved_(nameValue(name)) {
  setNameValue(state, name, nullptr);
}
Unassigned::~Unassigned() { setNameValue(state_, name_, saved_); }

}  // namespace vexel
