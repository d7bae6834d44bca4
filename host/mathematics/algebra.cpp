// Canonical sums, products and powers.

#include "mathematics/algebra.hpp"

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "mathematics/elementary.hpp"
#include "mathematics/elementwise.hpp"
#include "values/dates.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"
#include "values/text.hpp"

namespace vexel {

namespace {

// What may stand in a symbolic expression.
bool isSymbolic(ALGEB x) { return isNumber(x) || is(x, Tag::name) || isExpression(x); }

void requireSymbolic(State& state, const char* message, ALGEB a, ALGEB b) {
  if (!isSymbolic(a) || !isSymbolic(b)) {
    raise(state, message, a, b);
  }
}

// A fixed order of expressions: by kind, then by parts.
int order(State& state, ALGEB a, ALGEB b) {
  if (a == b) {
    return 0;
  }
  checkStack(state);
  lookAtInterrupt();
  auto kind = [](ALGEB x) {
    return isNumber(x)               ? 0
           : is(x, Tag::name)        ? 1
           : is(x, Tag::power)       ? 2
           : is(x, Tag::application) ? 3
                                     : 4;
  };
  if (kind(a) != kind(b)) {
    return kind(a) - kind(b);
  }
  if (kind(a) == 0) {
    if (!isComplex(a) && !isComplex(b)) {
      const auto c = compare(state, a, b);
      if (c != std::partial_ordering::equivalent && c != std::partial_ordering::unordered) {
        return c == std::partial_ordering::less ? -1 : 1;
      }
    }
    return sourceText(state, a).compare(sourceText(state, b));
  }
  if (kind(a) == 1) {
    return text(a).compare(text(b));
  }
  const std::size_t n = std::min(operandCount(a), operandCount(b));
  for (std::size_t i = 1; i <= n; ++i) {
    if (const int c = order(state, operand(a, i), operand(b, i)); c != 0) {
      return c;
    }
  }
  return operandCount(a) < operandCount(b)   ? -1
         : operandCount(a) > operandCount(b) ? 1
                                             : static_cast<int>(tag(a)) - static_cast<int>(tag(b));
}

// Pairs (what, how much): terms with coefficients, or bases with exponents.
class Collection {
 public:
  explicit Collection(State& state) : state_(state), what_(state), amount_(state), whole_(state) {}

  // whole: the term itself, if it exists as an object.
  void add(ALGEB what, ALGEB amount, ALGEB whole = nullptr) {
    const auto [at, isNew] = index_.try_emplace(what, what_.size());
    if (!isNew) {
      amount_[at->second] = sumOf(state_, amount_[at->second], amount);
      whole_[at->second] = nullptr;
      return;
    }
    what_.push(what);
    amount_.push(amount);
    whole_.push(whole);
  }
  std::size_t size() const { return what_.size(); }
  ALGEB what(std::size_t i) const { return what_[i]; }
  ALGEB amount(std::size_t i) const { return amount_[i]; }
  ALGEB whole(std::size_t i) const { return whole_[i]; }  // null: several were combined

  std::vector<std::size_t> sorted() {
    std::vector<std::size_t> at(size());
    for (std::size_t i = 0; i < at.size(); ++i) {
      at[i] = i;
    }
    const auto before = [&](std::size_t i, std::size_t j) {
      return order(state_, what_[i], what_[j]) < 0;
    };
    // The terms of the first operand come sorted.
    const auto rest = std::is_sorted_until(at.begin(), at.end(), before);
    std::stable_sort(rest, at.end(), before);
    std::inplace_merge(at.begin(), rest, at.end(), before);
    return at;
  }

