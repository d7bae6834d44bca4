// The lexer: one pass, positions counted in lines and columns.

#include "language/lexer.hpp"

#include <algorithm>
#include <array>

namespace vexel {

namespace {

constexpr std::array<std::string_view, 19> kKeywords = {
    "and", "do", "elif", "else", "end", "false", "for",   "from",      "if",      "local",
    "not", "or", "proc", "then", "to",  "true",  "while", "undefined", "infinity"};

// Longest first.
constexpr std::array<std::string_view, 23> kSymbols = {":=", "->", "..", "<=", ">=", "<>", "+", "-",
                                                       "*",  "/",  "^",  "(",  ")",  "[",  "]", ",",
                                                       ";",  ":",  "=",  "<",  ">",  "{",  "}"};

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isNameStart(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }

class Lexer {
 public:
  explicit Lexer(std::string_view text) : text_(text) {}

  Token next() {
    skipSpace();
    Token token;
    token.position = position_;
    token.offset = at_;
    if (at_ >= text_.size()) {
      return token;
    }
    const char c = text_[at_];
    std::size_t n = 0;
    if (isDigit(c) || (c == '.' && isDigit(peek(1)))) {
      token.kind = TokenKind::number;
      n = numberLength();
    } else if (isNameStart(c)) {
      while (at_ + n < text_.size() && (isNameStart(peek(n)) || isDigit(peek(n)))) {
        ++n;
      }
      const std::string_view word = text_.substr(at_, n);
      token.kind = std::find(kKeywords.begin(), kKeywords.end(), word) != kKeywords.end()
                       ? TokenKind::keyword
                       : TokenKind::name;
    } else if (c == '"') {
      return stringToken(token);
    } else {
      for (const std::string_view symbol : kSymbols) {
        if (text_.substr(at_, symbol.size()) == symbol) {
          token.kind = TokenKind::symbol;
          n = symbol.size();
          break;
        }
      }
      if (n == 0) {
        token.kind = TokenKind::error;
        token.text = "unexpected character";
        advance(1);
        return token;
      }
    }
    token.text = text_.substr(at_, n);
    advance(n);
    return token;
  }

 private:
  char peek(std::size_t n) const { return at_ + n < text_.size() ? text_[at_ + n] : '\0'; }

  void advance(std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
      if (text_[at_ + i] == '\n') {
        ++position_.line;
        position_.column = 1;
      } else {
        ++position_.column;
      }
    }
    at_ += n;
  }

  void skipSpace() {
    while (at_ < text_.size()) {
      const char c = text_[at_];
      if (c == '#') {
        const std::size_t end = text_.find('\n', at_);
        advance((end == std::string_view::npos ? text_.size() : end) - at_);
      } else if (c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v') {
        advance(1);
      } else {
        break;
      }
    }
  }

  // 12, 1.5, 2., .5, 1e-3; the point of "1..3" is not part of the number.
  std::size_t numberLength() const {
    std::size_t n = 0;
    while (isDigit(peek(n))) {
      ++n;
    }
    if (peek(n) == '.' && peek(n + 1) != '.') {
      ++n;
      while (isDigit(peek(n))) {
        ++n;
      }
    }
    if (peek(n) == 'e' || peek(n) == 'E') {
      std::size_t digits = n + 1;
      if (peek(digits) == '+' || peek(digits) == '-') {
        ++digits;
      }
      if (isDigit(peek(digits))) {
        while (isDigit(peek(digits))) {
          ++digits;
        }
        n = digits;
      }
    }
    return n;
  }

  Token stringToken(Token token) {
    std::size_t n = 1;
    while (at_ + n < text_.size() && text_[at_ + n] != '"') {
      n += text_[at_ + n] == '\\' ? 2 : 1;
    }
    if (at_ + n >= text_.size()) {
      token.kind = TokenKind::error;
      token.text = "unterminated string";
      advance(text_.size() - at_);
      return token;
    }
    token.kind = TokenKind::string;
    token.text = text_.substr(at_, n + 1);
    advance(n + 1);
    return token;
  }

  std::string_view text_;
  std::size_t at_ = 0;
  Position position_;
};

}  // namespace

std::vector<Token> tokenize(std::string_view text) {
  std::vector<Token> tokens;
  Lexer lexer(text);
  do {
    tokens.push_back(lexer.next());
  } while (tokens.back().kind != TokenKind::end);
  return tokens;
}

std::string unescape(std::string_view literal) {
  std::string result;
  for (std::size_t i = 1; i + 1 < literal.size(); ++i) {
    if (literal[i] != '\\') {
      result += literal[i];
      continue;
    }
    ++i;
    result += literal[i] == 'n' ? '\n' : literal[i] == 't' ? '\t' : literal[i];
  }
  return result;
}

}  // namespace vexel
