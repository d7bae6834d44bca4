// A recursive-descent parser.  Deep nesting ends with an error of the stack guard, not with a
// crash.

#include "language/parser.hpp"

#include <algorithm>

#include "core/errors.hpp"
#include "core/numbers.hpp"
#include "core/objects.hpp"
#include "language/json.hpp"

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

// --- expressions, loosest binding first ---

Node* Parser::expressionSequence() {
  const Token& at = peek();
  Node* first = expression();
  if (!isSymbol(",")) {
    return first;
  }
  Node* node = make(NodeKind::sequence, at);
  node->children.push_back(first);
  while (acceptSymbol(",")) {
    node->children.push_back(expression());
  }
  return node;
}

Node* Parser::expression() {
  checkStack(state_);
  if (arrowAhead()) {
    return arrow();
  }
  return logical(0);
}

// level 0: or; level 1: and.
Node* Parser::logical(int level) {
  const Token& at = peek();
  auto operand = [&]() -> Node* {
    if (level == 0) {
      return logical(1);
    }
    if (isKeyword("not")) {
      Node* node = make(NodeKind::logicalNot, take());
      int negations = 1;
      while (acceptKeyword("not")) {
        ++negations;
      }
      node->children.push_back(comparison());
      if (negations % 2 == 0) {
        Node* outer = make(NodeKind::logicalNot, at);
        outer->children.push_back(node);
        return outer;
      }
      return node;
    }
    return comparison();
  };
  const char* keyword = level == 0 ? "or" : "and";
  Node* first = operand();
  if (!isKeyword(keyword)) {
    return first;
  }
  Node* node = make(level == 0 ? NodeKind::logicalOr : NodeKind::logicalAnd, at);
  node->children.push_back(first);
  while (acceptKeyword(keyword)) {
    node->children.push_back(operand());
  }
  return node;
}

Node* Parser::comparison() {
  static constexpr struct {
    std::string_view text;
    CompareOp op;
  } kOperators[] = {{"=", CompareOp::equal},   {"<>", CompareOp::unequal},
                    {"<", CompareOp::less},    {"<=", CompareOp::lessEqual},
                    {">", CompareOp::greater}, {">=", CompareOp::greaterEqual}};
  Node* left = rangeExpression();
  for (const auto& [text, op] : kOperators) {
    if (isSymbol(text)) {
      Node* node = make(NodeKind::compare, take());
      node->op = op;
      // The right side of an option or equation may be a procedure.
      node->children = {left, arrowAhead() ? arrow() : rangeExpression()};
      return node;
    }
  }
  return left;
}

Node* Parser::rangeExpression() {
  Node* left = sum();
  if (!isSymbol("..")) {
    return left;
  }
  Node* node = make(NodeKind::range, take());
  node->children = {left, sum()};
  return node;
}

Node* Parser::sum() {
  const Token& at = peek();
  Node* first = product();
  if (!isSymbol("+") && !isSymbol("-")) {
    return first;
  }
  Node* node = make(NodeKind::sum, at);
  node->children.push_back(first);
  node->flags.push_back(false);
  while (isSymbol("+") || isSymbol("-")) {
    node->flags.push_back(take().text == "-");
    node->children.push_back(product());
  }
  return node;
}

Node* Parser::product() {
  const Token& at = peek();
  Node* first = unary();
  if (!isSymbol("*") && !isSymbol("/")) {
    return first;
  }
  Node* node = make(NodeKind::product, at);
  node->children.push_back(first);
  node->flags.push_back(false);
  while (isSymbol("*") || isSymbol("/")) {
    node->flags.push_back(take().text == "/");
    node->children.push_back(unary());
  }
  return node;
}

Node* Parser::unary() {
  checkStack(state_);
  const Token& at = peek();
  bool negative = false;
  while (isSymbol("-") || isSymbol("+")) {
    negative = (take().text == "-") != negative;
  }
  Node* operand = power();
  if (!negative) {
    return operand;
  }
  if (operand->kind == NodeKind::literal && isReal(operand->value)) {
    return literal(negate(state_, operand->value), at);
  }
  Node* node = make(NodeKind::negate, at);
  node->children.push_back(operand);
  return node;
}

