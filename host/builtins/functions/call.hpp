// Calls of the functions on data and laws: from arguments of the language to libvexel and back.
//
// A function is a row: its name, its parameters as they are written in the help, a line of what it
// does and a body.  Parameters before the semicolon may be given by position or as equations, those
// after it as equations only; "= value" makes one optional.  "..." among the latter takes equations
// with any other name, those of the parameters before the semicolon too.  A body asks for its
// arguments by name and kind.
#pragma once

#include <deque>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>
#include <vexel/data.hpp>
#include <vexel/interval.hpp>
#include <vexel/names.hpp>

#include "values/kernel_state.hpp"
#include "values/objects.hpp"

namespace vexel {

class Random;

struct Parameter {
  std::string name;
  std::string fallback;  // as the help shows it
  bool optional = false;
  bool byPosition = true;
};

class Call;
using FunctionBody = ALGEB (*)(Call&);

struct FunctionRow {
  const char* name;
  const char* parameters;
  const char* summary;  // null for a function that a page describes by hand
  const char* example;  // statements; null for none
  FunctionBody body;
};

// A function and its rows of parameters, parsed.
struct Signature {
  Signature(std::string_view function, std::string_view parameters);
  std::string function;
  std::string text;  // mean(x; weights, kind = arithmetic)
  std::vector<Parameter> parameters;
  bool open = false;  // takes equations with other names
};

class Call {
 public:
  // Binds arguments to parameters; raises for one too many, one missing, or a name that is none.
  Call(State& state, const Signature& signature, ALGEB args, void* context = nullptr);

  State& state() { return state_; }
  const Signature& signature() const { return signature_; }

  bool given(std::string_view parameter) const { return value(parameter) != nullptr; }
  ALGEB value(std::string_view parameter) const;  // null: not given

  // The equations with other names, in their order.
  using Named = std::pair<ALGEB, ALGEB>;
  std::span<const Named> others() const { return others_; }
  // What the row was defined with.
  void* context() const { return context_; }

  // Keeps what a body has made alive as long as the call.
  ALGEB keep(ALGEB x) {
    kept_.push(x);
    return x;
  }

  // Numbers of a list, an array of any type or a range, without a copy where they lie in memory as
  // such; Data() where the parameter is not given.  Valid as long as the call.
  Data data(std::string_view parameter);
  // The columns of a two-dimensional array or of a list of columns.
  std::vector<Data> columns(std::string_view parameter);
  bool isMatrix(std::string_view parameter) const;

  double number(std::string_view parameter, double fallback = 0);
  std::int64_t integer(std::string_view parameter, std::int64_t fallback = 0);
  std::uint64_t unsignedInteger(std::string_view parameter);  // 0 where it is not given
  std::size_t size(std::string_view parameter, std::size_t fallback = 0);
  bool boolean(std::string_view parameter, bool fallback = false);
  std::optional<Interval> range(std::string_view parameter);
  // The text of a name, a function's name or a string.
  std::string word(std::string_view parameter, std::string_view fallback = "");

  template <typename E>
  E choice(std::string_view parameter, E fallback) {
    if (!given(parameter)) {
      return fallback;
    }
    if (const std::optional<E> value = valueNamed<E>(word(parameter))) {
      return *value;
    }
    refuse(parameter, "one of " + namesListed<E>());
  }
  Missing missing(Missing fallback = Missing::propagate);

  // The stream that `rng` names: a Random, a seed, or the kernel's own.
  Random& random();

  // "f expects EXPECTED as PARAMETER, received: ..."
  [[noreturn]] void refuse(std::string_view parameter, const std::string& expected);

  // --- results ---
  ALGEB real(double x);
  // A list where like is one, else a float[8] array, of like's bounds if it has as many elements.
  ALGEB reals(std::span<const double> x, ALGEB like);
  ALGEB integers(std::span<const std::int64_t> x, ALGEB like);
  // What the functions count from 0, as the language counts: from 1.
  ALGEB positions(std::vector<std::int64_t> at);
  ALGEB matrix(std::span<const double> rows, std::size_t rowCount, std::size_t columnCount);
  using Part = std::pair<const char*, ALGEB>;
  ALGEB parts(std::initializer_list<Part> fields);  // a table from names

 private:
  [[noreturn]] void refuseTable(std::string_view parameter);
  Data numbersOf(std::string_view parameter, ALGEB x);

  State& state_;
  const Signature& signature_;
  std::vector<ALGEB> values_;    // live in the argument sequence, which the caller holds
  [[maybe_unused]] ALGEB args_;  // for the collector, which scans the stack
  void* context_;
  Handles kept_;
  std::vector<Named> others_;  // in the argument sequence, too
  std::deque<std::vector<double>> converted_;
  std::optional<std::vector<Random>> own_;
};

// Numbers of a list, array or range as a view, converted into room where they must be.
Data dataOf(State& state, ALGEB x, std::vector<double>& room);
// The double of a number or a symbolic constant; raises for anything else.
double doubleOfValue(State& state, ALGEB x);

// A procedure of one number: in hardware where it has that form.
class NumericProcedure {
 public:
  NumericProcedure(State& state, ALGEB procedure) : state_(&state), procedure_(procedure) {}
  double operator()(double x);

 private:
  State* state_;
  ALGEB procedure_;
  bool hardware_ = true;
};

// Defines the rows of one file.  The context is theirs as long as the kernel lives; it holds no
// handles.
void defineRows(State& state, std::span<const FunctionRow> rows,
                std::shared_ptr<void> context = nullptr);

// The kernel's own stream of the functions, seeded with the host's.
Random& streamOf(State& state);

void defineFunctionList(State& state);  // functions()
void defineDescriptiveFunctions(State& state);
void defineOrderFunctions(State& state);
void defineLawFunctions(State& state);
void defineRandomFunctions(State& state);
void defineStateFunctions(State& state);

}  // namespace vexel
