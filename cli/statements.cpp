// Cutting text into statements: a scanner that knows strings, comments, brackets and the words that
// open and close blocks, and nothing else of the language.

#include "statements.hpp"

#include <cctype>

namespace {

bool isNameStart(char c) { return std::isalpha(static_cast<unsigned char>(c)) != 0 || c == '_'; }
bool isNamePart(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; }
bool isSpace(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }

}  // namespace

// White space and comments.
void StatementReader::skipSpace() {
  bool comment = false;
  for (; at_ < text_.size(); ++at_) {
    const char c = text_[at_];
    comment = (comment || c == '#') && c != '\n';
    if (!comment && !isSpace(c)) {
      return;
    }
    line_ += c == '\n' ? 1 : 0;
  }
}

// A string, from its opening quote to behind its closing one.
void StatementReader::skipString() {
  for (++at_; at_ < text_.size() && text_[at_] != '"'; ++at_) {
    if (text_[at_] == '\\' && at_ + 1 < text_.size()) {
      ++at_;
    }
    line_ += text_[at_] == '\n' ? 1 : 0;
  }
  at_ += at_ < text_.size() ? 1 : 0;
}

std::string_view StatementReader::takeWord() {
  const std::size_t begin = at_;
  while (at_ < text_.size() && isNamePart(text_[at_])) {
    ++at_;
  }
  return text_.substr(begin, at_ - begin);
}

// Behind the word "if": true for if(c, a, b), which needs no end.  A comma of the first bracket
// tells.
bool StatementReader::conditionalExpressionFollows() const {
  StatementReader ahead = *this;
  ahead.skipSpace();
  if (ahead.at_ >= text_.size() || text_[ahead.at_] != '(') {
    return false;
  }
  int depth = 0;
  while (ahead.at_ < text_.size()) {
    const char c = text_[ahead.at_];
    if (c == '"') {
      ahead.skipString();
      continue;
    }
    if (c == '#') {
      ahead.skipSpace();
      continue;
    }
    depth += c == '(' || c == '[' ? 1 : 0;
    depth -= c == ')' || c == ']' ? 1 : 0;
    if (depth == 0 || (depth == 1 && c == ',')) {
      return depth == 1;
    }
    ++ahead.at_;
  }
  return false;
}

std::optional<Statement> StatementReader::next() {
  skipSpace();
  while (at_ < text_.size() && (text_[at_] == ';' || text_[at_] == ':')) {
    ++at_;
    skipSpace();
  }
  if (at_ >= text_.size()) {
    return std::nullopt;
  }

  Statement statement;
  statement.line = line_;
  const std::size_t begin = at_;
  int brackets = 0;
  int blocks = 0;
  while (at_ < text_.size()) {
    const char c = text_[at_];
    if (c == '"') {
      const std::size_t quote = at_;
      skipString();
      statement.complete = at_ > quote + 1 && text_[at_ - 1] == '"';
    } else if (c == '#' || isSpace(c)) {
      skipSpace();
    } else if (isNameStart(c)) {
      const std::string_view word = takeWord();
      if (word == "proc" || word == "do" || (word == "if" && !conditionalExpressionFollows())) {
        ++blocks;
      } else if (word == "end") {
        --blocks;
      }
    } else if (c == ':' && at_ + 1 < text_.size() && text_[at_ + 1] == '=') {
      at_ += 2;
    } else if ((c == ';' || c == ':') && brackets <= 0 && blocks <= 0) {
      statement.text = text_.substr(begin, at_ - begin);
      statement.printed = c == ';';
      ++at_;
      return statement;
    } else {
      brackets += c == '(' || c == '[' ? 1 : 0;
      brackets -= c == ')' || c == ']' ? 1 : 0;
      ++at_;
    }
  }
  statement.text = text_.substr(begin);
  statement.text = statement.text.substr(0, statement.text.find_last_not_of(" \t\r\n") + 1);
  statement.complete = statement.complete && brackets <= 0 && blocks <= 0;
  return statement;
}
