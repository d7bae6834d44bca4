// group(table, by, f, ...): a row for each group of rows with the same keys; and tallies of texts.

#include <algorithm>

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

// The rows of each group, groups in the order of their keys.
std::vector<Places> groupsOf(State& state, ALGEB t, std::span<const ALGEB> by) {
  std::vector<std::int64_t> keys;
  for (const ALGEB heading : by) {
    const ALGEB column[] = {columnOf(state, t, heading)};
    const std::vector<std::int64_t> next = keysOf(state, column);
    keys = keys.empty() ? next : combinedKeys(keys, next, false);
  }
  const Places order =
      placesInOrder(keys.size(), [&](std::size_t a, std::size_t b) { return keys[a] < keys[b]; });
  std::vector<Places> groups;
  std::int64_t last = -1;
  for (const std::int64_t row : order) {
    const std::int64_t key = keys[static_cast<std::size_t>(row)];
    if (groups.empty() || key != last) {
      groups.emplace_back();
    }
    groups.back().push_back(row);
    last = key;
  }
  return groups;
}

// What the groups' rows become: cells by heading, those of the first group first.
class Summary {
 public:
  explicit Summary(State& state) : state_(state), headings_(state), cells_(state) {}

  // Starts the row of the next group.
  void nextRow() {
    next_ = 0;
    ++rows_;
  }

  void add(ALGEB heading, ALGEB cell) {
    if (rows_ == 1) {
      for (const ALGEB known : headings_) {
        if (known == heading) {
          raise(state_, "the groups' results name the column %1 twice", heading);
        }
      }
      headings_.push(heading);
    } else if (next_ >= headings_.size() || headings_[next_] != heading) {
      raise(state_, "the groups' results have different parts: %1", heading);
    }
    ++next_;
    cells_.push(cell);
  }

  // Appends the columns to the table.
  void finish(ALGEB result) {
    const std::size_t n = headings_.size();
    if (cells_.size() != n * rows_) {
      raise(state_, "the groups' results have different parts");
    }
    for (std::size_t c = 0; c < n; ++c) {
      Handles column(state_);
      for (std::size_t r = 0; r < rows_; ++r) {
        column.push(cells_[r * n + c]);
      }
      if (frame(result).find(headings_[c]) != nullptr) {
        raise(state_, "the table has a column %1 already", headings_[c]);
      }
      assignColumn(state_, result, headings_[c], newList(state_, column.span()));
    }
  }

 private:
  State& state_;
  Handles headings_;
  Handles cells_;  // row by row
  std::size_t rows_ = 0;
  std::size_t next_ = 0;
};

// A procedure of a group, and the column that its results are in.
struct Measure {
  ALGEB heading;  // null: that of the procedure's results
  ALGEB procedure;
};

ALGEB headingFor(State& state, const Measure& measure) {
  return measure.heading != nullptr ? measure.heading
         : is(measure.procedure, Tag::function)
             ? string(state, machineFunction(measure.procedure).name)
             : string(state, "value");
}

void addResult(State& state, Summary& summary, const Measure& measure, ALGEB result) {
  if (!is(result, Tag::table) || isFrame(result)) {
    summary.add(headingFor(state, measure), result);
    return;
  }
  Handles kept(state);
  kept.push(result);  // the entries are copies
  for (const auto& [key, value] : table(result).entries()) {
    const std::string part = plainText(state, key);
    summary.add(
        string(state,
               measure.heading == nullptr ? part : plainText(state, measure.heading) + "_" + part),
        value);
  }
}

ALGEB countRows(State& state, ALGEB group) { return newInteger(state, frame(group).rows); }

