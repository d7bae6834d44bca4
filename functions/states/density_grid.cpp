#include "vexel/states/density_grid.hpp"

#include <cmath>
#include <limits>

#include "functions/density/grid.hpp"
#include "functions/states/totals_bytes.hpp"

namespace vexel {

namespace {

Interval checkedBounds(Interval bounds) {
  if (!(bounds.low < bounds.high) || !std::isfinite(bounds.high - bounds.low)) {
    throw std::invalid_argument(mustBe("bounds", "finite ends that rise",
                                       number(bounds.low) + " and " + number(bounds.high)));
  }
  return bounds;
}

std::size_t checkedPoints(std::size_t points) {
  if (points < 2 || points > std::size_t{1} << 24) {
    throw std::invalid_argument(mustBe("points", "2 to 2^24", std::to_string(points)));
  }
  return points;
}

}  // namespace

struct DensityGrid::Cells {
  Missing policy;
  Interval bounds;
  Grid grid;
  std::int64_t missing = 0;
  kernels::ExactTotals shares;
  kernels::ExactTotals weight{1};

  Cells(Interval ends, std::size_t points, Missing missingPolicy)
      : policy(missingPolicy),
        bounds(checkedBounds(ends)),
        grid(bounds, checkedPoints(points)),
        shares(points) {}
};

DensityGrid::DensityGrid(Interval bounds, std::size_t points, Missing missing)
    : cells_(std::make_shared<Cells>(bounds, points, missing)) {}
DensityGrid::DensityGrid(const DensityGrid& other)
    : cells_(std::make_shared<Cells>(*other.cells_)) {}
DensityGrid& DensityGrid::operator=(const DensityGrid& other) {
  cells_ = std::make_shared<Cells>(*other.cells_);
  return *this;
}

DensityGrid& DensityGrid::update(Data x, Data weights) {
  changeAll(cells_, [&](Cells& c) {
    c.missing += takePairs(x, weights, c.policy, [&](double value, double w) {
      c.weight.add(0, w);
      GridPlace at{};
      if (c.grid.place(value, at)) {
        c.shares.add(at.index, w * (1 - at.share));
        c.shares.add(at.index + 1, w * at.share);
      }
    });
  });
  return *this;
}

DensityGrid& DensityGrid::merge(const DensityGrid& other) {
  if (cells_->bounds != other.cells_->bounds ||
      cells_->grid.points() != other.cells_->grid.points()) {
    throw std::invalid_argument("DensityGrid: the grids differ");
  }
  const Cells theirs = *other.cells_;
  cells_->shares.merge(theirs.shares);
  cells_->weight.merge(0, theirs.weight, 0);
  cells_->missing += theirs.missing;
  return *this;
}

std::vector<double> DensityGrid::x() const {
  std::vector<double> out(cells_->grid.points());
  for (std::size_t i = 0; i < out.size(); ++i) {
    out[i] = cells_->grid.point(i);
  }
  return out;
}

std::vector<double> DensityGrid::density(double bandwidth, DensityKernel kernel) const {
  if (!(bandwidth > 0 && std::isfinite(bandwidth))) {
    throw std::invalid_argument(mustBe("bandwidth", "a positive number", number(bandwidth)));
  }
  const Cells& c = *cells_;
  const std::size_t points = c.grid.points();
  if (weight() == 0 || (c.missing > 0 && c.policy == Missing::propagate)) {
    return std::vector<double>(points, std::numeric_limits<double>::quiet_NaN());
  }
  std::vector<double> shares(points);
  for (std::size_t i = 0; i < points; ++i) {
    shares[i] = c.shares.total(i);
  }
  const GridSums sums{0, 1, points, c.grid.step()};
  return convolved(shares, sums, kernel, bandwidth, weight());
}

double DensityGrid::weight() const { return cells_->weight.total(0); }
std::int64_t DensityGrid::missing() const { return cells_->missing; }

std::vector<std::uint8_t> DensityGrid::to_bytes() const {
  ByteWriter out("dgrd", totalsVersion);
  out.put(static_cast<std::uint8_t>(cells_->policy)).put(cells_->missing);
  out.put(cells_->bounds.low).put(cells_->bounds.high);
  putTotals(out, cells_->weight);
  out.put(static_cast<std::uint64_t>(cells_->shares.size()));
  putTotals(out, cells_->shares);
  return out.finish();
}

DensityGrid DensityGrid::from_bytes(std::span<const std::uint8_t> bytes) {
  ByteReader in(bytes, "dgrd", totalsVersion, "DensityGrid");
  const Missing policy = getMissing(in);
  const std::int64_t missing = getCount(in);
  Interval bounds{};
  bounds.low = in.get<double>();
  bounds.high = in.get<double>();
  kernels::ExactTotals weight = getTotals(in, 1);
  const auto points = in.get<std::uint64_t>();
  DensityGrid d(bounds, static_cast<std::size_t>(points), policy);
  d.cells_->missing = missing;
  d.cells_->weight = std::move(weight);
  d.cells_->shares = getTotals(in, d.cells_->shares.size());
  in.finish();
  return d;
}

}  // namespace vexel
