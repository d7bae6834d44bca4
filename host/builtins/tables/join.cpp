// join of two tables by their keys, and of texts.

#include <unordered_map>

#include "builtins/tables/keys.hpp"
#include "builtins/tables/tables.hpp"
#include "mathematics/elementwise.hpp"
#include "mathematics/parts.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/text.hpp"

namespace vexel {

namespace {

using Places = std::vector<std::int64_t>;

enum class Kind : std::uint8_t { inner, left, full };

Kind kindOf(Call& call) {
  const std::string word = call.word("kind", "inner");
  if (word == "inner" || word == "left" || word == "full") {
    return word == "inner" ? Kind::inner : word == "left" ? Kind::left : Kind::full;
  }
  call.refuse("kind", "one of inner, left, full");
}

// The headings of the keys in both tables: those given, as one name or as left = right, else all
// that both tables have.
struct JoinKeys {
  explicit JoinKeys(State& state) : left(state), right(state) {}
  Handles left;
  Handles right;
};

void readKeys(Call& call, ALGEB a, ALGEB b, JoinKeys& keys) {
  State& state = call.state();
  if (call.given("by")) {
    for (const ALGEB by : headingsIn(call, "by")) {
      keys.left.push(headingOf(state, isEquation(by) ? operand(by, 1) : by));
      keys.right.push(headingOf(state, isEquation(by) ? operand(by, 2) : by));
    }
    return;
  }
  for (const ALGEB heading : headingsOf(a)) {
    if (frame(b).find(heading) != nullptr) {
      keys.left.push(heading);
      keys.right.push(heading);
    }
  }
  if (keys.left.empty()) {
    raise(state, "the tables have no column in common; name the keys: join(a, b, [left = right])");
  }
}

// Numbers of the keys of a's rows and, behind them, of b's.
std::vector<std::int64_t> keysOfBoth(State& state, ALGEB a, ALGEB b, const JoinKeys& keys) {
  std::vector<std::int64_t> all;
  for (std::size_t i = 0; i < keys.left.size(); ++i) {
    const ALGEB both[] = {columnOf(state, a, keys.left[i]), columnOf(state, b, keys.right[i])};
    const std::vector<std::int64_t> next = keysOf(state, both);
    all = i == 0 ? next : combinedKeys(all, next, true);
  }
  return all;
}

struct Matches {
  Places left;
  Places right;
};

// Pairs of rows in the order of a's rows, then b's; a place of -1 where there is none.
Matches matchesOf(std::span<const std::int64_t> keys, std::size_t rowsOfA, Kind kind) {
  std::unordered_map<std::int64_t, Places> places;
  for (std::size_t i = rowsOfA; i < keys.size(); ++i) {
    if (keys[i] != kMissingKey) {
      places[keys[i]].push_back(static_cast<std::int64_t>(i - rowsOfA));
    }
  }
  Matches matches;
  std::vector<bool> matched(keys.size() - rowsOfA, false);
  for (std::size_t i = 0; i < rowsOfA; ++i) {
    lookAtInterrupt();
    const auto found = keys[i] == kMissingKey ? places.end() : places.find(keys[i]);
    if (found == places.end()) {
      if (kind != Kind::inner) {
        matches.left.push_back(static_cast<std::int64_t>(i));
        matches.right.push_back(-1);
      }
      continue;
    }
    for (const std::int64_t j : found->second) {
      matches.left.push_back(static_cast<std::int64_t>(i));
      matches.right.push_back(j);
      matched[static_cast<std::size_t>(j)] = true;
    }
  }
  for (std::size_t j = 0; kind == Kind::full && j < matched.size(); ++j) {
    if (!matched[j]) {
      matches.left.push_back(-1);
      matches.right.push_back(static_cast<std::int64_t>(j));
    }
  }
  return matches;
}

// A key's cells: a's, and b's where a has no row.
ALGEB keyColumn(State& state, ALGEB a, ALGEB b, const Matches& matches, Kind kind) {
  if (kind != Kind::full) {
    return takeElements(state, a, matches.left);
  }
  Handles cells(state);
  for (std::size_t i = 0; i < matches.left.size(); ++i) {
    cells.push(matches.left[i] >= 0 ? cellOf(state, a, matches.left[i])
                                    : cellOf(state, b, matches.right[i]));
  }
  return columnFrom(state, newList(state, cells.span()),
                    static_cast<std::int64_t>(matches.left.size()));
}

bool contains(Handles& all, ALGEB x) { return std::find(all.begin(), all.end(), x) != all.end(); }

ALGEB joinTables(Call& call) {
  State& state = call.state();
  const Kind kind = kindOf(call);
  if (!is(call.value("b"), Tag::table)) {
    call.refuse("b", "a second table");
  }
  const ALGEB a = tableOf(call, "a");
  const ALGEB b = tableOf(call, "b");
  JoinKeys keys(state);
  readKeys(call, a, b, keys);
  const Matches matches =
      matchesOf(keysOfBoth(state, a, b, keys), static_cast<std::size_t>(frame(a).rows), kind);
  const ALGEB result = newFrame(state, static_cast<std::int64_t>(matches.left.size()));
  for (const auto& [heading, column] : frame(a).entries()) {
    const auto at = std::find(keys.left.begin(), keys.left.end(), heading);
    const bool isKey = at != keys.left.end();
    const ALGEB other =
        isKey ? columnOf(state, b, keys.right[static_cast<std::size_t>(at - keys.left.begin())])
              : nullptr;
    frame(result).assign(heading, isKey ? keyColumn(state, column, other, matches, kind)
                                        : takeElements(state, column, matches.left));
  }
  for (const auto& [heading, column] : frame(b).entries()) {
    if (contains(keys.right, heading)) {
      continue;
    }
    ALGEB free = heading;
    for (int n = 2; frame(result).find(free) != nullptr; ++n) {
      free = string(state, plainText(state, heading) + "_" + std::to_string(n));
    }
    const ALGEB cells = takeElements(state, column, matches.right);
    frame(result).assign(free, cells);
  }
  return result;
}

ALGEB joinTexts(Call& call) {
  State& state = call.state();
  const ALGEB separator = call.value("b");
  if (separator != nullptr && !is(separator, Tag::string)) {
    call.refuse("b", "a text between the others");
  }
  Handles all(state);
  elementsOf(state, call.value("a"), all);
  std::string out;
  for (std::size_t i = 0; i < all.size(); ++i) {
    lookAtInterrupt();
    out += i > 0 && separator != nullptr ? text(separator) : "";
    out += isMissing(state, all[i]) ? "NA" : plainText(state, all[i]);
    if (out.size() > (std::size_t{1} << 28U)) {
      raise(state, "text too long");
    }
  }
  return string(state, out);
}

ALGEB join(Call& call) {
  const ALGEB a = call.value("a");
  if (is(a, Tag::table)) {
    return joinTables(call);
  }
  if (!isContainer(a) || call.given("by") || call.given("kind")) {
    call.refuse("a", "a table of columns or a list of texts");
  }
  return joinTexts(call);
}

constexpr FunctionRow kRows[] = {
    {"join", "a, b = none, by = none; kind = inner", nullptr, nullptr, join},
};

}  // namespace

void defineJoin(State& state) { defineRows(state, kRows); }

}  // namespace vexel
