// Values as JSON, one line each: numbers keep every digit, and what JSON has no form for is an
// object that says what it is.

#include "builtins/json.hpp"

#include <algorithm>
#include <string>
#include <vector>

#include "values/arrays.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"
#include "values/text.hpp"
#include "values/utf8.hpp"

namespace vexel {

namespace {

// The line, and how many elements and characters of texts it still may hold.
struct Sink : std::string {
  std::size_t room = std::string::npos;
  std::size_t textRoom = std::string::npos;
  std::vector<ALGEB> open{};  // arrays and tables that are being written, outermost first

  bool limited() const { return room != std::string::npos; }

  // Takes the room of n elements; false when there is too little.
  bool take(std::size_t n) { return takeFrom(room, n); }
  bool takeText(std::size_t n) { return takeFrom(textRoom, n); }

 private:
  static bool takeFrom(std::size_t& room, std::size_t n) {
    if (n > room) {
      return false;
    }
    room -= n;
    return true;
  }
};

void appendJson(State& state, Sink& out, ALGEB x);

void appendOmitted(Sink& out, const char* kind, std::size_t count) {
  out += std::string("{\"") + kind + "\": \"omitted\", \"count\": " + std::to_string(count) + "}";
}

void appendText(Sink& out, std::string_view s) {
  const auto characters = static_cast<std::size_t>(std::count_if(
      s.begin(), s.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
  out.takeText(characters) ? appendJsonString(out, s) : appendOmitted(out, "string", characters);
}

void appendFloat(State& state, Sink& out, ALGEB x) {
  if (isUndefined(state, x)) {
    out += R"({"float": "undefined"})";
  } else if (isInfinite(state, x)) {
    out += x == state.infinity ? R"({"float": "infinity"})" : R"({"float": "-infinity"})";
  } else {
    out += floatText(x);
  }
}

void appendTagged(State& state, Sink& out, const char* tagName, ALGEB x) {
  out += std::string("{\"") + tagName + "\": ";
  const TextOptions options = out.limited() ? kMessageArguments : TextOptions();
  appendJsonString(out, sourceText(state, x, options));
  out += '}';
}

void appendElements(State& state, Sink& out, ALGEB x) {
  out += '[';
  for (std::size_t i = 1; i <= countOf(x); ++i) {
    out += i > 1 ? ", " : "";
    appendJson(state, out, element(state, x, i));
  }
  out += ']';
}

void appendPair(State& state, Sink& out, const char* tagName, ALGEB a, ALGEB b) {
  out += std::string("{\"") + tagName + "\": [";
  appendJson(state, out, a);
  out += ", ";
  appendJson(state, out, b);
  out += "]}";
}

// An element of a complex array is a complex number whatever its imaginary part.
void appendArrayElement(State& state, Sink& out, ALGEB x, const ArrayObject& array) {
  if (array.type == RTABLE_COMPLEX_DAG || array.type == RTABLE_COMPLEX) {
    appendPair(state, out, "complex", realPart(x), imaginaryPart(x));
  } else {
    appendJson(state, out, x == nullptr ? state.null : x);
  }
}

// The elements as nested lists, the first index outermost.
void appendArrayLevel(State& state, Sink& out, ALGEB x, int dim, std::vector<V_INT>& index) {
  const ArrayObject& array = arrayOf(x);
  out += '[';
  for (V_INT n = 0; n < array.extent(dim); ++n) {
    lookAtInterrupt();
    out += n > 0 ? ", " : "";
    index[static_cast<std::size_t>(dim)] = array.lower(dim) + n;
    if (dim + 1 == array.dimensions) {
      appendArrayElement(state, out, arraySelect(state, x, index), array);
    } else {
      appendArrayLevel(state, out, x, dim + 1, index);
    }
  }
  out += ']';
}

void appendArray(State& state, Sink& out, ALGEB x) {
  const ArrayObject& array = arrayOf(x);
  out += "{\"array\": ";
  if (array.count == 0 || array.dimensions == 0) {
    out += "[]";
  } else if (!out.take(static_cast<std::size_t>(array.count))) {
    out += "\"omitted\"";
  } else {
    std::vector<V_INT> index(array.dimensions);
    appendArrayLevel(state, out, x, 0, index);
  }
  out += ", \"bounds\": [";
  for (int d = 0; d < array.dimensions; ++d) {
    out += std::string(d > 0 ? ", " : "") + "[" + std::to_string(array.lower(d)) + ", " +
           std::to_string(array.upper(d)) + "]";
  }
  out += "], \"datatype\": \"" + std::string(typeName(array.type)) + "\", \"order\": \"" +
         (array.order == RTABLE_COLUMN_MAJOR ? "column" : "row") + "\", \"storage\": \"" +
         (array.storage == RTABLE_RECTANGULAR ? "rectangular" : "sparse") + "\"}";
}

// Numbers ascending, then undefined, then the rest by their text.
void appendTable(State& state, Sink& out, ALGEB x) {
  struct Entry {
    ALGEB key;
    ALGEB value;
    std::string text;
    int group;
  };
  if (!out.take(table(x).size())) {
    appendOmitted(out, "table", table(x).size());
    return;
  }
  std::vector<Entry> entries;
  for (const auto& [key, value] : table(x).entries()) {
    const int group = !isReal(key) ? 2 : isUndefined(state, key) ? 1 : 0;
    entries.push_back({key, value, group == 2 ? sourceText(state, key) : std::string(), group});
  }
  std::stable_sort(entries.begin(), entries.end(), [&](const Entry& a, const Entry& b) {
    if (a.group != b.group) {
      return a.group < b.group;
    }
    return a.group == 0 ? compare(state, a.key, b.key) == std::partial_ordering::less
                        : a.text < b.text;
  });
  out += "{\"table\": [";
  for (std::size_t i = 0; i < entries.size(); ++i) {
    out += i > 0 ? ", [" : "[";
    appendJson(state, out, entries[i].key);
    out += ", ";
    appendJson(state, out, entries[i].value);
    out += ']';
  }
  out += "]}";
}

void appendJson(State& state, Sink& out, ALGEB x) {
  checkStack(state);
  if (isNull(x)) {
    out += "null";
    return;
  }
  if (isInteger(x)) {
    out += sourceText(state, x);
    return;
  }
  switch (tag(x)) {
    case Tag::softwareFloat:
      appendFloat(state, out, x);
      break;
    case Tag::complex:
      appendPair(state, out, "complex", operand(x, 1), operand(x, 2));
      break;
    case Tag::boolean:
      out += x == state.trueValue ? "true" : "false";
      break;
    case Tag::string:
      appendText(out, text(x));
      break;
    case Tag::list:
      if (!out.take(countOf(x))) {
        appendOmitted(out, "list", countOf(x));
        break;
      }
      appendElements(state, out, x);
      break;
    case Tag::sequence:
      if (!out.take(countOf(x))) {
        appendOmitted(out, "seq", countOf(x));
        break;
      }
      out += "{\"seq\": ";
      appendElements(state, out, x);
      out += '}';
      break;
    case Tag::range:
      appendPair(state, out, "range", operand(x, 1), operand(x, 2));
      break;
    case Tag::equation:
      appendPair(state, out, "eq", operand(x, 1), operand(x, 2));
      break;
    case Tag::array:
    case Tag::table:
      if (out.limited() && std::find(out.open.begin(), out.open.end(), x) != out.open.end()) {
        appendTagged(state, out, "expr", x);  // within itself
        break;
      }
      out.open.push_back(x);
      is(x, Tag::array) ? appendArray(state, out, x) : appendTable(state, out, x);
      out.open.pop_back();
      break;
    case Tag::procedure:
    case Tag::function:
      appendTagged(state, out, "procedure", x);
      break;
    case Tag::pointer:
      appendTagged(state, out, "pointer", x);
      break;
    default:
      appendTagged(state, out, "expr", x);
      break;
  }
}

}  // namespace

void appendJsonString(std::string& out, std::string_view text) {
  static constexpr char kHex[] = "0123456789abcdef";
  out += '"';
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto c = static_cast<unsigned char>(text[i]);
    switch (c) {
      case '"':
        out += "\\\"";
        break;
      case '\\':
        out += "\\\\";
        break;
      case '\n':
        out += "\\n";
        break;
      case '\t':
        out += "\\t";
        break;
      case '\r':
        out += "\\r";
        break;
      default:
        if (c < 0x20 || c == 0x7F) {
          out += std::string("\\u00") + kHex[c >> 4U] + kHex[c & 15U];
        } else if (c < 0x80) {
          out += text[i];
        } else if (const std::size_t n = utf8Length(text.substr(i)); n > 0) {
          out += text.substr(i, n);
          i += n - 1;
        } else {
          out += "\\ufffd";
        }
    }
  }
  out += '"';
}

std::string jsonText(State& state, ALGEB x) {
  Sink out;
  appendJson(state, out, x);
  return out;
}

std::string jsonError(State& state, std::string_view filled, std::string_view message,
                      std::span<const ALGEB> arguments) {
  constexpr std::size_t kMostElements = 10000;
  constexpr std::size_t kMostCharacters = 1000000;
  Sink out;
  out += "{\"error\": ";
  appendJsonString(out, filled);
  out += ", \"message\": ";
  appendJsonString(out, message);
  out += ", \"args\": [";
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    out += i > 0 ? ", " : "";
    out.room = kMostElements;
    out.textRoom = kMostCharacters;
    out.open.clear();
    const std::size_t before = out.size();
    try {
      appendJson(state, out, arguments[i]);
    } catch (const HostErrorToken&) {  // an array within itself: its text, cut off
      out.resize(before);
      out += "{\"expr\": ";
      appendJsonString(out, sourceText(state, arguments[i], kMessageArguments));
      out += '}';
    }
  }
  out += "]}";
  return out;
}

}  // namespace vexel
