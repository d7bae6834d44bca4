// The language of one kernel: what it keeps while it runs, and the way in for the values.
#pragma once

#include <functional>
#include <optional>

#include "language/syntax.hpp"
#include "values/kernel_state.hpp"

namespace vexel {

class Interpreter final : public Language {
 public:
  bool quit = false;
  std::optional<int> exitStatus{};  // that exit(n) gave

  // Prints the value of a statement that ends with ';' in a script that another one reads; effect:
  // it was run for its effect.
  std::function<void(ALGEB, bool effect)> show;

  // What is being run, for errors.  Programs of texts without a name leave it as it is.
  const Program* program = nullptr;
  const Node* node = nullptr;

  TextPlace where() const override;
  ALGEB evaluate(State& state, ALGEB x) override;
  ALGEB evalf(State& state, ALGEB x, int digits) override;
  double evaluateHardware(State& state, ALGEB x) override;
  ALGEB callProcedure(State& state, ALGEB procedure, ALGEB args) override;
  double callHardware(State& state, ALGEB procedure, int n, const double* args) override;
  ALGEB runStatements(State& state, std::string_view text) override;
};

inline Interpreter& interpreter(State& state) { return static_cast<Interpreter&>(*state.language); }

// While it lives, errors stand at the places that the program's evaluation notes.
class PlaceScope {
 public:
  PlaceScope(State& state, const Program& program, const Node& node)
      : interpreter_(interpreter(state)), program_(interpreter_.program), node_(interpreter_.node) {
    if (program.text != nullptr) {
      interpreter_.program = &program;
      interpreter_.node = &node;
    }
  }
  PlaceScope(const PlaceScope&) = delete;
  PlaceScope& operator=(const PlaceScope&) = delete;
  ~PlaceScope() {
    interpreter_.program = program_;
    interpreter_.node = node_;
  }

 private:
  Interpreter& interpreter_;
  const Program* program_;
  const Node* node_;
};

}  // namespace vexel
