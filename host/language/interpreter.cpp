// The language as the values see it.  Calls in hardware floats are in hardware.cpp.

#include "language/interpreter.hpp"

#include <alloca.h>

#include <string>

#include "language/evaluator.hpp"
#include "language/parser.hpp"
#include "language/procedure.hpp"
#include "mathematics/evaluation.hpp"
#include "values/errors.hpp"
#include "values/objects.hpp"

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

ALGEB Interpreter::callProcedure(State& state, ALGEB procedureObject, ALGEB args) {
  checkStack(state);
  lookAtInterrupt();
  // The object is on this frame, so program and captured values stay alive.
  const auto& procedure = static_cast<const LanguageProcedure&>(*foreign(procedureObject));
  const FunctionCode& code = *procedure.code;
  std::size_t given = argumentCount(args);
  if (isNull(args)) {
    given = code.parameters == 0 ? 0 : 1;
  }
  if (given != static_cast<std::size_t>(code.parameters)) {
    raise(state,
          "the procedure %1 expects " + std::to_string(code.parameters) +
              (code.parameters == 1 ? " argument, received: %2" : " arguments, received: %2"),
          procedureObject, args);
  }
  constexpr std::size_t kMostSlots = 4096;  // of a frame on the machine stack
  const auto count = static_cast<std::size_t>(code.slots);
  if (count > kMostSlots) {
    raise(state, "too many local names");
  }
  auto* slots = static_cast<ALGEB*>(alloca((count + 1) * sizeof(ALGEB)));
  for (std::size_t i = 0; i < count; ++i) {
    slots[i] = i < given ? argument(state, args, i + 1) : nullptr;
  }
  for (std::size_t i = 0; i < code.captures.size(); ++i) {
    slots[code.captures[i].inner] = procedure.captured[i];
  }
  try {
    return evaluateBody(state, procedure.program, slots, *code.body);
  } catch (const HostErrorToken&) {
    state.error.inProcedure = true;
    state.error.line = 0;  // a place in the procedure, which may come from another text
    throw;
  }
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
