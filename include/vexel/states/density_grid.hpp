// DensityGrid: kernel densities of data that come in pieces.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>
#include <vexel/data.hpp>
#include <vexel/export.hpp>
#include <vexel/interval.hpp>
#include <vexel/kernel_density.hpp>

namespace vexel {

class DensityGrid {
 public:
  // 2 to 2^24 equally spaced points.  Each point of the data is shared out between its neighbours
  // on the grid; one outside the bounds counts in the total only.  The density is that of the
  // direct sum to within (step / bandwidth)^2 / 8 of a kernel's curvature, so make the step a small
  // part of the bandwidths to come.
  VEXEL_API DensityGrid(Interval bounds, std::size_t points, Missing missing = Missing::propagate);
  VEXEL_API DensityGrid(const DensityGrid& other);
  VEXEL_API DensityGrid& operator=(const DensityGrid& other);
  DensityGrid(DensityGrid&&) noexcept = default;
  DensityGrid& operator=(DensityGrid&&) noexcept = default;

  VEXEL_API DensityGrid& update(Data x, Data weights = {});
  VEXEL_API DensityGrid& merge(const DensityGrid& other);  // of the same grid

  VEXEL_API std::vector<double> x() const;
  // At x; NaN over nothing, or where something was missing (propagate).
  VEXEL_API std::vector<double> density(double bandwidth,
                                        DensityKernel kernel = DensityKernel::gaussian) const;
  VEXEL_API double weight() const;
  VEXEL_API std::int64_t missing() const;

  VEXEL_API std::vector<std::uint8_t> to_bytes() const;
  VEXEL_API static DensityGrid from_bytes(std::span<const std::uint8_t> bytes);

 private:
  struct Cells;
  std::shared_ptr<Cells> cells_;  // this state's alone
};

}  // namespace vexel
