// The C interface: sequences, type tests, conversions, lists, tables, memory and pointers.

#include <cstdarg>
#include <cstring>

#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"

namespace {

using vexel::Tag;

void checkIndex(VKernelVector kv, V_INT i, std::size_t count) {
  if (i < 1 || static_cast<std::uint64_t>(i) > count) {
    vexel::raise(*kv, "index %1 out of range", vexel::newInteger(*kv, i));
  }
}

void checkKind(VKernelVector kv, ALGEB x, Tag t, const char* message) {
  if (!vexel::is(x, t)) {
    vexel::raise(*kv, message, x);
  }
}

std::size_t elementCount(VKernelVector kv, V_INT n) {
  if (n < 0) {
    vexel::raise(*kv, "a count of elements expected, received %1", vexel::newInteger(*kv, n));
  }
  return static_cast<std::size_t>(n);
}

std::int64_t integerBetween(VKernelVector kv, ALGEB x, std::int64_t lowest, std::int64_t highest,
                            const char* message) {
  std::int64_t i = 0;
  if (!vexel::isInteger(x) || !vexel::fitsInt64(x, &i) || i < lowest || i > highest) {
    vexel::raise(*kv, message, x);
  }
  return i;
}

V_BOOL isIntegerBetween(ALGEB x, std::int64_t lowest, std::int64_t highest) {
  return x != nullptr && vexel::isImmediate(x) && vexel::immediateValue(x) >= lowest &&
         vexel::immediateValue(x) <= highest;
}

constexpr const char* kListExpected = "a list expected, received %1";
constexpr const char* kTableExpected = "a table expected, received %1";
constexpr const char* kPointerExpected = "a pointer expected, received %1";

}  // namespace

