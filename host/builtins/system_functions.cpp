// Built-in functions that reach outside of values: output, errors, time, random numbers, the
// collector; and the registration of all of them.

#include <chrono>
#include <cstdio>

#include "builtins/builtins.hpp"
#include "builtins/functions/call.hpp"
#include "builtins/tables/tables.hpp"
#include "language/interpreter.hpp"
#include "mathematics/elementary.hpp"
#include "values/errors.hpp"
#include "values/frames.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"
#include "values/text.hpp"

namespace vexel {

namespace {

ALGEB print(State& s, ALGEB args) {
  std::string line;
  const std::size_t n = isNull(args) ? 0 : argumentCount(args);
  for (std::size_t i = 1; i <= n; ++i) {
    const ALGEB x = argument(s, args, i);
    line +=
        isFrame(x) ? (i > 1 ? "\n" : "") + frameText(s, x) : (i > 1 ? ", " : "") + plainText(s, x);
  }
  s.output(line + "\n");
  return s.null;
}

ALGEB error(State& s, ALGEB args) {
  if (isNull(args)) {
    raise(s, "error expects a text");
  }
  const ALGEB message = argument(s, args, 1);
  if (!is(message, Tag::string)) {
    raise(s, "error expects a text, received: %1", message);
  }
  Handles rest(s);
  for (std::size_t i = 2; i <= argumentCount(args); ++i) {
    rest.push(argument(s, args, i));
  }
  raise(s, std::string(text(message)), rest.span());
}

ALGEB randomize(State& s, ALGEB args) {
  std::uint64_t seed = 0;
  if (isNull(args)) {
    seed = static_cast<std::uint64_t>(std::chrono::system_clock::now().time_since_epoch().count());
  } else if (isInteger(args)) {
    const IntegerView z(args);
    // The low 64 bits, two's complement.
    seed = mpz_get_ui(z.get());
    seed = mpz_sgn(z.get()) < 0 ? 0 - seed : seed;
  } else {
    raise(s, "expected an integer as seed, received: %1", args);
  }
  s.random.seed(seed);
  return newInteger(s, static_cast<std::int64_t>(seed & 0x7FFFFFFFFFFFFFFFU));
}

ALGEB infoLevel(State& s, ALGEB args) {
  std::int64_t level = 0;
  if (isNull(args) || argumentCount(args) != 2 || !isInteger(argument(s, args, 2)) ||
      !fitsInt64(argument(s, args, 2), &level)) {
    raise(s, "info_level expects a channel and a level, received: %1", args);
  }
  s.infoLevels[plainText(s, argument(s, args, 1))] = static_cast<int>(level < 0      ? 0
                                                                      : level > 1000 ? 1000
                                                                                     : level);
  return s.null;
}

// exit(), exit(status)
ALGEB leave(State& s, ALGEB args) {
  std::int64_t status = 0;
  if (!isNull(args)) {
    if (argumentCount(args) != 1 || !isInteger(argument(s, args, 1)) ||
        !fitsInt64(argument(s, args, 1), &status) || status < 0 || status > 255) {
      raise(s, "exit expects a status from 0 to 255, or nothing, received: %1", args);
    }
    interpreter(s).exitStatus = static_cast<int>(status);
  }
  interpreter(s).quit = true;
  return s.null;
}

}  // namespace

void defineSystemFunctions(State& state) {
  defineFunction(state, "print", print);
  defineFunction(state, "error", error);
  defineFunction(state, "last_error", [](State& s, ALGEB) {
    return s.lastError.empty() ? s.null : string(s, s.lastError);
  });
  defineFunction(state, "time", [](State& s, ALGEB) {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return newFloat(s, std::chrono::duration<double>(now).count());
  });
  // assert(condition), assert(condition, text): an error unless it is true.
  defineFunction(state, "assert", [](State& s, ALGEB args) {
    const std::size_t n = isNull(args) ? 0 : argumentCount(args);
    if (n != 1 && n != 2) {
      raise(s, "assert expects a condition and at most a text, received: %1", args);
    }
    const ALGEB condition = argument(s, args, 1);
    if (!truth(s, condition)) {
      raise(s, n == 2 ? plainText(s, argument(s, args, 2)) : "the assertion does not hold: %1",
            condition);
    }
    return s.null;
  });
  defineFunction(state, "randomize", randomize);
  defineFunction(
      state, "RandomInt32",
      [](State& s, ALGEB) {
        return newInteger(s, static_cast<std::int64_t>(VexelRandomInt32(&s)));
      },
      [](State& s, int, const double*) { return static_cast<double>(VexelRandomInt32(&s)); });
  defineFunction(
      state, "RandomDouble01", [](State& s, ALGEB) { return newFloat(s, VexelRandomDouble01(&s)); },
      [](State& s, int, const double*) { return VexelRandomDouble01(&s); });
  defineFunction(state, "info_level", infoLevel);
  defineFunction(state, "gc", [](State& s, ALGEB) {
    s.heap.collect();
    return s.null;
  });
  defineFunction(state, "exit", leave);
  defineFunction(state, "quit", [](State& s, ALGEB) {
    interpreter(s).quit = true;
    return s.null;
  });
}

void initialiseLanguage(State& state) {
  state.language = std::make_unique<Interpreter>();
  if (!state.output) {
    state.output = [](std::string_view text) {
      std::fwrite(text.data(), 1, text.size(), stdout);
      std::fflush(stdout);
    };
  }
  defineElementaryFunctions(state);
  defineCollectionFunctions(state);
  defineNumberFunctions(state);
  defineWholeNumberFunctions(state);
  defineCalculusFunctions(state);
  defineStructuralFunctions(state);
  defineArrayFunction(state);
  defineSystemFunctions(state);
  defineTextFunctions(state);
  defineFunctionList(state);
  defineDescriptiveFunctions(state);
  defineOrderFunctions(state);
  defineLawFunctions(state);
  defineRandomFunctions(state);
  defineStateFunctions(state);
  definePlotFunctions(state);
  defineScriptFunctions(state);
  defineTables(state);
}

}  // namespace vexel
