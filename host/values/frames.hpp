// Tables of columns: what ReadCSV reads and what rows are chosen, sorted and joined of.
//
// A frame is a table whose keys are headings, strings or whole numbers, and whose values are
// one-dimensional arrays from 1, all of one size.  Names stand for the headings of the same text.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "values/kernel_state.hpp"
#include "values/objects.hpp"

namespace vexel {

class Frame : public Table {
 public:
  std::int64_t rows = 0;
};

ALGEB newFrame(State& state, std::int64_t rows);
bool isFrame(ALGEB x);
inline Frame& frame(ALGEB x) { return static_cast<Frame&>(*foreign(x)); }

// The heading that a name, a function's name, a string or a whole number stands for.
ALGEB headingOf(State& state, ALGEB x);
// A column of a frame by what stands for its heading; raises with the headings where there is none.
ALGEB columnOf(State& state, ALGEB frame, ALGEB heading);
ALGEB findColumn(State& state, ALGEB frame, ALGEB heading);  // null where there is none
std::vector<ALGEB> headingsOf(ALGEB frame);

// An array of that many rows of an array, a list or, for all rows, a single value.  Lists of floats
// give float[8], of small integers integer[8], else arrays of host objects; NULL among numbers is
// undefined.
ALGEB columnFrom(State& state, ALGEB values, std::int64_t rows);
void assignColumn(State& state, ALGEB frame, ALGEB heading, ALGEB values);

// The rows at those places, from 0, in that order; a negative place gives a row of missing values.
ALGEB takeRows(State& state, ALGEB frame, std::span<const std::int64_t> places);
ALGEB takeElements(State& state, ALGEB column, std::span<const std::int64_t> places);

// Element i, from 0, as an object; NULL for an unset one.
ALGEB cellOf(State& state, ALGEB column, std::int64_t i);
// undefined, NULL.
bool isMissing(State& state, ALGEB cell);

// The frame laid out in lines, the last without an end; of long ones the first and last rows.
std::string frameText(State& state, ALGEB frame);

}  // namespace vexel
