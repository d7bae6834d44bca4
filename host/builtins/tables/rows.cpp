// Tables of columns by their rows: making them, choosing, sorting, tallying.

#include <algorithm>
#include <numeric>

#include "builtins/tables/keys.hpp"
#include "builtins/tables/tables.hpp"
#include "language/elements.hpp"
#include "mathematics/elementwise.hpp"
#include "mathematics/parts.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/text.hpp"

namespace vexel {

namespace {

// A row of a table, for procedures: row[column].
class RowObject : public Foreign {
 public:
  RowObject(ALGEB table, std::int64_t place) : table_(table), place_(place) {}
  void mark(Marker& marker) override { marker.mark(table_); }
  void print(State& state, std::string& out) const override {
    out += "row(";
    const char* separator = "";
    for (const auto& [heading, column] : frame(table_).entries()) {
      out += separator + plainText(state, heading) + " = ";
      out += sourceText(state, cellOf(state, column, place_), kMessageArguments);
      separator = ", ";
    }
    out += ')';
  }
  ALGEB field(State& state, std::string_view heading) override {
    ALGEB key = string(state, heading);
    if (frame(table_).find(key) == nullptr) {  // columns without headings have numbers
      std::int64_t number = 0;
      for (const char c : heading.substr(0, 9)) {
        number = c >= '0' && c <= '9' && number >= 0 ? 10 * number + (c - '0') : -1;
      }
      key = number > 0 ? immediate(number) : key;
    }
    return cellOf(state, columnOf(state, table_, key), place_);
  }

