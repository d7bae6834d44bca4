// Calls, and those whose shape is the language's own: over ranges, with words as options.

#include "language/parser.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"

namespace vexel {

Node* Parser::callOf(Node* function, const Token& at) {
  const std::string_view called = function->kind == NodeKind::global ? text(function->value) : "";
  take();
  if ((called == "seq" || called == "sum") && !isSymbol(")")) {
    if (Node* over = overRange(called == "seq" ? NodeKind::sequenceOver : NodeKind::sumOver, at)) {
      return over;
    }
  }
  if (called == "integrate" && !isSymbol(")")) {
    if (Node* integral = integralOver(function, at)) {
      return integral;
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

// Just after the parenthesis of f(e, i = ...: where the comma is, counted from here; 0 for a call
// of another shape.
std::size_t Parser::commaBeforeRange() const {
  const std::size_t comma = firstComma_[at_ - 1];
  const std::size_t n = comma - at_;
  const bool named = comma != 0 && peek(n + 1).kind == TokenKind::name && isSymbol("=", n + 2);
  return named ? n : 0;
}

// seq(e, i = a .. b): i is bound in e, so e is parsed with a slot for it.  Null when the call has
// another shape; the tokens are then as before.
Node* Parser::overRange(NodeKind kind, const Token& at) {
  const std::size_t n = commaBeforeRange();
  if (n == 0) {
    return nullptr;
  }
  Node* node = make(kind, at);
  const std::string_view variable = peek(n + 1).text;
  node->slot = addSlot(variable);
  node->value = name(state_, variable);
  program_->literals.push(node->value);
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

// integrate(e, x = a .. b) is integrate(x -> e, a .. b).
Node* Parser::integralOver(Node* function, const Token& at) {
  const std::size_t n = commaBeforeRange();
  if (n == 0 || nameValue(function->value) != nullptr) {
    return nullptr;
  }
  const std::string variable(peek(n + 1).text);
  const std::size_t from = at_;
  Node* integrand = make(NodeKind::procedure, at);
  integrand->function = openFunction();
  addSlot(variable);
  integrand->function->parameters = 1;
  integrand->function->names = {variable};
  integrand->function->body = expression();
  integrand->function->source = variable + " -> " + std::string(sourceBetween(from, at_));
  closeFunction();
  expectSymbol(",");
  take();
  expectSymbol("=");
  Node* range = rangeExpression();
  expectSymbol(")");
  Node* call = make(NodeKind::call, at);
  call->children = {function, integrand, range};
  return call;
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
