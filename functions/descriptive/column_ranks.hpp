// Values between ranks, of many variables at once.
#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <vector>

#include "functions/descriptive/quantiles.hpp"
#include "vexel/columns.hpp"

namespace vexel {

// Values of some neighbouring columns: number i of column first + j is at values[i * apart + j].
struct ColumnValues {
  std::size_t first;
  std::size_t count;
  const double* values;
  std::size_t apart;
};

struct RanksOfColumns {
  // Of a sample of n > 0 points without weights.
  std::function<std::vector<Place>(double n)> places;
  // That they are ends of the sorted sample, whatever n is.
  bool ends = false;
  Missing missing = Missing::propagate;
  // The values of the places of some columns; NaN where something missing counts.
  std::function<void(const ColumnValues& found)> take;
  // Column j is left to be done by itself, after it was taken.
  std::function<void(std::size_t j)> alone;
};
void ranksOfColumns(const Columns& columns, const RanksOfColumns& wanted);

// Throws std::length_error unless out has k numbers for each column.
void requireRoom(const char* function, const Columns& columns, std::size_t k,
                 std::span<const double> out);

}  // namespace vexel