 private:
  State& state_;
  Handles what_;
  Handles amount_;
  Handles whole_;
  std::unordered_map<ALGEB, std::size_t> index_;  // of what_, whose handles stay put
};

// A term as coefficient and rest: 3*x*y is 3 and x*y.
void splitTerm(State& state, ALGEB term, ALGEB& coefficient, ALGEB& rest) {
  coefficient = immediate(1);
  rest = term;
  if (is(term, Tag::product) && isNumber(operand(term, 1))) {
    coefficient = operand(term, 1);
    std::vector<ALGEB> factors;
    for (std::size_t i = 2; i <= operandCount(term); ++i) {
      factors.push_back(operand(term, i));
    }
    rest = factors.size() == 1 ? factors[0] : newExpression(state, Tag::product, factors);
  }
}

void collectTerms(State& state, ALGEB x, Collection& terms, ALGEB& constant) {
  if (isNumber(x)) {
    constant = constant == nullptr ? x : add(state, constant, x);
  } else if (is(x, Tag::sum)) {
    for (std::size_t i = 1; i <= operandCount(x); ++i) {
      collectTerms(state, operand(x, i), terms, constant);
    }
  } else {
    ALGEB coefficient = nullptr;
    ALGEB rest = nullptr;
    splitTerm(state, x, coefficient, rest);
    terms.add(rest, coefficient, x);
  }
}

bool isSqrt(State& state, ALGEB x) {
  return is(x, Tag::application) && operandCount(x) == 2 && operand(x, 1) == name(state, "sqrt");
}

ALGEB oneHalf(State& state) { return divide(state, immediate(1), immediate(2)); }

void collectFactors(State& state, ALGEB x, Collection& factors, ALGEB& coefficient) {
  if (isNumber(x)) {
    coefficient = multiply(state, coefficient, x);
  } else if (is(x, Tag::product)) {
    for (std::size_t i = 1; i <= operandCount(x); ++i) {
      collectFactors(state, operand(x, i), factors, coefficient);
    }
  } else if (is(x, Tag::power)) {
    factors.add(operand(x, 1), operand(x, 2));
  } else if (isSqrt(state, x)) {
    factors.add(operand(x, 2), oneHalf(state));
  } else {
    factors.add(x, immediate(1));
  }
}

}  // namespace

ALGEB applicationOf(State& state, const char* function, ALGEB argument) {
  const ALGEB args[] = {argument};
  return newApplication(state, name(state, function), args);
}

ALGEB sumOf(State& state, ALGEB a, ALGEB b) {
  if (isNumber(a) && isNumber(b)) {
    return add(state, a, b);
  }
  if (isContainer(a) || isContainer(b)) {
    return elementwise(state, ArithmeticOp::add, a, b);
  }
  if (isDate(a) || isDate(b)) {
    return dateSum(state, a, b);
  }
  const ALGEB both[] = {a, b};
  return sumOf(state, both);
}

ALGEB sumOf(State& state, std::span<const ALGEB> parts) {
  Collection terms(state);
  ALGEB constant = nullptr;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    if (!isSymbolic(parts[i])) {
      // In words of the sum so far.
      const ALGEB left = i == 0 ? parts[0] : sumOf(state, parts.first(i));
      raise(state, "unable to add %1 and %2", left,
            i == 0 && parts.size() > 1 ? parts[1] : parts[i]);
    }
    collectTerms(state, parts[i], terms, constant);
  }
  Handles operands(state);
  for (const std::size_t i : terms.sorted()) {
    if (terms.amount(i) == immediate(0)) {
      continue;
    }
    operands.push(terms.whole(i) != nullptr ? terms.whole(i)
                  : terms.amount(i) == immediate(1)
                      ? terms.what(i)
                      : productOf(state, terms.amount(i), terms.what(i)));
  }
  if (constant != nullptr && (constant != immediate(0) || operands.empty())) {
    operands.push(constant);
  }
  if (operands.empty()) {
    return immediate(0);
  }
  return operands.size() == 1 ? operands[0] : newExpression(state, Tag::sum, operands.span());
}

void RunningSum::addExact(ALGEB term) {
  pending_.push(term);
  for (std::size_t n = ++exactCount_; n % 2 == 0; n /= 2) {
    const std::size_t last = pending_.size() - 1;
    pending_[last - 1] = vexel::add(state_, pending_[last - 1], pending_[last]);
    pending_.resize(last);
  }
}

