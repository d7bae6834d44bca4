// Arithmetic, comparisons and functions on whole lists and arrays, element by element.
//
// Arrays of machine numbers are worked on without making objects: results are float[8] where a
// float or a fraction takes part, for quotients and for powers that are no whole numbers, else
// integer[8]; sums and products beyond it, and everything about lists and arrays of host objects,
// go through the exact arithmetic of single values.  A single value stands for as many of it as
// there are elements. Arrays and lists must have the same shape; results have the bounds of the
// first array.
#pragma once

#include "mathematics/comparison.hpp"
#include "mathematics/elementary.hpp"
#include "values/arrays.hpp"
#include "values/objects.hpp"

namespace vexel {

inline bool isContainer(ALGEB x) { return isArray(x) || isList(x); }

enum class ArithmeticOp : std::uint8_t { add, subtract, multiply, divide, power, modulo };

// Either of a and b is a container.  All of these may collect; raise for shapes that differ.
ALGEB elementwise(State& state, ArithmeticOp op, ALGEB a, ALGEB b);
// The elements of an array of machine integers, or their absolute values, as integers; null for
// anything else.
ALGEB elementwiseWhole(State& state, ALGEB x, bool absolutely);

// Lists, or arrays of host objects, of true and false; raises where a comparison is open.
ALGEB elementwiseComparison(State& state, CompareOp op, ALGEB a, ALGEB b);
// An equation with a list or an array on a side as true and false of their elements, where a
// selection is meant; anything else is returned itself.
ALGEB maskOf(State& state, ALGEB x);
ALGEB elementwiseLogic(State& state, bool isAnd, ALGEB a, ALGEB b);
ALGEB elementwiseNot(State& state, ALGEB x);

// f of every element: in hardware for arrays of machine numbers, else by single.
ALGEB elementwiseFunction(State& state, ALGEB x, double (*hardware)(double),
                          const std::function<ALGEB(ALGEB)>& single);

// Whether x is a dense array of integer[1] to integer[8], float[8] or float[4].
bool isMachineArray(ALGEB x);

// Elements first ... first + n - 1 of a machine array as doubles: in place, or converted in room.
const double* doublesOf(const ArrayObject& array, std::int64_t first, std::int64_t n, double* room);

// A new array of x's bounds and order.
ALGEB arrayLike(State& state, ALGEB x, int type);

}  // namespace vexel
