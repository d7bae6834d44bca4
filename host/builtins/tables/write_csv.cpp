// WriteCSV: arrays, lists and tables as the columns of a file.

#include <cstdio>
#include <span>

#include "builtins/builtins.hpp"
#include "builtins/tables/tables.hpp"
#include "mathematics/elementwise.hpp"
#include "values/arrays.hpp"
#include "values/dates.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/text.hpp"

namespace vexel {

namespace {

struct Format {
  char separator = ',';
  char decimal = '.';
};

struct Column {
  ALGEB heading;  // null for none
  ALGEB array;
};

std::string numberCell(State& s, ALGEB x, const Format& format) {
  if (isInfinite(s, x)) {
    return x == s.infinity ? "inf" : "-inf";
  }
  // A fraction would be read back as a text.
  std::string cell = isFloat(x) ? floatText(x) : doubleText(toDouble(s, x));
  if (const std::size_t point = cell.find('.'); point != std::string::npos) {
    cell[point] = format.decimal;
  }
  return cell;
}

// What ReadCSV would not read as the same text without quotes.
bool needsQuotes(std::string_view cell, const Format& format, bool isText) {
  const char special[] = {format.separator, '"', '\n', '\r'};
  if (cell.find_first_of(std::string_view(special, sizeof special)) != std::string_view::npos) {
    return true;
  }
  return isText && (cell.empty() || cell == "NA" || cell.front() == ' ' || cell.front() == '\t' ||
                    cell.back() == ' ' || cell.back() == '\t');
}

std::string csvCell(State& s, ALGEB x, const Format& format, bool isHeading = false) {
  if (isMissing(s, x)) {
    return "NA";
  }
  std::string cell =
      isFloat(x) || (isReal(x) && !isInteger(x)) ? numberCell(s, x, format) : plainText(s, x);
  if (!needsQuotes(cell, format, !isHeading && is(x, Tag::string))) {
    return cell;
  }
  std::string quotedCell = "\"";
  for (const char c : cell) {
    quotedCell += c;
    quotedCell += c == '"' ? "\"" : "";
  }
  return quotedCell + "\"";
}

// A list as a column; one of lists, of one size, as a two-dimensional array of rows.
ALGEB arrayOfList(State& s, ALGEB list) {
  const std::size_t rows = countOf(list);
  const bool nested = rows > 0 && isList(element(s, list, 1));
  if (!nested) {
    return columnFrom(s, list, static_cast<std::int64_t>(rows));
  }
  const std::size_t columns = countOf(element(s, list, 1));
  const RTableSettings settings{RTABLE_DAG, RTABLE_RECTANGULAR, RTABLE_ROW_MAJOR, 2, 0};
  const V_INT bounds[] = {1, static_cast<V_INT>(rows), 1, static_cast<V_INT>(columns)};
  const ALGEB result = newArray(s, settings, nullptr, bounds);
  for (std::size_t i = 0; i < rows; ++i) {
    const ALGEB row = element(s, list, i + 1);
    if (!isList(row) || countOf(row) != columns) {
      raise(s, "expected rows of one size, received: %1", row);
    }
    for (std::size_t j = 0; j < columns; ++j) {
      setElementAt(result, static_cast<std::int64_t>(i * columns + j),
                   objectToElement(s, RTABLE_DAG, element(s, row, j + 1)));
    }
  }
  return result;
}

// separator = ";" and decimal = "," are no columns.
bool readFormat(State& s, ALGEB x, Format& format) {
  if (!isEquation(x) || !is(operand(x, 2), Tag::string) || !is(operand(x, 1), Tag::name)) {
    return false;
  }
  const std::string_view option = text(operand(x, 1));
  const std::string_view mark = text(operand(x, 2));
  if (option != "separator" && option != "decimal") {
    return false;
  }
  if (mark.size() != 1 || mark[0] == '"' || mark[0] == '\n' || mark[0] == '\r' ||
      static_cast<unsigned char>(mark[0]) >= 0x80) {
    raise(s, "WriteCSV expects a character as %1, received: %2", operand(x, 1), operand(x, 2));
  }
  (option == "separator" ? format.separator : format.decimal) = mark[0];
  return true;
}

// The columns among the arguments: arrays, lists, equations heading = array, and tables of those.
std::vector<Column> columnsToWrite(State& s, ALGEB args, Format& format, Handles& made) {
  std::vector<Column> columns;
  for (std::size_t k = 2; k <= argumentCount(args); ++k) {
    const ALGEB x = argument(s, args, k);
    if (readFormat(s, x, format)) {
      continue;
    }
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
  for (Column& column : columns) {
    if (isList(column.array)) {
      column.array = arrayOfList(s, column.array);
      made.push(column.array);
    }
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

class OutputFile {
 public:
  OutputFile(State& s, ALGEB fileName) : state_(s), name_(fileName) {
    if (!is(fileName, Tag::string)) {
      raise(s, "expected the name of a file, received: %1", fileName);
    }
    file_ = std::fopen(std::string(text(fileName)).c_str(), "wb");
    requireGood(file_ != nullptr);
  }
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile() {
    if (file_ != nullptr) {
      std::fclose(file_);
    }
  }
  void write(const std::string& text) {
    requireGood(std::fwrite(text.data(), 1, text.size(), file_) == text.size());
  }
  void close() {
    std::FILE* const file = file_;
    file_ = nullptr;
    requireGood(std::fclose(file) == 0);
  }

 private:
  void requireGood(bool good) {
    if (!good) {
      raise(state_, "unable to write the file %1", name_);
    }
  }
  State& state_;
  ALGEB name_;
  std::FILE* file_ = nullptr;
};

// The row i, from 0, of all columns.
void appendRow(State& s, std::string& out, std::span<const Column> columns, V_INT i,
               const Format& format) {
  bool first = true;
  for (const Column& column : columns) {
    const ArrayObject& a = arrayOf(column.array);
    const V_INT cells = a.dimensions == 2 ? a.extent(1) : 1;
    for (V_INT j = 0; j < cells; ++j) {
      V_INT index[] = {a.lower(0) + i, 0};
      if (a.dimensions == 2) {
        index[1] = a.lower(1) + j;
      }
      out += first ? "" : std::string(1, format.separator);
      out += csvCell(s, arraySelect(s, column.array, std::span(index, a.dimensions)), format);
      first = false;
    }
  }
  out += "\n";
}

// Columns that are numbered, as those of a file without headings are, have no headings to write.
bool haveHeadings(std::span<const Column> columns) {
  for (std::size_t c = 0; c < columns.size(); ++c) {
    const ALGEB heading = columns[c].heading;
    std::int64_t number = 0;
    if (heading == nullptr) {
      return false;
    }
    if (!isInteger(heading) || !fitsInt64(heading, &number) ||
        number != static_cast<std::int64_t>(c + 1)) {
      return true;
    }
  }
  return false;
}

// WriteCSV(file, array): a row a row of the array; with headings or further arrays, a column each.
ALGEB writeCsv(State& s, ALGEB args) {
  if (isNull(args) || argumentCount(args) < 2) {
    raise(s, "WriteCSV expects a file and an array, received: %1", args);
  }
  Format format;
  Handles made(s);
  const std::vector<Column> columns = columnsToWrite(s, args, format, made);
  if (format.separator == format.decimal) {
    raise(s, "the separator and the decimal mark are the same character");
  }
  std::string out;
  if (haveHeadings(columns)) {
    for (const Column& column : columns) {
      out += (&column == &columns.front() ? "" : std::string(1, format.separator)) +
             csvCell(s, column.heading, format, true);
    }
    out += "\n";
  }
  OutputFile file(s, argument(s, args, 1));
  constexpr std::size_t kBlock = std::size_t{1} << 20;
  const V_INT rows = columns.empty() ? 0 : arrayOf(columns.front().array).extent(0);
  for (V_INT i = 0; i < rows; ++i) {
    lookAtInterrupt();
    appendRow(s, out, columns, i, format);
    if (out.size() > kBlock) {
      file.write(out);
      out.clear();
    }
  }
  file.write(out);
  file.close();
  return s.null;
}

}  // namespace

void defineWriteCsv(State& state) { defineFunction(state, "WriteCSV", writeCsv); }

}  // namespace vexel
