// One run of a function's code, or of a statement's: its slots, and where its statements lead.
// Expressions are in evaluator.cpp, statements and calls of procedures in statements.cpp.
#pragma once

#include <memory>

#include "language/evaluator.hpp"
#include "language/interpreter.hpp"
#include "language/procedure.hpp"
#include "language/syntax.hpp"
#include "values/objects.hpp"
#include "values/small_decimal.hpp"

namespace vexel {

class Evaluator {
 public:
  Evaluator(State& state, const std::shared_ptr<Program>& program, ALGEB* slots)
      : state_(state), program_(program), slots_(slots) {}

  ALGEB value(const Node& node);
  ALGEB statement(const Node& node);

 private:
  bool condition(const Node& node);
  ALGEB global(ALGEB n);
  ALGEB callValue(const Node& node);
  ALGEB hardwareValue(const Node& node);
  // parameter = value: the name stays a name, whatever value it has.
  static bool isNamedArgument(const Node& node) {
    return node.kind == NodeKind::compare && node.op == CompareOp::equal &&
           (node.children[0]->kind == NodeKind::global || node.children[0]->kind == NodeKind::slot);
  }
  static bool namesArguments(ALGEB function) {
    return is(function, Tag::procedure)
               ? static_cast<const LanguageProcedure&>(*foreign(function)).code->hasDefaults()
               : is(function, Tag::function) && machineFunction(function).takesEquations;
  }
  ALGEB namedArgument(const Node& node) {
    return newPair(state_, Tag::equation, node.children[0]->value, value(*node.children[1]));
  }
  // A float of few digits or an integer, and the digits kept (evaluator_decimals.cpp).
  struct Decimals {
    SmallDecimal value;
    int digits = 0;
    bool isExact = false;
  };
  // The value of arithmetic on such; false or null where something else takes part, or where a
  // result is 0 or very large or small.  Nothing but reading has happened then.
  ALGEB decimalValue(const Node& node);
  bool decimals(const Node& node, Decimals& result);
  bool decimalChain(const Node& node, Decimals& total);
  static bool decimalOf(ALGEB x, Decimals& result);
  ALGEB arithmetic(const Node& node);
  ALGEB overRange(const Node& node);
  bool isExactArithmetic(const Node& node, std::int32_t slot);
  ALGEB exactSum(const Node& node, ALGEB lower, ALGEB upper);
  ALGEB makeProcedure(const Node& node);
  ALGEB assign(const Node& target, ALGEB v);
  ALGEB compareValue(const Node& node);
  ALGEB logicalValue(const Node& node);
  ALGEB logicalOperand(const Node& node);
  // The statement or call that runs now.
  void note(const Node& node) {
    if (program_->text != nullptr) {
      interpreter(state_).node = &node;
    }
  }

  // Runs the body of a loop; false when the loop is to end.
  bool pass(const Node& body, ALGEB& result);
  ALGEB forLoop(const Node& node);
  ALGEB forIn(const Node& node);
  ALGEB tryStatement(const Node& node);
  ALGEB errorTable();

  // Where a statement leads, other than to the next one.
  enum class Way : std::uint8_t { on, leaveLoop, nextPass, returned };

  State& state_;
  const std::shared_ptr<Program>& program_;
  ALGEB* slots_;
  Way way_ = Way::on;
  bool withObjects_ = false;  // around the node is arithmetic that decimals do not fit
};

}  // namespace vexel
