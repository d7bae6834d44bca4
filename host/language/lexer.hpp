// Text to tokens.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "language/syntax.hpp"

namespace vexel {

enum class TokenKind : std::uint8_t { end, number, string, name, keyword, symbol, error };

struct Token {
  TokenKind kind = TokenKind::end;
  std::string_view text;  // as written; for an error, its message
  Position position;
  std::size_t offset = 0;
};

// The tokens of a text, the last one of kind end.  A character that starts no token gives an error
// token; so do unterminated strings.
std::vector<Token> tokenize(std::string_view text);

// The characters that a string literal stands for.
std::string unescape(std::string_view literal);

}  // namespace vexel
