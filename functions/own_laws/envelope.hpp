// Rejection below a step function, for log-concave densities: exact, whatever the tables' error.
//
// Strips of equal area from the mode outwards, as J. H. Ahrens, A one-table method for sampling
// from continuous and discrete distributions, Computing 54, 1995, has them; where strips end the
// logarithm lies below its chord's extension, which gives an exponential tail and bounds the top.
#pragma once

#include <optional>
#include <vector>

#include "functions/own_laws/evaluator.hpp"
#include "kernels/variates/ziggurat.hpp"
#include "vexel/random.hpp"

namespace vexel::own_laws {

class Envelope {
 public:
  // nullopt if the density is not log-concave where it is looked at.  mass: its integral over the
  // scale; strips: about how many values to take.
  static std::optional<Envelope> over(DensityValues& f, double mode, double mass, int strips,
                                      const std::function<double(double)>& derivative);

  double sample(const DensityValues& f, Random& rng) const {
    __extension__ using Wide = unsigned __int128;
    for (;;) {
      const auto product = static_cast<Wide>(rng.bits()) * cells_.size();
      const Cell& cell = cells_[static_cast<std::size_t>(product >> 64)];
      const double u = kernels::unitInterval(static_cast<std::uint64_t>(product));
      if (u < cell.sure) [[likely]] {
        return cell.from + u * cell.perSure;
      }
      double x = 0;
      if (tried(cell, u, f, rng, x)) {
        return x;
      }
    }
  }

 private:
  struct Cell {
    double from;
    double perSure;  // width over `sure`
    double sure;     // share of the height that is below the density all over the strip
    double width;    // negative: to the left; of a tail: the mean of its exponential
    double height;
    double tail;  // share of the cell's area that the tail has; 0: a strip
  };

  bool tried(const Cell& cell, double u, const DensityValues& f, Random& rng, double& x) const;
  bool addSide(DensityValues& f, double mode, double atMode, double end, double area, int most,
               const std::function<double(double)>& derivative);

  std::vector<Cell> cells_;
};

}  // namespace vexel::own_laws
