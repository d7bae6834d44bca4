// ReadCSV and the report of what it could not read.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <map>

#include "builtins/tables/csv_options.hpp"
#include "builtins/tables/tables.hpp"
#include "builtins/tables/text_file.hpp"
#include "kernels/cell_number.hpp"
#include "kernels/first_row.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/text.hpp"

namespace vexel {

namespace {

constexpr std::size_t kMostColumns = std::size_t{1} << 20;
constexpr std::size_t kMostReported = 1000;

// What was read otherwise than it stands, for csv_report().
struct Report {
  struct Line {
    std::size_t row;
    std::string column;
    std::string cell;
    std::string problem;
  };
  std::vector<Line> lines;

  void add(std::size_t row, const std::string& column, std::string_view cell,
           const std::string& problem) {
    if (lines.size() < kMostReported) {
      lines.push_back({row, column, std::string(cell.substr(0, 200)), problem});
    }
  }
};

std::string numbered(std::size_t n, const char* one, const char* many) {
  return std::to_string(n) + ' ' + (n == 1 ? one : many);
}

class CsvReading {
 public:
  CsvReading(Call& call, Report& report)
      : call_(call),
        state_(call.state()),
        report_(report),
        options_(csvOptions(call)),
        file_(state_, call.value("file")) {}

  ALGEB table();
  ALGEB column(ALGEB wanted);

 private:
  void readFirstRow(Scanner& scanner);
  void readHeadings(Scanner& scanner);
  void judgeFirstRow();
  void nameColumns(std::size_t count);
  std::size_t place(ALGEB column);
  void chooseKinds();
  void choose(const std::vector<std::size_t>& places);
  void requireDistinctHeadings(const std::vector<std::size_t>& places);
  void readRows(Scanner& scanner);
  void addCell(const Scanner::Cell& cell, std::size_t c, std::size_t record);
  void readAgain();
  void endRecord(const Scanner& scanner);
  void tellUnreadable();
  void tell(const std::string& line);
  std::string headingText(std::size_t c) const { return plainText(state_, headings_[c]); }

