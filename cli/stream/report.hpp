// Results of the command: named columns of numbers, as a table or as JSON.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace stream {

struct Report {
  enum class Layout { record, rows, table } layout = Layout::table;
  struct Column {
    std::string name;
    std::vector<double> values;
  };
  std::vector<Column> columns;
  std::int64_t missing = 0;  // pairs left out; of a record a column of it
};

// record: a name and six digits of its number a line.  rows, table: the columns side by side in
// full, table with their names above.
void printText(std::ostream& out, const Report& report);
// One line: {"values": [1.0, 2.0], "counts": [3.0, 1.0], "missing": 0}; of a record numbers.
void printJson(std::ostream& out, const Report& report);

}  // namespace stream
