// Scripts run statement by statement: what the command and the prompt are made of.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>
#include <vexel/kernel.hpp>

namespace vexel {

// What became of one statement.
struct Outcome {
  enum class Kind {
    value,        // it ran
    error,        // it raised
    syntax,       // it is no statement
    incomplete,   // the text ends in the middle of it
    interrupted,  // Kernel::interrupt ended it
  };
  Kind kind = Kind::value;
  Value value;           // of the statement, for Kind::value
  bool printed = false;  // it ended with ';' (or with the text)
  std::string error;     // the text, filled
  std::string json;      // the error's JSON line
  int line = 0;          // where the statement starts; for an error the innermost statement of the
                         // text that raised it, for a syntax error where that is
  int column = 0;
  std::string source;  // for a syntax error: the source line and, below it, a caret
  // The innermost statement or call of an error, in a procedure perhaps of an earlier text, by
  // the name of its text; line 0 when it is not known.
  std::string raisedIn;
  int raisedLine = 0;
  int raisedColumn = 0;
  bool inProcedure = false;  // it was raised in a procedure that line and column call
  bool effect = false;       // a loop, or a call of what prints, draws or reads
};

// A text and a place in it.
class Script {
 public:
  // name: of the file, for errors.
  Script(Kernel& kernel, std::string text, const std::string& name = "");
  ~Script();
  Script(const Script&) = delete;
  Script& operator=(const Script&) = delete;

  // Runs the next statement; false at the end of the text, or when "quit" was run.
  bool next(Outcome& outcome);

  // The line where the next statement is looked for.
  int line() const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

// True when the last statement of the text is not finished: a prompt asks for another line.
bool isIncomplete(Kernel& kernel, std::string_view text);

// Whether calling a name that is not defined is an error; at first such a call is its own value.
void setStrict(Kernel& kernel, bool strict);

// True once "quit" or exit() has been run.
bool quitRequested(Kernel& kernel);

// The status that exit(n) gave; nothing where it has not been run, or without a status.
std::optional<int> exitStatus(Kernel& kernel);

// The printed form with long arrays, lists and texts shortened.
std::string shortened(const Value& value);

// The printed form for people: a table of columns laid out in lines, anything else its printed
// form, shortened or not.
std::string displayed(const Value& value, bool shorten);

// What to do with the values of statements that end with ';' in a script that another one reads; at
// first they are dropped.  effect is Outcome's.
void onShown(Kernel& kernel, std::function<void(const Value&, bool effect)> show);

// The text with its lines indented and its tokens spaced; nothing where it has characters that are
// none of the language's.
std::optional<std::string> formatted(std::string_view text);

// Names that are assigned or known, for completion.
std::vector<std::string> knownNames(Kernel& kernel);

}  // namespace vexel