void RunningSum::flushExact() {
  if (exactCount_ == 0) {
    return;
  }
  for (std::size_t i = pending_.size(); i > 0; --i) {
    total_ = vexel::add(state_, total_, pending_[i - 1]);
  }
  pending_.clear();
  exactCount_ = 0;
}

void RunningSum::add(ALGEB term) {
  const bool counting = exactCount_ != 0;
  if (isExact(term) && (counting || (isRational(term) && isExact(total_) && pending_.empty()))) {
    addExact(term);
    return;
  }
  flushExact();
  if (pending_.empty() && isNumber(total_) && isNumber(term)) {
    total_ = vexel::add(state_, total_, term);
    return;
  }
  // Batches grow with the sum, so that all of them together cost no more than a few sorts.
  const std::size_t batch = std::max(kBatch, isExpression(total_) ? operandCount(total_) : 0);
  if (pending_.size() >= batch || !isSymbolic(term) || isContainer(total_)) {
    total_ = sumOf(state_, value(), term);
    return;
  }
  pending_.push(term);
}

void RunningSum::subtract(ALGEB term) {
  flushExact();
  if (pending_.empty() && isNumber(total_) && isNumber(term)) {
    total_ = vexel::subtract(state_, total_, term);
  } else if (!isSymbolic(term) || !isSymbolic(total_)) {
    total_ = differenceOf(state_, value(), term);
  } else {
    add(negativeOf(state_, term));
  }
}

ALGEB RunningSum::value() {
  flushExact();
  if (!pending_.empty()) {
    Handles parts(state_);
    parts.push(total_);
    for (const ALGEB term : pending_.span()) {
      parts.push(term);
    }
    pending_.clear();
    total_ = sumOf(state_, parts.span());
  }
  return total_;
}

void RunningProduct::multiplyExact(ALGEB factor) {
  pending_.push(factor);
  for (std::size_t n = ++count_; n % 2 == 0; n /= 2) {
    const std::size_t last = pending_.size() - 1;
    pending_[last - 1] = vexel::multiply(state_, pending_[last - 1], pending_[last]);
    pending_.resize(last);
  }
}

void RunningProduct::multiply(ALGEB factor) {
  if (isExact(factor) && isExact(total_)) {
    multiplyExact(factor);
  } else {
    total_ = productOf(state_, value(), factor);
  }
}

void RunningProduct::divide(ALGEB divisor) {
  if (isExact(divisor) && isExact(total_) && !isZero(divisor)) {
    multiplyExact(vexel::divide(state_, immediate(1), divisor));
  } else {
    total_ = quotientOf(state_, value(), divisor);
  }
}

ALGEB RunningProduct::value() {
  for (std::size_t i = pending_.size(); i > 0; --i) {
    total_ = vexel::multiply(state_, total_, pending_[i - 1]);
  }
  pending_.clear();
  count_ = 0;
  return total_;
}

ALGEB negativeOf(State& state, ALGEB a) {
  return isNumber(a) ? negate(state, a) : productOf(state, immediate(-1), a);
}

ALGEB differenceOf(State& state, ALGEB a, ALGEB b) {
  if (isNumber(a) && isNumber(b)) {
    return subtract(state, a, b);
  }
  if (isContainer(a) || isContainer(b)) {
    return elementwise(state, ArithmeticOp::subtract, a, b);
  }
  if (isDate(a) || isDate(b)) {
    return dateDifference(state, a, b);
  }
  requireSymbolic(state, "unable to subtract %2 from %1", a, b);
  return sumOf(state, a, negativeOf(state, b));
}

