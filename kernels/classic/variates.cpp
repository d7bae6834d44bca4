#include "kernels/classic/variates.hpp"

namespace vexel::kernels::classic {

double Gamma::rootOf(double u) const { return std::pow(u, 1.0 / shape_); }

}  // namespace vexel::kernels::classic
