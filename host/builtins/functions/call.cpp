#include "builtins/functions/call.hpp"

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <vexel/errors.hpp>
#include <vexel/interruption.hpp>
#include <vexel/random.hpp>

#include "builtins/builtins.hpp"
#include "builtins/functions/objects.hpp"
#include "mathematics/elementwise.hpp"
#include "values/arrays.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/text.hpp"

namespace vexel {

namespace {

std::string_view trimmed(std::string_view text) {
  const std::size_t from = text.find_first_not_of(' ');
  return from == std::string_view::npos ? ""
                                        : text.substr(from, text.find_last_not_of(' ') - from + 1);
}

void addParameters(std::string_view list, bool byPosition, std::vector<Parameter>& out) {
  while (!trimmed(list).empty()) {
    const std::size_t comma = list.find(',');
    const std::string_view one = trimmed(list.substr(0, comma));
    list = comma == std::string_view::npos ? "" : list.substr(comma + 1);
    if (one == "...") {
      continue;
    }
    const std::size_t equals = one.find('=');
    Parameter parameter;
    parameter.name = trimmed(one.substr(0, equals));
    parameter.optional = equals != std::string_view::npos || !byPosition;
    parameter.fallback = equals == std::string_view::npos ? "" : trimmed(one.substr(equals + 1));
    parameter.byPosition = byPosition;
    out.push_back(std::move(parameter));
  }
}

bool fitsUnsigned(ALGEB x, std::uint64_t* result) {
  if (!isInteger(x)) {
    return false;
  }
  const IntegerView z(x);
  *result = mpz_get_ui(z.get());
  return mpz_sgn(z.get()) >= 0 && mpz_sizeinbase(z.get(), 2) <= 64;
}

}  // namespace

Signature::Signature(std::string_view name, std::string_view list)
    : function(name), text(std::string(name) + "(" + std::string(list) + ")") {
  const std::size_t semicolon = list.find(';');
  open = list.find("...") != std::string_view::npos;
  addParameters(list.substr(0, semicolon), true, parameters);
  if (semicolon != std::string_view::npos) {
    addParameters(list.substr(semicolon + 1), false, parameters);
  }
}

Call::Call(State& state, const Signature& signature, ALGEB args, void* context)
    : state_(state),
      signature_(signature),
      values_(signature.parameters.size(), nullptr),
      args_(args),
      context_(context),
      kept_(state) {
  const std::size_t n = isNull(args) ? 0 : argumentCount(args);
  std::size_t next = 0;
  for (std::size_t i = 1; i <= n; ++i) {
    const ALGEB x = argument(state, args, i);
    std::size_t at = next;
    ALGEB given = x;
    if (signature.open && isEquation(x) && is(operand(x, 1), Tag::string)) {  // a quoted heading
      others_.emplace_back(operand(x, 1), operand(x, 2));
      continue;
    }
    if (isEquation(x) && is(operand(x, 1), Tag::name)) {
      const std::string_view name = vexel::text(operand(x, 1));
      const auto found = std::find_if(
          signature.parameters.begin(), signature.parameters.end(),
          [&](const Parameter& p) { return p.name == name && !(signature.open && p.byPosition); });
      if (found == signature.parameters.end() && signature.open) {
        others_.emplace_back(operand(x, 1), operand(x, 2));
        continue;
      }
      if (found == signature.parameters.end()) {
        raise(state, signature.function + " has no parameter %1; it is called as " + signature.text,
              operand(x, 1));
      }
      at = static_cast<std::size_t>(found - signature.parameters.begin());
      given = operand(x, 2);
    } else {
      ++next;
    }
    if (at >= values_.size() || (given == x && !signature.parameters[at].byPosition)) {
      const auto& all = signature.parameters;
      const bool isOfData = isNumber(x) && !all.empty() && all.front().name == "x";
      raise(state, signature.function + " takes fewer arguments by position" +
                       (isOfData ? ", numbers as one list [1, 2]" : "") + "; it is called as " +
                       signature.text);
    }
    if (values_[at] != nullptr) {
      raise(state, signature.function + " was given " + signature.parameters[at].name + " twice");
    }
    values_[at] = given;
  }
  for (std::size_t i = 0; i < values_.size(); ++i) {
    if (values_[i] == nullptr && !signature.parameters[i].optional) {
      raise(state, signature.function + " needs " + signature.parameters[i].name +
                       "; it is called as " + signature.text);
    }
  }
}

ALGEB Call::value(std::string_view parameter) const {
  for (std::size_t i = 0; i < values_.size(); ++i) {
    if (signature_.parameters[i].name == parameter) {
      return values_[i];
    }
  }
  return nullptr;
}

void Call::refuse(std::string_view parameter, const std::string& expected) {
  raise(state_,
        signature_.function + " expects " + expected + " as " + std::string(parameter) +
            ", received: %1",
        value(parameter));
}

double Call::number(std::string_view parameter, double fallback) {
  const ALGEB x = value(parameter);
  if (x == nullptr) {
    return fallback;
  }
  if (!isNumber(x) && !is(x, Tag::name) && !isExpression(x)) {
    refuse(parameter, "a number");
  }
  return doubleOfValue(state_, x);
}

std::int64_t Call::integer(std::string_view parameter, std::int64_t fallback) {
  const ALGEB x = value(parameter);
  std::int64_t result = fallback;
  if (x != nullptr && (!isInteger(x) || !fitsInt64(x, &result))) {
    refuse(parameter, "an integer");
  }
  return result;
}

std::uint64_t Call::unsignedInteger(std::string_view parameter) {
  const ALGEB x = value(parameter);
  std::uint64_t result = 0;
  if (x != nullptr && !fitsUnsigned(x, &result)) {
    refuse(parameter, "an integer from 0 to 2^64 - 1");
  }
  return result;
}

std::size_t Call::size(std::string_view parameter, std::size_t fallback) {
  const std::int64_t n = integer(parameter, static_cast<std::int64_t>(fallback));
  if (n < 0) {
    refuse(parameter, "a count");
  }
  return static_cast<std::size_t>(n);
}

bool Call::boolean(std::string_view parameter, bool fallback) {
  const ALGEB x = value(parameter);
  if (x != nullptr && !isBoolean(state_, x)) {
    refuse(parameter, "true or false");
  }
  return x == nullptr ? fallback : x == state_.trueValue;
}

std::optional<Interval> Call::range(std::string_view parameter) {
  const ALGEB x = value(parameter);
  if (x == nullptr) {
    return std::nullopt;
  }
  if (isRange(x)) {
    return Interval{doubleOfValue(state_, operand(x, 1)), doubleOfValue(state_, operand(x, 2))};
  }
  if (isList(x) && countOf(x) == 2) {
    return Interval{doubleOfValue(state_, element(state_, x, 1)),
                    doubleOfValue(state_, element(state_, x, 2))};
  }
  refuse(parameter, "a range a .. b");
}

std::string Call::word(std::string_view parameter, std::string_view fallback) {
  const ALGEB x = value(parameter);
  if (x == nullptr) {
    return std::string(fallback);
  }
  if (is(x, Tag::name) || is(x, Tag::string)) {
    return std::string(vexel::text(x));
  }
  if (is(x, Tag::function)) {
    return machineFunction(x).name;
  }
  refuse(parameter, "a name");
}

Missing Call::missing(Missing fallback) { return choice("missing", fallback); }

Random& Call::random() {
  const ALGEB x = value("rng");
  if (x == nullptr) {
    return streamOf(state_);
  }
  if (auto* object = objectOf<RandomObject>(x)) {
    return object->random;
  }
  std::uint64_t seed = 0;
  if (!fitsUnsigned(x, &seed)) {
    refuse("rng", "a Random or a seed from 0 to 2^64 - 1");
  }
  own_.emplace();
  own_->emplace_back(seed);
  return own_->front();
}

ALGEB Call::real(double x) { return newFloat(state_, x); }

namespace {

template <typename T>
ALGEB container(State& state, std::span<const T> x, ALGEB like, int type) {
  if (like != nullptr && isList(like)) {
    Handles elements(state);
    for (const T e : x) {
      if constexpr (std::is_same_v<T, double>) {
        elements.push(newFloat(state, e));
      } else {
        elements.push(newInteger(state, e));
      }
    }
    return newList(state, elements.span());
  }
  ALGEB result = nullptr;
  if (like != nullptr && isArray(like) &&
      arrayOf(like).count == static_cast<std::int64_t>(x.size())) {
    result = arrayLike(state, like, type);
  } else {
    const RTableSettings settings{type, RTABLE_RECTANGULAR, RTABLE_COLUMN_MAJOR, 1, 0};
    const V_INT bounds[] = {1, static_cast<V_INT>(x.size())};
    result = newArray(state, settings, nullptr, bounds);
  }
  std::copy(x.begin(), x.end(), static_cast<T*>(arrayOf(result).data));
  return result;
}

}  // namespace

ALGEB Call::reals(std::span<const double> x, ALGEB like) {
  return container(state_, x, like, RTABLE_FLOAT64);
}

ALGEB Call::integers(std::span<const std::int64_t> x, ALGEB like) {
  return container(state_, x, like, RTABLE_INTEGER64);
}

ALGEB Call::positions(std::vector<std::int64_t> at) {
  for (std::int64_t& i : at) {
    ++i;
  }
  return integers(at, nullptr);
}

ALGEB Call::matrix(std::span<const double> rows, std::size_t rowCount, std::size_t columnCount) {
  const RTableSettings settings{RTABLE_FLOAT64, RTABLE_RECTANGULAR, RTABLE_ROW_MAJOR, 2, 0};
  const V_INT bounds[] = {1, static_cast<V_INT>(rowCount), 1, static_cast<V_INT>(columnCount)};
  return newArray(state_, settings, rows.data(), bounds);
}

ALGEB Call::parts(std::initializer_list<Part> fields) {
  const ALGEB result = newTable(state_);
  for (const auto& [key, x] : fields) {
    table(result).assign(name(state_, key), x);
  }
  return result;
}

void defineRows(State& state, std::span<const FunctionRow> rows, std::shared_ptr<void> context) {
  for (const FunctionRow& row : rows) {
    auto signature = std::make_shared<const Signature>(row.name, row.parameters);
    auto function = std::make_unique<MachineFunction>();
    function->name = row.name;
    function->takesEquations = true;
    if (row.summary != nullptr) {
      function->usage = {signature->text, row.summary, row.example == nullptr ? "" : row.example};
    }
    function->call = [signature, body = row.body, context](State& s, ALGEB args) {
      Call call(s, *signature, args, context.get());
      const Watch watch([](double) {
        lookAtInterrupt();
        return true;
      });
      try {
        return body(call);
      } catch (const ElementError& e) {
        raise(s, e.text(1));
      } catch (const std::invalid_argument& e) {
        raise(s, e.what());
      }
    };
    setNameFunction(name(state, row.name), newFunction(state, std::move(function)));
  }
}

void defineFunctionList(State& state) {
  defineFunction(state, "functions", [](State& s, ALGEB) {
    std::vector<const MachineFunction::Usage*> all;
    s.interned.forEachName([&](ALGEB n) {
      const ALGEB f = nameFunction(n);
      if (is(f, Tag::function) && !machineFunction(f).usage.call.empty()) {
        all.push_back(&machineFunction(f).usage);
      }
    });
    std::sort(all.begin(), all.end(),
              [](const auto* a, const auto* b) { return a->call < b->call; });
    Handles list(s);
    for (const auto* usage : all) {
      const ALGEB entry[] = {string(s, usage->call), string(s, usage->summary),
                             string(s, usage->example)};
      list.push(newList(s, entry));
    }
    return newList(s, list.span());
  });
}

Random& streamOf(State& state) {
  if (state.functionStream == nullptr || state.functionStreamSeeding != state.random.seedings()) {
    state.functionStream = std::make_shared<Random>(state.random.lastSeed());
    state.functionStreamSeeding = state.random.seedings();
  }
  return *std::static_pointer_cast<Random>(state.functionStream);
}

}  // namespace vexel