Node* Parser::power() {
  Node* base = postfix();
  if (!isSymbol("^")) {
    return base;
  }
  Node* node = make(NodeKind::power, take());
  node->children = {base, unary()};
  return node;
}

Node* Parser::postfix() {
  Node* node = primary();
  for (;;) {
    const Token& at = peek();
    if (isSymbol("(")) {
      node = callOf(node, at);
    } else if (isSymbol("[")) {
      take();
      Node* index = make(NodeKind::index, at);
      index->children.push_back(node);
      do {
        index->children.push_back(expression());
      } while (acceptSymbol(","));
      expectSymbol("]");
      node = index;
    } else {
      return node;
    }
  }
}

Node* Parser::primary() {
  const Token& token = peek();
  switch (token.kind) {
    case TokenKind::number: {
      const ALGEB value = numberFromText(state_, token.text);
      if (value == nullptr) {
        fail("expected a number");
      }
      take();
      return literal(value, token);
    }
    case TokenKind::string:
      take();
      return literal(string(state_, unescape(token.text)), token);
    case TokenKind::name:
      take();
      return nameReference(token);
    case TokenKind::keyword:
      if (token.text == "true" || token.text == "false") {
        take();
        return literal(boolean(state_, token.text == "true"), token);
      }
      if (token.text == "undefined" || token.text == "infinity") {
        take();
        return literal(token.text == "undefined" ? state_.undefined : state_.infinity, token);
      }
      if (token.text == "proc") {
        return procedureExpression();
      }
      if (token.text == "if") {
        return conditionalExpression();
      }
      break;
    case TokenKind::symbol:
      if (token.text == "(") {
        take();
        if (acceptSymbol(")")) {
          return literal(state_.null, token);
        }
        Node* inner = expressionSequence();
        expectSymbol(")");
        return inner;
      }
      if (token.text == "[") {
        Node* list = make(NodeKind::list, take());
        if (!isSymbol("]")) {
          do {
            list->children.push_back(expression());
          } while (acceptSymbol(","));
        }
        expectSymbol("]");
        return list;
      }
      break;
    default:
      break;
  }
  fail("expected an expression");
}

Node* Parser::nameReference(const Token& token) {
  if (const int slot = resolve(scopes_.size() - 1, token.text); slot >= 0) {
    Node* node = make(NodeKind::slot, token);
    node->slot = slot;
    return node;
  }
  if (token.text == "NULL") {
    return literal(state_.null, token);
  }
  if (token.text == "I") {
    return literal(newComplex(state_, immediate(0), immediate(1)), token);
  }
  Node* node = make(NodeKind::global, token);
  node->value = name(state_, token.text);
  program_->literals.push(node->value);
  return node;
}

// --- procedures ---

// name -> , or ( [name {, name}] ) ->
bool Parser::arrowAhead() const {
  if (peek().kind == TokenKind::name) {
    return isSymbol("->", 1);
  }
  if (!isSymbol("(")) {
    return false;
  }
  std::size_t n = 1;
  if (peek(n).kind == TokenKind::name) {
    ++n;
    while (isSymbol(",", n) && peek(n + 1).kind == TokenKind::name) {
      n += 2;
    }
  }
  return isSymbol(")", n) && isSymbol("->", n + 1);
}

Node* Parser::arrow() {
  const std::size_t from = at_;
  Node* node = make(NodeKind::procedure, peek());
  node->function = openFunction();
  if (acceptSymbol("(")) {
    while (peek().kind == TokenKind::name) {
      addSlot(take().text);
      acceptSymbol(",");
    }
    expectSymbol(")");
  } else {
    addSlot(take().text);
  }
  node->function->parameters = node->function->slots;
  expectSymbol("->");
  node->function->body = expression();
  node->function->source = sourceBetween(from, at_);
  closeFunction();
  return node;
}

