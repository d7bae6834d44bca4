// Arrays: nine element types, dense (rectangular) or sparse, column- or row-major, any bounds.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "memory/layout.hpp"
#include "values/kernel_state.hpp"

namespace vexel {

// "float[8]" and so on.
std::string_view typeName(int type);

ALGEB newArray(State& state, const RTableSettings& s, const void* data, const V_INT* bounds);
// An array over memory of somebody else, whose owner it holds as long as it lives.
ALGEB wrapArray(State& state, const RTableSettings& s, void* memory, const V_INT* bounds,
                std::shared_ptr<void> owner);
ALGEB copyArray(State& state, const RTableSettings& s, ALGEB x);
RTableSettings settingsOf(ALGEB array);

// Where index lies in an array's own order; raises out of bounds.
std::int64_t position(State& state, ALGEB array, const V_INT* index);
// The first index, and the one after another, row by row; after the last comes the first.
std::vector<V_INT> firstIndex(const ArrayObject& array);
void advance(const ArrayObject& array, std::vector<V_INT>& index);
RTableData elementAt(ALGEB array, std::int64_t position);
void setElementAt(ALGEB array, std::int64_t position, RTableData value);

// An element as a host object (complex types give complex numbers), and back: raises
// "unable to store %1 in an array of %2" when x cannot be converted to the array's type.
ALGEB elementToObject(State& state, int type, RTableData element);
RTableData objectToElement(State& state, int type, ALGEB x);

// Element by index as objects.
ALGEB arraySelect(State& state, ALGEB array, std::span<const V_INT> index);
void arrayAssign(State& state, ALGEB array, std::span<const V_INT> index, ALGEB value);

}  // namespace vexel
