// Variates of empirical laws.
#include "vexel/distributions/empirical.hpp"

#include <cstddef>
#include <vector>

#include "functions/samples/frame.hpp"

namespace vexel {

namespace detail {

// By inversion.  For many, the law's probabilities in a table, with a guide to where a search
// begins.
template <>
class Variates<Empirical> {
 public:
  explicit Variates(const Empirical& law) : law_(law) {}

  void tabulate() {
    values_ = law_.parameters().x;
    sums_ = law_.cdf(values_);
    sums_.back() = 1;
    guide_.resize(2 * sums_.size());
    std::size_t k = 0;
    for (std::size_t cell = 0; cell < guide_.size(); ++cell) {
      const double low = static_cast<double>(cell) / static_cast<double>(guide_.size());
      while (sums_[k] < low) {
        ++k;
      }
      // The search goes up only, and a product rounded up may lie in the cell before.
      guide_[cell] = k == 0 ? 0 : k - 1;
    }
  }

  double operator()(Random& rng) const {
    const double u = rng.uniform();
    if (guide_.empty()) {
      return law_.quantile(u);
    }
    std::size_t k = guide_[static_cast<std::size_t>(u * static_cast<double>(guide_.size()))];
    while (sums_[k] < u) {
      ++k;
    }
    return values_[k];
  }

 private:
  const Empirical& law_;
  Data values_;
  std::vector<double> sums_;
  std::vector<std::size_t> guide_;
};

}  // namespace detail

VEXEL_SAMPLES(Empirical)

}  // namespace vexel
