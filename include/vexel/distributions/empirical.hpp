// The law of a sample.
#pragma once

#include <tuple>
#include <type_traits>
#include <vector>

#include "vexel/distributions/law.hpp"

namespace vexel {

// Gives each distinct value of x its share of the total weight (1 each where none are given);
// x holds at least one value, none of them NaN.
class VEXEL_API Empirical : public DiscreteLaw<Empirical> {
 public:
  struct Parameters {
    Data x;
    Data weights{};
    VEXEL_API bool operator==(const Parameters& other) const;
  };
  static constexpr const char* name = "Empirical";
  static constexpr std::tuple fields{Field{"x", &Parameters::x},
                                     Field{"weights", &Parameters::weights, 0.0}};

  explicit Empirical(const Parameters& parameters);
  template <typename T>
  requires std::is_convertible_v<const T&, Data>
  explicit Empirical(const T& x, Data weights = {}) : Empirical(Parameters{x, weights}) {}
  // The distinct values, ascending, and their weights; views of the law's own memory.
  Parameters parameters() const { return {values_, weights_}; }

 private:
  friend struct detail::Formulas<Empirical>;
  std::vector<double> values_;
  std::vector<double> weights_;
  std::vector<double> below_;  // share of the values up to this one
  std::vector<double> above_;  // share of those behind it
  double total_ = 0.0;         // of the weights
};

}  // namespace vexel
