// What to write instead of what other languages write: a word added to syntax errors.

#include <array>

#include "language/parser.hpp"

namespace vexel {

namespace {

struct Slip {
  std::string_view written;  // with what follows, as it stands in the text
  std::string_view advice;
};

// The longer ones first.
constexpr std::array<Slip, 22> kSlips = {
    {{"==", "equality is written ="},
     {"!=", "unequal is written <>"},
     {"=>", "a procedure is written x -> ..., at least >="},
     {"**", "a power is written ^"},
     {"++", "write x := x + 1"},
     {"--", "write x := x - 1"},
     {"+=", "write x := x + ..."},
     {"-=", "write x := x - ..."},
     {"*=", "write x := x*..."},
     {"/=", "write x := x/..., or <> for unequal"},
     {"&&", "write and"},
     {"||", "write or"},
     {"//", "a comment begins with #"},
     {"/*", "a comment begins with #"},
     {"<-", "an assignment is written :="},
     {"!", "write not; n! is factorial(n)"},
     {"%", "a remainder is written a mod b"},
     {"'", "texts stand in double quotes: \"x\""},
     {"`", "names are letters, digits and _; texts stand in double quotes"},
     {"|", "write or"},
     {"&", "write and"},
     {"?", "?name stands alone, at the prompt or behind -e; else vexel --explain name"}}};

bool isOneOf(std::string_view word, std::initializer_list<std::string_view> all) {
  for (const std::string_view one : all) {
    if (word == one) {
      return true;
    }
  }
  return false;
}

}  // namespace

std::string Parser::hint(std::string_view message) const {
  const Token& token = peek();
  const Token* const before = at_ > 0 ? &tokens_[at_ - 1] : nullptr;
  const bool adjacent = before != nullptr && before->kind != TokenKind::string &&
                        before->offset + before->text.size() == token.offset;
  // The offending token alone, or as the second half of an operator.
  for (const std::size_t start : {adjacent ? before->offset : token.offset, token.offset}) {
    for (const Slip& slip : kSlips) {
      if (text_.substr(start).starts_with(slip.written) &&
          (start == token.offset || slip.written.size() > 1)) {
        return "; " + std::string(slip.advice);
      }
    }
  }
  if (at_ > 1 && adjacent && isOneOf(before->text, {"+", "-"}) &&
      tokens_[at_ - 2].text == before->text) {  // x++;
    return before->text == "+" ? "; write x := x + 1" : "; write x := x - 1";
  }
  if (before != nullptr && before->position.line < token.position.line &&
      message.starts_with("expected ';'")) {
    return "; line " + std::to_string(before->position.line) + " ends without ;";
  }
  const std::string_view word = token.kind == TokenKind::name ? token.text : "";
  const std::string_view last =
      before != nullptr && before->kind == TokenKind::name ? before->text : "";
  if (token.text == "{" && token.kind == TokenKind::symbol) {
    return message.find("'then'") != std::string_view::npos ||
                   message.find("'do'") != std::string_view::npos
               ? "; a block is written then ... end or do ... end"
               : "; a list is written [1, 2], a block then ... end or do ... end";
  }
  if (isOneOf(word, {"fi", "od"})) {
    return "; the word is end";
  }
  if (isOneOf(last, {"function", "def", "lambda", "fun"})) {
    return "; a procedure is written f := x -> ... or f := proc(x) ... end";
  }
  if (isOneOf(last, {"let", "var", "const", "set"})) {
    return "; an assignment is written x := ...";
  }
  if (last == "return" && scopes_.size() <= 1) {
    return "; return stands in procedures only";
  }
  if (message.find("'from' or 'in'") != std::string_view::npos ||
      message.find("after 'for'") != std::string_view::npos) {
    return "; a loop is written for i from 1 to n do ... end or for v in list do ... end";
  }
  const bool ends = before != nullptr &&
                    (before->kind == TokenKind::name || before->kind == TokenKind::number ||
                     (before->kind == TokenKind::symbol && isOneOf(before->text, {")", "]"})));
  if (ends && message.starts_with("expected ';'") &&
      (token.kind == TokenKind::name || token.kind == TokenKind::number ||
       token.kind == TokenKind::string)) {
    return token.kind == TokenKind::string ? "; a call is written print(\"text\")"
                                           : "; a product is written a*b, a call f(x)";
  }
  return "";
}

}  // namespace vexel
