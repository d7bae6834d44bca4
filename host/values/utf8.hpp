// UTF-8.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace vexel {

// Bytes of the UTF-8 character at the start of text, 0 when it is none (text not empty, not ASCII).
std::size_t utf8Length(std::string_view text);

// Appends a code point.
void appendUtf8(std::string& out, std::uint32_t code);

}  // namespace vexel
