// Built-in functions, by the file that defines them.
#pragma once

#include "mathematics/parts.hpp"
#include "memory/heap.hpp"
#include "values/kernel_state.hpp"

namespace vexel {

// Gives a new kernel its language: the interpreter, and all of the functions below.
void initialiseLanguage(State& state);

void defineStructuralFunctions(State& state);   // count, part, map, tolist, typeof, table, ...
void defineCollectionFunctions(State& state);   // append, concat, reverse, unique, where, any, all
void defineNumberFunctions(State& state);       // floor, round, abs, min, max, ...
void defineWholeNumberFunctions(State& state);  // factorial, binomial, gcd, lcm, mod
void defineCalculusFunctions(State& state);     // diff, integrate
void defineArrayFunction(State& state);         // Array
void defineSystemFunctions(State& state);       // print, error, time, random numbers, gc, ...
void defineTextFunctions(State& state);         // printf, cat, WriteText
void definePlotFunctions(State& state);         // plot, picture, layer
void defineScriptFunctions(State& state);       // read, source_folder

}  // namespace vexel
