// Built-in functions on the structure of values, and evaluation to floating point.

#include "builtins/builtins.hpp"
#include "builtins/collections.hpp"
#include "mathematics/algebra.hpp"
#include "mathematics/comparison.hpp"
#include "mathematics/elementary.hpp"
#include "mathematics/elementwise.hpp"
#include "mathematics/evaluation.hpp"
#include "mathematics/parts.hpp"
#include "mathematics/summation.hpp"
#include "values/arrays.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"
#include "values/text.hpp"

namespace vexel {

namespace {

ALGEB only(State& s, ALGEB args) {
  if (argumentCount(args) != 1) {
    raise(s, "expected one argument, received: %1", args);
  }
  return argument(s, args, 1);
}

void requireCount(State& s, ALGEB args, std::size_t n, const char* message) {
  if (isNull(args) || argumentCount(args) != n) {
    raise(s, message, args);
  }
}

std::int64_t smallInteger(State& s, ALGEB x, const char* message) {
  std::int64_t i = 0;
  if (!isInteger(x) || !fitsInt64(x, &i)) {
    raise(s, message, x);
  }
  return i;
}

// An array of x's shape, of host objects: f of every element.
template <typename F>
ALGEB mapArray(State& s, ALGEB x, F f) {
  RTableSettings settings = settingsOf(x);
  settings.data_type = RTABLE_DAG;
  settings.storage = RTABLE_RECTANGULAR;
  const ArrayObject& array = arrayOf(x);
  std::vector<V_INT> bounds;
  for (int d = 0; d < array.dimensions; ++d) {
    bounds.push_back(array.lower(d));
    bounds.push_back(array.upper(d));
  }
  const ALGEB result = newArray(s, settings, nullptr, bounds.data());
  for (std::int64_t i = 0; i < array.count; ++i) {
    RTableData e{};
    e.dag = f(elementToObject(s, array.type, elementAt(x, i)));
    setElementAt(result, i, e);
  }
  return result;
}

// evalf of every element of an array; an array of machine floats is returned itself.
ALGEB evalfOrMap(State& s, ALGEB x, int digits) {
  if (!isArray(x)) {
    return evalf(s, x, digits);
  }
  const int type = arrayOf(x).type;
  if (type == RTABLE_FLOAT64 || type == RTABLE_FLOAT32 || type == RTABLE_COMPLEX) {
    return x;
  }
  return mapArray(s, x, [&](ALGEB e) {
    lookAtInterrupt();
    return evalf(s, e, digits);
  });
}

ALGEB callEvalf(State& s, ALGEB args) {
  if (isNull(args)) {
    return args;
  }
  if (argumentCount(args) == 1) {
    return evalfOrMap(s, args, s.digits());
  }
  // evalf of a sequence of results has more than two elements or no digits at its end.
  requireCount(s, args, 2, "evalf expects one or two arguments, received: %1");
  const std::int64_t digits =
      smallInteger(s, argument(s, args, 2), "expected a number of digits, received: %1");
  checkDigits(s, digits);
  return evalfOrMap(s, argument(s, args, 1), static_cast<int>(digits));
}

ALGEB count(State& s, ALGEB x) {  // several arguments are a sequence
  if (isArray(x)) {
    return newInteger(s, arrayOf(x).count);
  }
  if (is(x, Tag::table)) {
    return newInteger(s, static_cast<std::int64_t>(table(x).size()));
  }
  Handles all(s);
  elementsOf(s, x, all);
  return newInteger(s, static_cast<std::int64_t>(all.size()));
}

ALGEB part(State& s, ALGEB args) {
  requireCount(s, args, 2, "part expects two arguments, received: %1");
  const ALGEB x = argument(s, args, 1);
  const ALGEB i = argument(s, args, 2);
  Handles all(s);
  elementsOf(s, x, all);
  const std::int64_t n = smallInteger(s, i, "expected an integer as index, received: %1");
  if (n < 1 || n > static_cast<std::int64_t>(all.size())) {
    raise(s, "index out of range: %1", i);
  }
  return all[static_cast<std::size_t>(n - 1)];
}

ALGEB map(State& s, ALGEB args) {
  requireCount(s, args, 2, "map expects two arguments, received: %1");
  const ALGEB f = argument(s, args, 1);
  const ALGEB x = argument(s, args, 2);
  auto applied = [&](ALGEB e) {
    lookAtInterrupt();
    const ALGEB single[] = {e};
    return apply(s, f, single);
  };
  if (isArray(x)) {
    return mapArray(s, x, applied);
  }
  Handles elements(s);
  if (isList(x) || isSequence(x)) {
    for (std::size_t i = 1; i <= countOf(x); ++i) {
      elements.push(applied(element(s, x, i)));
    }
    return isList(x) ? newList(s, elements.span()) : sequenceOf(s, elements.span());
  }
  return applied(x);
}

ALGEB toList(State& s, ALGEB args) {
  Handles all(s);
  if (!isNull(args)) {
    elementsOf(s, args, all);
  }
  return newList(s, all.span());
}

ALGEB typeOf(State& s, ALGEB args) {
  const ALGEB x = args;
  const char* kind = "expression";
  if (isNull(x)) {
    kind = "NULL";
  } else if (isInteger(x)) {
    kind = "integer";
  } else {
    switch (tag(x)) {
      case Tag::rational:
        kind = "rational";
        break;
      case Tag::complex:
        kind = "complex";
        break;
      case Tag::softwareFloat:
        kind = "float";
        break;
      case Tag::string:
        kind = "string";
        break;
      case Tag::name:
        kind = "name";
        break;
      case Tag::boolean:
        kind = "boolean";
        break;
      case Tag::list:
        kind = "list";
        break;
      case Tag::sequence:
        kind = "sequence";
        break;
      case Tag::sum:
        kind = "sum";
        break;
      case Tag::product:
        kind = "product";
        break;
      case Tag::power:
        kind = "power";
        break;
      case Tag::application:
        kind = "call";
        break;
      case Tag::equation:
        kind = "equation";
        break;
      case Tag::range:
        kind = "range";
        break;
      case Tag::less:
      case Tag::lessEqual:
      case Tag::unequal:
        kind = "relation";
        break;
      case Tag::procedure:
      case Tag::function:
        kind = "procedure";
        break;
      case Tag::table:
        kind = "table";
        break;
      case Tag::array:
        kind = "array";
        break;
      case Tag::date:
        kind = "date";
        break;
      case Tag::pointer:
        kind = "pointer";
        break;
      default:
        break;
    }
  }
  return string(s, kind);
}

ALGEB makeTable(State& s, ALGEB args) {
  const ALGEB result = newTable(s);
  if (isNull(args)) {
    return result;
  }
  const ALGEB entries = only(s, args);
  if (!isList(entries)) {
    raise(s, "table expects a list of equations, received: %1", entries);
  }
  for (std::size_t i = 1; i <= countOf(entries); ++i) {
    const ALGEB e = element(s, entries, i);
    if (!isEquation(e)) {
      raise(s, "table expects a list of equations, received: %1", entries);
    }
    table(result).assign(operand(e, 1), operand(e, 2));
  }
  return result;
}

// sum(list), and sum(e, k = a .. b) of expressions that exist already.
ALGEB sumOfElements(State& s, ALGEB args) {
  if (!isNull(args) && argumentCount(args) == 2) {
    const ALGEB over = argument(s, args, 2);
    if (isEquation(over) && is(operand(over, 1), Tag::name) && isRange(operand(over, 2))) {
      const ALGEB range = operand(over, 2);
      return sumOver(s, argument(s, args, 1), operand(over, 1), operand(range, 1),
                     operand(range, 2));
    }
  }
  const ALGEB x = only(s, args);
  if (isMachineArray(x)) {
    return machineSum(s, x);
  }
  Handles all(s);
  elementsOf(s, x, all);
  RunningSum total(s, immediate(0));
  for (const ALGEB e : all.span()) {
    total.add(e);
  }
  return total.value();
}

// unapply(e, x, ...): the procedure (x, ...) -> e.
ALGEB unapply(State& s, ALGEB args) {
  if (isNull(args) || argumentCount(args) < 2) {
    raise(s, "unapply expects an expression and names, received: %1", args);
  }
  std::string parameters;
  for (std::size_t i = 2; i <= argumentCount(args); ++i) {
    const ALGEB parameter = argument(s, args, i);
    if (!is(parameter, Tag::name)) {
      raise(s, "expected an unassigned name, received: %1", parameter);
    }
    parameters += (i > 2 ? ", " : "") + std::string(text(parameter));
  }
  return s.language->runStatements(
      s, "(" + parameters + ") -> " + sourceText(s, argument(s, args, 1)) + ":");
}

}  // namespace

void defineStructuralFunctions(State& state) {
  defineFunction(state, "evalf", callEvalf);
  defineFunction(
      state, "evalhf",
      [](State& s, ALGEB args) { return newFloat(s, evaluateHardware(s, only(s, args))); },
      [](State&, int, const double* a) { return a[1]; });
  defineFunction(state, "count", count);
  defineFunction(state, "part", part);
  defineFunction(state, "map", map);
  defineFunction(state, "tolist", toList);
  defineFunction(state, "typeof", typeOf);
  defineFunction(state, "table", makeTable);
  defineFunction(state, "sum", sumOfElements);
  defineFunction(state, "seq", [](State& s, ALGEB args) {
    Handles all(s);
    if (!isNull(args)) {
      elementsOf(s, args, all);
    }
    return sequenceOf(s, all.span());
  });
  defineFunction(state, "istrue",
                 [](State& s, ALGEB args) { return boolean(s, truth(s, only(s, args))); });
  defineFunction(state, "lhs", [](State& s, ALGEB args) {
    if (isRange(args) || isRelation(args)) {
      return operand(args, 1);
    }
    raise(s, "expected an equation or a range, received: %1", args);
  });
  defineFunction(state, "rhs", [](State& s, ALGEB args) {
    if (isRange(args) || isRelation(args)) {
      return operand(args, 2);
    }
    raise(s, "expected an equation or a range, received: %1", args);
  });
  defineFunction(state, "unapply", unapply);
  defineFunction(state, "Complex", [](State& s, ALGEB args) {
    requireCount(s, args, 2, "Complex expects two real numbers, received: %1");
    const ALGEB re = argument(s, args, 1);
    const ALGEB im = argument(s, args, 2);
    if (!isReal(re) || !isReal(im)) {
      raise(s, "Complex expects two real numbers, received: %1", args);
    }
    return newComplex(s, re, im);
  });
  defineFunction(state, "Float", [](State& s, ALGEB args) -> ALGEB {
    // Float(undefined), Float(infinity); Float(m, e) is m*10^e
    if (!isNull(args) && argumentCount(args) == 2) {
      const ALGEB mantissa = argument(s, args, 1);
      const ALGEB exponent = argument(s, args, 2);
      if (!isReal(mantissa) || !isInteger(exponent)) {
        raise(s, "Float expects a number and an integer, received: %1", args);
      }
      return multiply(s, roundToDigits(s, mantissa, s.digits()),
                      integerPower(s, immediate(10), exponent));
    }
    const ALGEB x = only(s, args);
    if (!isReal(x)) {
      raise(s, "expected a number, received: %1", x);
    }
    return isFloat(x) ? x : roundToDigits(s, x, s.digits());
  });
}

}  // namespace vexel
