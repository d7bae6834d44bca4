// Expressions: by recursive descent, one function for each level of binding; procedures.

#include <utility>

#include "language/parser.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"

namespace vexel {

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
  node->children = {left, inIndex_ && endsIndex() ? literal(state_.null, peek()) : sum()};
  return node;
}

bool Parser::endsIndex() const { return isSymbol(",") || isSymbol("]"); }

// An index: an expression, or a range whose ends may be left out.
Node* Parser::indexExpression() {
  const bool outer = inIndex_;
  inIndex_ = true;
  Node* node = nullptr;
  if (isSymbol("..")) {
    node = make(NodeKind::range, take());
    node->children = {literal(state_.null, peek()),
                      endsIndex() ? literal(state_.null, peek()) : sum()};
  } else {
    node = expression();
  }
  inIndex_ = outer;
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
  Node* left = unary();
  for (;;) {
    if (isSymbol("*") || isSymbol("/")) {
      Node* node = make(NodeKind::product, at);
      node->children.push_back(left);
      node->flags.push_back(false);
      while (isSymbol("*") || isSymbol("/")) {
        node->flags.push_back(take().text == "/");
        node->children.push_back(unary());
      }
      left = node;
    } else if (behindOperand("mod")) {
      // a mod b: a call of the function, whose name has no other meaning behind an operand.
      const Token& word = take();
      Node* callee = make(NodeKind::global, word);
      callee->value = name(state_, "mod");
      program_->literals.push(callee->value);
      Node* node = make(NodeKind::call, word);
      node->children = {callee, left, unary()};
      left = node;
    } else {
      return left;
    }
  }
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
        index->children.push_back(indexExpression());
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
      ALGEB value = nullptr;
      try {
        value = numberFromText(state_, token.text);
      } catch (const HostErrorToken&) {
        throw SyntaxError{pendingErrorText(state_), token.position, false};
      }
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
    node->value = name(state_, token.text);  // for f(weights = w) where weights is a local name
    program_->literals.push(node->value);
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
  for (const Binding& binding : scopes_.back().bindings) {
    node->function->names.push_back(binding.name);
  }
  expectSymbol("->");
  node->function->body = expression();
  node->function->source = sourceBetween(from, at_);
  closeFunction();
  return node;
}

// x, y, n := 10: those with a value may be left out of a call, and are given by position or name.
void Parser::parameters() {
  FunctionCode& code = *scopes_.back().code;
  while (peek().kind == TokenKind::name) {
    code.names.emplace_back(peek().text);
    addSlot(take().text);
    if (acceptSymbol(":=")) {
      code.defaults.resize(code.names.size(), nullptr);
      code.defaults.back() = expression();
    } else if (code.hasDefaults()) {
      fail("expected ':=' and a value, as the parameter before has one");
    }
    if (!acceptSymbol(",")) {
      break;
    }
  }
  code.parameters = static_cast<int>(code.names.size());
}

Node* Parser::procedureExpression() {
  const std::size_t from = at_;
  Node* node = make(NodeKind::procedure, take());
  node->function = openFunction();
  const int loops = std::exchange(loops_, 0);
  const int tries = std::exchange(tries_, 0);
  expectSymbol("(");
  parameters();
  expectSymbol(")");
  while (acceptKeyword("local")) {
    while (peek().kind == TokenKind::name) {
      addSlot(take().text);
      if (!acceptSymbol(",")) {
        break;
      }
    }
    if (!acceptSymbol(";") && !acceptSymbol(":")) {
      fail("expected ';' after the local names");
    }
  }
  node->function->body = statementList();
  expectKeyword("end");
  loops_ = loops;
  tries_ = tries;
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

}  // namespace vexel
