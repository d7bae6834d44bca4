// Functions of texts, by characters (code points of UTF-8; a byte that is none counts as one). They
// take one text or a list or an array of them, in which what is missing stays missing.

#include <clocale>
#include <cmath>
#include <cwctype>
#include <functional>

#include "builtins/tables/csv_columns.hpp"
#include "builtins/tables/tables.hpp"
#include "kernels/cell_number.hpp"
#include "mathematics/elementwise.hpp"
#include "values/dates.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/text.hpp"
#include "values/utf8.hpp"

namespace vexel {

namespace {

std::size_t characterLength(std::string_view rest) {
  const std::size_t n = static_cast<unsigned char>(rest[0]) < 0x80 ? 1 : utf8Length(rest);
  return n == 0 ? 1 : n;
}

// Where each character begins, and the end.
std::vector<std::size_t> characterStarts(std::string_view text) {
  std::vector<std::size_t> starts;
  for (std::size_t at = 0; at < text.size(); at += characterLength(text.substr(at))) {
    starts.push_back(at);
  }
  starts.push_back(text.size());
  return starts;
}

ALGEB characterCount(State& state, std::string_view text) {
  return newInteger(state, static_cast<std::int64_t>(characterStarts(text).size() - 1));
}

using OnText = std::function<ALGEB(std::string_view)>;

// f of a text, or of each in a list or array of texts.  Values of f for an array are a column.
ALGEB ofTexts(Call& call, const char* parameter, const OnText& f) {
  State& state = call.state();
  const ALGEB x = call.value(parameter);
  const auto one = [&](ALGEB e) {
    lookAtInterrupt();
    if (!is(e, Tag::string)) {
      call.refuse(parameter, "a text, or a list or an array of texts");
    }
    return f(text(e));
  };
  if (!isContainer(x)) {
    return one(x);
  }
  Handles results(state);
  const std::int64_t n = sizeOfVector(state, x);
  for (std::int64_t i = 0; i < n; ++i) {
    const ALGEB e = elementOfVector(state, x, i);
    results.push(isMissing(state, e) ? state.null : one(e));
  }
  const ALGEB list = newList(state, results.span());
  return isList(x) ? list : columnFrom(state, list, n);
}

// A text with each character as the C.UTF-8 locale changes it; without that locale, ASCII only.
std::string withCase(std::string_view text, std::wint_t (*change)(std::wint_t, locale_t)) {
  static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  std::string out;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t n = characterLength(text.substr(at));
    const std::string_view character = text.substr(at, n);
    at += n;
    if (locale == nullptr || (n == 1 && static_cast<unsigned char>(character[0]) >= 0x80)) {
      const char c = character[0];
      const bool isUpper = change == towupper_l;
      const bool changes = n == 1 && (isUpper ? c >= 'a' && c <= 'z' : c >= 'A' && c <= 'Z');
      out += changes ? std::string(1, static_cast<char>(c ^ 0x20)) : std::string(character);
      continue;
    }
    constexpr unsigned kLeadBits[] = {0, 0x7F, 0x1F, 0x0F, 0x07};
    std::wint_t code = static_cast<unsigned char>(character[0]) & kLeadBits[n];
    for (std::size_t i = 1; i < n; ++i) {
      code = code << 6U | (static_cast<unsigned char>(character[i]) & 0x3FU);
    }
    appendUtf8(out, static_cast<std::uint32_t>(change(code, locale)));
  }
  return out;
}

ALGEB length(Call& call) {
  const ALGEB x = call.value("x");
  if (is(x, Tag::string)) {
    return characterCount(call.state(), text(x));
  }
  if (isArray(x)) {
    return newInteger(call.state(), arrayOf(x).count);
  }
  if (isList(x) || isSequence(x)) {
    return newInteger(call.state(), static_cast<std::int64_t>(countOf(x)));
  }
  if (isFrame(x)) {
    return newInteger(call.state(), frame(x).rows);
  }
  call.refuse("x", "a text, a list, an array or a table of columns");
}

// A position from 1, or from the end below 0; 0 and what lies beyond are the nearest there is.
std::int64_t position(Call& call, ALGEB x, std::int64_t count, std::int64_t whole) {
  std::int64_t at = 0;
  if (isNull(x)) {
    return whole;
  }
  if (!isInteger(x) || !fitsInt64(x, &at)) {
    raise(call.state(), "expected an integer as position in a text, received: %1", x);
  }
  return at < 0 ? count + 1 + std::max(at, -count - 1) : std::min(at, count + 1);
}

ALGEB substring(Call& call) {
  State& state = call.state();
  const ALGEB range = call.value("from");
  const bool isPair = isRange(range);
  if (isPair && call.given("to")) {
    call.refuse("from", "a position, or a range alone");
  }
  const ALGEB from = isPair ? operand(range, 1) : range;
  const ALGEB to = isPair ? operand(range, 2) : call.given("to") ? call.value("to") : state.null;
  return ofTexts(call, "text", [&](std::string_view text) {
    const std::vector<std::size_t> starts = characterStarts(text);
    const auto count = static_cast<std::int64_t>(starts.size()) - 1;
    const std::int64_t first = std::max<std::int64_t>(1, position(call, from, count, 1));
    const std::int64_t last = std::min(count, position(call, to, count, count));
    if (first > last) {
      return string(state, "");
    }
    const std::size_t begin = starts[static_cast<std::size_t>(first) - 1];
    return string(state, text.substr(begin, starts[static_cast<std::size_t>(last)] - begin));
  });
}

// A parameter that is a text; an empty one has no place to be found at.
std::string_view textOf(Call& call, const char* parameter, bool mayBeEmpty) {
  const ALGEB x = call.value(parameter);
  if (!is(x, Tag::string) || (!mayBeEmpty && text(x).empty())) {
    call.refuse(parameter, mayBeEmpty ? "a text" : "a text that is not empty");
  }
  return text(x);
}

ALGEB split(Call& call) {
  State& state = call.state();
  const bool atBlanks = !call.given("separator");
  const std::string_view separator = atBlanks ? "" : textOf(call, "separator", false);
  return ofTexts(call, "text", [&](std::string_view text) {
    Handles parts(state);
    if (atBlanks) {
      constexpr std::string_view kBlanks = " \t\n\r";
      for (std::size_t at = text.find_first_not_of(kBlanks); at != std::string_view::npos;) {
        const std::size_t end = std::min(text.size(), text.find_first_of(kBlanks, at));
        parts.push(string(state, text.substr(at, end - at)));
        at = text.find_first_not_of(kBlanks, end);
      }
    } else {
      std::size_t at = 0;
      for (std::size_t end = text.find(separator); end != std::string_view::npos;
           end = text.find(separator, at)) {
        parts.push(string(state, text.substr(at, end - at)));
        at = end + separator.size();
      }
      parts.push(string(state, text.substr(at)));
    }
    return newList(state, parts.span());
  });
}

ALGEB find(Call& call) {
  const std::string_view part = textOf(call, "part", false);
  const auto start =
      static_cast<std::int64_t>(std::min<std::size_t>(call.size("start", 1), 1U << 30U));
  return ofTexts(call, "text", [&](std::string_view text) {
    const std::vector<std::size_t> starts = characterStarts(text);
    const auto first = static_cast<std::size_t>(std::max<std::int64_t>(start, 1)) - 1;
    const std::size_t at =
        first < starts.size() ? text.find(part, starts[first]) : std::string_view::npos;
    return at == std::string_view::npos
               ? immediate(0)
               : immediate(std::lower_bound(starts.begin(), starts.end(), at) - starts.begin() + 1);
  });
}

ALGEB replace(Call& call) {
  State& state = call.state();
  const std::string_view old = textOf(call, "old", false);
  const std::string_view with = textOf(call, "new", true);
  return ofTexts(call, "text", [&](std::string_view text) {
    std::string out;
    std::size_t at = 0;
    for (std::size_t next = text.find(old); next != std::string_view::npos;
         next = text.find(old, at)) {
      out.append(text, at, next - at).append(with);
      at = next + old.size();
      if (out.size() > (std::size_t{1} << 28U)) {
        raise(state, "text too long");
      }
    }
    return string(state, out.append(text, at));
  });
}

ALGEB upper(Call& call) {
  return ofTexts(call, "text", [&](std::string_view text) {
    return string(call.state(), withCase(text, towupper_l));
  });
}

ALGEB lower(Call& call) {
  return ofTexts(call, "text", [&](std::string_view text) {
    return string(call.state(), withCase(text, towlower_l));
  });
}

// The number that a text is: exact where it is an integer.
ALGEB numberOfText(Call& call, std::string_view all, const CellRules& rules) {
  State& state = call.state();
  const std::string_view text = kernels::trimmed(all);
  const std::string_view digits =
      text.substr(text.starts_with('-') || text.starts_with('+') ? 1 : 0);
  if (!digits.empty() && digits.find_first_not_of("0123456789") == std::string_view::npos) {
    return state.language->runStatements(state,
                                         (text[0] == '-' ? "-" : "") + std::string(digits) + ":");
  }
  double value = 0;
  if (rules.number(text, value) && !(std::isnan(value) && call.given("otherwise"))) {
    return newFloat(state, value);
  }
  if (call.given("otherwise")) {
    return call.value("otherwise");
  }
  raise(state, "the text %1 is no number", string(state, all));
}

ALGEB number(Call& call) {
  State& state = call.state();
  CellRules rules;
  if (call.given("decimal")) {
    const std::string_view mark = textOf(call, "decimal", false);
    if (mark != "." && mark != ",") {
      call.refuse("decimal", "\".\" or \",\"");
    }
    rules.decimal = mark[0];
  }
  const ALGEB x = call.value("text");
  if (isReal(x)) {
    return x;
  }
  if (isDate(x)) {
    return newInteger(state, daysOf(x));
  }
  if (!isContainer(x)) {
    return ofTexts(call, "text", [&](std::string_view t) { return numberOfText(call, t, rules); });
  }
  if (isMachineArray(x)) {
    return x;
  }
  Handles results(state);
  const std::int64_t n = sizeOfVector(state, x);
  for (std::int64_t i = 0; i < n; ++i) {
    lookAtInterrupt();
    const ALGEB e = elementOfVector(state, x, i);
    results.push(isNull(e)            ? state.undefined
                 : isReal(e)          ? e
                 : isDate(e)          ? newInteger(state, daysOf(e))
                 : is(e, Tag::string) ? numberOfText(call, text(e), rules)
                                      : (call.refuse("text", "texts"), e));
  }
  const ALGEB list = newList(state, results.span());
  if (isList(x)) {
    return list;
  }
  const RTableSettings settings{RTABLE_FLOAT64, RTABLE_RECTANGULAR, RTABLE_COLUMN_MAJOR, 1, 0};
  const V_INT bounds[] = {1, n};
  const ALGEB column = newArray(state, settings, nullptr, bounds);
  for (std::int64_t i = 0; i < n; ++i) {
    setElementAt(column, i,
                 objectToElement(state, RTABLE_FLOAT64, results[static_cast<std::size_t>(i)]));
  }
  return column;
}

constexpr FunctionRow kRows[] = {
    {"length", "x", nullptr, nullptr, length},
    {"substring", "text, from, to = -1", nullptr, nullptr, substring},
    {"split", "text, separator = none", nullptr, nullptr, split},
    {"find", "text, part; start = 1", nullptr, nullptr, find},
    {"replace", "text, old, new", nullptr, nullptr, replace},
    {"upper", "text", nullptr, nullptr, upper},
    {"lower", "text", nullptr, nullptr, lower},
    {"number", "text; decimal, otherwise", nullptr, nullptr, number},
};

}  // namespace

ALGEB trimmedText(Call& call) {
  const ALGEB x = call.value("x");
  const auto isText = [&](ALGEB e) { return is(e, Tag::string); };
  const bool first = isText(x) ||
                     (isList(x) && countOf(x) > 0 && isText(element(call.state(), x, 1))) ||
                     (isArray(x) && arrayOf(x).type == RTABLE_DAG && !call.given("cut"));
  if (!first) {
    return nullptr;
  }
  return ofTexts(call, "x", [&](std::string_view text) {
    constexpr std::string_view kBlanks = " \t\n\r\v\f";
    const std::size_t from = text.find_first_not_of(kBlanks);
    return string(call.state(), from == std::string_view::npos
                                    ? ""
                                    : text.substr(from, text.find_last_not_of(kBlanks) - from + 1));
  });
}

void defineTextPartFunctions(State& state) { defineRows(state, kRows); }

}  // namespace vexel
