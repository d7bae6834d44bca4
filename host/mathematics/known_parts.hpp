// Walks over expressions that share parts: without a memory of them a walk would take a time
// exponential in the depth.
#pragma once

#include <unordered_map>

#include "memory/heap.hpp"
#include "values/errors.hpp"
#include "values/objects.hpp"

namespace vexel {

// What a walk found for the parts of an expression, list or relation, so that shared ones are
// walked once.
class KnownParts {
 public:
  explicit KnownParts(State& state) : alive_(state) {}

  // The value of x, computed if it is not known.
  template <typename Compute>
  ALGEB value(ALGEB x, Compute compute) {
    if (!isExpression(x) && !isList(x) && !isSequence(x) && !isRange(x) && !isRelation(x)) {
      return compute();
    }
    lookAtInterrupt();
    if (const auto known = values_.find(x); known != values_.end()) {
      return known->second;
    }
    const ALGEB v = compute();
    values_.emplace(x, v);
    alive_.push(v);
    return v;
  }

 private:
  std::unordered_map<ALGEB, ALGEB> values_;
  Handles alive_;
};

}  // namespace vexel
