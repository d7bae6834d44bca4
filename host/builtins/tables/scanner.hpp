// The records of a file of separated values, in one pass over blocks of it.
//
// As in RFC 4180: cells in quotes may hold separators, line ends and, doubled, quotes.  Blanks
// round a cell are no part of it unless they are quoted; lines without anything are skipped.
#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "values/kernel_state.hpp"

namespace vexel {

// A file that can be read a second time: one that is no ordinary file is kept in memory.
class TextFile {
 public:
  TextFile(State& state, ALGEB name);
  // Up to room bytes from where the last call ended; 0 at the end.
  std::size_t read(char* to, std::size_t room);
  void rewind();
  ALGEB name() const { return name_; }

 private:
  State& state_;
  ALGEB name_;
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_;
  bool ordinary_ = false;
  bool again_ = false;
  std::string kept_;
  std::size_t at_ = 0;  // in what is kept
};

class Scanner {
 public:
  Scanner(State& state, TextFile& file, char separator);

  // Leaves out lines at the start.
  void skipLines(std::size_t n);

  // The next cell.  False at the end of the file.  The text is valid until the next call.
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
  [[noreturn]] void malformed(const char* what);

  State& state_;
  TextFile& file_;
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

}  // namespace vexel
