// What the words of an object are, for kinds that are more than a header and operands.
//
// The collector reads these; accessors with a meaning are in values/.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <unordered_map>

#include "memory/handle.hpp"

namespace vexel {

class Foreign;

// A string: its bytes, and zeros to the end of the last word, at least one.
struct StringObject {
  Word header;
  Word size;
  char bytes[];
};

// A name: two handles that may be null, and its bytes like a string's.
struct NameObject {
  Word header;
  ALGEB value;     // assigned to it
  ALGEB function;  // known under it
  Word size;
  char bytes[];
};
inline NameObject& nameOf(ALGEB x) { return *reinterpret_cast<NameObject*>(x); }
inline ALGEB nameValue(ALGEB name) { return nameOf(name).value; }
inline ALGEB nameFunction(ALGEB name) { return nameOf(name).function; }

// The bytes of a string or a name; valid while it lives.
inline std::string_view text(ALGEB x) {
  if (tag(x) == Tag::name) {
    return {nameOf(x).bytes, nameOf(x).size};
  }
  const auto& string = *reinterpret_cast<StringObject*>(x);
  return {string.bytes, string.size};
}

// A float that is a double; one that is none is three words, header, mantissa (a handle), exponent.
struct DoubleObject {
  Word header;
  double value;
};
struct DecimalObject {
  Word header;
  ALGEB mantissa;
  std::int64_t exponent;
};
inline bool isDoubleObject(ALGEB softwareFloat) {
  return length(softwareFloat) == sizeof(DoubleObject) / sizeof(Word);
}
inline const DecimalObject& decimalObject(ALGEB x) { return *reinterpret_cast<DecimalObject*>(x); }

// A pointer to memory of a library.
struct PointerObject {
  Word header;
  void* address;
  V_INT type;
  void (*mark)(ALGEB);     // or null, as
  void (*dispose)(ALGEB);  // this
  Word registered;         // 1 once the collector knows of a dispose function
};
inline PointerObject& pointerOf(ALGEB x) { return *reinterpret_cast<PointerObject*>(x); }

// Memory handed out by VexelAlloc: its size in bytes, the bytes, and a guard to the last word's
// end.
struct BlockObject {
  Word header;
  Word size;
  char bytes[];  // aligned to 16, as malloc's
};
inline BlockObject& blockOf(ALGEB x) { return *reinterpret_cast<BlockObject*>(x); }

// Procedures, functions, tables and other C++ objects.
struct ForeignObject {
  Word header;
  Foreign* object;
};
inline Foreign* foreign(ALGEB x) { return reinterpret_cast<ForeignObject*>(x)->object; }

// Objects of these kinds are a header and operands.
inline bool isRelation(ALGEB x) {
  return is(x, Tag::equation) || is(x, Tag::less) || is(x, Tag::lessEqual) || is(x, Tag::unequal);
}
inline bool isExpression(ALGEB x) {
  return is(x, Tag::sum) || is(x, Tag::product) || is(x, Tag::power) || is(x, Tag::application);
}

// Elements that a sparse array holds, by position in its order.
using SparseElements = std::unordered_map<std::int64_t, RTableData>;

// What lies behind an array's handle.  bounds goes on for two words a dimension.
struct ArrayObject {
  Word header;
  void* data;                    // null for sparse storage
  SparseElements* sparse;        // null for rectangular storage
  std::shared_ptr<void>* owner;  // of data that is not the host's, while it is to be kept
  std::int64_t count;            // elements
  std::uint8_t type;             // RTABLE_DAG ...
  std::uint8_t storage;
  std::uint8_t order;
  std::uint8_t readOnly;
  std::uint8_t ownsData;
  std::uint8_t dimensions;
  std::uint16_t unused;
  V_INT bounds[];  // lower and upper of each dimension

  V_INT lower(int dim) const { return bounds[2 * dim]; }  // dim from 0
  V_INT upper(int dim) const { return bounds[2 * dim + 1]; }
  // Elements along a dimension; 0 for upper < lower.
  V_INT extent(int dim) const { return upper(dim) < lower(dim) ? 0 : upper(dim) - lower(dim) + 1; }
};

inline bool isArray(ALGEB x) { return is(x, Tag::array); }
inline ArrayObject& arrayOf(ALGEB x) { return *reinterpret_cast<ArrayObject*>(x); }

// Bytes of one element.
inline std::size_t elementSize(int type) {
  constexpr std::array<std::size_t, 9> kSizes = {
      sizeof(ALGEB),      2 * sizeof(ALGEB), 1, 2, 4, 8, sizeof(double),
      2 * sizeof(double), sizeof(float)};
  return kSizes[static_cast<std::size_t>(type)];
}

}  // namespace vexel
