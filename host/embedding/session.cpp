// Statement-wise running of texts, for the command, the prompt and Kernel::eval.

#include <stdexcept>
#include <utility>
#include <vexel/session.hpp>

#include "builtins/json.hpp"
#include "embedding/kernel_impl.hpp"
#include "language/evaluator.hpp"
#include "language/interpreter.hpp"
#include "language/parser.hpp"
#include "values/big_number_work.hpp"
#include "values/errors.hpp"
#include "values/frames.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"
#include "values/text.hpp"

namespace vexel {

namespace {

constexpr char kInterrupted[] = "interrupted";

std::string lineOf(std::string_view text, int line) {
  std::size_t from = 0;
  for (int i = 1; i < line && from != std::string_view::npos; ++i) {
    from = text.find('\n', from);
    from = from == std::string_view::npos ? from : from + 1;
  }
  if (from == std::string_view::npos) {
    return "";
  }
  return std::string(text.substr(from, text.find('\n', from) - from));
}

// The line with a caret below the column; long lines are cut around it.
std::string pointedOut(std::string_view text, Position at) {
  std::string line = lineOf(text, at.line);
  auto column = static_cast<std::size_t>(at.column - 1);
  if (line.size() > 100 && column > 60) {
    const std::size_t cut = column - 60;
    line = "..." + line.substr(cut < line.size() ? cut : line.size());
    column = 63;
  }
  line = line.substr(0, 120);
  std::string caret;
  for (std::size_t i = 0; i < column && i < 120; ++i) {
    caret += i < line.size() && line[i] == '\t' ? '\t' : ' ';
  }
  return line + "\n" + caret + "^";
}

}  // namespace

struct Script::Impl {
  Impl(Kernel& k, std::string t, const std::string& name)
      : kernel(k),
        state(*k.vector()),
        text(std::move(t)),
        parser(state, text, name.empty() ? nullptr : std::make_shared<const std::string>(name)) {}
  Kernel& kernel;
  State& state;
  std::string text;
  Parser parser;
  std::shared_ptr<Program> program;  // of the statement that runs
};

Script::Script(Kernel& kernel, std::string text, const std::string& name)
    : impl_(std::make_unique<Impl>(kernel, std::move(text), name)) {}
Script::~Script() = default;

namespace {

// What an outcome becomes where a statement has no value.
struct Ending {
  State& state;
  Outcome& outcome;
  std::shared_ptr<Program>& program;

  void ended(Outcome::Kind kind, const std::string& text) {
    outcome.kind = kind;
    outcome.value = Value();
    outcome.error = text;
    outcome.json = jsonError(state, text, text, {});
  }

  // What the statement held is given back before the next one needs it.
  void outOfMemory() {
    state.error.arguments.clear();
    state.error.message.clear();
    program.reset();
    ended(Outcome::Kind::error, kNoMemory);
    state.lastError = kNoMemory;
    state.heap.recover();
  }

