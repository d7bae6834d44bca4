#include "builtins/tables/csv_options.hpp"

#include <cmath>
#include <string_view>
#include <utility>

#include "builtins/tables/tables.hpp"
#include "kernels/cell_number.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/text.hpp"

namespace vexel {

namespace {

// A single character of one byte.
char characterOf(Call& call, const char* parameter, char fallback) {
  const ALGEB x = call.value(parameter);
  if (x == nullptr) {
    return fallback;
  }
  if (!is(x, Tag::string) || text(x).size() != 1 || text(x)[0] == '"' || text(x)[0] == '\n' ||
      text(x)[0] == '\r' || static_cast<unsigned char>(text(x)[0]) >= 0x80) {
    call.refuse(parameter, "a character like \",\", \";\" or \"\\t\"");
  }
  return text(x)[0];
}

void readMissing(Call& call, CellRules& rules) {
  const ALGEB na = call.value("na");
  if (na == nullptr) {
    return;
  }
  rules.ownMissing = true;
  const std::size_t count = isList(na) ? countOf(na) : 1;
  for (std::size_t i = 1; i <= count; ++i) {
    const ALGEB x = isList(na) ? element(call.state(), na, i) : na;
    if (isReal(x)) {
      rules.missingNumbers.push_back(toDouble(call.state(), x));
    } else if (is(x, Tag::string) || is(x, Tag::name)) {
      double value = 0;
      rules.missingTexts.emplace_back(kernels::trimmed(text(x)));
      CellRules plain;
      plain.decimal = rules.decimal;
      if (plain.number(rules.missingTexts.back(), value) && !std::isnan(value)) {
        rules.missingNumbers.push_back(value);
      }
    } else {
      call.refuse("na", "texts or numbers that stand for a missing value");
    }
  }
}

}  // namespace

CsvOptions csvOptions(Call& call) {
  CsvOptions options;
  options.rules.decimal = characterOf(call, "decimal", '.');
  options.separator = characterOf(call, "separator", options.rules.decimal == ',' ? ';' : ',');
  options.isSeparatorGiven = call.given("separator");
  const auto isPartOfNumbers = [](char c) {
    return (c >= '0' && c <= '9') || c == '-' || c == '+';
  };
  if (isPartOfNumbers(options.rules.decimal)) {
    call.refuse("decimal", "a mark like \".\" or \",\"");
  }
  if (options.separator == options.rules.decimal) {
    call.refuse("separator", "another character than the decimal mark");
  }
  readMissing(call, options.rules);
  options.skip = call.size("skip");
  const ALGEB header = call.value("header");
  if (header != nullptr && isList(header)) {
    options.header = false;
    for (std::size_t i = 1; i <= countOf(header); ++i) {
      options.headings.push_back(
          plainText(call.state(), headingOf(call.state(), element(call.state(), header, i))));
    }
  } else if (header != nullptr) {
    options.header = call.boolean("header", true);
  }
  return options;
}

ColumnKind columnKind(Call& call, ALGEB x) {
  const std::string word = is(x, Tag::function)                     ? machineFunction(x).name
                           : is(x, Tag::string) || is(x, Tag::name) ? std::string(text(x))
                                                                    : "";
  constexpr std::pair<std::string_view, ColumnKind> kKinds[] = {{"number", ColumnKind::number},
                                                                {"text", ColumnKind::text},
                                                                {"date", ColumnKind::date},
                                                                {"auto", ColumnKind::automatic}};
  for (const auto& [known, kind] : kKinds) {
    if (word == known) {
      return kind;
    }
  }
  raise(call.state(), "a column is one of number, text, date, auto, received: %1", x);
}

}  // namespace vexel
