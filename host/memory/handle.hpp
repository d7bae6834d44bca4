// What a handle (ALGEB) is: one machine word, of two kinds.
//
//   63                                        1 0
//   [ signed integer                          ][1]    an immediate integer
//   [ address of an object, 16-byte aligned   ][0]    anything else
//
// An object is a run of words.  Word 0 is its header; operands, if any, follow from word 1.
//
//   63             32 31   26 25               0
//   [ length in words ][ tag ][ collector's own ]
//
// Loaded libraries read the tag and the operands of ranges and equations themselves, so this
// layout is an interface: only the collector's bits may change meaning.
#pragma once

#include <vexelc/vexelc.h>

#include <cstdint>

struct _VKernelVectorDesc;

namespace vexel {

// The state of one kernel; kernel_state.hpp defines it.
using State = ::_VKernelVectorDesc;

using Word = std::uintptr_t;
static_assert(sizeof(Word) == 8, "the header holds a 32-bit length above its 32 low bits");

// Kinds of objects.  "Interned" kinds never change and exist once per value, so that equal ones
// have equal handles.
enum class Tag : std::uint8_t {
  free = 0,           // a cell that the collector may hand out
  integer = 1,        // interned: beyond the immediate range; sign and size word, then limbs
  rational = 2,       // interned: numerator, denominator (> 1, coprime)
  complex = 3,        // interned: real part, imaginary part, each a real number
  softwareFloat = 4,  // interned: length 2: a double; length 3: mantissa x 10^exponent
  string = 5,         // interned
  name = 6,           // interned by text; its value changes
  boolean = 7,        // two objects
  list = 8,           // elements; null words are unset
  sequence = 9,       // elements; null words are unset.  Length 1 (no elements) is NULL
  sum = 10,           // interned: terms
  product = 11,       // interned: factors
  power = 12,         // interned: base, exponent
  application = 13,   // interned: function, then arguments
  equation = 21,      // a = b
  less = 22,          // a < b
  lessEqual = 23,     // a <= b
  unequal = 24,       // a <> b
  procedure = 25,     // a Foreign of the language
  function = 26,      // a MachineFunction
  table = 27,         // a Table
  array = 28,         // an ArrayObject
  pointer = 29,       // address, type, mark and dispose functions
  block = 30,         // memory handed out by VexelAlloc: size, then bytes
  foreign = 31,       // any other Foreign
  date = 32,          // interned: a word, the days since 1970-01-01
  range = 36,         // a .. b
};

// True for an integer held in the handle itself; such a handle must not be dereferenced.
inline bool isImmediate(ALGEB x) noexcept { return (reinterpret_cast<Word>(x) & 1U) != 0; }

// The integer of an immediate handle.  The arithmetic shift restores the sign.
inline std::int64_t immediateValue(ALGEB x) noexcept {
  return static_cast<std::int64_t>(reinterpret_cast<Word>(x)) >> 1;
}

inline constexpr std::int64_t kLargestImmediate = (std::int64_t{1} << 62) - 1;
inline constexpr std::int64_t kSmallestImmediate = -(std::int64_t{1} << 62);

// The immediate handle of i.  i must lie in [-2^62, 2^62); larger integers are objects.
inline ALGEB immediate(std::int64_t i) noexcept {
  return reinterpret_cast<ALGEB>((static_cast<Word>(i) << 1) | 1U);
}

// The words of an object, header first.  x must not be immediate.
inline Word* words(ALGEB x) noexcept { return reinterpret_cast<Word*>(x); }

// The kind of an object.  x must not be immediate.
inline Tag tag(ALGEB x) noexcept { return static_cast<Tag>((words(x)[0] >> 26) & 63U); }

// True for an object (not an immediate integer, not a null handle) of that kind.
inline bool is(ALGEB x, Tag t) noexcept { return x != nullptr && !isImmediate(x) && tag(x) == t; }

// The object's size in words, the header included.
inline std::uint32_t length(ALGEB x) noexcept {
  return static_cast<std::uint32_t>(words(x)[0] >> 32);
}

// Operand i of an object, from 1 (the word after the header).
inline ALGEB operand(ALGEB x, std::size_t i) noexcept {
  return reinterpret_cast<ALGEB>(words(x)[i]);
}

inline void setOperand(ALGEB x, std::size_t i, ALGEB value) noexcept {
  words(x)[i] = reinterpret_cast<Word>(value);
}

}  // namespace vexel
