#include "language/elements.hpp"

#include <algorithm>
#include <string>
#include <vector>

#include "mathematics/comparison.hpp"
#include "mathematics/elementwise.hpp"
#include "mathematics/parts.hpp"
#include "values/arrays.hpp"
#include "values/dates.hpp"
#include "values/errors.hpp"
#include "values/frames.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"
#include "values/text.hpp"

namespace vexel {

namespace {

V_INT indexValue(State& state, ALGEB i) {
  std::int64_t n = 0;
  if (!isInteger(i) || !fitsInt64(i, &n)) {
    raise(state, "expected an integer as index, received: %1", i);
  }
  return n;
}

// The key under which a table holds an index: lists and sequences that are equal element by element
// are one key.
ALGEB tableKey(State& state, ALGEB t, std::span<const ALGEB> index) {
  const ALGEB key = sequenceOf(state, index);
  // t[mean]: the parts of a summary are under names, some of which are those of functions.
  if (is(key, Tag::function) && table(t).find(key) == nullptr) {
    const ALGEB asName = name(state, machineFunction(key).name);
    return table(t).find(asName) != nullptr ? asName : key;
  }
  if ((!isSequence(key) && !isList(key)) || isNull(key) || table(t).find(key) != nullptr) {
    return key;
  }
  for (const auto& [known, value] : table(t).entries()) {
    if ((isSequence(known) || isList(known)) &&
        comparison(state, CompareOp::equal, known, key).value_or(false)) {
      return known;
    }
  }
  return key;
}

}  // namespace

void assignIndexed(State& state, ALGEB what, std::span<const ALGEB> index, ALGEB v) {
  if (isFrame(what)) {
    if (index.size() == 2) {  // t[row, column]
      assignIndexed(state, columnOf(state, what, index[1]), index.first(1), v);
    } else {
      assignColumn(state, what, sequenceOf(state, index), v);
    }
    return;
  }
  if (is(what, Tag::table)) {
    table(what).assign(tableKey(state, what, index), v);
    return;
  }
  if (isArray(what)) {
    std::vector<V_INT> at;
    for (const ALGEB i : index) {
      at.push_back(indexValue(state, i));
    }
    arrayAssign(state, what, at, v);
    return;
  }
  if (isList(what) && index.size() == 1) {
    const V_INT i = indexValue(state, index[0]);
    if (i < 1 || i > static_cast<V_INT>(countOf(what))) {
      raise(state, "index out of range: %1", index[0]);
    }
    setOperand(what, static_cast<std::size_t>(i), v);
    return;
  }
  raise(state, "unable to assign an element of %1", what);
}

namespace {

// An index that selects several elements: a range, a list or array of positions, or as many true
// and false as there are elements.
bool selectsSeveral(ALGEB i) { return isRange(i) || isContainer(i); }

// Where positions lie: first to first + count - 1.
struct Extent {
  V_INT first;
  V_INT count;
};

// The place, from 0, of position i.  A position that does not exist and is negative counts from the
// end: -1 is the last.
V_INT place(State& state, const Extent& extent, ALGEB i) {
  const V_INT n = indexValue(state, i);
  const __int128 at = static_cast<__int128>(n) - extent.first;
  if (at >= 0 && at < extent.count) {
    return static_cast<V_INT>(at);
  }
  if (n < 0 && n >= -extent.count && extent.first >= 0) {
    return n + extent.count;
  }
  raise(state, "index out of range: %1", i);
}

// Places that a range names; one end or both may be left out, and an end just beyond is no element.
std::vector<V_INT> placesOfRange(State& state, const Extent& extent, ALGEB range) {
  const auto end = [&](ALGEB i, V_INT whole, V_INT beyond) {
    if (isNull(i)) {
      return whole;
    }
    const V_INT n = indexValue(state, i);
    const __int128 at = static_cast<__int128>(n) - extent.first;
    return at == beyond ? beyond : place(state, extent, i);
  };
  const V_INT from = end(operand(range, 1), 0, extent.count);
  const V_INT to = end(operand(range, 2), extent.count - 1, -1);
  std::vector<V_INT> places;
  for (V_INT at = from; at <= to; ++at) {
    places.push_back(at);
  }
  return places;
}

std::vector<V_INT> placesOf(State& state, const Extent& extent, ALGEB index) {
  if (isRange(index)) {
    return placesOfRange(state, extent, index);
  }
  Handles all(state);
  if (isArray(index)) {
    for (std::int64_t i = 0; i < arrayOf(index).count; ++i) {
      all.push(elementToObject(state, arrayOf(index).type, elementAt(index, i)));
    }
  } else {
    for (std::size_t i = 1; i <= countOf(index); ++i) {
      all.push(element(state, index, i));
    }
  }
  std::vector<V_INT> places;
  const bool isMask = !all.empty() && isBoolean(state, all[0]);
  if (isMask && static_cast<V_INT>(all.size()) != extent.count) {
    raise(state, "a selection of %1 values cannot choose from %2 elements",
          immediate(static_cast<std::int64_t>(all.size())), newInteger(state, extent.count));
  }
  for (std::size_t i = 0; i < all.size(); ++i) {
    lookAtInterrupt();
    if (!isMask) {
      places.push_back(place(state, extent, all[i]));
    } else if (truth(state, all[i])) {
      places.push_back(static_cast<V_INT>(i));
    }
  }
  return places;
}

ALGEB listSelection(State& state, ALGEB x, ALGEB index) {
  const std::vector<V_INT> places = placesOf(state, {1, static_cast<V_INT>(countOf(x))}, index);
  Handles chosen(state);
  for (const V_INT at : places) {
    chosen.push(element(state, x, static_cast<std::size_t>(at) + 1));
  }
  return isList(x) ? newList(state, chosen.span()) : sequenceOf(state, chosen.span());
}

// The part of an array that the indices name: dimensions with a single index go, the others begin
// at 1.
ALGEB arraySelection(State& state, ALGEB x, std::span<const ALGEB> index) {
  const ArrayObject& array = arrayOf(x);
  if (index.size() != array.dimensions) {
    raise(state, "array of %1 dimensions indexed with %2", immediate(array.dimensions),
          immediate(static_cast<std::int64_t>(index.size())));
  }
  std::vector<std::vector<V_INT>> places;
  std::vector<V_INT> bounds;
  std::int64_t count = 1;
  for (int d = 0; d < array.dimensions; ++d) {
    const Extent extent{array.lower(d), array.extent(d)};
    const ALGEB i = index[static_cast<std::size_t>(d)];
    if (selectsSeveral(i)) {
      places.push_back(placesOf(state, extent, i));
      bounds.insert(bounds.end(), {1, static_cast<V_INT>(places.back().size())});
    } else {
      places.push_back({place(state, extent, i)});
    }
    count *= static_cast<std::int64_t>(places.back().size());
  }
  RTableSettings settings = settingsOf(x);
  settings.read_only = 0;
  settings.num_dimensions = static_cast<std::int32_t>(bounds.size() / 2);
  const ALGEB result = newArray(state, settings, nullptr, bounds.data());
  std::vector<std::size_t> at(places.size(), 0);
  std::vector<V_INT> from(places.size());
  for (std::int64_t i = 0; i < count; ++i) {
    lookAtInterrupt();
    for (std::size_t d = 0; d < at.size(); ++d) {
      from[d] = array.lower(static_cast<int>(d)) + places[d][at[d]];
    }
    setElementAt(result, i, elementAt(x, position(state, x, from.data())));
    // On to the next place, the array's fastest dimension first.
    const std::size_t n = at.size();
    for (std::size_t k = 0; k < n; ++k) {
      const std::size_t d = array.order == RTABLE_COLUMN_MAJOR ? k : n - 1 - k;
      if (++at[d] < places[d].size()) {
        break;
      }
      at[d] = 0;
    }
  }
  return result;
}

// A[A > 1] of several dimensions: true and false of the array's shape choose elements row by row.
bool isMaskOf(State& state, ALGEB x, ALGEB mask) {
  if (!isArray(mask) || arrayOf(x).dimensions < 2 ||
      arrayOf(x).dimensions != arrayOf(mask).dimensions) {
    return false;
  }
  for (int d = 0; d < arrayOf(x).dimensions; ++d) {
    if (arrayOf(x).extent(d) != arrayOf(mask).extent(d)) {
      return false;
    }
  }
  const ALGEB first = arrayOf(mask).type == RTABLE_DAG && arrayOf(mask).count > 0
                          ? elementToObject(state, RTABLE_DAG, elementAt(mask, 0))
                          : nullptr;
  return first != nullptr && isBoolean(state, first);
}

ALGEB elementsOfMask(State& state, ALGEB x, ALGEB mask) {
  Handles all(state);
  Handles flags(state);
  elementsOf(state, x, all);
  elementsOf(state, mask, flags);
  Handles chosen(state);
  for (std::size_t i = 0; i < all.size(); ++i) {
    if (truth(state, flags[i])) {
      chosen.push(all[i]);
    }
  }
  RTableSettings settings = settingsOf(x);
  settings.read_only = 0;
  settings.storage = RTABLE_RECTANGULAR;
  settings.num_dimensions = 1;
  const V_INT bounds[] = {1, static_cast<V_INT>(chosen.size())};
  const ALGEB result = newArray(state, settings, nullptr, bounds);
  for (std::size_t i = 0; i < chosen.size(); ++i) {
    setElementAt(result, static_cast<std::int64_t>(i),
                 objectToElement(state, arrayOf(result).type, chosen[i]));
  }
  return result;
}

}  // namespace

namespace {

// A list of headings, which selects columns.
bool areHeadings(State& state, ALGEB index) {
  if (!isList(index) || countOf(index) == 0) {
    return false;
  }
  const ALGEB first = element(state, index, 1);
  return is(first, Tag::string) || is(first, Tag::name) || is(first, Tag::function);
}

// t[column], t[rows], t[[column, ...]], t[row or rows, column or columns] of a table of columns.
ALGEB frameSelection(State& state, ALGEB x, std::span<const ALGEB> index) {
  if (index.size() > 2) {
    raise(state, "a table takes one or two indices, received: %1", sequenceOf(state, index));
  }
  Handles kept(state);
  kept.push(x);
  const ALGEB last = index.back();
  if (index.size() == 2 && !areHeadings(state, last)) {
    return indexed(state, columnOf(state, x, last), index.first(1));
  }
  if (index.size() == 2) {
    const ALGEB rows = selectsSeveral(index[0]) && !areHeadings(state, index[0])
                           ? index[0]
                           : newList(state, index.first(1));
    const std::vector<V_INT> places = placesOf(state, {1, frame(x).rows}, rows);
    return frameSelection(state, takeRows(state, x, places), index.last(1));
  }
  if (areHeadings(state, last)) {
    const ALGEB result = newFrame(state, frame(x).rows);
    for (std::size_t i = 1; i <= countOf(last); ++i) {
      const ALGEB heading = element(state, last, i);
      assignColumn(state, result, heading, columnOf(state, x, heading));
    }
    return result;
  }
  if (selectsSeveral(last)) {
    return takeRows(state, x, placesOf(state, {1, frame(x).rows}, last));
  }
  return columnOf(state, x, last);
}

}  // namespace

// x[x = 2]: an equation between elements stands for true and false, as x <> 2 does; in a table's
// index it is a key.
ALGEB indexed(State& state, ALGEB x, std::span<const ALGEB> index) {
  if ((!is(x, Tag::table) || isFrame(x)) && std::any_of(index.begin(), index.end(), isEquation)) {
    Handles masks(state);
    for (const ALGEB i : index) {
      masks.push(maskOf(state, i));
    }
    if (!std::equal(index.begin(), index.end(), masks.begin())) {
      return indexed(state, x, masks.span());
    }
  }
  if (isFrame(x) && !index.empty()) {
    return frameSelection(state, x, index);
  }
  if (isDate(x) && index.size() == 1) {
    if (const auto part = datePart(daysOf(x), plainText(state, index[0]))) {
      return newInteger(state, *part);
    }
    raise(state, "a date has the parts year, month, day, weekday, yearday, week and days, not %1",
          index[0]);
  }
  if (is(x, Tag::table)) {
    const ALGEB key = tableKey(state, x, index);
    if (const ALGEB found = table(x).find(key)) {
      return found;
    }
    if (is(key, Tag::string)) {  // t["mean"] where mean is a variable
      if (const ALGEB found = table(x).find(name(state, text(key)))) {
        return found;
      }
    }
    raise(state, "the table has no entry %1", key);
  }
  if (isArray(x)) {
    if (index.size() == 1 && isMaskOf(state, x, index[0])) {
      return elementsOfMask(state, x, index[0]);
    }
    if (std::any_of(index.begin(), index.end(), selectsSeveral)) {
      return arraySelection(state, x, index);
    }
    std::vector<V_INT> at;
    for (std::size_t d = 0; d < index.size(); ++d) {
      const V_INT i = indexValue(state, index[d]);
      const bool fromEnd = i < 0 && d < arrayOf(x).dimensions;
      const int dim = static_cast<int>(d);
      at.push_back(fromEnd && arrayOf(x).lower(dim) >= 0 && i >= -arrayOf(x).extent(dim)
                       ? arrayOf(x).upper(dim) + 1 + i
                       : i);
    }
    const ALGEB found = arraySelect(state, x, at);
    return found == nullptr ? state.null : found;
  }
  if ((isList(x) || isSequence(x)) && !index.empty()) {
    if (selectsSeveral(index[0])) {
      if (index.size() > 1) {
        raise(state, "a selection from a list takes one index, received: %1",
              sequenceOf(state, index));
      }
      return listSelection(state, x, index[0]);
    }
    const V_INT at = place(state, {1, static_cast<V_INT>(countOf(x))}, index[0]);
    const ALGEB found = element(state, x, static_cast<std::size_t>(at) + 1);
    return index.size() == 1 ? found : indexed(state, found, index.subspan(1));
  }
  if (is(x, Tag::foreign) && index.size() == 1) {
    const std::string part = plainText(state, index[0]);
    if (const ALGEB found = guarded(state, [&] { return foreign(x)->field(state, part); })) {
      return found;
    }
    raise(state, "%1 has no part %2", x, index[0]);
  }
  if (is(x, Tag::name) || is(x, Tag::function)) {
    std::string subscripted = plainText(state, x) + "[";
    for (std::size_t i = 0; i < index.size(); ++i) {
      subscripted += (i > 0 ? ", " : "") + sourceText(state, index[i]);
    }
    return name(state, subscripted + "]");
  }
  raise(state, "unable to select an element of %1", x);
}

}  // namespace vexel
