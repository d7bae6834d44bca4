// Elements of arrays, lists, tables and sequences by their indices.
#pragma once

#include <span>

#include "values/kernel_state.hpp"

namespace vexel {

// what[i, ...] of an array, list, table or sequence.
ALGEB indexed(State& state, ALGEB what, std::span<const ALGEB> index);

// what[i, ...] := v of an array, list or table.
void assignIndexed(State& state, ALGEB what, std::span<const ALGEB> index, ALGEB v);

}  // namespace vexel
