// How a file of separated values is to be read: the options of ReadCSV.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "builtins/functions/call.hpp"
#include "builtins/tables/csv_columns.hpp"

namespace vexel {

struct CsvOptions {
  char separator = ',';
  bool isSeparatorGiven = false;
  CellRules rules;
  std::optional<bool> header;         // nothing: the first row tells
  std::vector<std::string> headings;  // in place of a header
  std::size_t skip = 0;
};

CsvOptions csvOptions(Call& call);

// Number, text, date, auto; raises for any other.
ColumnKind columnKind(Call& call, ALGEB x);

}  // namespace vexel
