// The language of one kernel: what it keeps while it runs, and the way in for the values.
#pragma once

#include "language/syntax.hpp"
#include "values/kernel_state.hpp"

namespace vexel {

class Interpreter final : public Language {
 public:
  bool quit = false;

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

}  // namespace vexel
