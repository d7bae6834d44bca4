// Arrays: making, indexing and copying them.

#include "values/arrays.hpp"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"

namespace vexel {

namespace {

constexpr std::array<std::string_view, 9> kTypeNames = {"anything",   "complex",    "integer[1]",
                                                        "integer[2]", "integer[4]", "integer[8]",
                                                        "float[8]",   "complex[8]", "float[4]"};

void checkSettings(State& state, const RTableSettings& s) {
  if (s.data_type < 0 || s.data_type > RTABLE_FLOAT32) {
    raise(state, "invalid array element type, received %1", immediate(s.data_type));
  }
  if (s.storage != RTABLE_RECTANGULAR && s.storage != RTABLE_SPARSE) {
    raise(state, "invalid array storage, received %1", immediate(s.storage));
  }
  if (s.order != RTABLE_COLUMN_MAJOR && s.order != RTABLE_ROW_MAJOR) {
    raise(state, "invalid array order, received %1", immediate(s.order));
  }
  if (s.num_dimensions < 0 || s.num_dimensions > RTABLE_MAX_DIMENSIONS) {
    raise(state, "invalid number of array dimensions, received %1", immediate(s.num_dimensions));
  }
}

// The number of elements that bounds make; raises when it cannot be held.
std::int64_t countElements(State& state, int dimensions, const V_INT* bounds) {
  constexpr __int128 kMost = std::int64_t{1} << 58;
  __int128 count = 1;
  bool isEmpty = false;
  for (int dim = 0; dim < dimensions; ++dim) {
    const __int128 extent = static_cast<__int128>(bounds[2 * dim + 1]) - bounds[2 * dim] + 1;
    if (extent > kMost) {
      raiseNoMemory(state);
    }
    isEmpty |= extent <= 0;
    count = std::min(count * std::max<__int128>(extent, 1), kMost + 1);
  }
  if (!isEmpty && count > kMost) {
    raiseNoMemory(state);
  }
  return isEmpty ? 0 : static_cast<std::int64_t>(count);
}

RTableData zeroElement(int type) {
  RTableData zero;
  std::memset(&zero, 0, sizeof zero);
  if (type == RTABLE_DAG || type == RTABLE_COMPLEX_DAG) {
    zero.complexdag = {immediate(0), immediate(0)};
  }
  return zero;
}

bool isZeroElement(int type, const RTableData& e) {
  const RTableData zero = zeroElement(type);
  return std::memcmp(&e, &zero, elementSize(type)) == 0;
}

// The array object alone: settings and bounds, no elements yet.
ALGEB newShell(State& state, const RTableSettings& s, const V_INT* bounds) {
  checkSettings(state, s);
  const std::int64_t count = countElements(state, s.num_dimensions, bounds);
  const auto dimensions = static_cast<std::size_t>(s.num_dimensions);
  ALGEB x = state.heap.allocate(Tag::array, sizeof(ArrayObject) / sizeof(Word) + 2 * dimensions);
  ArrayObject& a = arrayOf(x);
  a.count = count;
  a.type = static_cast<std::uint8_t>(s.data_type);
  a.storage = static_cast<std::uint8_t>(s.storage);
  a.order = static_cast<std::uint8_t>(s.order);
  a.readOnly = s.read_only != 0;
  a.dimensions = static_cast<std::uint8_t>(dimensions);
  std::copy_n(bounds, 2 * dimensions, a.bounds);
  return x;
}

// An array whose elements are all zero.
ALGEB newZeroArray(State& state, const RTableSettings& s, const V_INT* bounds) {
  ALGEB x = newShell(state, s, bounds);
  ArrayObject& a = arrayOf(x);
  if (s.storage == RTABLE_SPARSE) {
    a.sparse = new SparseElements;
    return x;
  }
  void* data = state.heap.allocateBytes(static_cast<std::size_t>(a.count) * elementSize(a.type));
  if (a.type == RTABLE_DAG || a.type == RTABLE_COMPLEX_DAG) {
    const auto n = a.count * (a.type == RTABLE_DAG ? 1 : 2);
    std::fill_n(static_cast<ALGEB*>(data), n, immediate(0));
  }
  a.data = data;
  a.ownsData = 1;
  state.heap.registerArray(x);
  return x;
}

// Where the element at a position of a's order lies in another order of the same bounds.
std::int64_t inOrder(const ArrayObject& a, std::int64_t position, int order) {
  if (order == a.order || a.dimensions < 2) {
    return position;
  }
  std::array<std::int64_t, RTABLE_MAX_DIMENSIONS> index;
  const int n = a.dimensions;
  const auto forwards = [n](int k, int o) { return o == RTABLE_COLUMN_MAJOR ? k : n - 1 - k; };
  for (int k = 0; k < n; ++k) {
    const int dim = forwards(k, a.order);
    index[static_cast<std::size_t>(dim)] = position % a.extent(dim);
    position /= a.extent(dim);
  }
  std::int64_t result = 0;
  for (int k = n - 1; k >= 0; --k) {
    const int dim = forwards(k, order);
    result = result * a.extent(dim) + index[static_cast<std::size_t>(dim)];
  }
  return result;
}

// Copies dense elements of a real machine type to doubles without making host objects.
template <typename T>
void widen(const void* from, double* to, std::int64_t n) {
  const T* source = static_cast<const T*>(from);
  std::transform(source, source + n, to, [](T v) { return static_cast<double>(v); });
}

bool widenToDoubles(const ArrayObject& from, double* to) {
  switch (from.type) {
    case RTABLE_INTEGER8:
      widen<std::int8_t>(from.data, to, from.count);
      return true;
    case RTABLE_INTEGER16:
      widen<std::int16_t>(from.data, to, from.count);
      return true;
    case RTABLE_INTEGER32:
      widen<std::int32_t>(from.data, to, from.count);
      return true;
    case RTABLE_INTEGER64:
      widen<std::int64_t>(from.data, to, from.count);
      return true;
    case RTABLE_FLOAT32:
      widen<float>(from.data, to, from.count);
      return true;
    default:
      return false;
  }
}

// std::memcpy that an interrupt ends.
void copyBytes(void* to, const void* from, std::size_t bytes) {
  constexpr std::size_t kStep = std::size_t{1} << 24;
  for (std::size_t done = 0; done < bytes; done += kStep) {
    if (done > 0) {
      lookAtInterrupt();
    }
    std::memcpy(static_cast<char*>(to) + done, static_cast<const char*>(from) + done,
                std::min(kStep, bytes - done));
  }
}

void copyElement(State& state, ALGEB from, std::int64_t position, ALGEB to) {
  lookAtInterrupt();
  const ArrayObject& source = arrayOf(from);
  const ArrayObject& target = arrayOf(to);
  RTableData e = elementAt(from, position);
  if (source.type != target.type) {
    e = objectToElement(state, target.type, elementToObject(state, source.type, e));
  }
  setElementAt(to, inOrder(source, position, target.order), e);
}

// Whether an unset element reads the same in a copy of another type: a host object is then the
// integer 0, but the zero of the float and complex types is another object.
bool zeroIsKept(State& state, int from, int to) {
  if (from == to || (to != RTABLE_DAG && to != RTABLE_COMPLEX_DAG)) {
    return true;
  }
  const ALGEB zero = elementToObject(state, from, zeroElement(from));
  return isZeroElement(to, objectToElement(state, to, zero));
}

}  // namespace

std::string_view typeName(int type) { return kTypeNames[static_cast<std::size_t>(type)]; }

ALGEB newArray(State& state, const RTableSettings& s, const void* data, const V_INT* bounds) {
  ALGEB x = newZeroArray(state, s, bounds);
  if (data == nullptr) {
    return x;
  }
  ArrayObject& a = arrayOf(x);
  const std::size_t size = elementSize(a.type);
  if (a.storage == RTABLE_RECTANGULAR) {
    copyBytes(a.data, data, static_cast<std::size_t>(a.count) * size);
    return x;
  }
  const char* source = static_cast<const char*>(data);
  for (std::int64_t i = 0; i < a.count; ++i, source += size) {
    RTableData e = zeroElement(a.type);
    std::memcpy(&e, source, size);
    setElementAt(x, i, e);
  }
  return x;
}

ALGEB wrapArray(State& state, const RTableSettings& s, void* memory, const V_INT* bounds,
                std::shared_ptr<void> owner) {
  if (s.storage != RTABLE_RECTANGULAR || s.data_type < RTABLE_INTEGER8) {
    raise(state, "only dense arrays of machine types can lie in memory of others");
  }
  checkSettings(state, s);
  ALGEB x = newShell(state, s, bounds);
  ArrayObject& a = arrayOf(x);
  a.data = memory;
  if (owner != nullptr) {
    a.owner = new std::shared_ptr<void>(std::move(owner));
  }
  return x;
}

RTableSettings settingsOf(ALGEB x) {
  const ArrayObject& a = arrayOf(x);
  return {a.type, a.storage, a.order, a.dimensions, a.readOnly};
}

ALGEB copyArray(State& state, const RTableSettings& settings, ALGEB x) {
  const ArrayObject& from = arrayOf(x);
  RTableSettings s = settings;
  s.num_dimensions = from.dimensions;
  ALGEB copy = newZeroArray(state, s, from.bounds);
  const ArrayObject& to = arrayOf(copy);
  const bool sameOrder = from.order == to.order || from.dimensions < 2;
  if (from.data != nullptr && to.data != nullptr && sameOrder) {
    if (from.type == to.type) {
      copyBytes(to.data, from.data, static_cast<std::size_t>(from.count) * elementSize(from.type));
      return copy;
    }
    if (to.type == RTABLE_FLOAT64 && widenToDoubles(from, static_cast<double*>(to.data))) {
      return copy;
    }
  }
  if (from.sparse == nullptr || (to.sparse == nullptr && !zeroIsKept(state, from.type, to.type))) {
    for (std::int64_t i = 0; i < from.count; ++i) {
      copyElement(state, x, i, copy);
    }
    return copy;
  }
  // In ascending order, and apart from the table itself: converting may run procedures.
  std::vector<std::int64_t> positions;
  for (const auto& entry : *from.sparse) {
    positions.push_back(entry.first);
  }
  std::sort(positions.begin(), positions.end());
  for (std::int64_t i : positions) {
    copyElement(state, x, i, copy);
  }
  return copy;
}

std::vector<V_INT> firstIndex(const ArrayObject& array) {
  std::vector<V_INT> index;
  for (int d = 0; d < array.dimensions; ++d) {
    index.push_back(array.lower(d));
  }
  return index;
}

void advance(const ArrayObject& array, std::vector<V_INT>& index) {
  for (int d = array.dimensions - 1; d >= 0; --d) {
    V_INT& at = index[static_cast<std::size_t>(d)];
    if (at < array.upper(d)) {
      ++at;
      return;
    }
    at = array.lower(d);
  }
}

std::int64_t position(State& state, ALGEB x, const V_INT* index) {
  const ArrayObject& a = arrayOf(x);
  const int n = a.dimensions;
  std::int64_t result = 0;
  for (int k = n - 1; k >= 0; --k) {
    const int dim = a.order == RTABLE_COLUMN_MAJOR ? k : n - 1 - k;
    if (index[dim] < a.lower(dim) || index[dim] > a.upper(dim)) {
      raise(state, "array index %1 out of range", newInteger(state, index[dim]));
    }
    result = result * a.extent(dim) + (index[dim] - a.lower(dim));
  }
  return result;
}

RTableData elementAt(ALGEB x, std::int64_t position) {
  const ArrayObject& a = arrayOf(x);
  if (a.sparse != nullptr) {
    const auto found = a.sparse->find(position);
    return found == a.sparse->end() ? zeroElement(a.type) : found->second;
  }
  RTableData e;
  std::memset(&e, 0, sizeof e);
  const std::size_t size = elementSize(a.type);
  std::memcpy(&e, static_cast<const char*>(a.data) + static_cast<std::size_t>(position) * size,
              size);
  return e;
}

void setElementAt(ALGEB x, std::int64_t position, RTableData value) {
  const ArrayObject& a = arrayOf(x);
  const std::size_t size = elementSize(a.type);
  if (a.sparse != nullptr) {
    RTableData e;
    std::memset(&e, 0, sizeof e);
    std::memcpy(&e, &value, size);
    if (isZeroElement(a.type, e)) {
      a.sparse->erase(position);
    } else {
      (*a.sparse)[position] = e;
    }
    return;
  }
  std::memcpy(static_cast<char*>(a.data) + static_cast<std::size_t>(position) * size, &value, size);
}

ALGEB arraySelect(State& state, ALGEB x, std::span<const V_INT> index) {
  const ArrayObject& a = arrayOf(x);
  if (index.size() != a.dimensions) {
    raise(state, "array of %1 dimensions indexed with %2", immediate(a.dimensions),
          immediate(static_cast<std::int64_t>(index.size())));
  }
  return elementToObject(state, a.type, elementAt(x, position(state, x, index.data())));
}

void arrayAssign(State& state, ALGEB x, std::span<const V_INT> index, ALGEB value) {
  const ArrayObject& a = arrayOf(x);
  if (index.size() != a.dimensions) {
    raise(state, "array of %1 dimensions indexed with %2", immediate(a.dimensions),
          immediate(static_cast<std::int64_t>(index.size())));
  }
  if (a.readOnly != 0) {
    raise(state, "array is read-only");
  }
  const std::int64_t at = position(state, x, index.data());
  setElementAt(x, at, objectToElement(state, a.type, value));
}

}  // namespace vexel
