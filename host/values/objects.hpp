// Constructors and accessors of every kind of object except numbers (numbers.hpp) and arrays
// (arrays.hpp); what one is in memory is in memory/layout.hpp.  Constructors may collect; accessors
// never do.
#pragma once

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "memory/handle.hpp"
#include "memory/heap.hpp"
#include "memory/layout.hpp"
#include "values/kernel_state.hpp"

namespace vexel {

// --- booleans, strings, names ---
inline ALGEB boolean(State& state, bool b) { return b ? state.trueValue : state.falseValue; }
inline bool isBoolean(State& state, ALGEB x) {
  return x == state.trueValue || x == state.falseValue;
}
inline ALGEB string(State& state, std::string_view text) { return state.interned.string(text); }
inline ALGEB name(State& state, std::string_view text) { return state.interned.name(text); }

inline void setNameValue(State& state, ALGEB n, ALGEB value) {
  state.settled.namesGivenValues += nameValue(n) == nullptr ? 1U : 0U;
  nameOf(n).value = value;
}
inline void setNameFunction(ALGEB n, ALGEB function) { nameOf(n).function = function; }

// --- lists and sequences: elements from 1 ---
inline bool isList(ALGEB x) { return is(x, Tag::list); }
inline bool isSequence(ALGEB x) { return is(x, Tag::sequence); }
inline bool isNull(ALGEB x) { return x == nullptr || (is(x, Tag::sequence) && length(x) == 1); }
ALGEB newList(State& state, std::size_t n);  // unset elements
ALGEB newList(State& state, std::span<const ALGEB> elements);
ALGEB newSequence(State& state, std::size_t n);  // a sequence object of n unset elements; 0: NULL
// What n values stand for as an expression: NULL, the value itself, or a sequence.  Not flattened.
ALGEB sequenceOf(State& state, std::span<const ALGEB> elements);
// Elements of a list or sequence; 0 for NULL, 1 for any other object.
inline std::size_t countOf(ALGEB x) {
  return x == nullptr ? 0 : isSequence(x) || isList(x) ? length(x) - 1U : 1U;
}
// Element i from 1 of a list or sequence; unset ones read as NULL.  i must be in range.
inline ALGEB element(State& state, ALGEB x, std::size_t i) {
  ALGEB e = operand(x, i);
  return e == nullptr ? state.null : e;
}

// --- argument sequences (what a function is called with) ---
// 0: NULL; 1: the argument itself; else a sequence.
inline ALGEB argumentsFrom(State& state, std::span<const ALGEB> args) {
  return sequenceOf(state, args);
}
// The arguments in an argument sequence: elements of a sequence, else the object itself.
inline std::size_t argumentCount(ALGEB args) { return isSequence(args) ? length(args) - 1U : 1U; }
// NULL, the sequence without elements, is also the one argument of a call f(NULL).
inline ALGEB argument(State& state, ALGEB args, std::size_t i) {
  return isSequence(args) && length(args) > 1 ? element(state, args, i) : args;
}

// The only argument of a function; raises message, with all of them for its %1, unless there is
// one.
ALGEB oneArgument(State& state, ALGEB args, const char* message);

// --- relations and ranges: operands are words 1 and 2 ---
ALGEB newPair(State& state, Tag t, ALGEB left, ALGEB right);  // range, equation, less, ...
inline bool isRange(ALGEB x) { return is(x, Tag::range); }
inline bool isEquation(ALGEB x) { return is(x, Tag::equation); }
// --- symbolic expressions: interned, operands as given (no simplification here) ---
ALGEB newExpression(State& state, Tag t, std::span<const ALGEB> operands);  // sum, product
ALGEB newPower(State& state, ALGEB base, ALGEB exponent);
ALGEB newApplication(State& state, ALGEB function, std::span<const ALGEB> args);
inline std::size_t operandCount(ALGEB x) { return length(x) - 1U; }

// --- objects of C++ ---
// Takes over f; extraBytes is what it holds in the ordinary heap, for the collector's pace.
ALGEB newForeign(State& state, Tag t, std::unique_ptr<Foreign> f, std::size_t extraBytes = 0);

// --- tables ---
class Table : public Foreign {
 public:
  ALGEB find(ALGEB key) const;  // null when missing
  void assign(ALGEB key, ALGEB value);
  void erase(ALGEB key);
  std::size_t size() const { return index_.size(); }
  // In order of first assignment.
  std::vector<std::pair<ALGEB, ALGEB>> entries() const;
  void mark(Marker& marker) override;

 private:
  std::vector<std::pair<ALGEB, ALGEB>> entries_;  // null key: erased
  std::unordered_map<ALGEB, std::size_t> index_;
};
ALGEB newTable(State& state);
inline Table& table(ALGEB x) { return static_cast<Table&>(*foreign(x)); }

// --- functions ---
// A built-in function, an entry point of a library, or a function of the embedding program.
struct MachineFunction : Foreign {
  using Entry = ALGEB (*)(VKernelVector, ALGEB);
  std::string name;
  Entry entry = nullptr;                                              // either this
  std::function<ALGEB(State&, ALGEB args)> call;                      // or this
  std::function<double(State&, int n, const double* args)> hardware;  // args from 1; may be empty
  // For help: how it is called, what it gives, an example; empty for the functions described by
  // hand.
  struct Usage {
    std::string call;
    std::string summary;
    std::string example;
  };
  Usage usage;
  bool takesEquations = false;  // of parameters' names, which stay names: f(x, weights = w)
  void print(State& state, std::string& out) const override;
};
ALGEB newFunction(State& state, std::unique_ptr<MachineFunction> f);
// Makes a function known under its name, for calls and for EvalVexelProcedure.
void defineFunction(State& state, std::string_view functionName,
                    std::function<ALGEB(State&, ALGEB args)> call,
                    std::function<double(State&, int, const double*)> hardware = {});
inline MachineFunction& machineFunction(ALGEB x) {
  return static_cast<MachineFunction&>(*foreign(x));
}
inline bool isProcedure(ALGEB x) { return is(x, Tag::procedure) || is(x, Tag::function); }

// Calls whatever can be called: a machine function, a procedure of the language, or a name by its
// value or by the function known under it; an unassigned name gives a symbolic application.
// Standard exceptions that leave a machine function become host errors.
ALGEB apply(State& state, ALGEB function, ALGEB args);
// Whether x is an object with a function that stands for it where it is called.
bool isCallable(ALGEB x);
ALGEB apply(State& state, ALGEB function, std::span<const ALGEB> args);
// The same in hardware floating point, on args[1] ... args[n].
double applyHardware(State& state, ALGEB function, int n, const double* args);

// --- pointers ---
ALGEB newPointer(State& state, void* address, V_INT type);

}  // namespace vexel
