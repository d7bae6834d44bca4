// The parts of the JSON writer that others use; jsonText is in values/evaluation.hpp.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "values/kernel_state.hpp"

namespace vexel {

// Text as a JSON string; bytes that are no UTF-8 become U+FFFD.
void appendJsonString(std::string& out, std::string_view text);

// Bytes of the UTF-8 character at the start of text, 0 when it is none (text not empty, not ASCII).
std::size_t utf8Length(std::string_view text);

// The line of an error: the filled text, the message and its arguments.
std::string jsonError(State& state, std::string_view filled, std::string_view message,
                      std::span<const ALGEB> arguments);

}  // namespace vexel
