// Objects and errors as JSON.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "values/kernel_state.hpp"

namespace vexel {

// One line of JSON.
std::string jsonText(State& state, ALGEB x);

// Text as a JSON string; bytes that are no UTF-8 become U+FFFD.
void appendJsonString(std::string& out, std::string_view text);

// The line of an error: the filled text, the message and its arguments.
std::string jsonError(State& state, std::string_view filled, std::string_view message,
                      std::span<const ALGEB> arguments);

}  // namespace vexel
