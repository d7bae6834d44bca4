// The layout of scripts: indentation and spaces.  Lines stay where their writer broke them, and so
// do tokens and comments; what the text means cannot change.
//
// A line is indented by what is open around it: a block by two from the line that opened it, a
// bracket to the token behind it (or by two, where that is on a line of its own), a statement that
// goes on by two or more.  Spaces around * / ^ and .. are the writer's choice.

#include <algorithm>
#include <utility>
#include <vexel/session.hpp>

#include "language/lexer.hpp"

namespace vexel {

namespace {

template <typename... Words>
bool isOneOf(std::string_view word, Words... words) {
  return ((word == words) || ...);
}

bool isWord(const Token& t) {
  return t.kind == TokenKind::name || t.kind == TokenKind::keyword || t.kind == TokenKind::number ||
         t.kind == TokenKind::string;
}

// What may stand behind the word try where it is no name.
bool beginsTried(const Token& t) {
  return isWord(t) &&
         (t.kind != TokenKind::keyword || !isOneOf(t.text, "end", "else", "elif", "do", "then",
                                                   "to", "from", "and", "or", "local"));
}

// What an expression may end with: an operator behind it has two sides.
bool endsOperand(const Token& t) {
  if (t.kind == TokenKind::symbol) {
    return isOneOf(t.text, ")", "]", "}");
  }
  if (t.kind == TokenKind::keyword) {
    return isOneOf(t.text, "end", "true", "false", "undefined", "infinity");
  }
  return t.kind != TokenKind::name || !isOneOf(t.text, "return", "by", "in", "mod");
}

std::size_t characters(std::string_view text) {
  std::size_t n = 0;
  for (const char c : text) {
    n += (static_cast<unsigned char>(c) & 0xC0U) != 0x80U ? 1U : 0U;
  }
  return n;
}

class Formatter {
 public:
  explicit Formatter(std::string_view text) : text_(text), tokens_(tokenize(text)) {}

  std::string run() {
    std::size_t end = 0;  // of the token before
    for (at_ = 0; at_ < tokens_.size(); ++at_) {
      const Token& token = tokens_[at_];
      gap(text_.substr(end, token.offset - end));
      if (token.kind == TokenKind::end) {
        break;
      }
      write(token);
      end = token.offset + token.text.size();
    }
    finishLine();
    return std::move(out_);
  }

 private:
  // Something that is closed later: a bracket or a block.
  struct Open {
    std::string_view by;
    std::size_t indent;  // of the line where it was opened
    std::size_t inside;  // of lines within
    bool parameters;     // the bracket of a procedure's parameters
  };

  // What stands between two tokens: spaces, line ends, comments.
  void gap(std::string_view between) {
    spaced_ = !between.empty();
    std::size_t spaces = 0;
    for (std::size_t i = 0; i < between.size(); ++i) {
      const char c = between[i];
      if (c == '\n') {
        ++breaks_;
        spaces = 0;
      } else if (c == '#') {
        const std::size_t end = std::min(between.find('\n', i), between.size());
        comment(between.substr(i, end - i), spaces);
        i = end - 1;
      } else {
        spaces += c == '\r' ? 0U : 1U;
      }
    }
  }

  void comment(std::string_view words, std::size_t spaces) {
    words = words.substr(0, words.find_last_not_of(" \t\r\f\v") + 1);
    if (breaks_ == 0 && !line_.empty()) {
      line_ += std::string(std::max<std::size_t>(spaces, 2), ' ');
    } else {
      newLine();
      const Token& next = tokens_[at_];
      const bool goesOn = !statementBegins_ && !inBracket() && !closes(next) && !divides(next) &&
                          next.kind != TokenKind::end;
      line_ = std::string(inside() + (goesOn ? 2 : 0), ' ');
    }
    line_ += words;
  }

  bool inBracket() const { return !open_.empty() && isOneOf(open_.back().by, "(", "[", "{"); }
  std::size_t inside() const { return open_.empty() ? 0 : open_.back().inside; }

  void finishLine() {
    if (!line_.empty()) {
      out_ += line_ + "\n";
    }
    line_.clear();
  }

  // One empty line stays where the writer left some.
  void newLine() {
    finishLine();
    if (breaks_ > 1 && !out_.empty()) {
      out_ += "\n";
    }
    breaks_ = 0;
  }

  // How many of the things open are closed by the tokens that a line begins with.
  std::size_t closersAhead() const {
    std::size_t n = 0;
    while (n < open_.size() && closes(tokens_[at_ + n])) {
      ++n;
      if (lineEndsBehind(at_ + n - 1)) {
        break;
      }
    }
    return n;
  }
  static bool closes(const Token& t) {
    return (t.kind == TokenKind::symbol && isOneOf(t.text, ")", "]", "}")) ||
           (t.kind == TokenKind::keyword && t.text == "end");
  }
  // else, elif, and catch and finally of a try.
  bool divides(const Token& t) const {
    return !open_.empty() && ((t.kind == TokenKind::keyword && isOneOf(t.text, "else", "elif")) ||
                              (t.kind == TokenKind::name && open_.back().by == "try" &&
                               isOneOf(t.text, "catch", "finally")));
  }

  void beginLine(const Token& token) {
    newLine();
    std::size_t indent = inside();
    if (const std::size_t closed = closersAhead(); closed > 0) {
      indent = open_[open_.size() - closed].indent;
    } else if (divides(token)) {
      indent = open_.back().indent;
    } else if (!statementBegins_ && !inBracket()) {
      // Further in where the writer aligned it.
      indent = std::max(indent + 2, static_cast<std::size_t>(token.position.column - 1));
    }
    indent_ = indent;
    line_.assign(indent, ' ');
  }

