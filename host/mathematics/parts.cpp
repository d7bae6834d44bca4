#include "mathematics/parts.hpp"

#include <vector>

#include "values/arrays.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"

namespace vexel {

void elementsOf(State& s, ALGEB x, Handles& out) {
  if (isArray(x)) {
    const ArrayObject& array = arrayOf(x);
    if (array.count == 0 || array.dimensions == 0) {
      return;
    }
    std::vector<V_INT> index = firstIndex(array);
    for (std::int64_t i = 0; i < array.count; ++i) {
      lookAtInterrupt();
      const ALGEB e = arraySelect(s, x, index);
      out.push(e == nullptr ? s.null : e);
      advance(array, index);
    }
    return;
  }
  if (is(x, Tag::table)) {
    for (const auto& [key, value] : table(x).entries()) {
      out.push(newPair(s, Tag::equation, key, value));
    }
    return;
  }
  if (isImmediate(x)) {
    out.push(x);
    return;
  }
  switch (tag(x)) {
    case Tag::list:
    case Tag::sequence:
    case Tag::sum:
    case Tag::product:
    case Tag::power:
    case Tag::range:
    case Tag::equation:
    case Tag::less:
    case Tag::lessEqual:
    case Tag::unequal:
    case Tag::rational:
    case Tag::complex:
      for (std::size_t i = 1; i < length(x); ++i) {
        out.push(element(s, x, i));
      }
      break;
    case Tag::application:
      for (std::size_t i = 2; i < length(x); ++i) {
        out.push(operand(x, i));
      }
      break;
    default:
      out.push(x);
  }
}

void rangeElements(State& s, ALGEB range, Handles& out) {
  const ALGEB from = operand(range, 1);
  const ALGEB to = operand(range, 2);
  if (!isReal(from) || !isReal(to) || !isFinite(s, to)) {
    raise(s, "expected a range of numbers, received: %1", range);
  }
  for (ALGEB i = from; compare(s, i, to) <= 0; i = add(s, i, immediate(1))) {
    lookAtInterrupt();
    out.push(i);
  }
}

}  // namespace vexel