ALGEB productOf(State& state, ALGEB a, ALGEB b) {
  if (isNumber(a) && isNumber(b)) {
    return multiply(state, a, b);
  }
  if (isContainer(a) || isContainer(b)) {
    return elementwise(state, ArithmeticOp::multiply, a, b);
  }
  requireSymbolic(state, "unable to multiply %1 and %2", a, b);
  if (a == immediate(1)) {
    return b;
  }
  if (b == immediate(1)) {
    return a;
  }
  // A number times a sum is distributed, so that -(x - 1) and 1 - x are one expression.
  if ((isNumber(a) && is(b, Tag::sum)) || (isNumber(b) && is(a, Tag::sum))) {
    const ALGEB number = isNumber(a) ? a : b;
    const ALGEB sum = isNumber(a) ? b : a;
    ALGEB result = immediate(0);
    for (std::size_t i = 1; i <= operandCount(sum); ++i) {
      result = sumOf(state, result, productOf(state, number, operand(sum, i)));
    }
    return result;
  }
  Collection factors(state);
  ALGEB coefficient = immediate(1);
  collectFactors(state, a, factors, coefficient);
  collectFactors(state, b, factors, coefficient);
  if (coefficient == immediate(0)) {
    return coefficient;
  }
  Handles operands(state);
  operands.push(nullptr);  // the coefficient's place
  bool collectAgain = false;
  for (const std::size_t i : factors.sorted()) {
    const ALGEB factor = powerOf(state, factors.what(i), factors.amount(i));
    if (isNumber(factor)) {
      coefficient = multiply(state, coefficient, factor);
    } else {
      collectAgain = collectAgain || is(factor, Tag::product);
      operands.push(factor);
    }
  }
  if (operands.size() == 1 || coefficient == immediate(0)) {
    return coefficient;
  }
  if (collectAgain) {
    ALGEB result = coefficient;
    for (const ALGEB factor : operands.span().subspan(1)) {
      result = productOf(state, result, factor);
    }
    return result;
  }
  if (coefficient == immediate(1)) {
    return operands.size() == 2 ? operands[1]
                                : newExpression(state, Tag::product, operands.span().subspan(1));
  }
  if (operands.size() == 2 && is(operands[1], Tag::sum)) {
    return productOf(state, coefficient, operands[1]);
  }
  operands[0] = coefficient;
  return newExpression(state, Tag::product, operands.span());
}

ALGEB quotientOf(State& state, ALGEB a, ALGEB b) {
  if (isNumber(a) && isNumber(b)) {
    return divide(state, a, b);
  }
  if (isContainer(a) || isContainer(b)) {
    return elementwise(state, ArithmeticOp::divide, a, b);
  }
  requireSymbolic(state, "unable to divide %1 by %2", a, b);
  return productOf(state, a, powerOf(state, b, immediate(-1)));
}

ALGEB powerOf(State& state, ALGEB base, ALGEB exponent) {
  if (isContainer(base) || isContainer(exponent)) {
    return elementwise(state, ArithmeticOp::power, base, exponent);
  }
  requireSymbolic(state, "unable to raise %1 to the power %2", base, exponent);
  if (isNumber(base) && isNumber(exponent)) {
    return numberPower(state, base, exponent);
  }
  if (exponent == immediate(0)) {
    return immediate(1);
  }
  if (exponent == immediate(1)) {
    return base;
  }
  if (base == immediate(1)) {
    return base;
  }
  if (isInteger(exponent)) {
    if (is(base, Tag::power)) {
      return powerOf(state, operand(base, 1), productOf(state, operand(base, 2), exponent));
    }
    if (isSqrt(state, base)) {
      return powerOf(state, operand(base, 2), productOf(state, oneHalf(state), exponent));
    }
    if (is(base, Tag::product)) {
      ALGEB result = immediate(1);
      for (std::size_t i = 1; i <= operandCount(base); ++i) {
        result = productOf(state, result, powerOf(state, operand(base, i), exponent));
      }
      return result;
    }
  }
  if (exponent == oneHalf(state)) {
    return applicationOf(state, "sqrt", base);
  }
  return newPower(state, base, exponent);
}

}  // namespace vexel
