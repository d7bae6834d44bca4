// The syntax tree: nodes in an arena that a program owns.
//
// Chains (a + b - c, a*b/c, a and b) are one node each, so that long ones need no deep recursion;
// the arena frees nodes one after another.  Parameters and local names are slots of their
// function's frame.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "mathematics/comparison.hpp"
#include "memory/heap.hpp"

namespace vexel {

struct Position {
  int line = 1;
  int column = 1;
};

enum class NodeKind : std::uint8_t {
  literal,  // value
  slot,     // slot
  global,   // value: the name
  sum,      // children; flags: true where subtracted
  product,  // children; flags: true where divided by
  negate,
  power,
  logicalAnd,  // children
  logicalOr,   // children
  logicalNot,
  compare,  // op, two children
  range,
  list,
  sequence,
  index,            // children: what, then indices
  call,             // children: function, then arguments
  hardware,         // evalhf(e); children as of a call
  procedure,        // function
  conditional,      // children: condition, then, else
  sequenceOver,     // seq: children: expression, lower, upper; slot; value: the name
  sumOver,          // sum over a range; the same
  clear,            // value: the name
  assign,           // children: target, value
  ifStatement,      // children: condition, block, condition, block, ..., else block
  forLoop,          // children: target, from, to, body, and step where there is one
  forIn,            // children: target, list, body
  whileLoop,        // children: condition, body
  block,            // children: statements
  returnStatement,  // children: value, if any
  leaveLoop,        // break; value: the name, which a script may have given a value
  nextPass,         // next; the same
  tryStatement,     // children: body, name of the error or null, catch block, finally block or null
};

struct FunctionCode;

struct Node {
  NodeKind kind;
  CompareOp op = CompareOp::equal;
  std::int32_t slot = -1;
  Position position;
  ALGEB value = nullptr;
  std::vector<Node*> children;
  std::vector<bool> flags;
  FunctionCode* function = nullptr;
};

// A procedure's code, or that of a statement at the top.
struct FunctionCode {
  int parameters = 0;
  int slots = 0;  // parameters, captured values, locals
  struct Capture {
    int outer;  // slot of the enclosing function
    int inner;
  };
  std::vector<Capture> captures;
  std::vector<std::string> names;  // of the parameters
  std::vector<Node*> defaults;     // of the last parameters, if any has one; null: none
  bool hasDefaults() const { return !defaults.empty(); }
  Node* body = nullptr;
  std::string source;  // as it was written
};

// One statement's tree and what it refers to.  Procedures share it.
struct Program {
  explicit Program(State& state) : literals(state) {}
  std::deque<Node> nodes;
  std::deque<FunctionCode> functions;
  Handles literals;  // keeps literal values alive
  FunctionCode* top = nullptr;
  std::shared_ptr<const std::string> text;  // the name of the text it stands in; null: none
  bool printed = false;                     // ended with ';'
  Position start;
  Position end;
};

}  // namespace vexel