  void failed() {
    outcome.kind = Outcome::Kind::error;
    if (const TextPlace& raised = state.error.raised; raised.text != nullptr) {
      outcome.raisedIn = *raised.text;
      outcome.raisedLine = raised.line;
      outcome.raisedColumn = raised.column;
    }
    outcome.inProcedure = state.error.inProcedure;
    if (state.error.line > 0) {
      outcome.line = state.error.line;
      outcome.column = state.error.column;
    }
    if (state.error.message == kNoMemory) {
      outOfMemory();
      return;
    }
    try {
      const PendingError error = std::exchange(state.error, {});
      Handles arguments(state);
      for (const ALGEB x : error.arguments) {
        arguments.push(x);
      }
      outcome.error = state.lastError = fillMessage(state, error.message, error.arguments);
      outcome.json = jsonError(state, outcome.error, error.message, error.arguments);
    } catch (const HostErrorToken&) {
      ended(Outcome::Kind::error, state.error.message);
    } catch (const InterruptToken&) {
      ended(Outcome::Kind::interrupted, kInterrupted);
    } catch (const std::bad_alloc&) {
      outOfMemory();
    }
  }
};

}  // namespace

bool Script::next(Outcome& outcome) {
  State& state = impl_->state;
  outcome = Outcome();
  if (interpreter(state).quit) {
    return false;
  }
  const BigNumberWork work;
  Ending ending{state, outcome, impl_->program};
  try {
    std::shared_ptr<Program>& program = impl_->program;
    try {
      program = impl_->parser.next();
    } catch (const SyntaxError& e) {
      outcome.kind = e.incomplete ? Outcome::Kind::incomplete : Outcome::Kind::syntax;
      outcome.error = e.message;
      outcome.line = e.position.line;
      outcome.column = e.position.column;
      outcome.source = pointedOut(impl_->text, e.position);
      outcome.json = jsonError(state, e.message, e.message, {});
      impl_->parser.recover();
      return true;
    } catch (const HostErrorToken&) {
      ending.failed();
      impl_->parser.recover();
      return true;
    }
    if (program == nullptr) {
      return false;
    }
    outcome.line = program->start.line;
    outcome.column = program->start.column;
    outcome.printed = program->printed;
    outcome.effect = isForItsEffect(*program);
    outcome.value = Value(impl_->kernel, runProgram(state, program));
    program.reset();
    lookAtInterrupt();  // one that nothing in the statement has seen
    if (interpreter(state).quit) {
      outcome.printed = false;
    }
  } catch (const HostErrorToken&) {
    ending.failed();
  } catch (const InterruptToken&) {
    ending.ended(Outcome::Kind::interrupted, kInterrupted);
  } catch (const std::bad_alloc&) {
    ending.outOfMemory();
  } catch (const std::length_error&) {
    ending.outOfMemory();
  }
  return true;
}

int Script::line() const { return impl_->parser.line(); }

bool isIncomplete(Kernel& kernel, std::string_view text) {
  State& state = *kernel.vector();
  return kernel.impl().run([&] {
    Parser parser(state, text);
    try {
      while (parser.next() != nullptr) {
      }
    } catch (const SyntaxError& e) {
      return e.incomplete;
    } catch (const HostErrorToken&) {
      return false;  // running it tells
    }
    return false;
  });
}

void setStrict(Kernel& kernel, bool strict) { kernel.vector()->strict = strict; }

bool quitRequested(Kernel& kernel) { return interpreter(*kernel.vector()).quit; }

std::optional<int> exitStatus(Kernel& kernel) { return interpreter(*kernel.vector()).exitStatus; }

std::string shortened(const Value& value) {
  TextOptions options;
  options.maxElements = 12;
  options.maxLength = 2000;
  options.raiseTooDeep = false;
  if (value.kernel() == nullptr || value.handle() == nullptr) {
    return "NULL";
  }
  return value.kernel()->impl().run(
      [&] { return sourceText(*value.kernel()->vector(), value.handle(), options); });
}

std::string displayed(const Value& value, bool shorten) {
  if (value.kernel() == nullptr || !isFrame(value.handle())) {
    return shorten ? shortened(value) : value.source();
  }
  return value.kernel()->impl().run(
      [&] { return frameText(*value.kernel()->vector(), value.handle()); });
}

void onShown(Kernel& kernel, std::function<void(const Value&, bool effect)> show) {
  interpreter(*kernel.vector()).show = [&kernel, show = std::move(show)](ALGEB x, bool effect) {
    show(Value(kernel, x), effect);
  };
}

std::vector<std::string> knownNames(Kernel& kernel) {
  std::vector<std::string> names;
  kernel.vector()->interned.forEachName([&](ALGEB n) {
    if (nameValue(n) != nullptr || nameFunction(n) != nullptr) {
      names.emplace_back(text(n));
    }
  });
  return names;
}

}  // namespace vexel