ALGEB group(Call& call) {
  State& state = call.state();
  const ALGEB t = tableOf(call, "t");
  const std::vector<ALGEB> by = headingsIn(call, "by");
  std::vector<Measure> measures;
  if (const ALGEB f = call.value("f")) {
    if (!isProcedure(f)) {
      call.refuse("f", "a procedure of a group's rows");
    }
    measures.push_back({nullptr, f});
  }
  for (const auto& [heading, f] : call.others()) {
    if (!isProcedure(f)) {
      raise(state, "group expects procedures of a group's rows, received: %1 = %2", heading, f);
    }
    measures.push_back({call.keep(headingOf(state, heading)), f});
  }
  const std::vector<Places> groups = groupsOf(state, t, by);
  Places first;
  for (const Places& places : groups) {
    first.push_back(places.front());
  }
  Handles keys(state);  // taken now, as a procedure may change the table
  for (const ALGEB heading : by) {
    keys.push(takeElements(state, columnOf(state, t, heading), first));
  }
  Summary summary(state);
  for (const Places& places : groups) {
    lookAtInterrupt();
    const ALGEB rows = takeRows(state, t, places);
    summary.nextRow();
    for (const Measure& measure : measures) {
      const ALGEB argument[] = {rows};
      addResult(state, summary, measure, apply(state, measure.procedure, argument));
    }
    if (measures.empty()) {
      summary.add(string(state, "count"), countRows(state, rows));
    }
  }
  const ALGEB result = newFrame(state, static_cast<std::int64_t>(groups.size()));
  for (std::size_t i = 0; i < by.size(); ++i) {
    frame(result).assign(headingOf(state, by[i]), keys[i]);
  }
  summary.finish(result);
  if (groups.empty()) {  // columns all the same
    for (const Measure& measure : measures) {
      assignColumn(state, result, headingFor(state, measure), newList(state, 0));
    }
    if (measures.empty()) {
      assignColumn(state, result, string(state, "count"), newList(state, 0));
    }
  }
  return result;
}

constexpr FunctionRow kRows[] = {
    {"group", "t, by, f = none; ...", nullptr, nullptr, group},
};

}  // namespace

ALGEB tallyOfTexts(Call& call) {
  State& state = call.state();
  const ALGEB x = call.value("x");
  if (!isList(x) && !(isArray(x) && arrayOf(x).type == RTABLE_DAG && arrayOf(x).dimensions == 1)) {
    return nullptr;
  }
  Handles all(state);
  elementsOf(state, x, all);
  const auto isNumeric = [&](ALGEB e) {
    return !is(e, Tag::string) && !is(e, Tag::date) && !isBoolean(state, e);
  };
  if (std::all_of(all.begin(), all.end(), isNumeric)) {
    return nullptr;
  }
  const ALGEB column = columnFrom(state, x, static_cast<std::int64_t>(all.size()));
  const std::vector<std::int64_t> keys = keysOf(state, std::span(&column, 1));
  const Data weights = call.data("weights");
  if (!weights.empty() && weights.size() != all.size()) {
    call.refuse("weights", "as many weights as there are values");
  }
  const Places order =
      placesInOrder(keys.size(), [&](std::size_t a, std::size_t b) { return keys[a] < keys[b]; });
  const Missing missing = call.missing();
  std::int64_t left = 0;
  Handles values(state);
  std::vector<double> counts;
  for (std::size_t i = 0; i < order.size(); ++i) {
    const auto at = static_cast<std::size_t>(order[i]);
    if (keys[at] == kMissingKey) {
      if (missing == Missing::raise) {
        raise(state, "missing value at %1", newInteger(state, static_cast<std::int64_t>(at + 1)));
      }
      ++left;
      continue;
    }
    if (i == 0 || keys[at] != keys[static_cast<std::size_t>(order[i - 1])]) {
      values.push(all[at]);
      counts.push_back(0);
    }
    counts.back() += weights.empty() ? 1 : weights[at];
  }
  const ALGEB list = newList(state, values.span());
  return call.parts(
      {{"values",
        isList(x) ? list : columnFrom(state, list, static_cast<std::int64_t>(values.size()))},
       {"counts", call.reals(counts, isList(x) ? x : nullptr)},
       {"missing", newInteger(state, left)}});
}

void defineGroup(State& state) { defineRows(state, kRows); }

}  // namespace vexel
