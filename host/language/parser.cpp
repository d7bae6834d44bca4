// The parser: tokens, scopes and statements (expressions are in parser_expressions.cpp).  Deep
// nesting ends with an error of the stack guard, not with a crash.

#include "language/parser.hpp"

#include <algorithm>

#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"
#include "values/utf8.hpp"

namespace vexel {

Parser::Parser(State& state, std::string_view text, std::shared_ptr<const std::string> name)
    : state_(state), text_(text), name_(std::move(name)), tokens_(tokenize(text)) {
  findCommas();
}

// For every opening bracket the first comma between it and its partner, so that looking ahead costs
// nothing however deep brackets are nested.
void Parser::findCommas() {
  firstComma_.assign(tokens_.size(), 0);
  std::vector<std::size_t> open;
  for (std::size_t i = 0; i < tokens_.size(); ++i) {
    if (tokens_[i].kind != TokenKind::symbol) {
      continue;
    }
    const std::string_view symbol = tokens_[i].text;
    if (symbol == "(" || symbol == "[") {
      open.push_back(i);
    } else if (symbol == ";") {
      // Only the body of a procedure has statements between brackets; its brackets stay open.
      continue;
    } else if (!open.empty()) {
      if (symbol == ")" || symbol == "]") {
        open.pop_back();
      } else if (symbol == "," && firstComma_[open.back()] == 0) {
        firstComma_[open.back()] = i;
      }
    }
  }
}

// --- tokens ---

const Token& Parser::peek(std::size_t n) const {
  return at_ + n < tokens_.size() ? tokens_[at_ + n] : tokens_.back();
}

const Token& Parser::take() {
  const Token& token = peek();
  if (at_ + 1 < tokens_.size()) {
    ++at_;
  }
  return token;
}

bool Parser::isSymbol(std::string_view text, std::size_t n) const {
  return peek(n).kind == TokenKind::symbol && peek(n).text == text;
}
bool Parser::isKeyword(std::string_view text) const {
  return peek().kind == TokenKind::keyword && peek().text == text;
}
bool Parser::acceptSymbol(std::string_view text) { return isSymbol(text) && (take(), true); }
bool Parser::acceptKeyword(std::string_view text) { return isKeyword(text) && (take(), true); }

void Parser::expectSymbol(std::string_view text) {
  if (!acceptSymbol(text)) {
    fail("expected '" + std::string(text) + "'");
  }
}
void Parser::expectKeyword(std::string_view text) {
  if (!acceptKeyword(text)) {
    fail("expected '" + std::string(text) + "'");
  }
}

void Parser::fail(const std::string& message) {
  const Token& token = peek();
  if (token.kind == TokenKind::error) {
    const bool unterminated = token.text == "unterminated string";
    // The whole character, which may be several bytes.
    std::string_view rest = text_.substr(token.offset);
    rest = rest.substr(0, std::max<std::size_t>(utf8Length(rest), 1));
    throw SyntaxError{
        std::string(token.text) + (unterminated ? "" : " '" + std::string(rest) + "'"),
        token.position, unterminated};
  }
  if (token.kind == TokenKind::end) {
    throw SyntaxError{message + ", found the end of the text", token.position, true};
  }
  throw SyntaxError{message + ", found '" + std::string(token.text.substr(0, 40)) + "'",
                    token.position, false};
}

bool Parser::atEnd() const { return peek().kind == TokenKind::end; }

// --- programs and scopes ---

std::shared_ptr<Program> Parser::next() {
  while (isSymbol(";") || isSymbol(":")) {
    take();
  }
  if (atEnd()) {
    return nullptr;
  }
  program_ = std::make_shared<Program>(state_);
  scopes_.clear();
  program_->text = name_;
  program_->start = peek().position;
  program_->top = openFunction();
  program_->top->body = statement();
  if (acceptSymbol(":")) {
    program_->printed = false;
  } else if (acceptSymbol(";") || atEnd()) {
    program_->printed = true;
  } else {
    fail("expected ';' or ':' after the statement");
  }
  closeFunction();
  return std::move(program_);
}

void Parser::recover() {
  scopes_.clear();
  program_ = nullptr;
  int depth = 0;
  while (!atEnd()) {
    if (isKeyword("do") || isKeyword("proc") || isKeyword("then")) {
      ++depth;
    } else if (isKeyword("end") && depth > 0) {
      --depth;
    } else if (depth == 0 && (isSymbol(";") || isSymbol(":"))) {
      take();
      return;
    }
    take();
  }
}

FunctionCode* Parser::openFunction() {
  FunctionCode& code = program_->functions.emplace_back();
  scopes_.push_back({&code, {}});
  return &code;
}

void Parser::closeFunction() { scopes_.pop_back(); }

int Parser::addSlot(std::string_view name) {
  Scope& scope = scopes_.back();
  scope.bindings.push_back({std::string(name), scope.code->slots});
  return scope.code->slots++;
}

// The slot of a name in a scope, captured from the enclosing ones if it is theirs; -1 for a global.
int Parser::resolve(std::size_t scope, std::string_view name) {
  auto& bindings = scopes_[scope].bindings;
  for (auto at = bindings.rbegin(); at != bindings.rend(); ++at) {
    if (at->name == name) {
      return at->slot;
    }
  }
  if (scope == 0) {
    return -1;
  }
  const int outer = resolve(scope - 1, name);
  if (outer < 0) {
    return -1;
  }
  FunctionCode& code = *scopes_[scope].code;
  const int inner = code.slots++;
  code.captures.push_back({outer, inner});
  bindings.insert(bindings.begin(), {std::string(name), inner});
  return inner;
}

Node* Parser::make(NodeKind kind, const Token& at) {
  Node& node = program_->nodes.emplace_back();
  node.kind = kind;
  node.position = at.position;
  return &node;
}

Node* Parser::literal(ALGEB value, const Token& at) {
  Node* node = make(NodeKind::literal, at);
  node->value = value;
  program_->literals.push(value);
  return node;
}

std::string_view Parser::sourceBetween(std::size_t from, std::size_t to) const {
  const Token& last = tokens_[to - 1];
  const std::size_t start = tokens_[from].offset;
  return text_.substr(start, last.offset + last.text.size() - start);
}

// --- statements ---

Node* Parser::statement() {
  checkStack(state_);
  if (isKeyword("if") && !conditionalAhead()) {
    return ifStatement();
  }
  if (isKeyword("for")) {
    return forLoop();
  }
  if (isKeyword("while")) {
    return whileLoop();
  }
  return expressionStatement();
}

// Statements up to a keyword that closes or continues the construct around them.
Node* Parser::statementList() {
  Node* block = make(NodeKind::block, peek());
  for (;;) {
    while (acceptSymbol(";") || acceptSymbol(":")) {
    }
    if (isKeyword("end") || isKeyword("else") || isKeyword("elif")) {
      return block;
    }
    const Position start = peek().position;
    block->children.push_back(statement());
    block->children.back()->position = start;  // where an error in it is said to be
    if (!isSymbol(";") && !isSymbol(":") && !isKeyword("end") && !isKeyword("else") &&
        !isKeyword("elif")) {
      fail("expected ';' or 'end'");
    }
  }
}

Node* Parser::ifStatement() {
  Node* node = make(NodeKind::ifStatement, take());
  node->children.push_back(expression());
  expectKeyword("then");
  node->children.push_back(statementList());
  while (acceptKeyword("elif")) {
    node->children.push_back(expression());
    expectKeyword("then");
    node->children.push_back(statementList());
  }
  if (acceptKeyword("else")) {
    node->children.push_back(statementList());
  }
  expectKeyword("end");
  return node;
}

Node* Parser::forLoop() {
  Node* node = make(NodeKind::forLoop, take());
  if (peek().kind != TokenKind::name) {
    fail("expected a name after 'for'");
  }
  const Token& variable = take();
  node->children.push_back(nameReference(variable));
  expectKeyword("from");
  node->children.push_back(expression());
  expectKeyword("to");
  node->children.push_back(expression());
  expectKeyword("do");
  node->children.push_back(statementList());
  expectKeyword("end");
  return node;
}

Node* Parser::whileLoop() {
  Node* node = make(NodeKind::whileLoop, take());
  node->children.push_back(expression());
  expectKeyword("do");
  node->children.push_back(statementList());
  expectKeyword("end");
  return node;
}

Node* Parser::expressionStatement() {
  Node* target = expressionSequence();
  if (!isSymbol(":=")) {
    return target;
  }
  if (target->kind != NodeKind::global && target->kind != NodeKind::slot &&
      target->kind != NodeKind::index) {
    fail(target->kind == NodeKind::call
             ? "only names and elements can be assigned (a procedure is written f := x -> ...)"
             : "only names and elements can be assigned");
  }
  Node* node = make(NodeKind::assign, take());
  node->children = {target, expressionSequence()};
  return node;
}

}  // namespace vexel
