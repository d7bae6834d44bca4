// Frames laid out for reading: numbers to the right with as many decimals as the column needs for
// seven digits, texts to the left, NA for what is missing.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

#include "values/arrays.hpp"
#include "values/dates.hpp"
#include "values/errors.hpp"
#include "values/frames.hpp"
#include "values/numbers.hpp"
#include "values/text.hpp"

namespace vexel {

namespace {

constexpr std::int64_t kMostRows = 20;  // longer ones show kFirstRows and kLastRows
constexpr std::int64_t kFirstRows = 10;
constexpr std::int64_t kLastRows = 5;
constexpr std::size_t kWidest = 100;
constexpr std::size_t kWidestCell = 40;

// Characters of UTF-8.
std::size_t characters(std::string_view text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
  }));
}

// On one line, and not too long.
std::string cellText(std::string_view text) {
  std::string out;
  std::size_t n = 0;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if ((byte & 0xC0U) != 0x80U && ++n > kWidestCell) {
      return out + "…";
    }
    out += c == '\n'                     ? "\\n"
           : c == '\t'                   ? "\\t"
           : byte < 0x20 || byte == 0x7F ? "?"
                                         : std::string(1, c);
  }
  return out;
}

// Decimals that show seven digits of x; -1 where it is better shown with an exponent.
int decimalsFor(double x) {
  const double size = std::abs(x);
  if (x == 0 || !std::isfinite(x)) {
    return 0;
  }
  if (size >= 1e15 || size < 1e-4) {
    return -1;
  }
  double scale = 1;
  for (int decimals = 0; decimals < 10; ++decimals, scale *= 10) {
    if (std::abs(std::round(size * scale) / scale - size) <= 0.5e-6 * size) {
      return decimals;
    }
  }
  return 10;
}

std::string numberText(double x, int decimals) {
  if (std::isnan(x)) {
    return "NA";
  }
  if (std::isinf(x)) {
    return x < 0 ? "-infinity" : "infinity";
  }
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, decimals < 0 ? "%.*g" : "%.*f", decimals < 0 ? 7 : decimals,
                x);
  return buffer;
}

struct Lines {
  std::vector<std::string> cells;  // the heading first
  bool right = true;
  std::size_t width = 0;
};

Lines linesOf(State& state, ALGEB heading, ALGEB column, std::span<const std::int64_t> rows) {
  Lines lines;
  lines.cells.push_back(cellText(plainText(state, heading)));
  Handles cells(state);
  int decimals = 0;
  for (const std::int64_t row : rows) {
    const ALGEB cell = cellOf(state, column, row);
    cells.push(cell);
    lines.right = lines.right && (isNull(cell) || isReal(cell));
    if (isFloat(cell)) {
      const int needed = decimalsFor(toDouble(state, cell));
      decimals = decimals < 0 || needed < 0 ? -1 : std::max(decimals, needed);
    }
  }
  lines.right = lines.right && !std::all_of(cells.begin(), cells.end(), isNull);
  for (const ALGEB cell : cells) {
    lines.cells.push_back(isMissing(state, cell) ? "NA"
                          : isFloat(cell)        ? numberText(toDouble(state, cell), decimals)
                          : isDate(cell)         ? dateText(daysOf(cell))
                          : is(cell, Tag::string)
                              ? cellText(text(cell))
                              : cellText(sourceText(state, cell, kMessageArguments)));
  }
  for (const std::string& cell : lines.cells) {
    lines.width = std::max(lines.width, characters(cell));
  }
  return lines;
}

}  // namespace

std::string frameText(State& state, ALGEB x) {
  const std::int64_t count = frame(x).rows;
  std::vector<std::int64_t> rows;
  for (std::int64_t i = 0; i < count && (count <= kMostRows || i < kFirstRows); ++i) {
    rows.push_back(i);
  }
  const std::size_t first = rows.size();
  for (std::int64_t i = std::max(count - kLastRows, static_cast<std::int64_t>(first)); i < count;
       ++i) {
    rows.push_back(i);
  }
  std::vector<Lines> columns;
  std::size_t width = 0;
  Handles kept(state);
  kept.push(x);  // the entries are copies
  const auto entries = frame(x).entries();
  for (const auto& [heading, column] : entries) {
    Lines lines = linesOf(state, heading, column, rows);
    width += lines.width + 2;
    if (width > kWidest && !columns.empty()) {
      break;
    }
    columns.push_back(std::move(lines));
  }
  std::string out;
  for (std::size_t i = 0; i <= rows.size(); ++i) {
    std::string line;
    for (const Lines& column : columns) {
      const std::string padding(column.width - characters(column.cells[i]), ' ');
      line += (&column == &columns.front() ? "" : "  ");
      line += column.right ? padding + column.cells[i] : column.cells[i] + padding;
    }
    out += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
    out += i == first && first < rows.size() ? "...\n" : "";
  }
  const bool whole = columns.size() == entries.size() && first == rows.size() && count > 0;
  if (whole) {
    out.pop_back();
    return out;
  }
  out += "(" + std::to_string(count) + (count == 1 ? " row, " : " rows, ") +
         std::to_string(entries.size()) + (entries.size() == 1 ? " column" : " columns");
  if (columns.size() < entries.size()) {
    out += "; not shown: ";
    for (std::size_t i = columns.size(); i < entries.size() && i < columns.size() + 12; ++i) {
      out += (i > columns.size() ? ", " : "") + cellText(plainText(state, entries[i].first));
    }
    out += entries.size() > columns.size() + 12 ? ", ..." : "";
  }
  return out + ")";
}

}  // namespace vexel
