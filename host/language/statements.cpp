// Statements: loops, try, blocks, and calls of procedures.
//
// Errors of the language are C++ exceptions; what is raised lies in the state, the token that flies
// is empty.  break, next and return are none: they set way_, and every block above ends until the
// loop or the call that they mean sets it back.

#include <alloca.h>

#include <algorithm>
#include <utility>

#include "language/evaluator_frame.hpp"
#include "mathematics/elementwise.hpp"
#include "mathematics/parts.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"
#include "values/text.hpp"

namespace vexel {

namespace {

// "quit" or "exit" alone is the command, not the name.
bool isQuit(const Node& statement) {
  return statement.kind == NodeKind::global && nameValue(statement.value) == nullptr &&
         (text(statement.value) == "quit" || text(statement.value) == "exit");
}

}  // namespace

bool isForItsEffect(const Program& program) {
  const Node& statement = *program.top->body;
  switch (statement.kind) {
    case NodeKind::forLoop:
    case NodeKind::forIn:
    case NodeKind::whileLoop:
      return true;
    case NodeKind::call: {
      const Node& called = *statement.children[0];
      if (called.kind != NodeKind::global || nameValue(called.value) != nullptr) {
        return false;
      }
      const std::string_view name = text(called.value);
      return name == "print" || name == "printf" || name == "plot" || name == "read";
    }
    default:
      return false;
  }
}

// Every pass looks for an interrupt.  A body that returns, or a quit, ends the loop
// and leaves way_ as it is, for the procedure's call or the session.
bool Evaluator::pass(const Node& body, ALGEB& result) {
  lookAtInterrupt();
  const ALGEB v = value(body);
  const Way way = way_;
  if (way == Way::leaveLoop || way == Way::nextPass) {
    way_ = Way::on;  // and the loop's value stays that of the last whole pass
  } else {
    result = v;
  }
  return (way == Way::on || way == Way::nextPass) && !interpreter(state_).quit;
}

// The running value is kept apart from the variable, which the body may change.  Steps are added in
// the arithmetic of the numbers given: exactly by 1/10, rounded to Digits by 0.1.
ALGEB Evaluator::forLoop(const Node& node) {
  ALGEB i = value(*node.children[1]);
  const ALGEB last = value(*node.children[2]);
  const ALGEB step = node.children.size() > 4 ? value(*node.children[4]) : immediate(1);
  if (!isReal(i) || !isReal(last)) {
    raise(state_, "expected numbers as ends of a loop, received: %1 and %2", i, last);
  }
  if (!isReal(step) || isZero(step)) {
    raise(state_, "expected a number other than 0 as the step of a loop, received: %1", step);
  }
  const bool up = sign(step) > 0;
  ALGEB result = state_.null;
  for (; up ? compare(state_, i, last) <= 0 : compare(state_, i, last) >= 0;
       i = add(state_, i, step)) {
    assign(*node.children[0], i);
    if (!pass(*node.children[3], result)) {
      break;
    }
  }
  return result;
}

// The elements are those at the start, whatever the body does to the list.
ALGEB Evaluator::forIn(const Node& node) {
  const ALGEB list = value(*node.children[1]);
  Handles all(state_);
  if (isRange(list)) {
    rangeElements(state_, list, all);
  } else if (isContainer(list) || is(list, Tag::table) || isSequence(list)) {
    elementsOf(state_, list, all);
  } else {
    raise(state_, "expected a list, an array, a table or a range to go through, received: %1",
          list);
  }
  ALGEB result = state_.null;
  for (const ALGEB e : all.span()) {
    assign(*node.children[0], e);
    if (!pass(*node.children[2], result)) {
      break;
    }
  }
  return result;
}

// What a caught error is: message, arguments, file, line and column.
ALGEB Evaluator::errorTable() {
  const PendingError error = state_.error;  // the arguments stay alive in state_.error
  const ALGEB result = newTable(state_);
  Table& parts = table(result);
  parts.assign(name(state_, "message"),
               string(state_, fillMessage(state_, error.message, error.arguments)));
  parts.assign(name(state_, "arguments"), newList(state_, error.arguments));
  parts.assign(name(state_, "file"),
               error.raised.text == nullptr ? state_.null : string(state_, *error.raised.text));
  parts.assign(name(state_, "line"), immediate(error.raised.line));
  parts.assign(name(state_, "column"), immediate(error.raised.column));
  return result;
}

// try, catch, finally.  The last block runs whatever happened, an error that nobody caught set
// aside meanwhile with its arguments kept alive; a last block that leaves by break, next or return
// takes the place of that error.
ALGEB Evaluator::tryStatement(const Node& node) {
  const Node* const handler = node.children[2];
  const Node* const last = node.children[3];
  ALGEB result = state_.null;
  ALGEB caught = nullptr;
  PendingError open;  // an error that goes on after the last block
  bool isOpen = false;
  const auto guarded = [&](const Node& block) {
    const Node* const outer = interpreter(state_).node;
    try {
      result = value(block);
      return true;
    } catch (const HostErrorToken&) {
      interpreter(state_).node = outer;
      return false;
    }
  };
  if (!guarded(*node.children[0])) {
    isOpen = true;
    if (handler != nullptr) {
      caught = errorTable();
      state_.lastError = text(table(caught).find(name(state_, "message")));
      state_.error = PendingError();
      if (node.children[1] != nullptr) {
        assign(*node.children[1], caught);
      }
      isOpen = !guarded(*handler);
    }
  }
  if (last != nullptr) {
    Handles kept(state_);
    if (isOpen) {
      open = state_.error;
      for (const ALGEB x : open.arguments) {
        kept.push(x);
      }
      state_.error = PendingError();
    }
    const Way way = std::exchange(way_, Way::on);
    const ALGEB before = result;
    value(*last);
    if (way_ == Way::on) {
      way_ = way;
      result = before;
    } else {
      return result;  // it left a loop or the procedure itself, and the error with it
    }
    if (isOpen) {
      state_.error = open;
    }
  }
  if (isOpen) {
    throw HostErrorToken();
  }
  return result;
}

// A statement's value; an error that leaves the innermost statement of a text keeps its position.
ALGEB Evaluator::statement(const Node& node) {
  note(node);
  if (isQuit(node)) {
    interpreter(state_).quit = true;
    return state_.null;
  }
  try {
    return value(node);
  } catch (const HostErrorToken&) {
    if (state_.error.line == 0) {
      state_.error.line = node.position.line;
      state_.error.column = node.position.column;
    }
    throw;
  }
}

ALGEB runProgram(State& state, const std::shared_ptr<Program>& program) {
  const auto count = static_cast<std::size_t>(program->top->slots);
  auto* slots = static_cast<ALGEB*>(alloca((count + 1) * sizeof(ALGEB)));
  for (std::size_t i = 0; i < count; ++i) {
    slots[i] = nullptr;
  }
  const Node& body = *program->top->body;
  if (isQuit(body)) {
    interpreter(state).quit = true;
    return state.null;
  }
  const PlaceScope place(state, *program, body);
  return Evaluator(state, program, slots).value(body);
}

namespace {

// Arguments of a procedure some of whose parameters have values of their own: in order, or by name
// as parameter = value.  A null slot is a parameter that was not given; its default is evaluated
// later, in the procedure's frame, where it may use the parameters before it.
void bindArguments(State& state, ALGEB procedure, const FunctionCode& code, ALGEB args,
                   std::size_t given, ALGEB* slots) {
  std::size_t next = 0;
  for (std::size_t i = 1; i <= given; ++i) {
    const ALGEB x = argument(state, args, i);
    std::size_t at = next;
    ALGEB v = x;
    if (isEquation(x) && is(operand(x, 1), Tag::name)) {
      const auto found = std::find(code.names.begin(), code.names.end(), text(operand(x, 1)));
      if (found == code.names.end()) {
        raise(state, "the procedure %1 has no parameter %2", procedure, operand(x, 1));
      }
      at = static_cast<std::size_t>(found - code.names.begin());
      v = operand(x, 2);
    } else {
      ++next;
    }
    if (at >= code.names.size()) {
      raise(state, "too many arguments for the procedure %1, received: %2", procedure, args);
    }
    if (slots[at] != nullptr) {
      raise(state, "the procedure %1 was given %2 twice", procedure, name(state, code.names[at]));
    }
    slots[at] = v;
  }
  for (std::size_t i = 0; i < code.names.size(); ++i) {
    if (slots[i] == nullptr && (i >= code.defaults.size() || code.defaults[i] == nullptr)) {
      raise(state, "the procedure %1 needs %2", procedure, name(state, code.names[i]));
    }
  }
}

}  // namespace

// A call: arguments are counted, the frame is laid out on the machine stack - parameters, locals,
// captured values -, defaults are filled in and the body is evaluated.  One argument comes as it is
// and none as NULL, so that NULL counts as one argument for a procedure that has a parameter.
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
  if (!code.hasDefaults() && given != static_cast<std::size_t>(code.parameters)) {
    raise(state,
          "the procedure %1 expects " + std::to_string(code.parameters) +
              (code.parameters == 1 ? " argument, received: %2" : " arguments, received: %2"),
          procedureObject, args);
  }
  const auto count = static_cast<std::size_t>(code.slots);
  if (count > 4096) {
    raise(state, "too many local names");
  }
  auto* slots = static_cast<ALGEB*>(alloca((count + 1) * sizeof(ALGEB)));
  for (std::size_t i = 0; i < count; ++i) {
    slots[i] = !code.hasDefaults() && i < given ? argument(state, args, i + 1) : nullptr;
  }
  if (code.hasDefaults()) {
    bindArguments(state, procedureObject, code, args, isNull(args) ? 0 : given, slots);
  }
  for (std::size_t i = 0; i < code.captures.size(); ++i) {
    slots[code.captures[i].inner] = procedure.captured[i];
  }
  const PlaceScope place(state, *procedure.program, *code.body);
  try {
    Evaluator evaluator(state, procedure.program, slots);
    for (std::size_t i = 0; i < code.defaults.size(); ++i) {
      if (slots[i] == nullptr) {
        slots[i] = evaluator.value(*code.defaults[i]);
      }
    }
    return evaluator.value(*code.body);
  } catch (const HostErrorToken&) {
    state.error.inProcedure = true;
    state.error.line = 0;  // a place in the procedure, which may come from another text
    throw;
  }
}

}  // namespace vexel
