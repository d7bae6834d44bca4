// Built-in functions, by the file that defines them.
#pragma once

#include "core/kernel_state.hpp"

namespace vexel {

void defineStructuralFunctions(State& state);  // count, part, map, tolist, typeof, table, ...
void defineArrayFunction(State& state);        // Array
void defineSystemFunctions(State& state);      // print, error, time, random numbers, gc, ...
void defineTextFunctions(State& state);        // printf, cat, WriteText
void defineCsvFunctions(State& state);         // ReadCSV, WriteCSV

}  // namespace vexel
