// Text and tables of columns, by the file that defines their functions.
#pragma once

#include "builtins/functions/call.hpp"
#include "values/frames.hpp"

namespace vexel {

// A frame: x itself, or one of the columns of any other table.  Raises for anything else.
ALGEB tableOf(Call& call, const char* parameter);
// The names in a list of columns, or the one; none where the parameter is not given.
std::vector<ALGEB> headingsIn(Call& call, const char* parameter);

// How many elements a list or an array of one dimension has; raises for other arrays.
std::int64_t sizeOfVector(State& state, ALGEB x);
// Its element i, from 0.
ALGEB elementOfVector(State& state, ALGEB x, std::int64_t i);

// filter(table, row -> ...), filter(table, mask), filter(list, x -> ...).
ALGEB filterRows(Call& call);
// Distinct texts, dates and the like, and how often each occurs; null where x is not of these.
ALGEB tallyOfTexts(Call& call);
// trim(text), of a text or each of several; null where x is none.
ALGEB trimmedText(Call& call);

void defineReadCsv(State& state);
void defineWriteCsv(State& state);
void defineTableFunctions(State& state);
void defineGroup(State& state);
void defineJoin(State& state);
void defineTextPartFunctions(State& state);
void defineDateFunctions(State& state);
void defineTables(State& state);  // all of them

}  // namespace vexel