  void write(const Token& token) {
    const bool first = line_.empty() || breaks_ > 0;
    if (first) {
      beginLine(token);
    } else if (spaceBefore(token)) {
      line_ += ' ';
    }
    breaks_ = 0;
    const bool unary = isOneOf(token.text, "+", "-") && token.kind == TokenKind::symbol &&
                       (at_ == 0 || !endsOperand(tokens_[at_ - 1]));
    // A string may hold lines of its own.
    if (const std::size_t end = token.text.rfind('\n'); end != std::string_view::npos) {
      out_ += line_ + std::string(token.text.substr(0, end + 1));
      line_ = token.text.substr(end + 1);
    } else {
      line_ += token.text;
    }
    unaryBefore_ = unary;
    follow(token);
  }

  bool spaceBefore(const Token& token) const {
    const Token& before = tokens_[at_ - 1];
    const auto is = [](const Token& t, auto... texts) {
      return t.kind == TokenKind::symbol && isOneOf(t.text, texts...);
    };
    if (unaryBefore_ || is(before, "(", "[", "{") || is(token, ")", "]", "}", ",", ";", ":")) {
      return false;
    }
    if (is(token, "(", "[")) {
      const bool called =
          before.kind == TokenKind::string || before.kind == TokenKind::number ||
          is(before, ")", "]") ||
          (before.kind == TokenKind::name && !isOneOf(before.text, "return", "by", "in", "mod")) ||
          (before.kind == TokenKind::keyword &&
           isOneOf(before.text, "proc", "end", "true", "false"));
      const bool chosen = before.kind == TokenKind::name ||
                          (before.kind == TokenKind::keyword && before.text == "if");
      if (called || chosen) {
        return !called && spaced_;
      }
    }
    if (is(token, "*", "/", "^", "..")) {
      return spaced_ || followedBySpace(at_);
    }
    if (is(before, "*", "/", "^", "..")) {
      return spaced_ || (at_ > 1 && followedBySpace(at_ - 2));
    }
    return true;
  }

  // Whether there is anything between a token and the next.
  bool followedBySpace(std::size_t i) const {
    return i + 1 < tokens_.size() &&
           tokens_[i + 1].offset > tokens_[i].offset + tokens_[i].text.size();
  }

  // What a token opens, closes or ends.
  void follow(const Token& token) {
    const bool began = std::exchange(statementBegins_, false);
    if (token.kind == TokenKind::symbol) {
      if (isOneOf(token.text, "(", "[", "{")) {
        const bool parameters = at_ > 0 && tokens_[at_ - 1].kind == TokenKind::keyword &&
                                tokens_[at_ - 1].text == "proc";
        const bool alone = at_ + 1 >= tokens_.size() || lineEndsBehind(at_);
        open_.push_back({token.text, indent_, alone ? indent_ + 2 : characters(line_), parameters});
      } else if (closes(token)) {
        statementBegins_ = !open_.empty() && open_.back().parameters;
        close();
      } else {
        statementBegins_ = isOneOf(token.text, ";", ":");
      }
    } else if (token.kind == TokenKind::keyword) {
      if (isOneOf(token.text, "proc", "do", "then")) {
        open_.push_back({token.text, indent_, indent_ + 2, false});
      } else if (isOneOf(token.text, "end", "elif")) {
        close();
      }
      statementBegins_ = isOneOf(token.text, "do", "then", "else");
    } else if (token.kind == TokenKind::name) {
      if (divides(token)) {
        statementBegins_ = token.text == "finally";
      } else if (began && token.text == "try" && beginsTried(tokens_[at_ + 1])) {
        open_.push_back({"try", indent_, indent_ + 2, false});
        statementBegins_ = true;
      }
    }
  }

  bool lineEndsBehind(std::size_t i) const {
    const std::size_t from = tokens_[i].offset + tokens_[i].text.size();
    const std::string_view between = text_.substr(from, tokens_[i + 1].offset - from);
    return between.find_first_of("\n#") != std::string_view::npos;
  }

  void close() {
    if (!open_.empty()) {
      open_.pop_back();
    }
  }

  std::string_view text_;
  std::vector<Token> tokens_;
  std::size_t at_ = 0;
  std::string out_;
  std::string line_;
  std::size_t indent_ = 0;  // of the line
  std::size_t breaks_ = 0;  // line ends since the last token or comment
  bool spaced_ = false;     // something stood before the token
  bool statementBegins_ = true;
  bool unaryBefore_ = false;
  std::vector<Open> open_;
};

bool sameTokens(std::string_view a, std::string_view b) {
  const std::vector<Token> x = tokenize(a);
  const std::vector<Token> y = tokenize(b);
  return x.size() == y.size() &&
         std::equal(x.begin(), x.end(), y.begin(), [](const Token& s, const Token& t) {
           return s.kind == t.kind && s.text == t.text;
         });
}

}  // namespace

std::optional<std::string> formatted(std::string_view text) {
  for (const Token& token : tokenize(text)) {
    if (token.kind == TokenKind::error) {
      return std::nullopt;
    }
  }
  std::string result = Formatter(text).run();
  return sameTokens(text, result) ? std::optional(std::move(result)) : std::nullopt;
}

}  // namespace vexel
