// Sums over a name whose range has an end that is not known yet: in closed form, or kept as
// sum(e, k = a .. b) until it is.
#pragma once

#include <functional>

#include "values/kernel_state.hpp"

namespace vexel {

// The sum of an expression over the name k from lower to upper, one of which is symbolic: closed
// where the terms are polynomials in k or multiples of c^k, else kept as it is.
ALGEB symbolicSum(State& state, ALGEB term, ALGEB k, ALGEB lower, ALGEB upper);

// The sum of an expression over k, term after term where both ends are numbers.
ALGEB sumOver(State& state, ALGEB term, ALGEB k, ALGEB lower, ALGEB upper);

// Whether x is such a sum that was kept.
bool isOpenSum(State& state, ALGEB x);

// A kept sum anew, with f applied to its ends and, while its name has no value, to its term.
ALGEB openSumAnew(State& state, ALGEB sum, const std::function<ALGEB(ALGEB)>& f);

// Takes a name's value away for as long as it lives.
class Unassigned {
 public:
  Unassigned(State& state, ALGEB name);
  ~Unassigned();
  Unassigned(const Unassigned&) = delete;
  Unassigned& operator=(const Unassigned&) = delete;

 private:
  State& state_;
  ALGEB name_;
  ALGEB saved_;
};

}  // namespace vexel
