// The records of a file of separated values, in one pass over blocks of it.
//
// As in RFC 4180: cells in quotes may hold separators, line ends and, doubled, quotes.  Blanks
// round a cell are no part of it unless they are quoted; lines without anything are skipped.
#pragma once

#include <cstddef>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

namespace vexel::kernels {

class TextSource {
 public:
  TextSource() = default;
  TextSource(const TextSource&) = delete;
  TextSource& operator=(const TextSource&) = delete;
  virtual ~TextSource() = default;
  // Up to room bytes from where the last call ended; 0 at the end.  What it throws goes through.
  virtual std::size_t read(char* to, std::size_t room) = 0;
};

// What is wrong with the quotes of a cell: one is never closed, or stands inside a cell without
// quotes or before more text.
class Malformed : public std::exception {
 public:
  Malformed(bool unclosed, std::size_t inRecord, std::size_t inColumn)
      : isUnclosed(unclosed), record(inRecord), column(inColumn) {}
  const char* what() const noexcept override { return "malformed separated values"; }
  bool isUnclosed;
  std::size_t record;  // from 1, as the column
  std::size_t column;
};

class Scanner {
 public:
  Scanner(TextSource& file, char separator);

  // Leaves out lines at the start.
  void skipLines(std::size_t n);

  // The next cell.  False at the end of the file.  The text is valid until the next call.  Throws
  // Malformed.
  struct Cell {
    std::string_view text;
    bool quoted = false;
    bool endsRecord = false;
  };
  bool next(Cell& cell);

  std::size_t record() const { return record_; }  // of the last cell, from 1
  std::size_t column() const { return column_; }  // of the last cell, from 0

 private:
  enum Class : unsigned char { plain, ends, quote };

  bool refill();
  char peek() { return at_ < end_ || refill() ? *at_ : '\0'; }
  bool atEnd() { return at_ == end_ && !refill(); }
  bool isBlank(char c) const { return c == ' ' || (c == '\t' && separator_ != '\t'); }
  bool skipToCell();
  void quotedCell(Cell& cell);
  void plainCell(Cell& cell);
  void finish(Cell& cell);

  TextSource& file_;
  char separator_;
  Class classes_[256] = {};
  std::vector<char> buffer_;
  const char* begin_ = nullptr;  // of the cell that is being read: what a refill keeps
  const char* at_ = nullptr;
  const char* end_ = nullptr;
  std::string unquoted_;
  std::size_t record_ = 0;
  std::size_t column_ = 0;
  bool inRecord_ = false;
};

}  // namespace vexel::kernels