Node* Parser::procedureExpression() {
  const std::size_t from = at_;
  Node* node = make(NodeKind::procedure, take());
  node->function = openFunction();
  auto names = [&] {
    while (peek().kind == TokenKind::name) {
      addSlot(take().text);
      if (!acceptSymbol(",")) {
        break;
      }
    }
  };
  expectSymbol("(");
  names();
  expectSymbol(")");
  node->function->parameters = node->function->slots;
  while (acceptKeyword("local")) {
    names();
    if (!acceptSymbol(";") && !acceptSymbol(":")) {
      fail("expected ';' after the local names");
    }
  }
  node->function->body = statementList();
  expectKeyword("end");
  node->function->source = sourceBetween(from, at_);
  closeFunction();
  return node;
}

// "if" with a parenthesis that holds a comma of its own.
bool Parser::conditionalAhead() const { return isSymbol("(", 1) && firstComma_[at_ + 1] != 0; }

Node* Parser::conditionalExpression() {
  Node* node = make(NodeKind::conditional, take());
  expectSymbol("(");
  for (int i = 0; i < 3; ++i) {
    node->children.push_back(expression());
    expectSymbol(i < 2 ? "," : ")");
  }
  return node;
}

// --- calls ---

Node* Parser::callOf(Node* function, const Token& at) {
  const std::string_view called = function->kind == NodeKind::global ? text(function->value) : "";
  take();
  if ((called == "seq" || called == "sum") && !isSymbol(")")) {
    if (Node* over = overRange(called == "seq" ? NodeKind::sequenceOver : NodeKind::sumOver, at)) {
      return over;
    }
  }
  Node* call = make(NodeKind::call, at);
  call->children.push_back(function);
  if (!isSymbol(")")) {
    do {
      call->children.push_back(expression());
    } while (acceptSymbol(","));
  }
  expectSymbol(")");
  if (called == "clear" && call->children.size() == 2 &&
      call->children[1]->kind == NodeKind::global) {
    call->kind = NodeKind::clear;
    call->value = call->children[1]->value;
    call->children.clear();
  } else if (called == "evalhf" && call->children.size() == 2) {
    call->kind = NodeKind::hardware;
  } else if (called == "Array") {
    for (std::size_t i = 1; i < call->children.size(); ++i) {
      quoteOption(call->children[i]);
    }
  }
  return call;
}

// seq(e, i = a .. b): i is bound in e, so e is parsed with a slot for it.  Null when the call has
// another shape; the tokens are then as before.
Node* Parser::overRange(NodeKind kind, const Token& at) {
  // The comma that ends e, relative to the parser's place just after the parenthesis.
  const std::size_t comma = firstComma_[at_ - 1];
  if (comma == 0) {
    return nullptr;
  }
  const std::size_t n = comma - at_;
  if (peek(n + 1).kind != TokenKind::name || !isSymbol("=", n + 2)) {
    return nullptr;
  }
  Node* node = make(kind, at);
  const std::string_view variable = peek(n + 1).text;
  node->slot = addSlot(variable);
  Node* body = expression();
  // Captures may have been added at the front; the bound name is the last.
  scopes_.back().bindings.pop_back();
  expectSymbol(",");
  take();
  expectSymbol("=");
  Node* lower = sum();
  expectSymbol("..");
  Node* upper = sum();
  expectSymbol(")");
  node->children = {body, lower, upper};
  return node;
}

// "datatype = float[8]" means these words, whatever values the names have.
void Parser::quoteOption(Node* argument) {
  if (argument->kind != NodeKind::compare || argument->op != CompareOp::equal ||
      argument->children[0]->kind != NodeKind::global) {
    return;
  }
  auto quote = [&](Node* node) {
    if (node->kind == NodeKind::global) {
      node->kind = NodeKind::literal;
    } else if (node->kind == NodeKind::index && node->children.size() == 2 &&
               node->children[0]->kind == NodeKind::global &&
               node->children[1]->kind == NodeKind::literal &&
               isImmediate(node->children[1]->value)) {
      node->value =
          name(state_, std::string(text(node->children[0]->value)) + "[" +
                           std::to_string(immediateValue(node->children[1]->value)) + "]");
      program_->literals.push(node->value);
      node->kind = NodeKind::literal;
    }
  };
  quote(argument->children[0]);
  quote(argument->children[1]);
}

}  // namespace vexel
