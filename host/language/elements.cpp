#include "language/elements.hpp"

#include <string>
#include <vector>

#include "mathematics/comparison.hpp"
#include "values/arrays.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"
#include "values/text.hpp"

namespace vexel {

namespace {

V_INT indexValue(State& state, ALGEB i) {
  std::int64_t n = 0;
  if (!isInteger(i) || !fitsInt64(i, &n)) {
    raise(state, "expected an integer as index, received: %1", i);
  }
  return n;
}

// The key under which a table holds an index: lists and sequences that are equal element by element
// are one key.
ALGEB tableKey(State& state, ALGEB t, std::span<const ALGEB> index) {
  const ALGEB key = sequenceOf(state, index);
  if ((!isSequence(key) && !isList(key)) || isNull(key) || table(t).find(key) != nullptr) {
    return key;
  }
  for (const auto& [known, value] : table(t).entries()) {
    if ((isSequence(known) || isList(known)) &&
        comparison(state, CompareOp::equal, known, key).value_or(false)) {
      return known;
    }
  }
  return key;
}

}  // namespace

void assignIndexed(State& state, ALGEB what, std::span<const ALGEB> index, ALGEB v) {
  if (is(what, Tag::table)) {
    table(what).assign(tableKey(state, what, index), v);
    return;
  }
  if (isArray(what)) {
    std::vector<V_INT> at;
    for (const ALGEB i : index) {
      at.push_back(indexValue(state, i));
    }
    arrayAssign(state, what, at, v);
    return;
  }
  if (isList(what) && index.size() == 1) {
    const V_INT i = indexValue(state, index[0]);
    if (i < 1 || i > static_cast<V_INT>(countOf(what))) {
      raise(state, "index out of range: %1", index[0]);
    }
    setOperand(what, static_cast<std::size_t>(i), v);
    return;
  }
  raise(state, "unable to assign an element of %1", what);
}

ALGEB indexed(State& state, ALGEB x, std::span<const ALGEB> index) {
  if (is(x, Tag::table)) {
    const ALGEB key = tableKey(state, x, index);
    if (const ALGEB found = table(x).find(key)) {
      return found;
    }
    raise(state, "the table has no entry %1", key);
  }
  if (isArray(x)) {
    std::vector<V_INT> at;
    for (const ALGEB i : index) {
      at.push_back(indexValue(state, i));
    }
    const ALGEB found = arraySelect(state, x, at);
    return found == nullptr ? state.null : found;
  }
  if ((isList(x) || isSequence(x)) && !index.empty()) {
    const V_INT i = indexValue(state, index[0]);
    if (i < 1 || i > static_cast<V_INT>(countOf(x))) {
      raise(state, "index out of range: %1", index[0]);
    }
    const ALGEB found = element(state, x, static_cast<std::size_t>(i));
    return index.size() == 1 ? found : indexed(state, found, index.subspan(1));
  }
  if (is(x, Tag::name) || is(x, Tag::function)) {
    std::string subscripted = plainText(state, x) + "[";
    for (std::size_t i = 0; i < index.size(); ++i) {
      subscripted += (i > 0 ? ", " : "") + sourceText(state, index[i]);
    }
    return name(state, subscripted + "]");
  }
  raise(state, "unable to select an element of %1", x);
}

}  // namespace vexel
