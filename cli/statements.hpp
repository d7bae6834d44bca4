// Cutting text into the statements that the command runs one by one.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

struct Statement {
  std::string_view text;  // without its terminator
  int line = 1;           // of its first character
  bool printed = true;    // ended by ";" or by the end of the text, not by ":"
  bool complete = true;   // false: the text ended inside it (an open bracket, string or block)
};

// Goes through a text statement by statement.  Terminators inside strings, comments, brackets and
// blocks (proc, if, do ... end) belong to the statement around them.  Empty statements are passed
// over.
class StatementReader {
 public:
  explicit StatementReader(std::string_view text) : text_(text) {}

  // The next statement; nothing at the end of the text.
  std::optional<Statement> next();

 private:
  void skipSpace();
  void skipString();
  std::string_view takeWord();
  bool conditionalExpressionFollows() const;

  std::string_view text_;
  std::size_t at_ = 0;
  int line_ = 1;
};
