// The Arrow C data interface, as much of it as a numeric column needs.
//
// Structures as published: Apache Arrow, "The Arrow C data interface" and "The Arrow C stream
// interface" (format version 1); their layout is promised for good.
#include "arrow.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace py = pybind11;

extern "C" {
struct ArrowSchema {
  const char* format;
  const char* name;
  const char* metadata;
  std::int64_t flags;
  std::int64_t n_children;
  ArrowSchema** children;
  ArrowSchema* dictionary;
  void (*release)(ArrowSchema*);
  void* private_data;
};
struct ArrowArray {
  std::int64_t length;
  std::int64_t null_count;
  std::int64_t offset;
  std::int64_t n_buffers;
  std::int64_t n_children;
  const void** buffers;
  ArrowArray** children;
  ArrowArray* dictionary;
  void (*release)(ArrowArray*);
  void* private_data;
};
struct ArrowArrayStream {
  int (*get_schema)(ArrowArrayStream*, ArrowSchema*);
  int (*get_next)(ArrowArrayStream*, ArrowArray*);
  const char* (*get_last_error)(ArrowArrayStream*);
  void (*release)(ArrowArrayStream*);
  void* private_data;
};
}

namespace vexel::python {

namespace {

// A structure of the interface that is released at the end.
template <typename T>
struct Owned : T {
  Owned() : T{} {}
  // Takes what a capsule holds; the capsule has nothing to release afterwards.
  Owned(const py::object& capsule, const char* name) : T{} {
    auto* from = static_cast<T*>(PyCapsule_GetPointer(capsule.ptr(), name));
    if (from == nullptr) {
      throw py::error_already_set();
    }
    static_cast<T&>(*this) = *from;
    from->release = nullptr;
  }
  Owned(Owned&& other) noexcept : T{other} { other.release = nullptr; }
  Owned& operator=(Owned&&) = delete;
  ~Owned() {
    if (this->release != nullptr) {
      this->release(this);
    }
  }
};

using Schema = Owned<ArrowSchema>;
using Chunk = Owned<ArrowArray>;

bool isSet(const void* bits, std::int64_t i) {
  return bits == nullptr || ((static_cast<const std::uint8_t*>(bits)[i >> 3] >> (i & 7)) & 1) != 0;
}

double halfToDouble(std::uint16_t h) {
  const int exponent = (h >> 10) & 31;
  const int mantissa = h & 1023;
  double value = 0;
  if (exponent == 31) {
    value = mantissa == 0 ? std::numeric_limits<double>::infinity()
                          : std::numeric_limits<double>::quiet_NaN();
  } else {
    value = exponent == 0 ? std::ldexp(mantissa, -24) : std::ldexp(mantissa + 1024, exponent - 25);
  }
  return (h >> 15) != 0 ? -value : value;
}

template <typename T>
double elementAt(const void* values, std::int64_t i) {
  T value;
  std::memcpy(&value, static_cast<const char*>(values) + i * static_cast<std::int64_t>(sizeof(T)),
              sizeof(T));
  return static_cast<double>(value);
}

using Reader = double (*)(const void* values, std::int64_t i);

Reader readerOf(const char* format) {
  if (format[0] == '\0' || format[1] != '\0') {
    return nullptr;
  }
  switch (format[0]) {
    case 'g':
      return elementAt<double>;
    case 'f':
      return elementAt<float>;
    case 'c':
      return elementAt<std::int8_t>;
    case 'C':
      return elementAt<std::uint8_t>;
    case 's':
      return elementAt<std::int16_t>;
    case 'S':
      return elementAt<std::uint16_t>;
    case 'i':
      return elementAt<std::int32_t>;
    case 'I':
      return elementAt<std::uint32_t>;
    case 'l':
      return elementAt<std::int64_t>;
    case 'L':
      return elementAt<std::uint64_t>;
    case 'e':
      return [](const void* values, std::int64_t i) {
        return halfToDouble(static_cast<const std::uint16_t*>(values)[i]);
      };
    case 'b':
      return [](const void* bits, std::int64_t i) { return isSet(bits, i) ? 1.0 : 0.0; };
    default:
      return nullptr;
  }
}

[[noreturn]] void refuse(const char* format) {
  throw py::type_error(std::string("must be numbers, got an Arrow column of format \"") + format +
                       "\"");
}

bool hasNulls(const ArrowArray& a) {
  if (a.null_count >= 0) {
    return a.null_count > 0;
  }
  for (std::int64_t i = 0; i < a.length; ++i) {
    if (!isSet(a.buffers[0], a.offset + i)) {
      return true;
    }
  }
  return false;
}

// Appends a column's elements; those of a row that its struct says is null are null too.
void copyColumn(const ArrowSchema& schema, const ArrowArray& a, const ArrowArray* row, double* to) {
  if (schema.format[0] == 'n' && schema.format[1] == '\0') {
    std::fill_n(to, a.length, std::numeric_limits<double>::quiet_NaN());
    return;
  }
  const Reader read = readerOf(schema.format);
  if (read == nullptr || schema.dictionary != nullptr) {
    refuse(schema.format);
  }
  // A struct's offset and length count rows of its children.
  const std::int64_t first = a.offset + (row != nullptr ? row->offset : 0);
  const std::int64_t length = row != nullptr ? row->length : a.length;
  for (std::int64_t i = 0; i < length; ++i) {
    const bool present = isSet(a.buffers[0], first + i) &&
                         (row == nullptr || isSet(row->buffers[0], row->offset + i));
    to[i] = present ? read(a.buffers[1], first + i) : std::numeric_limits<double>::quiet_NaN();
  }
}

py::dtype viewableType(const ArrowSchema& schema) {
  switch (schema.format[1] == '\0' && schema.dictionary == nullptr ? schema.format[0] : '\0') {
    case 'g':
      return py::dtype::of<double>();
    case 'f':
      return py::dtype::of<float>();
    case 'i':
      return py::dtype::of<std::int32_t>();
    case 'l':
      return py::dtype::of<std::int64_t>();
    case 'L':
      return py::dtype::of<std::uint64_t>();
    default:
      return py::reinterpret_borrow<py::dtype>(py::none());
  }
}

py::array viewOf(Chunk&& chunk, const py::dtype& type) {
  auto* kept = new Chunk(std::move(chunk));
  const py::capsule base(kept, [](void* p) { delete static_cast<Chunk*>(p); });
  const char* first = static_cast<const char*>(kept->buffers[1]) + kept->offset * type.itemsize();
  py::array view(type, {static_cast<py::ssize_t>(kept->length)}, {type.itemsize()}, first, base);
  view.attr("setflags")(py::arg("write") = false);
  return view;
}

// The elements of chunks without nulls, in their own type.
py::array joined(const std::vector<Chunk>& chunks, std::int64_t total, const py::dtype& type) {
  py::array column(type, std::vector{static_cast<py::ssize_t>(total)});
  const auto width = static_cast<std::size_t>(type.itemsize());
  auto* to = static_cast<char*>(column.mutable_data());
  for (const Chunk& c : chunks) {
    if (c.length > 0) {
      const auto bytes = static_cast<std::size_t>(c.length) * width;
      const auto first = static_cast<std::size_t>(c.offset) * width;
      std::memcpy(to, static_cast<const char*>(c.buffers[1]) + first, bytes);
      to += bytes;
    }
  }
  return column;
}

std::int64_t totalLength(const std::vector<Chunk>& chunks) {
  std::int64_t total = 0;
  for (const Chunk& c : chunks) {
    total += c.length;
  }
  return total;
}

py::array fromChunks(const Schema& schema, std::vector<Chunk>&& chunks) {
  const std::int64_t total = totalLength(chunks);
  if (std::strcmp(schema.format, "+s") == 0) {
    py::array_t<double, py::array::f_style> table(
        {static_cast<py::ssize_t>(total), static_cast<py::ssize_t>(schema.n_children)});
    for (std::int64_t k = 0; k < schema.n_children; ++k) {
      double* to = table.mutable_data() + k * total;
      for (const Chunk& c : chunks) {
        copyColumn(*schema.children[k], *c.children[k], &c, to);
        to += c.length;
      }
    }
    return table;
  }
  const py::dtype type = viewableType(schema);
  if (!type.is_none() && total > 0 && std::ranges::none_of(chunks, hasNulls)) {
    return chunks.size() == 1 ? viewOf(std::move(chunks[0]), type) : joined(chunks, total, type);
  }
  py::array_t<double> column(static_cast<py::ssize_t>(total));
  double* to = column.mutable_data();
  for (const Chunk& c : chunks) {
    copyColumn(schema, c, nullptr, to);
    to += c.length;
  }
  return column;
}

py::array fromStream(const py::object& capsule) {
  Owned<ArrowArrayStream> stream(capsule, "arrow_array_stream");
  const auto check = [&](int code) {
    if (code != 0) {
      const char* why = stream.get_last_error(&stream);
      throw py::value_error(std::string("Arrow stream: ") + (why != nullptr ? why : "no reason"));
    }
  };
  Schema schema;
  check(stream.get_schema(&stream, &schema));
  std::vector<Chunk> chunks;
  for (;;) {
    Chunk chunk;
    check(stream.get_next(&stream, &chunk));
    if (chunk.release == nullptr) {
      break;
    }
    chunks.push_back(std::move(chunk));
  }
  return fromChunks(schema, std::move(chunks));
}

}  // namespace

py::array fromArrow(const py::object& object) {
  if (py::hasattr(object, "__arrow_c_array__")) {
    const py::tuple pair = object.attr("__arrow_c_array__")();
    const Schema schema(pair[0], "arrow_schema");
    std::vector<Chunk> chunks;
    chunks.emplace_back(pair[1], "arrow_array");
    return fromChunks(schema, std::move(chunks));
  }
  return fromStream(object.attr("__arrow_c_stream__")());
}

}  // namespace vexel::python
