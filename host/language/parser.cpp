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
    throw SyntaxError{std::string(token.text) +
                          (unterminated ? "" : " '" + std::string(rest) + "'" + hint(message)),
                      token.position, unterminated};
  }
  if (token.kind == TokenKind::end) {
    throw SyntaxError{message + ", found the end of the text", token.position, true};
  }
  throw SyntaxError{
      message + ", found '" + std::string(token.text.substr(0, 40)) + "'" + hint(message),
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
  loops_ = tries_ = 0;
  inIndex_ = false;
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
  // Words that are statements where they stand alone, and names everywhere else.
  if (loops_ > 0 && (isWord("break") || isWord("next")) && endsStatement(1)) {
    const bool leaves = isWord("break");
    const Token& word = take();
    Node* node = make(leaves ? NodeKind::leaveLoop : NodeKind::nextPass, word);
    node->value = name(state_, word.text);
    program_->literals.push(node->value);
    return node;
  }
  if (scopes_.size() > 1 && isWord("return") && !isSymbol(":=", 1)) {
    return returnStatement();
  }
  if (isWord("try") && beginsStatement(1)) {
    return tryStatement();
  }
  return expressionStatement();
}

// A name that is none of the function's own.
bool Parser::isWord(std::string_view text, std::size_t n) const {
  if (peek(n).kind != TokenKind::name || peek(n).text != text) {
    return false;
  }
  for (const Scope& scope : scopes_) {
    for (const Binding& binding : scope.bindings) {
      if (binding.name == text) {
        return false;
      }
    }
  }
  return true;
}

// Where no name can stand the word is meant, though a function have one of its own like it.
bool Parser::behindOperand(std::string_view word) const {
  return peek().kind == TokenKind::name && peek().text == word;
}

bool Parser::endsStatement(std::size_t n) const {
  const Token& token = peek(n);
  return token.kind == TokenKind::end || isSymbol(";", n) || isSymbol(":", n) ||
         (token.kind == TokenKind::keyword &&
          (token.text == "end" || token.text == "else" || token.text == "elif")) ||
         (tries_ > 0 && (isWord("catch", n) || isWord("finally", n)));
}

// What the statements of a try may begin with; before an operator or the end of what is around it
// the word is a name.
bool Parser::beginsStatement(std::size_t n) const {
  const Token& token = peek(n);
  if (token.kind == TokenKind::keyword) {
    for (const char* const word :
         {"if", "for", "while", "proc", "not", "true", "false", "undefined", "infinity"}) {
      if (token.text == word) {
        return true;
      }
    }
    return false;
  }
  return token.kind != TokenKind::symbol && token.kind != TokenKind::end;
}

// What closes or continues the construct around a list of statements.
bool Parser::endsList() const {
  return isKeyword("end") || isKeyword("else") || isKeyword("elif") ||
         (tries_ > 0 && (isWord("catch") || isWord("finally")));
}

// Statements up to a keyword that closes or continues the construct around them.
Node* Parser::statementList() {
  Node* block = make(NodeKind::block, peek());
  for (;;) {
    while (acceptSymbol(";") || acceptSymbol(":")) {
    }
    if (endsList()) {
      return block;
    }
    const Position start = peek().position;
    block->children.push_back(statement());
    block->children.back()->position = start;  // where an error in it is said to be
    if (!isSymbol(";") && !isSymbol(":") && !endsList()) {
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

Node* Parser::loopBody() {
  expectKeyword("do");
  ++loops_;
  Node* body = statementList();
  --loops_;
  expectKeyword("end");
  return body;
}

// for v in list do, for i from a by s to b do, for i to b do
Node* Parser::forLoop() {
  const Token& at = take();
  if (peek().kind != TokenKind::name) {
    fail("expected a name after 'for'");
  }
  Node* target = nameReference(take());
  if (behindOperand("in")) {
    take();
    Node* node = make(NodeKind::forIn, at);
    Node* list = expression();
    node->children = {target, list, loopBody()};
    return node;
  }
  Node* node = make(NodeKind::forLoop, at);
  Node* from = nullptr;
  Node* step = nullptr;
  if (acceptKeyword("from")) {
    from = expression();
  } else if (isKeyword("to") || behindOperand("by")) {
    from = literal(immediate(1), peek());
  } else {
    fail("expected 'from' or 'in'");
  }
  if (behindOperand("by")) {
    take();
    step = expression();
  }
  expectKeyword("to");
  Node* to = expression();
  if (step == nullptr && behindOperand("by")) {
    take();
    step = expression();
  }
  node->children = {target, from, to, loopBody()};
  if (step != nullptr) {
    node->children.push_back(step);
  }
  return node;
}

Node* Parser::whileLoop() {
  Node* node = make(NodeKind::whileLoop, take());
  node->children.push_back(expression());
  node->children.push_back(loopBody());
  return node;
}

Node* Parser::returnStatement() {
  Node* node = make(NodeKind::returnStatement, take());
  if (!endsStatement(0) && !endsList()) {
    node->children.push_back(expressionSequence());
  }
  return node;
}

// try statements catch e: statements finally statements end
Node* Parser::tryStatement() {
  Node* node = make(NodeKind::tryStatement, take());
  node->children.assign(4, nullptr);
  ++tries_;
  node->children[0] = statementList();
  if (isWord("catch")) {
    take();
    if (peek().kind == TokenKind::name) {
      node->children[1] = nameReference(take());
    }
    if (!acceptSymbol(":") && !acceptSymbol(";")) {
      fail("expected ':' after 'catch'");
    }
    node->children[2] = statementList();
  }
  if (isWord("finally")) {
    take();
    node->children[3] = statementList();
  }
  --tries_;
  if (node->children[2] == nullptr && node->children[3] == nullptr) {
    fail("expected 'catch' or 'finally'");
  }
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
