// Tokens to programs, one statement at a time.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "language/lexer.hpp"
#include "language/syntax.hpp"

namespace vexel {

// Thrown by the parser; becomes a host error where statements are run.
struct SyntaxError {
  std::string message;
  Position position;
  bool incomplete = false;  // the text ended in the middle of a statement
};

class Parser {
 public:
  // The text must outlive the parser.  name is that of the text, for errors; null for none.
  Parser(State& state, std::string_view text, std::shared_ptr<const std::string> name = nullptr);

  // The next statement with its terminator; null at the end of the text.  Throws SyntaxError.
  std::shared_ptr<Program> next();

  // After a SyntaxError: skips past the next terminator.
  void recover();

  bool atEnd() const;
  int line() const { return peek().position.line; }  // of what comes next

 private:
  struct Scope;

  void findCommas();
  Node* make(NodeKind kind, const Token& at);
  Node* literal(ALGEB value, const Token& at);
  const Token& peek(std::size_t n = 0) const;
  const Token& take();
  bool isSymbol(std::string_view text, std::size_t n = 0) const;
  bool isKeyword(std::string_view text) const;
  bool acceptSymbol(std::string_view text);
  bool acceptKeyword(std::string_view text);
  void expectSymbol(std::string_view text);
  void expectKeyword(std::string_view text);
  [[noreturn]] void fail(const std::string& message);
  std::string hint(std::string_view message) const;

  Node* statement();
  Node* statementList();
  Node* ifStatement();
  Node* forLoop();
  Node* whileLoop();
  Node* loopBody();
  Node* returnStatement();
  Node* tryStatement();
  bool isWord(std::string_view text, std::size_t n = 0) const;
  bool behindOperand(std::string_view word) const;
  bool beginsStatement(std::size_t n) const;
  bool endsStatement(std::size_t n) const;
  bool endsList() const;
  void parameters();
  Node* expressionStatement();
  Node* expressionSequence();
  Node* expression();
  Node* logical(int level);
  Node* comparison();
  Node* rangeExpression();
  Node* indexExpression();
  bool endsIndex() const;
  Node* sum();
  Node* product();
  Node* unary();
  Node* power();
  Node* postfix();
  Node* primary();
  Node* arrow();
  Node* procedureExpression();
  Node* conditionalExpression();
  Node* nameReference(const Token& token);
  Node* callOf(Node* function, const Token& at);
  std::size_t commaBeforeRange() const;
  Node* overRange(NodeKind kind, const Token& at);
  Node* integralOver(Node* function, const Token& at);
  void quoteOption(Node* argument);
  bool arrowAhead() const;
  bool conditionalAhead() const;
  FunctionCode* openFunction();
  void closeFunction();
  int addSlot(std::string_view name);
  int resolve(std::size_t scope, std::string_view name);
  std::string_view sourceBetween(std::size_t from, std::size_t to) const;

  State& state_;
  std::string_view text_;
  std::shared_ptr<const std::string> name_;
  std::vector<Token> tokens_;
  std::vector<std::size_t> firstComma_;  // of an opening bracket's token; 0: none
  std::size_t at_ = 0;
  int loops_ = 0;  // around the statement, in its function
  int tries_ = 0;
  bool inIndex_ = false;  // a range may lack an end
  std::shared_ptr<Program> program_;
  struct Binding {
    std::string name;
    int slot;
  };
  struct Scope {
    FunctionCode* code;
    std::vector<Binding> bindings;
  };
  std::vector<Scope> scopes_;
};

}  // namespace vexel
