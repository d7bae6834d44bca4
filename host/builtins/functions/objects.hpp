// Values of the functions that live in the host's heap: laws, densities, streams, sequences,
// states.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>
#include <vexel/data.hpp>
#include <vexel/interval.hpp>
#include <vexel/kernel_density.hpp>
#include <vexel/random.hpp>
#include <vexel/sequences.hpp>

#include "values/objects.hpp"

namespace vexel {

class Call;

// The object behind a handle if it is of that class, else null.
template <typename T>
T* objectOf(ALGEB x) {
  return is(x, Tag::foreign) ? dynamic_cast<T*>(foreign(x)) : nullptr;
}

// A state's result of that name, null where x is no state or has none.
ALGEB resultOfState(State& state, ALGEB x, std::string_view name);
// The moment of that `order` where `x` is a Moments, else null.
ALGEB momentOfState(Call& call);

struct RandomObject : Foreign {
  explicit RandomObject(Random r) : random(std::move(r)) {}
  void print(State& state, std::string& out) const override;
  ALGEB field(State& state, std::string_view part) override;  // seed, block
  Random random;
};

struct UrnObject : Foreign {
  explicit UrnObject(Urn u) : urn(std::move(u)) {}
  void print(State& state, std::string& out) const override;
  Urn urn;
};

struct SequenceObject : Foreign {
  SequenceObject(const char* n, PointSequence s) : name(n), sequence(std::move(s)) {}
  void print(State& state, std::string& out) const override;
  ALGEB field(State& state, std::string_view part) override;  // index, dimension
  const char* name;
  PointSequence sequence;
};

struct DensityObject final : Foreign {
  explicit DensityObject(KernelDensity d) : density(std::move(d)) {}
  void print(State& state, std::string& out) const override;
  ALGEB field(State& state, std::string_view part) override;
  const char* calledAs() const override { return "pdf"; }
  KernelDensity density;
};

enum class LawFunction { pdf, logpdf, cdf, sf, logcdf, logsf, quantile, isf };
enum class LawMoment { mean, var, std, skewness, kurtosis, median };

// Any law: of the 34, or of one's own.
class LawObject : public Foreign {
 public:
  virtual double at(LawFunction f, double x) const = 0;
  virtual void at(LawFunction f, Data x, std::span<double> out) const = 0;
  virtual double moment(LawMoment m) const = 0;
  virtual Interval support() const = 0;
  virtual Interval interval(double level) const = 0;
  virtual double logLikelihood(Data x, Data weights, Missing missing) const = 0;
  virtual std::vector<double> sample(std::size_t n, Random& rng) const = 0;
  virtual bool discrete() const { return false; }
  virtual ALGEB parameters(State& state) const = 0;
};

}  // namespace vexel