extern "C" {

// ---- sequences

V_INT VexelNumArgs(VKernelVector, ALGEB seq) { return static_cast<V_INT>(vexel::countOf(seq)); }

ALGEB VexelExpseqSelect(VKernelVector kv, ALGEB seq, V_INT i) {
  checkIndex(kv, i, vexel::countOf(seq));
  const bool isRow = vexel::isSequence(seq) || vexel::isList(seq);
  return isRow ? vexel::element(*kv, seq, static_cast<std::size_t>(i)) : seq;
}

ALGEB NewVexelExpressionSequence(VKernelVector kv, V_INT n) {
  return vexel::newSequence(*kv, elementCount(kv, n));
}

void VexelExpseqAssign(VKernelVector kv, ALGEB seq, V_INT i, ALGEB value) {
  checkKind(kv, seq, Tag::sequence, "a sequence expected, received %1");
  checkIndex(kv, i, vexel::countOf(seq));
  vexel::setOperand(seq, static_cast<std::size_t>(i), value);
}

ALGEB ToVexelExpressionSequence(VKernelVector kv, V_INT n, ...) {
  vexel::Handles elements(*kv);
  va_list args;
  va_start(args, n);
  for (V_INT i = 0; i < n; ++i) {
    elements.push(va_arg(args, ALGEB));
  }
  va_end(args);
  return vexel::sequenceOf(*kv, elements.span());
}

// ---- type tests

V_BOOL IsVexelNumeric(VKernelVector, ALGEB x) { return vexel::isReal(x); }
V_BOOL IsVexelRTable(VKernelVector, ALGEB x) { return vexel::is(x, Tag::array); }
V_BOOL IsVexelList(VKernelVector, ALGEB x) { return vexel::isList(x); }
V_BOOL IsVexelProcedure(VKernelVector, ALGEB x) { return vexel::isProcedure(x); }
V_BOOL IsVexelPointer(VKernelVector, ALGEB x) { return vexel::is(x, Tag::pointer); }
V_BOOL IsVexelNULL(VKernelVector, ALGEB x) { return vexel::isNull(x); }
V_BOOL IsVexelInteger32(VKernelVector, ALGEB x) {
  return isIntegerBetween(x, INT32_MIN, INT32_MAX);
}
V_BOOL IsVexelInteger8(VKernelVector, ALGEB x) { return isIntegerBetween(x, INT8_MIN, INT8_MAX); }
V_BOOL IsVexelUnnamedZero(VKernelVector, ALGEB x) { return vexel::isReal(x) && vexel::isZero(x); }
V_BOOL IsVexelAssignedName(VKernelVector, ALGEB x) {
  return vexel::is(x, Tag::name) && vexel::nameValue(x) != nullptr;
}

// ---- conversions from host objects

double VexelToFloat64(VKernelVector kv, ALGEB x) {
  if (!vexel::isReal(x)) {
    vexel::raise(*kv, "a number expected, received %1", x);
  }
  return vexel::toDouble(*kv, x);
}

int32_t VexelToInteger32(VKernelVector kv, ALGEB x) {
  return static_cast<int32_t>(
      integerBetween(kv, x, INT32_MIN, INT32_MAX, "an integer of 32 bits expected, received %1"));
}

V_INT VexelToV_INT(VKernelVector kv, ALGEB x) {
  return integerBetween(kv, x, INT64_MIN, INT64_MAX, "an integer of 64 bits expected, received %1");
}

V_BOOL VexelToV_BOOL(VKernelVector kv, ALGEB x) {
  if (vexel::isBoolean(*kv, x)) {
    return x == kv->trueValue;
  }
  return static_cast<V_BOOL>(
      integerBetween(kv, x, INT32_MIN, INT32_MAX, "true or false expected, received %1"));
}

// ---- conversions to host objects

ALGEB ToVexelFloat(VKernelVector kv, double d) { return vexel::newFloat(*kv, d); }
ALGEB ToVexelInteger(VKernelVector kv, V_INT i) { return vexel::newInteger(*kv, i); }
ALGEB ToVexelInteger64(VKernelVector kv, int64_t i) { return vexel::newInteger(*kv, i); }
ALGEB ToVexelBoolean(VKernelVector kv, V_INT b) { return vexel::boolean(*kv, b != 0); }
ALGEB ToVexelNULL(VKernelVector kv) { return kv->null; }

ALGEB ToVexelComplex(VKernelVector kv, double re, double im) {
  ALGEB realPart = vexel::newFloat(*kv, re);
  return vexel::newComplex(*kv, realPart, vexel::newFloat(*kv, im));
}

ALGEB ToVexelComplexFloat(VKernelVector kv, ALGEB re, ALGEB im) {
  return vexel::newComplex(*kv, re == nullptr ? kv->null : re, im == nullptr ? kv->null : im);
}

ALGEB ToVexelName(VKernelVector kv, const char* text, V_BOOL is_global) {
  if (is_global == 0) {
    vexel::raise(*kv, "only global names can be made");
  }
  return vexel::name(*kv, text);
}

ALGEB ToVexelRelation(VKernelVector kv, const char* op, ALGEB lhs, ALGEB rhs) {
  static constexpr struct {
    const char* op;
    Tag tag;
  } kRelations[] = {
      {"=", Tag::equation}, {"<", Tag::less}, {"<=", Tag::lessEqual}, {"<>", Tag::unequal}};
  for (const auto& r : kRelations) {
    if (std::strcmp(op, r.op) == 0) {
      return vexel::newPair(*kv, r.tag, lhs, rhs);
    }
  }
  vexel::raise(*kv, "a relation expected, received %1", vexel::string(*kv, op));
}

// ---- lists, tables, objects

ALGEB VexelListAlloc(VKernelVector kv, V_INT n) { return vexel::newList(*kv, elementCount(kv, n)); }

ALGEB VexelListSelect(VKernelVector kv, ALGEB list, V_INT i) {
  checkKind(kv, list, Tag::list, kListExpected);
  checkIndex(kv, i, vexel::countOf(list));
  return vexel::element(*kv, list, static_cast<std::size_t>(i));
}

void VexelListAssign(VKernelVector kv, ALGEB list, V_INT i, ALGEB value) {
  checkKind(kv, list, Tag::list, kListExpected);
  checkIndex(kv, i, vexel::countOf(list));
  vexel::setOperand(list, static_cast<std::size_t>(i), value);
}

ALGEB VexelTableAlloc(VKernelVector kv) { return vexel::newTable(*kv); }

V_BOOL VexelTableHasEntry(VKernelVector kv, ALGEB table, ALGEB key) {
  checkKind(kv, table, Tag::table, kTableExpected);
  return vexel::table(table).find(key) != nullptr;
}

ALGEB VexelTableSelect(VKernelVector kv, ALGEB table, ALGEB key) {
  checkKind(kv, table, Tag::table, kTableExpected);
  ALGEB value = vexel::table(table).find(key);
  if (value == nullptr) {
    vexel::raise(*kv, "the table has no entry %1", key);
  }
  return value;
}

void VexelTableAssign(VKernelVector kv, ALGEB table, ALGEB key, ALGEB value) {
  checkKind(kv, table, Tag::table, kTableExpected);
  constexpr std::size_t kEntryBytes = 64;
  kv->heap.countBytes(kEntryBytes);
  vexel::table(table).assign(key == nullptr ? kv->null : key, value == nullptr ? kv->null : value);
}

ALGEB VexelNew(VKernelVector kv, V_INT type_id, V_INT length) {
  if ((type_id != VEXEL_TAG_EQUATION && type_id != VEXEL_TAG_RANGE) || length != 3) {
    vexel::raise(*kv, "objects of type %1 and length %2 cannot be made",
                 vexel::newInteger(*kv, type_id), vexel::newInteger(*kv, length));
  }
  return vexel::newPair(*kv, static_cast<Tag>(type_id), nullptr, nullptr);
}

ALGEB VexelNumericAdd(VKernelVector kv, ALGEB a, ALGEB b) { return vexel::add(*kv, a, b); }

// ---- memory and collection

void* VexelAlloc(VKernelVector kv, V_INT size) {
  constexpr V_INT kLargest = V_INT{1} << 46;
  if (size < 0 || size > kLargest) {
    vexel::raiseNoMemory(*kv);
  }
  const auto bytes = static_cast<std::size_t>(size);
  const std::size_t behind = (bytes + vexel::kGuardBytes + 7) / sizeof(vexel::Word);
  ALGEB x = kv->heap.allocate(vexel::Tag::block,
                              sizeof(vexel::BlockObject) / sizeof(vexel::Word) + behind);
  vexel::BlockObject& block = vexel::blockOf(x);
  block.size = bytes;
  vexel::setGuard(block.bytes + bytes, behind * sizeof(vexel::Word) - bytes);
  return block.bytes;
}

void VexelGcProtect(VKernelVector kv, ALGEB x) { kv->heap.protect(x); }
void VexelGcAllow(VKernelVector kv, ALGEB x) { kv->heap.allow(x); }

void VexelGcMark(VKernelVector kv, ALGEB x) {
  if (vexel::Marker* marker = kv->heap.activeMarker()) {
    marker->mark(x);
  }
}

ALGEB ToVexelPointer(VKernelVector kv, void* address, V_INT type) {
  return vexel::newPointer(*kv, address, type);
}

void* VexelToPointer(VKernelVector kv, ALGEB x) {
  checkKind(kv, x, Tag::pointer, kPointerExpected);
  return vexel::pointerOf(x).address;
}

V_INT VexelPointerType(VKernelVector kv, ALGEB x) {
  checkKind(kv, x, Tag::pointer, kPointerExpected);
  return vexel::pointerOf(x).type;
}

void VexelPointerSetMarkFunction(VKernelVector kv, ALGEB x, void (*mark)(ALGEB x)) {
  checkKind(kv, x, Tag::pointer, kPointerExpected);
  vexel::pointerOf(x).mark = mark;
}

void VexelPointerSetDisposeFunction(VKernelVector kv, ALGEB x, void (*dispose)(ALGEB x)) {
  checkKind(kv, x, Tag::pointer, kPointerExpected);
  vexel::PointerObject& pointer = vexel::pointerOf(x);
  if (pointer.registered == 0) {
    kv->heap.registerDisposable(x);
    pointer.registered = 1;
  }
  pointer.dispose = dispose;
}

}  // extern "C"
