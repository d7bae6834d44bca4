// Host errors: the message and arguments of one are kept in the kernel's pending-error slot, where
// the collector sees them; what is thrown is a token without content.
#pragma once

#include <cstdint>
#include <new>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

#include "memory/handle.hpp"
#include "memory/unwinding.hpp"
#include "values/text.hpp"

namespace vexel {

// Raise a host error: message with %1, %2, ... standing for the printed arguments.
[[noreturn]] void raise(State& state, std::string_view message);
[[noreturn]] void raise(State& state, std::string_view message, ALGEB a);
[[noreturn]] void raise(State& state, std::string_view message, ALGEB a, ALGEB b);
[[noreturn]] void raise(State& state, std::string_view message, std::span<const ALGEB> args);
[[noreturn]] void raiseNoMemory(State& state);
inline constexpr char kNoMemory[] = "not enough memory";

// Whether it is the standard library's own, of a container that cannot be so large; the functions'
// say which sizes do not fit.
bool isOfContainer(const std::length_error& e);

// f(); standard exceptions that leave it become host errors, bad_alloc "not enough memory".
template <typename F>
auto guarded(State& state, F f) {
  try {
    return f();
  } catch (const std::bad_alloc&) {
    raiseNoMemory(state);
  } catch (const std::length_error& e) {
    if (isOfContainer(e)) {
      raiseNoMemory(state);
    }
    raise(state, e.what());
  } catch (const std::exception& e) {
    raise(state, e.what());
  }
}

// How arguments print within a message: a few elements and how many there are.
inline constexpr TextOptions kMessageArguments{
    .maxElements = 8, .maxLength = 2000, .raiseTooDeep = false};

// Message with %1, %2, ... replaced by the printed form of the arguments.
std::string fillMessage(State& state, std::string_view message, std::span<const ALGEB> args);

// The pending error's text; valid in a handler of HostErrorToken.
std::string pendingErrorText(State& state);

// The lowest address that the calling thread's stack may reach; the highest there is before the
// thread has asked.  One word of the static TLS block, so that reading it costs no call.
extern constinit thread_local std::uintptr_t stackLimit __attribute__((tls_model("initial-exec")));
void checkStackSlowly(State& state);

// Guards against running out of machine stack: raises "too many levels of recursion" when less
// than a safe reserve is left.  Every recursive walk calls it.
inline void checkStack(State& state) {
  if (reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0)) < stackLimit) [[unlikely]] {
    checkStackSlowly(state);
  }
}

}  // namespace vexel
