// Arithmetic on expressions: numbers are computed, the rest is kept symbolic in a canonical form.
//
// A sum's terms and a product's factors are in a fixed order, numeric parts collected, equal terms
// and powers of equal bases combined; nothing is expanded or factored.  sqrt(u) is the power
// u^(1/2).
#pragma once

#include <span>

#include "values/kernel_state.hpp"

namespace vexel {

ALGEB sumOf(State& state, ALGEB a, ALGEB b);
ALGEB sumOf(State& state, std::span<const ALGEB> parts);  // all at once, left to right
ALGEB differenceOf(State& state, ALGEB a, ALGEB b);
ALGEB productOf(State& state, ALGEB a, ALGEB b);
ALGEB quotientOf(State& state, ALGEB a, ALGEB b);
ALGEB powerOf(State& state, ALGEB base, ALGEB exponent);
ALGEB negativeOf(State& state, ALGEB a);

// A sum of many terms.  Symbolic ones are collected and added in batches, so that a long sum costs
// little more than sorting it; fractions are added in pairs, then pairs of pairs and so on, so that
// few additions are of long ones.
class RunningSum {
 public:
  RunningSum(State& state, ALGEB first) : state_(state), total_(first), pending_(state) {}
  void add(ALGEB term);
  void subtract(ALGEB term);
  ALGEB value();

 private:
  void addExact(ALGEB term);
  void flushExact();

  static constexpr std::size_t kBatch = 1000;
  State& state_;
  ALGEB total_;
  Handles pending_;  // symbolic terms; or, in a binary counter, sums of 2^k exact terms each
  std::size_t exactCount_ = 0;  // of exact terms in pending_; 0 for symbolic ones
};

// A product of many factors: exact ones are multiplied in pairs, then pairs of pairs and so on.
class RunningProduct {
 public:
  RunningProduct(State& state, ALGEB first) : state_(state), total_(first), pending_(state) {}
  void multiply(ALGEB factor);
  void divide(ALGEB divisor);
  ALGEB value();

 private:
  void multiplyExact(ALGEB factor);

  State& state_;
  ALGEB total_;
  Handles pending_;  // a binary counter: products of 2^k exact factors each
  std::size_t count_ = 0;
};

// f(args) by the name of f, kept as it is.
ALGEB applicationOf(State& state, const char* function, ALGEB argument);

// The derivative of an expression with respect to a name.
ALGEB derivative(State& state, ALGEB expression, ALGEB name);

}  // namespace vexel
