// ReadCSV and WriteCSV: RFC 4180 text through libcsv, numbers through from_chars.

#include <csv.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "builtins/builtins.hpp"
#include "kernels/cell_number.hpp"
#include "values/arrays.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"
#include "values/text.hpp"

namespace vexel {

namespace {

using Row = std::vector<std::string>;

struct Reader {
  std::vector<Row> rows;
  Row row;
  bool noMemory = false;

  static void field(void* text, std::size_t size, void* self) {
    auto* reader = static_cast<Reader*>(self);
    try {
      reader->row.emplace_back(static_cast<const char*>(text), text == nullptr ? 0 : size);
    } catch (const std::bad_alloc&) {
      reader->noMemory = true;
    }
  }
  static void line(int, void* self) {
    auto* reader = static_cast<Reader*>(self);
    try {
      reader->rows.push_back(std::move(reader->row));
      reader->row.clear();
    } catch (const std::bad_alloc&) {
      reader->noMemory = true;
    }
  }
};

std::string fileName(State& s, ALGEB x) {
  if (!is(x, Tag::string)) {
    raise(s, "expected the name of a file, received: %1", x);
  }
  return std::string(text(x));
}

std::vector<Row> readRows(State& s, ALGEB name) {
  const std::string path = fileName(s, name);
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"),
                                                             std::fclose);
  if (!file) {
    raise(s, "unable to read the file %1", name);
  }
  csv_parser parser;
  // Strict: a quote within an unquoted cell, or text behind a closing one, is malformed, and so is
  // a file that ends within quotes.
  if (csv_init(&parser, CSV_APPEND_NULL | CSV_STRICT | CSV_STRICT_FINI) != 0) {
    raiseNoMemory(s);
  }
  const std::unique_ptr<csv_parser, void (*)(csv_parser*)> guard(&parser, csv_free);
  // The parser's memory for a cell grows by steps of this: with few for a cell of any size.
  csv_set_blk_size(&parser, std::size_t{1} << 20);
  Reader reader;
  const auto malformed = [&](const char* what) {
    raise(s, std::string("row %1, column %2 of the CSV file ") + what,
          newInteger(s, static_cast<std::int64_t>(reader.rows.size() + 1)),
          newInteger(s, static_cast<std::int64_t>(reader.row.size() + 1)));
  };
  char buffer[1 << 16];
  std::size_t n = 0;
  // A byte order mark, which spreadsheets write first, is no part of the first heading.
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  n = std::fread(buffer, 1, kByteOrderMark.size(), file.get());
  if (std::string_view(buffer, n) == kByteOrderMark) {
    n = std::fread(buffer, 1, sizeof buffer, file.get());
  }
  for (; n > 0; n = std::fread(buffer, 1, sizeof buffer, file.get())) {
    lookAtInterrupt();
    if (csv_parse(&parser, buffer, n, Reader::field, Reader::line, &reader) != n) {
      if (csv_error(&parser) == CSV_ENOMEM) {
        raiseNoMemory(s);
      }
      malformed("has a quote inside a cell without quotes or text behind the closing quote");
    }
  }
  if (csv_fini(&parser, Reader::field, Reader::line, &reader) != 0) {
    malformed("opens a quote that the file never closes");
  }
  if (reader.noMemory) {
    raiseNoMemory(s);
  }
  if (std::ferror(file.get()) != 0) {
    raise(s, "unable to read the file %1", name);
  }
  return std::move(reader.rows);
}

using kernels::cellNumber;
using kernels::trimmed;

ALGEB floatVector(State& s, const std::vector<double>& values) {
  RTableSettings settings{};
  settings.data_type = RTABLE_FLOAT64;
  settings.storage = RTABLE_RECTANGULAR;
  settings.num_dimensions = 1;
  const V_INT bounds[] = {1, static_cast<V_INT>(values.size())};
  return newArray(s, settings, values.data(), bounds);
}

std::size_t columnIndex(State& s, const Row& header, ALGEB column) {
  std::int64_t i = 0;
  if (isInteger(column) && fitsInt64(column, &i)) {
    if (i >= 1 && i <= static_cast<std::int64_t>(header.size())) {
      return static_cast<std::size_t>(i - 1);
    }
  } else if (is(column, Tag::string) || is(column, Tag::name)) {
    const std::string wanted = plainText(s, column);
    std::size_t found = header.size();
    for (std::size_t c = 0; c < header.size(); ++c) {
      if (trimmed(header[c]) == wanted && found < header.size()) {
        raise(s, "the file has several columns %1; name one by its number", column);
      }
      found = trimmed(header[c]) == wanted ? c : found;
    }
    if (found < header.size()) {
      return found;
    }
  }
  raise(s, "the file has no column %1", column);
}

// A table has one column for each heading.
void requireDistinctHeadings(State& s, const Row& header) {
  std::map<std::string_view, std::size_t> seen;
  for (std::size_t c = 0; c < header.size(); ++c) {
    const auto [at, isNew] = seen.emplace(trimmed(header[c]), c);
    if (!isNew) {
      raise(s, "columns " + std::to_string(at->second + 1) + " and %1 have the same heading, %2",
            newInteger(s, static_cast<std::int64_t>(c + 1)), string(s, trimmed(header[c])));
    }
  }
}

// ReadCSV(file, column): a numeric column.  ReadCSV(file): a table from column names to columns, a
// float[8] array where every cell is a number or missing, else an array of strings.
ALGEB readCsv(State& s, ALGEB args) {
  const std::size_t given = isNull(args) ? 0 : argumentCount(args);
  if (given != 1 && given != 2) {
    raise(s, "ReadCSV expects a file and a column, received: %1", args);
  }
  const std::vector<Row> rows = readRows(s, argument(s, args, 1));
  if (rows.empty()) {
    raise(s, "the file %1 is empty", argument(s, args, 1));
  }
  const Row& header = rows.front();
  for (std::size_t r = 1; r < rows.size(); ++r) {
    for (std::size_t c = header.size(); c < rows[r].size(); ++c) {
      if (!trimmed(rows[r][c]).empty()) {
        raise(s, "row %1, column %2: more cells than there are headings",
              newInteger(s, static_cast<std::int64_t>(r + 1)),
              newInteger(s, static_cast<std::int64_t>(c + 1)));
      }
    }
  }
  auto cell = [&](std::size_t row, std::size_t column) -> std::string_view {
    return column < rows[row].size() ? std::string_view(rows[row][column]) : std::string_view();
  };
  auto numbers = [&](std::size_t column, std::vector<double>& values, std::size_t& bad) {
    for (std::size_t r = 1; r < rows.size(); ++r) {
      double value = 0.0;
      if (!cellNumber(cell(r, column), value)) {
        bad = r;
        return false;
      }
      values.push_back(value);
    }
    return true;
  };
  std::size_t bad = 0;
  if (given == 2) {
    const std::size_t column = columnIndex(s, header, argument(s, args, 2));
    std::vector<double> values;
    if (!numbers(column, values, bad)) {
      raise(s, "row %1, column " + std::to_string(column + 1) + ": expected a number, received: %2",
            newInteger(s, static_cast<std::int64_t>(bad + 1)), string(s, cell(bad, column)));
    }
    return floatVector(s, values);
  }
  requireDistinctHeadings(s, header);
  const ALGEB result = newTable(s);
  for (std::size_t c = 0; c < header.size(); ++c) {
    std::vector<double> values;
    ALGEB column = nullptr;
    if (numbers(c, values, bad)) {
      column = floatVector(s, values);
    } else {
      RTableSettings settings{};
      settings.storage = RTABLE_RECTANGULAR;
      settings.num_dimensions = 1;
      const V_INT bounds[] = {1, static_cast<V_INT>(rows.size()) - 1};
      column = newArray(s, settings, nullptr, bounds);
      for (std::size_t r = 1; r < rows.size(); ++r) {
        RTableData e{};
        e.dag = string(s, cell(r, c));
        setElementAt(column, static_cast<std::int64_t>(r) - 1, e);
      }
    }
    table(result).assign(string(s, trimmed(header[c])), column);
  }
  return result;
}

std::string csvCell(State& s, ALGEB x) {
  if (isNull(x) || (isFloat(x) && isUndefined(s, x))) {
    return "NA";
  }
  if (isFloat(x) && isInfinite(s, x)) {
    return x == s.infinity ? "inf" : "-inf";
  }
  if (!isFloat(x) && isReal(x) && !isInteger(x)) {
    return doubleText(toDouble(s, x));  // a fraction would be read back as a text
  }
  std::string cell = plainText(s, x);
  if (cell.find_first_of(",\"\n\r") != std::string::npos) {
    std::string quotedCell = "\"";
    for (const char c : cell) {
      quotedCell += c;
      quotedCell += c == '"' ? "\"" : "";
    }
    cell = quotedCell + "\"";
  }
  return cell;
}

struct Column {
  ALGEB heading;  // null for none
  ALGEB array;
};

// The columns among the arguments: arrays, equations heading = array, and tables of those, as
// ReadCSV makes them.
std::vector<Column> columnsToWrite(State& s, ALGEB args) {
  std::vector<Column> columns;
  for (std::size_t k = 2; k <= argumentCount(args); ++k) {
    const ALGEB x = argument(s, args, k);
    if (is(x, Tag::table)) {
      for (const auto& [key, value] : table(x).entries()) {
        columns.push_back({key, value});
      }
    } else if (isEquation(x)) {
      columns.push_back({operand(x, 1), operand(x, 2)});
    } else {
      columns.push_back({nullptr, x});
    }
  }
  for (const Column& column : columns) {
    const ALGEB x = column.array;
    if (!isArray(x) || arrayOf(x).dimensions < 1 || arrayOf(x).dimensions > 2) {
      raise(s, "expected an array of one or two dimensions, received: %1", x);
    }
    const bool alone = columns.size() == 1 && column.heading == nullptr;
    if (!alone && (arrayOf(x).dimensions != 1 ||
                   arrayOf(x).extent(0) != arrayOf(columns.front().array).extent(0))) {
      raise(s, "expected arrays of one size, received: %1", x);
    }
    if ((column.heading == nullptr) != (columns.front().heading == nullptr)) {
      raise(s, "expected a heading for every column or for none");
    }
  }
  return columns;
}

// WriteCSV(file, array): a row a row of the array; with headings or further arrays, a column each.
ALGEB writeCsv(State& s, ALGEB args) {
  if (isNull(args) || argumentCount(args) < 2) {
    raise(s, "WriteCSV expects a file and an array, received: %1", args);
  }
  const std::vector<Column> columns = columnsToWrite(s, args);
  std::string out;
  if (!columns.empty() && columns.front().heading != nullptr) {
    for (const Column& column : columns) {
      out += (&column == &columns.front() ? "" : ",") + csvCell(s, column.heading);
    }
    out += "\n";
  }
  const V_INT rows = columns.empty() ? 0 : arrayOf(columns.front().array).extent(0);
  for (V_INT i = 0; i < rows; ++i) {
    lookAtInterrupt();
    bool first = true;
    for (const Column& column : columns) {
      const ArrayObject& a = arrayOf(column.array);
      const V_INT cells = a.dimensions == 2 ? a.extent(1) : 1;
      for (V_INT j = 0; j < cells; ++j) {
        V_INT index[] = {a.lower(0) + i, 0};
        if (a.dimensions == 2) {
          index[1] = a.lower(1) + j;
        }
        out += (first ? "" : ",") +
               csvCell(s, arraySelect(s, column.array, std::span(index, a.dimensions)));
        first = false;
      }
    }
    out += "\n";
  }
  const std::string path = fileName(s, argument(s, args, 1));
  std::FILE* file = std::fopen(path.c_str(), "wb");
  const bool written =
      file != nullptr && std::fwrite(out.data(), 1, out.size(), file) == out.size();
  if (file == nullptr || std::fclose(file) != 0 || !written) {
    raise(s, "unable to write the file %1", argument(s, args, 1));
  }
  return s.null;
}

}  // namespace

void defineCsvFunctions(State& state) {
  defineFunction(state, "ReadCSV", readCsv);
  defineFunction(state, "WriteCSV", writeCsv);
}

}  // namespace vexel