  Call& call_;
  State& state_;
  Report& report_;
  CsvOptions options_;
  TextFile file_;
  Handles headings_{state_};
  std::vector<CsvColumn> columns_;
  std::vector<Scanner::Cell> first_;  // the first row, unless it holds headings
  std::deque<std::string> firstTexts_;
  std::string guess_;  // what to tell of the headings, where they were guessed
  std::size_t rows_ = 0;
  std::size_t shortRows_ = 0;
  std::size_t firstShort_ = 0;
  bool strict_ = false;  // a cell that is no number is an error
};

void CsvReading::nameColumns(std::size_t count) {
  for (std::size_t c = headings_.size(); c < count; ++c) {
    headings_.push(c < options_.headings.size()
                       ? string(state_, options_.headings[c])
                       : newInteger(state_, static_cast<std::int64_t>(c + 1)));
  }
}

void CsvReading::readFirstRow(Scanner& scanner) {
  scanner.skipLines(options_.skip);
  Scanner::Cell cell;
  while (!cell.endsRecord && scanner.next(cell)) {
    if (scanner.column() >= kMostColumns) {
      raise(state_, "row %1 of the CSV file has more than %2 cells",
            newInteger(state_, static_cast<std::int64_t>(scanner.record())),
            newInteger(state_, static_cast<std::int64_t>(kMostColumns)));
    }
    firstTexts_.emplace_back(cell.text);
    first_.push_back({firstTexts_.back(), cell.quoted, cell.endsRecord});
  }
  if (first_.empty()) {
    raise(state_, "the file %1 is empty", call_.value("file"));
  }
}

void CsvReading::judgeFirstRow() {
  kernels::FirstRow row;
  for (const Scanner::Cell& cell : first_) {
    double value = 0;
    const bool isText = !options_.rules.number(cell.text, value);
    row.add(kernels::trimmed(cell.text), isText, value);
  }
  const char other = row.otherSeparator();
  if (!options_.isSeparatorGiven && other != '\0' && other != options_.separator) {
    tell(std::string("row 1 has ") + (other == ';' ? "semicolons" : "tabs") +
         " in its cells (separator = \"" + (other == ';' ? ";" : "\\t") + "\" separates at them)");
  }
  if (!options_.header) {
    options_.header = !row.isData();
    guess_ = row.note();
  }
}

void CsvReading::readHeadings(Scanner& scanner) {
  readFirstRow(scanner);
  judgeFirstRow();
  if (*options_.header) {
    for (const Scanner::Cell& cell : first_) {
      headings_.push(string(state_, kernels::trimmed(cell.text)));
    }
    first_.clear();
    return;
  }
  if (!options_.headings.empty() && options_.headings.size() != first_.size()) {
    raise(state_, "the file has %1 columns, header names %2",
          newInteger(state_, static_cast<std::int64_t>(first_.size())),
          newInteger(state_, static_cast<std::int64_t>(options_.headings.size())));
  }
  nameColumns(first_.size());
}

// The column, from 0, that a heading or a number names.
std::size_t CsvReading::place(ALGEB column) {
  std::int64_t i = 0;
  if (isInteger(column) && fitsInt64(column, &i)) {
    if (i >= 1 && i <= static_cast<std::int64_t>(headings_.size())) {
      return static_cast<std::size_t>(i - 1);
    }
  } else if (is(column, Tag::string) || is(column, Tag::name) || is(column, Tag::function)) {
    const ALGEB wanted = headingOf(state_, column);
    std::size_t found = headings_.size();
    for (std::size_t c = 0; c < headings_.size(); ++c) {
      if (headings_[c] == wanted && found < headings_.size()) {
        raise(state_, "the file has several columns %1; name one by its number", column);
      }
      found = headings_[c] == wanted ? c : found;
    }
    if (found < headings_.size()) {
      guess_.clear();  // who names a heading knows of it
      return found;
    }
  }
  if (!guess_.empty() && !*options_.header) {
    raise(state_,
          "the file has no column %1; its first row has numbers alone and is read as data, unless "
          "header = true is given",
          column);
  }
  raise(state_, "the file has no column %1", column);
}

// `types`: equations column = kind, kinds in the columns' order, or one for all.
void CsvReading::chooseKinds() {
  const ALGEB types = call_.value("types");
  const bool single = types != nullptr && !isList(types) && !isEquation(types);
  const ColumnKind all = single ? columnKind(call_, types) : ColumnKind::automatic;
  for (std::size_t c = 0; c < headings_.size(); ++c) {
    columns_.emplace_back(all);
  }
  if (types == nullptr || single) {
    return;
  }
  const std::size_t count = isList(types) ? countOf(types) : 1;
  for (std::size_t i = 1; i <= count; ++i) {
    const ALGEB type = isList(types) ? element(state_, types, i) : types;
    if (isEquation(type)) {
      columns_[place(operand(type, 1))] = CsvColumn(columnKind(call_, operand(type, 2)));
    } else if (i <= columns_.size()) {
      columns_[i - 1] = CsvColumn(columnKind(call_, type));
    } else {
      call_.refuse("types", "at most " + std::to_string(columns_.size()) + " kinds");
    }
  }
}

// Leaves all other columns unread.
void CsvReading::choose(const std::vector<std::size_t>& places) {
  for (std::size_t c = 0; c < columns_.size(); ++c) {
    if (std::find(places.begin(), places.end(), c) == places.end()) {
      columns_[c] = CsvColumn(ColumnKind::left);
    }
  }
}

// A table has one column for each heading.
void CsvReading::requireDistinctHeadings(const std::vector<std::size_t>& places) {
  std::map<ALGEB, std::size_t> seen;
  for (const std::size_t c : places) {
    const auto [at, isNew] = seen.emplace(headings_[c], c);
    if (!isNew && at->second != c) {
      const ALGEB parts[] = {newInteger(state_, static_cast<std::int64_t>(at->second + 1)),
                             newInteger(state_, static_cast<std::int64_t>(c + 1)), headings_[c]};
      raise(state_, "columns %1 and %2 have the same heading, %3", parts);
    }
  }
}

// Fills up a row that ended early.
void CsvReading::endRecord(const Scanner& scanner) {
  const std::size_t cells = scanner.column() + 1;
  ++rows_;
  if (cells >= columns_.size()) {
    return;
  }
  for (std::size_t c = cells; c < columns_.size(); ++c) {
    columns_[c].addMissing();
  }
  if (shortRows_++ == 0) {
    firstShort_ = scanner.record();
  }
  report_.add(scanner.record(), "", "",
              std::to_string(cells) + " of " + numbered(columns_.size(), "cell", "cells"));
}

void CsvReading::addCell(const Scanner::Cell& cell, std::size_t c, std::size_t record) {
  CsvColumn& column = columns_[c];
  if (!column.add(cell, record, options_.rules)) {
    report_.add(record, headingText(c), cell.text, "not read");
  }
  if (strict_ && column.isText()) {
    const ALGEB place[] = {newInteger(state_, static_cast<std::int64_t>(record)),
                           newInteger(state_, static_cast<std::int64_t>(c + 1)),
                           string(state_, cell.text)};
    raise(state_, "row %1, column %2: expected a number, received: %3", place);
  }
}

void CsvReading::readRows(Scanner& scanner) {
  for (std::size_t c = 0; c < first_.size(); ++c) {
    addCell(first_[c], c, 1);
  }
  rows_ = first_.empty() ? 0 : 1;
  Scanner::Cell cell;
  while (scanner.next(cell)) {
    const std::size_t c = scanner.column();
    if (c < columns_.size()) {
      addCell(cell, c, scanner.record());
    } else if (!kernels::trimmed(cell.text).empty()) {
      raise(state_, "row %1, column %2: more cells than there are headings",
            newInteger(state_, static_cast<std::int64_t>(scanner.record())),
            newInteger(state_, static_cast<std::int64_t>(c + 1)));
    }
    if (cell.endsRecord) {
      endRecord(scanner);
    }
  }
}

// Columns that turned out to be texts after some rows get the texts of these.
void CsvReading::readAgain() {
  std::size_t rows = 0;
  for (const CsvColumn& column : columns_) {
    rows = std::max(rows, column.again());
  }
  if (rows == 0) {
    return;
  }
  file_.rewind();
  Scanner scanner(file_, options_.separator);
  scanner.skipLines(options_.skip);
  const std::size_t headers = *options_.header ? 1 : 0;
  Scanner::Cell cell;
  while (scanner.next(cell) && scanner.record() <= rows + headers) {
    if (scanner.record() > headers && scanner.column() < columns_.size()) {
      columns_[scanner.column()].addAgain(cell, scanner.record() - headers - 1, options_.rules);
    }
  }
}

void CsvReading::tellUnreadable() {
  if (!guess_.empty()) {
    tell(guess_ + (*options_.header ? " (header = false reads them as data)"
                                    : " (header = true reads it as headings)"));
  }
  if (shortRows_ > 0) {
    tell(numbered(shortRows_, "row has", "rows have") +
         " fewer cells than there are columns, the first is row " + std::to_string(firstShort_) +
         "; the others are missing values");
  }
  for (std::size_t c = 0; c < columns_.size(); ++c) {
    const CsvColumn& column = columns_[c];
    if (column.unreadable.count > 0) {
      tell("column " + headingText(c) + ": " + numbered(column.unreadable.count, "cell", "cells") +
           " not read, the first in row " + std::to_string(column.unreadable.firstRow) + ": " +
           column.unreadable.firstCell);
    }
    if (column.turning().count == 0) {
      continue;
    }
    if (column.numbers() > 0) {
      report_.add(column.turning().firstRow, headingText(c), column.turning().firstCell,
                  "makes the column one of texts");
    }
    if (2 * column.numbers() > rows_) {  // most of it are numbers
      tell("column " + headingText(c) + " is read as texts because of row " +
           std::to_string(column.turning().firstRow) + ": " + column.turning().firstCell +
           " (types = [\"" + headingText(c) + "\" = number] reads the numbers)");
    }
  }
}

void CsvReading::tell(const std::string& line) {
  const auto level = state_.infoLevels.find("ReadCSV");
  if (level != state_.infoLevels.end() && level->second == 0) {
    return;
  }
  if (state_.userInfo) {
    state_.userInfo(1, "ReadCSV", line);
  } else {
    std::fprintf(stderr, "ReadCSV: %s\n", line.c_str());
  }
}

ALGEB CsvReading::table() {
  Scanner scanner(file_, options_.separator);
  readHeadings(scanner);
  chooseKinds();
  std::vector<std::size_t> places;
  if (call_.given("columns")) {
    for (const ALGEB wanted : headingsIn(call_, "columns")) {
      places.push_back(place(wanted));
    }
    choose(places);
  } else {
    for (std::size_t c = 0; c < headings_.size(); ++c) {
      places.push_back(c);
    }
  }
  requireDistinctHeadings(places);
  readRows(scanner);
  readAgain();
  tellUnreadable();
  const ALGEB result = newFrame(state_, static_cast<std::int64_t>(rows_));
  for (const std::size_t c : places) {
    if (frame(result).find(headings_[c]) == nullptr) {
      frame(result).assign(headings_[c], columns_[c].array(state_));
    }
  }
  return result;
}

ALGEB CsvReading::column(ALGEB wanted) {
  Scanner scanner(file_, options_.separator);
  readHeadings(scanner);
  chooseKinds();
  const std::size_t c = place(wanted);
  choose({c});
  strict_ = !call_.given("types");
  readRows(scanner);
  tellUnreadable();
  return columns_[c].array(state_);
}

// The lines of the report as a table of columns.
ALGEB reportTable(State& s, const Report& report) {
  const ALGEB result = newFrame(s, static_cast<std::int64_t>(report.lines.size()));
  Handles parts[] = {Handles(s), Handles(s), Handles(s), Handles(s)};
  for (const Report::Line& line : report.lines) {
    parts[0].push(newInteger(s, static_cast<std::int64_t>(line.row)));
    parts[1].push(line.column.empty() ? s.null : string(s, line.column));
    parts[2].push(line.column.empty() ? s.null : string(s, line.cell));
    parts[3].push(string(s, line.problem));
  }
  constexpr const char* kHeadings[] = {"row", "column", "cell", "problem"};
  for (std::size_t i = 0; i < std::size(kHeadings); ++i) {
    assignColumn(s, result, string(s, kHeadings[i]), newList(s, parts[i].span()));
  }
  return result;
}

std::shared_ptr<Report>& lastReport(Call& call) {
  return *static_cast<std::shared_ptr<Report>*>(call.context());
}

ALGEB readCsv(Call& call) {
  auto report = std::make_shared<Report>();
  CsvReading reading(call, *report);
  try {
    const ALGEB result =
        call.given("column") ? reading.column(call.value("column")) : reading.table();
    lastReport(call) = report;
    return result;
  } catch (const kernels::Malformed& e) {
    raise(
        call.state(),
        e.isUnclosed
            ? "row %1, column %2 of the CSV file opens a quote that the file never closes"
            : "row %1, column %2 of the CSV file has a quote inside a cell without quotes or text "
              "behind the closing quote",
        newInteger(call.state(), static_cast<std::int64_t>(e.record)),
        newInteger(call.state(), static_cast<std::int64_t>(e.column)));
  }
}

ALGEB csvReport(Call& call) {
  const std::shared_ptr<Report>& report = lastReport(call);
  return reportTable(call.state(), report == nullptr ? Report() : *report);
}

constexpr FunctionRow kRows[] = {
    {"ReadCSV", "file, column = none; separator, decimal, na, header, skip = 0, columns, types",
     nullptr, nullptr, readCsv},
    {"csv_report", "", nullptr, nullptr, csvReport},
};

}  // namespace

void defineReadCsv(State& state) {
  defineRows(state, kRows, std::make_shared<std::shared_ptr<Report>>());
}

}  // namespace vexel
