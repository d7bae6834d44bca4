// Making objects, calling functions, and tables.

#include "values/objects.hpp"

#include <algorithm>
#include <stdexcept>
#include <string_view>

#include "values/errors.hpp"

namespace vexel {

namespace {

ALGEB newRow(State& state, Tag t, std::span<const ALGEB> elements) {
  ALGEB x = state.heap.allocate(t, elements.size() + 1);
  std::copy(elements.begin(), elements.end(), reinterpret_cast<ALGEB*>(words(x) + 1));
  return x;
}

ALGEB internRow(State& state, Tag t, std::span<const ALGEB> elements) {
  return state.interned.words(t, reinterpret_cast<const Word*>(elements.data()), elements.size());
}

}  // namespace

ALGEB newList(State& state, std::size_t n) { return state.heap.allocate(Tag::list, n + 1); }

ALGEB newList(State& state, std::span<const ALGEB> elements) {
  return newRow(state, Tag::list, elements);
}

ALGEB newSequence(State& state, std::size_t n) {
  return n == 0 ? state.null : state.heap.allocate(Tag::sequence, n + 1);
}

ALGEB sequenceOf(State& state, std::span<const ALGEB> elements) {
  switch (elements.size()) {
    case 0:
      return state.null;
    case 1:
      return elements[0] == nullptr ? state.null : elements[0];
    default:
      return newRow(state, Tag::sequence, elements);
  }
}

ALGEB oneArgument(State& state, ALGEB args, const char* message) {
  if (argumentCount(args) != 1 || isNull(args)) {
    raise(state, message, args);
  }
  return argument(state, args, 1);
}

ALGEB newPair(State& state, Tag t, ALGEB left, ALGEB right) {
  ALGEB x = state.heap.allocate(t, 3);
  setOperand(x, 1, left);
  setOperand(x, 2, right);
  return x;
}

ALGEB newExpression(State& state, Tag t, std::span<const ALGEB> operands) {
  return internRow(state, t, operands);
}

ALGEB newPower(State& state, ALGEB base, ALGEB exponent) {
  const ALGEB operands[] = {base, exponent};
  return internRow(state, Tag::power, operands);
}

ALGEB newApplication(State& state, ALGEB function, std::span<const ALGEB> args) {
  Handles operands(state);
  operands.push(function);
  for (ALGEB a : args) {
    operands.push(a == nullptr ? state.null : a);
  }
  return internRow(state, Tag::application, operands.span());
}

ALGEB newForeign(State& state, Tag t, std::unique_ptr<Foreign> f, std::size_t extraBytes) {
  constexpr std::size_t kUsualBytes = 64;  // of the object itself, about
  ALGEB x = state.heap.allocate(t, sizeof(ForeignObject) / sizeof(Word));
  reinterpret_cast<ForeignObject*>(x)->object = f.release();
  state.heap.countBytes(extraBytes + kUsualBytes);
  return x;
}

ALGEB newPointer(State& state, void* address, V_INT type) {
  ALGEB x = state.heap.allocate(Tag::pointer, sizeof(PointerObject) / sizeof(Word));
  pointerOf(x).address = address;
  pointerOf(x).type = type;
  return x;
}

// ---- tables

ALGEB Table::find(ALGEB key) const {
  const auto found = index_.find(key);
  return found == index_.end() ? nullptr : entries_[found->second].second;
}

void Table::assign(ALGEB key, ALGEB value) {
  const auto [place, isNew] = index_.try_emplace(key, entries_.size());
  if (!isNew) {
    entries_[place->second].second = value;
    return;
  }
  try {
    entries_.emplace_back(key, value);
  } catch (...) {
    index_.erase(place);
    throw;
  }
}

void Table::erase(ALGEB key) {
  const auto found = index_.find(key);
  if (found == index_.end()) {
    return;
  }
  entries_[found->second] = {};
  index_.erase(found);
  if (entries_.size() > 32 && index_.size() < entries_.size() / 2) {
    std::erase_if(entries_, [](const auto& e) { return e.first == nullptr; });
    for (std::size_t i = 0; i < entries_.size(); ++i) {
      index_[entries_[i].first] = i;
    }
  }
}

std::vector<std::pair<ALGEB, ALGEB>> Table::entries() const {
  std::vector<std::pair<ALGEB, ALGEB>> result;
  for (const auto& e : entries_) {
    if (e.first != nullptr) {
      result.push_back(e);
    }
  }
  return result;
}

void Table::mark(Marker& marker) {
  for (const auto& [key, value] : entries_) {
    marker.mark(key);
    marker.mark(value);
  }
}

ALGEB newTable(State& state) { return newForeign(state, Tag::table, std::make_unique<Table>()); }

// ---- functions

void MachineFunction::print(State&, std::string& out) const { out += name; }

ALGEB newFunction(State& state, std::unique_ptr<MachineFunction> f) {
  return newForeign(state, Tag::function, std::move(f));
}

void defineFunction(State& state, std::string_view functionName,
                    std::function<ALGEB(State&, ALGEB args)> call,
                    std::function<double(State&, int, const double*)> hardware) {
  auto f = std::make_unique<MachineFunction>();
  f->name = functionName;
  f->call = std::move(call);
  f->hardware = std::move(hardware);
  ALGEB function = newFunction(state, std::move(f));
  setNameFunction(name(state, functionName), function);
}

namespace {

// What a name stands for when it is called: its value, or the function known under it; an
// unassigned name without one is returned.
ALGEB callee(State& state, ALGEB f) {
  for (int i = 0; is(f, Tag::name); ++i) {
    if (i == 1000) {
      raise(state, "too many levels of recursion");
    }
    ALGEB next = nameValue(f) != nullptr && nameValue(f) != f ? nameValue(f) : nameFunction(f);
    if (next == nullptr) {
      return f;
    }
    f = next;
  }
  return f;
}

}  // namespace

bool isCallable(ALGEB x) { return is(x, Tag::foreign) && foreign(x)->calledAs() != nullptr; }

ALGEB apply(State& state, ALGEB function, ALGEB args) {
  lookAtInterrupt();
  checkStack(state);
  ALGEB f = callee(state, function);
  if (args == nullptr) {
    args = state.null;
  } else if (isSequence(args) && length(args) == 2) {
    args = element(state, args, 1);
  }
  if (is(f, Tag::function)) {
    MachineFunction& m = machineFunction(f);
    ALGEB result = guarded(
        state, [&] { return m.entry != nullptr ? m.entry(&state, args) : m.call(state, args); });
    return result == nullptr ? state.null : result;
  }
  if (is(f, Tag::procedure)) {
    return state.language->callProcedure(state, f, args);
  }
  if (state.strict && is(f, Tag::name)) {
    raise(state, "the function %1 is not defined", f);
  }
  if (is(f, Tag::name) || isExpression(f)) {
    Handles all(state);
    for (std::size_t i = 1; i <= argumentCount(args); ++i) {
      all.push(argument(state, args, i));
    }
    return newApplication(state, f, all.span());
  }
  if (isCallable(f)) {
    Handles all(state);
    all.push(f);
    for (std::size_t i = 1; i <= argumentCount(args); ++i) {
      all.push(argument(state, args, i));
    }
    return apply(state, nameFunction(name(state, foreign(f)->calledAs())), all.span());
  }
  raise(state, "%1 cannot be called", f);
}

ALGEB apply(State& state, ALGEB function, std::span<const ALGEB> args) {
  return apply(state, function, argumentsFrom(state, args));
}

double applyHardware(State& state, ALGEB function, int n, const double* args) {
  lookAtInterrupt();
  ALGEB f = callee(state, function);
  if (is(f, Tag::function)) {
    MachineFunction& m = machineFunction(f);
    if (!m.hardware) {
      raise(state, "%1 has no hardware floating-point form", f);
    }
    return guarded(state, [&] { return m.hardware(state, n, args); });
  }
  if (is(f, Tag::procedure)) {
    return state.language->callHardware(state, f, n, args);
  }
  raise(state, "%1 has no hardware floating-point form", f);
}

}  // namespace vexel
