// Raising host errors, filling their messages, and the guard of the machine stack.

#include "values/errors.hpp"

#include "memory/stack_bounds.hpp"
#include "values/kernel_state.hpp"

namespace vexel {

void raise(State& state, std::string_view message, std::span<const ALGEB> args) {
  state.error.message.assign(message);
  state.error.arguments.assign(args.begin(), args.end());
  state.error.line = 0;
  state.error.raised = state.language != nullptr ? state.language->where() : TextPlace();
  state.error.inProcedure = false;
  state.error.isRaised = true;
  if (hostDepth == 0 && state.raiseOutside) {
    state.raiseOutside();
  }
  throw HostErrorToken{};
}

void raise(State& state, std::string_view message) {
  raise(state, message, std::span<const ALGEB>());
}

void raise(State& state, std::string_view message, ALGEB a) {
  const ALGEB args[] = {a};
  raise(state, message, args);
}

void raise(State& state, std::string_view message, ALGEB a, ALGEB b) {
  const ALGEB args[] = {a, b};
  raise(state, message, args);
}

bool isOfContainer(const std::length_error& e) {
  const std::string_view text = e.what();
  for (const std::string_view start :
       {"vector::", "basic_string::", "deque::", "list::", "cannot create std::"}) {
    if (text.substr(0, start.size()) == start) {
      return true;
    }
  }
  return false;
}

void raiseNoMemory(State& state) { raise(state, kNoMemory); }

std::string fillMessage(State& state, std::string_view message, std::span<const ALGEB> args) {
  std::string out;
  for (std::size_t i = 0; i < message.size(); ++i) {
    const char next = i + 1 < message.size() ? message[i + 1] : '\0';
    const std::size_t which = static_cast<std::size_t>(next - '1');
    if (message[i] == '%' && next >= '1' && next <= '9' && which < args.size()) {
      appendSource(state, out, args[which], kMessageArguments);
      ++i;
    } else {
      out += message[i];
    }
  }
  return out;
}

std::string pendingErrorText(State& state) {
  return fillMessage(state, state.error.message, state.error.arguments);
}

constinit thread_local std::uintptr_t stackLimit = UINTPTR_MAX;

// Finds the limit, when it was not known, and looks again.
void checkStackSlowly(State& state) {
  // Room for unwinding, the formatting of the error and what a callback of the library needs.
  constexpr std::uintptr_t kReserve = 192 * 1024;
  stackLimit = reinterpret_cast<std::uintptr_t>(stackBounds().low) + kReserve;
  if (reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0)) < stackLimit) {
    raise(state, "too many levels of recursion");
  }
}

}  // namespace vexel
