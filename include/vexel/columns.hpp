// Many variables at once: the columns or rows of a matrix, in a fraction of the time that one after
// the other takes, to the same bits.
//
//   std::vector<double> means(columns);
//   vexel::mean(vexel::Columns(vexel::Data(matrix, rows, columns), columns), means);
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vexel/data.hpp>
#include <vexel/descriptive.hpp>
#include <vexel/export.hpp>
#include <vexel/ordering.hpp>

namespace vexel {

// `count` variables of one size, each `apart` elements behind the one before it.  Of a matrix whose
// rows follow each other: Data(matrix, rows, columns) is the first column, the next ones are 1
// apart; Data(matrix, columns) is the first row, and rows are `columns` apart.
class Columns {
 public:
  constexpr Columns(Data first, std::size_t count, std::ptrdiff_t apart = 1)
      : first_(first), count_(count), apart_(apart) {}

  constexpr const Data& first() const { return first_; }
  constexpr std::size_t count() const { return count_; }
  constexpr std::ptrdiff_t apart() const { return apart_; }  // in elements
  Data operator[](std::size_t j) const {
    switch (first_.element()) {
      case Element::float32:
        return variable<float>(j);
      case Element::int32:
        return variable<std::int32_t>(j);
      case Element::int64:
        return variable<std::int64_t>(j);
      default:
        return variable<double>(j);
    }
  }

 private:
  template <typename T>
  Data variable(std::size_t j) const {
    const T* const data = static_cast<const T*>(first_.data());
    return {data + static_cast<std::ptrdiff_t>(j) * apart_, first_.size(), first_.stride()};
  }

  Data first_;
  std::size_t count_;
  std::ptrdiff_t apart_;
};

// Of each variable; out has a place for each.
VEXEL_API void mean(const Columns& columns, std::span<double> out, const MeanOptions& options = {});
VEXEL_API void var(const Columns& columns, std::span<double> out,
                   const VarianceOptions& options = {});
VEXEL_API void std(const Columns& columns, std::span<double> out,
                   const VarianceOptions& options = {});
VEXEL_API void median(const Columns& columns, std::span<double> out,
                      const WeightedOptions& options = {});
VEXEL_API void iqr(const Columns& columns, std::span<double> out,
                   const QuantileOptions& options = {});
VEXEL_API void median_absolute_deviation(const Columns& columns, std::span<double> out,
                                         const MedianDeviationOptions& options = {});

// Several numbers of each: number i of variable j is out[i * columns.count() + j].
VEXEL_API void quantile(const Columns& columns, Data q, std::span<double> out,
                        const QuantileOptions& options = {});
VEXEL_API void order_statistic(const Columns& columns, std::span<const std::int64_t> k,
                               std::span<double> out, const WeightedOptions& options = {});
VEXEL_API void five_number(const Columns& columns, std::span<FiveNumber> out,
                           const WeightedOptions& options = {});

// Where as many results go as there are elements: of element i of variable j to
// first[i * stride + j * apart], outside the data.
template <typename T>
struct ColumnsOut {
  T* first;
  std::ptrdiff_t stride = 1;
  std::ptrdiff_t apart = 1;
};

// T is the element type.  What omit leaves out is NaN, at the end.
template <DataElement T>
VEXEL_API void sort(const Columns& columns, const ColumnsOut<T>& out,
                    const SortOptions& options = {});
// Missing elements come last, whatever the options say.
VEXEL_API void argsort(const Columns& columns, const ColumnsOut<std::int64_t>& out,
                       const SortOptions& options = {});
VEXEL_API void rank(const Columns& columns, const ColumnsOut<double>& out,
                    const RankOptions& options = {});

}  // namespace vexel
