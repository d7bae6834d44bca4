// A column of a file and, where asked for, the column of its weights, a piece at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace stream {

// A file that cannot be read, as against one that holds what is not allowed.
class Unreadable : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct Columns {
  std::string column;                // a heading or a number from 1; empty: the only one there is
  std::string weights;               // empty: none
  std::vector<std::string> missing;  // further texts of missing cells
  // Of CSV files.
  char separator = '\0';  // none given: a comma, or a semicolon where the decimal mark is one
  char decimal = '.';
  std::optional<bool> headings = std::nullopt;  // none given: the first row tells
  char separatorUsed() const { return separator != '\0' ? separator : decimal == ',' ? ';' : ','; }
};

struct Piece {
  std::vector<double> values;
  std::vector<double> weights;  // empty where none were asked for
};

class Table {
 public:
  virtual ~Table() = default;
  // The next rows, as many as asked for unless the file ends; no row: it has ended.
  virtual void read(std::size_t rows, Piece& piece) = 0;
  virtual double share() const = 0;  // of the file that is read, 0 to 1

  // Where the columns are, from 0; npos: no weights.
  static constexpr std::size_t npos = static_cast<std::size_t>(-1);
  std::size_t column = 0;
  std::size_t weights = npos;
  std::size_t headingRows = 0;     // rows of the file before those of the data
  bool isWithoutHeadings = false;  // a CSV file whose first row holds data
  std::string note;                // what to tell of the file; empty: nothing

 protected:
  // Finds both columns by their headings; no headings: by number alone.
  void choose(const std::string& path, const Columns& wanted,
              const std::vector<std::string>& headings, std::size_t count);
};

// .csv and .npy by the ending; "-" is standard input, a CSV.  Throws Unreadable, or
// std::invalid_argument where a column is not there.
std::unique_ptr<Table> openTable(const std::string& path, const Columns& wanted);

// The two kinds.
std::unique_ptr<Table> openCsv(const std::string& path, const Columns& wanted);
std::unique_ptr<Table> openNpy(const std::string& path, const Columns& wanted);

}  // namespace stream
