// The language as the values see it.  Procedures are called in statements.cpp and hardware.cpp.

#include "language/interpreter.hpp"

#include <string>

#include "language/evaluator.hpp"
#include "language/parser.hpp"
#include "mathematics/evaluation.hpp"
#include "values/errors.hpp"

namespace vexel {

TextPlace Interpreter::where() const {
  return program == nullptr ? TextPlace()
                            : TextPlace{program->text, node->position.line, node->position.column};
}

ALGEB Interpreter::evaluate(State& state, ALGEB x) { return vexel::evaluate(state, x); }

ALGEB Interpreter::evalf(State& state, ALGEB x, int digits) {
  return vexel::evalf(state, x, digits);
}

double Interpreter::evaluateHardware(State& state, ALGEB x) {
  return vexel::evaluateHardware(state, x);
}

ALGEB Interpreter::runStatements(State& state, std::string_view source) {
  const std::string owned(source);
  Parser parser(state, owned);
  ALGEB result = state.null;
  for (;;) {
    std::shared_ptr<Program> statement;
    std::string problem;
    try {
      statement = parser.next();
    } catch (const SyntaxError& e) {
      problem = "syntax error at line " + std::to_string(e.position.line) + ", column " +
                std::to_string(e.position.column) + ": " + e.message;
    }
    if (!problem.empty()) {
      raise(state, problem);
    }
    if (statement == nullptr || quit) {
      return result;
    }
    result = runProgram(state, statement);
  }
}

}  // namespace vexel
