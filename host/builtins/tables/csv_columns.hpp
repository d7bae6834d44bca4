// Columns of a file of separated values while it is read: numbers, texts, dates.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kernels/csv_scanner.hpp"
#include "values/kernel_state.hpp"

namespace vexel {

using kernels::Scanner;

// How cells are understood.
struct CellRules {
  char decimal = '.';
  bool ownMissing = false;  // the two lists below, else the usual words
  std::vector<std::string> missingTexts;
  std::vector<double> missingNumbers;

  bool isMissing(std::string_view cell) const;              // of a number or a date
  bool isMissingText(Scanner::Cell cell) const;             // of a text: not in quotes
  bool number(std::string_view cell, double& value) const;  // false for what is none
};

// Distinct texts, numbered from 1 in the order of their coming; 0 stands for a missing one.
class TextPool {
 public:
  TextPool() : slots_(64, 0) {}
  std::uint32_t number(std::string_view text);
  std::size_t size() const { return texts_.size(); }
  std::string_view text(std::uint32_t number) const { return texts_[number - 1]; }

 private:
  std::string_view keep(std::string_view text);
  void grow();

  std::vector<std::string_view> texts_;
  std::vector<std::uint64_t> hashes_;
  std::vector<std::uint32_t> slots_;  // open addressing
  std::deque<std::unique_ptr<char[]>> blocks_;
  char* blockEnd_ = nullptr;
  std::size_t free_ = 0;  // bytes before it
};

enum class ColumnKind : std::uint8_t { automatic, number, text, date, left };

// Cells that did not become what their column holds.
struct Unreadable {
  std::size_t count = 0;
  std::size_t firstRow = 0;
  std::string firstCell;
};

class CsvColumn {
 public:
  explicit CsvColumn(ColumnKind kind) : kind_(kind) {}

  // A cell of the record; false where it is not what the column holds.
  bool add(const Scanner::Cell& cell, std::size_t record, const CellRules& rules);
  void addMissing();
  std::size_t size() const { return isText() ? codes_.size() : values_.size(); }

  // An automatic column with anything else than numbers is one of texts.  Cells before the first of
  // these have to be read again: those of the first again() rows.
  bool isText() const { return kind_ == ColumnKind::text; }
  bool isLeft() const { return kind_ == ColumnKind::left; }
  std::size_t again() const { return again_; }
  void addAgain(const Scanner::Cell& cell, std::size_t row, const CellRules& rules);

  // What made it a text after it began with numbers, and how many of its cells are numbers.
  const Unreadable& turning() const { return turning_; }
  std::size_t numbers() const { return numbers_; }

  Unreadable unreadable;
  ALGEB array(State& state);  // and gives up what it holds

 private:
  void becomeText(const Scanner::Cell& cell, std::size_t record);

  ColumnKind kind_;
  std::vector<double> values_;  // numbers; days of dates
  std::vector<std::uint32_t> codes_;
  std::unique_ptr<TextPool> pool_;
  std::size_t again_ = 0;
  std::size_t numbers_ = 0;
  Unreadable turning_;
};

}  // namespace vexel