 private:
  ALGEB table_;
  std::int64_t place_;
};

ALGEB rowOf(State& state, ALGEB table, std::int64_t place) {
  return newForeign(state, Tag::foreign, std::make_unique<RowObject>(table, place));
}

bool isColumn(ALGEB x) { return isList(x) || (isArray(x) && arrayOf(x).dimensions == 1); }

// Single values stand for as many of it as the table has rows: those of the first list or array.
std::int64_t rowsOfOthers(Call& call) {
  for (const auto& [heading, values] : call.others()) {
    if (isColumn(values)) {
      return isArray(values) ? arrayOf(values).count : static_cast<std::int64_t>(countOf(values));
    }
  }
  return call.others().empty() ? 0 : 1;
}

ALGEB makeFrame(Call& call) {
  State& state = call.state();
  ALGEB result = nullptr;
  if (call.given("x")) {
    const ALGEB from = tableOf(call, "x");
    result = newFrame(state, frame(from).rows);
    for (const auto& [heading, column] : frame(from).entries()) {
      frame(result).assign(heading, column);
    }
  } else {
    result = newFrame(state, rowsOfOthers(call));
  }
  for (const auto& [heading, values] : call.others()) {
    const ALGEB column = columnFrom(state, values, frame(result).rows);
    frame(result).assign(headingOf(state, heading), column);
  }
  return result;
}

ALGEB headings(Call& call) { return newList(call.state(), headingsOf(tableOf(call, "t"))); }

ALGEB rowCount(Call& call) { return newInteger(call.state(), frame(tableOf(call, "t")).rows); }

ALGEB rows(Call& call) {
  State& state = call.state();
  const ALGEB t = tableOf(call, "t");
  Handles all(state);
  for (std::int64_t i = 0; i < frame(t).rows; ++i) {
    lookAtInterrupt();
    all.push(rowOf(state, t, i));
  }
  return newList(state, all.span());
}

// The first, or the last, n rows or elements.
ALGEB end(Call& call, bool first) {
  State& state = call.state();
  const auto n = static_cast<std::int64_t>(std::min<std::size_t>(call.size("n", 6), 1U << 30U));
  const ALGEB x = call.value("t");
  const bool isVector = isColumn(x);
  const std::int64_t count = !isVector    ? frame(tableOf(call, "t")).rows
                             : isArray(x) ? arrayOf(x).count
                                          : static_cast<std::int64_t>(countOf(x));
  const std::int64_t from = first ? 0 : std::max<std::int64_t>(0, count - n);
  const std::int64_t to = first ? std::min(n, count) : count;
  if (!isVector) {
    std::vector<std::int64_t> places(static_cast<std::size_t>(to - from));
    std::iota(places.begin(), places.end(), from);
    return takeRows(state, tableOf(call, "t"), places);
  }
  const std::int64_t lower = isArray(x) ? arrayOf(x).lower(0) : 1;
  if (from >= to && isArray(x)) {
    return takeElements(state, x, {});
  }
  const ALGEB range[] = {newPair(state, Tag::range, newInteger(state, lower + from),
                                 newInteger(state, lower + (to - 1)))};
  return indexed(state, x, range);
}

ALGEB head(Call& call) { return end(call, true); }
ALGEB tail(Call& call) { return end(call, false); }

// Whether each of several columns is sorted downwards.
std::vector<bool> directions(Call& call, std::size_t columns) {
  const ALGEB x = call.value("descending");
  if (x == nullptr || !isList(x)) {
    return std::vector<bool>(columns, call.boolean("descending"));
  }
  std::vector<bool> down;
  for (std::size_t i = 1; i <= countOf(x); ++i) {
    const ALGEB one = element(call.state(), x, i);
    if (!isBoolean(call.state(), one) || countOf(x) != columns) {
      call.refuse("descending", "true or false, or one for each column");
    }
    down.push_back(one == call.state().trueValue);
  }
  return down;
}

ALGEB sortBy(Call& call) {
  State& state = call.state();
  const ALGEB t = tableOf(call, "t");
  const auto count = static_cast<std::size_t>(frame(t).rows);
  Handles columns(state);
  if (const ALGEB by = call.value("by"); is(by, Tag::procedure)) {
    Handles cells(state);
    for (std::size_t i = 0; i < count; ++i) {
      const ALGEB row[] = {rowOf(state, t, static_cast<std::int64_t>(i))};
      cells.push(apply(state, by, row));
    }
    columns.push(columnFrom(state, newList(state, cells.span()), frame(t).rows));
  } else {
    for (const ALGEB heading : headingsIn(call, "by")) {
      columns.push(columnOf(state, t, heading));
    }
  }
  const std::vector<bool> down = directions(call, columns.size());
  std::vector<std::vector<std::int64_t>> keys;
  for (std::size_t c = 0; c < columns.size(); ++c) {
    keys.push_back(keysOf(state, std::span(&columns[c], 1)));
    for (std::int64_t& key : keys.back()) {
      key = down[c] && key != kMissingKey ? -key : key;  // missing ones last in any case
    }
  }
  const std::vector<std::int64_t> places = placesInOrder(count, [&](std::size_t a, std::size_t b) {
    for (const auto& key : keys) {
      if (key[a] != key[b]) {
        return key[a] < key[b];
      }
    }
    return false;
  });
  return takeRows(state, t, places);
}

ALGEB elementsWhere(Call& call, ALGEB x, ALGEB test) {
  State& state = call.state();
  Handles all(state);
  elementsOf(state, x, all);
  Handles mask(state);
  for (const ALGEB e : all.span()) {
    const ALGEB argument[] = {e};
    mask.push(boolean(state, truth(state, apply(state, test, argument))));
  }
  const ALGEB index[] = {newList(state, mask.span())};
  return all.empty() ? x : indexed(state, x, index);
}

constexpr FunctionRow kRows[] = {
    {"frame", "x = none; ...", nullptr, nullptr, makeFrame},
    {"headings", "t", nullptr, nullptr, headings},
    {"row_count", "t", nullptr, nullptr, rowCount},
    {"rows", "t", nullptr, nullptr, rows},
    {"head", "t, n = 6", nullptr, nullptr, head},
    {"tail", "t, n = 6", nullptr, nullptr, tail},
    {"sort_by", "t, by; descending = false", nullptr, nullptr, sortBy},
};

}  // namespace

std::int64_t sizeOfVector(State& state, ALGEB x) {
  if (!isArray(x)) {
    return static_cast<std::int64_t>(countOf(x));
  }
  if (arrayOf(x).dimensions != 1) {
    raise(state, "expected a list or an array of one dimension, received: %1", x);
  }
  return arrayOf(x).count;
}

ALGEB elementOfVector(State& state, ALGEB x, std::int64_t i) {
  return isArray(x) ? cellOf(state, x, i) : element(state, x, static_cast<std::size_t>(i) + 1);
}

ALGEB tableOf(Call& call, const char* parameter) {
  State& state = call.state();
  const ALGEB x = call.value(parameter);
  if (isFrame(x)) {
    return x;
  }
  if (!is(x, Tag::table)) {
    call.refuse(parameter, "a table of columns");
  }
  const ALGEB result = call.keep(newFrame(state, 0));
  for (const auto& [heading, column] : table(x).entries()) {
    if (!isColumn(column)) {
      call.refuse(parameter, "a table of columns");
    }
    assignColumn(state, result, heading, column);
  }
  return result;
}

std::vector<ALGEB> headingsIn(Call& call, const char* parameter) {
  const ALGEB x = call.value(parameter);
  std::vector<ALGEB> headings;
  if (x != nullptr && isList(x)) {
    for (std::size_t i = 1; i <= countOf(x); ++i) {
      headings.push_back(element(call.state(), x, i));
    }
  } else if (x != nullptr) {
    headings.push_back(x);
  }
  if (x != nullptr && headings.empty()) {
    call.refuse(parameter, "the name of a column or a list of names");
  }
  return headings;
}

ALGEB filterRows(Call& call) {
  State& state = call.state();
  const ALGEB x = call.value("x");
  const ALGEB test = call.keep(maskOf(state, call.value("taps")));
  if (!is(x, Tag::table)) {
    return elementsWhere(call, x, test);
  }
  const ALGEB t = tableOf(call, "x");
  if (!isProcedure(test)) {
    const ALGEB index[] = {test};
    return isContainer(test)
               ? indexed(state, t, index)
               : (call.refuse("taps", "a procedure of a row, or true and false for each row"), t);
  }
  std::vector<std::int64_t> places;
  for (std::int64_t i = 0; i < frame(t).rows; ++i) {
    const ALGEB row[] = {rowOf(state, t, i)};
    if (truth(state, apply(state, test, row))) {
      places.push_back(i);
    }
  }
  return takeRows(state, t, places);
}

void defineTableFunctions(State& state) { defineRows(state, kRows); }

void defineTables(State& state) {
  defineTableFunctions(state);
  defineReadCsv(state);
  defineWriteCsv(state);
  defineGroup(state);
  defineJoin(state);
  defineTextPartFunctions(state);
  defineDateFunctions(state);
}

}  // namespace vexel
