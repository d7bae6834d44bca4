// Evaluation of syntax trees.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <unordered_set>

#include "language/syntax.hpp"
#include "values/kernel_state.hpp"

namespace vexel {

// Runs one statement; its value.
ALGEB runProgram(State& state, const std::shared_ptr<Program>& program);

// a op b: of numbers and symbolic constants its truth; nothing where that is open.
std::optional<bool> comparison(State& state, CompareOp op, ALGEB a, ALGEB b);

// The truth of a boolean, an equation or a relation; raises for anything else.
bool truth(State& state, ALGEB x);

// a[i, ...] of an array, list, table, sequence.
ALGEB indexed(State& state, ALGEB x, std::span<const ALGEB> index);

// What the language keeps per kernel.
struct Language : LanguageState {
  bool quit = false;

  // What is being run, for errors.  Programs of texts without a name leave it as it is.
  const Program* program = nullptr;
  const Node* node = nullptr;

  TextPlace where() const override {
    return program == nullptr
               ? TextPlace()
               : TextPlace{program->text, node->position.line, node->position.column};
  }

  // Expressions that were found to mention no name with a value.  They stand until a name gets one;
  // a collection, which may give their addresses to others, forgets them.
  std::unordered_set<ALGEB> settled;
  std::uint64_t settledAt = 0;  // namesGivenValues when they were found
};

inline Language& language(State& state) { return static_cast<Language&>(*state.language); }

}  // namespace vexel
