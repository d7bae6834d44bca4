// Whether the first row of a table written as text holds headings, where nobody says.
#pragma once

#include <cmath>
#include <cstddef>
#include <string>
#include <string_view>

namespace vexel::kernels {

// It holds data when every cell is a number or missing, so that no number is lost to a guess;
// anything else is headings.
class FirstRow {
 public:
  // A cell; what it says as a number, NaN for missing, unless it is a text.
  void add(std::string_view cell, bool isText, double value) {
    hasTexts_ = hasTexts_ || isText;
    hasNumbers_ = hasNumbers_ || (!isText && !std::isnan(value));
    noteSeparators(cell);
    constexpr std::size_t kShown = 5;
    constexpr std::size_t kMostBytes = 30;
    if (cells_ < kShown) {
      shown_ += (cells_ > 0 ? " | " : "") + std::string(cell.substr(0, kMostBytes)) +
                (cell.size() > kMostBytes ? "..." : "");
    } else if (cells_ == kShown) {
      shown_ += " | ...";
    }
    ++cells_;
  }

  bool isData() const { return !hasTexts_; }
  // What a user should know of the guess; nothing where there is no number to lose or to gain.
  std::string note() const {
    return !hasTexts_    ? "row 1 has numbers alone and is read as data: " + shown_
           : hasNumbers_ ? "row 1 is read as headings, though some are numbers: " + shown_
                         : "";
  }

  // A semicolon or a tab where it may be what separates cells: in the only cell of the row, or
  // between digits; 0 otherwise.
  char otherSeparator() const { return cells_ == 1 || between_ ? separator_ : '\0'; }

 private:
  void noteSeparators(std::string_view cell) {
    const std::size_t at = cell.find_first_of(";\t");
    if (at != cell.npos) {
      separator_ = cell[at];
      between_ = between_ || cell.find_first_not_of("0123456789.,;\t+-eE ") == cell.npos;
    }
  }

  bool hasTexts_ = false;
  bool hasNumbers_ = false;
  char separator_ = '\0';
  bool between_ = false;
  std::size_t cells_ = 0;
  std::string shown_;
};

}  // namespace vexel::kernels
