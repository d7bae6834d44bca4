// The generator that `rng=` means.
#pragma once

#include <pybind11/pybind11.h>

#include <optional>
#include <vexel/random.hpp>

#include "in_use.hpp"

VEXEL_USED_ALONE(vexel::Random);

namespace vexel::python {

// What rng= came as: a Random (it moves on), a whole number (a new one of that seed) or None (a new
// one of a seed from the operating system).  A NumPy Generator gives a seed.
class Generator {
 public:
  explicit Generator(pybind11::handle rng);
  Random& operator*() { return *random_; }

 private:
  pybind11::object owner_;
  std::optional<Random> own_;
  std::optional<InUse> inUse_;  // of one that somebody else may have, too
  Random* random_ = nullptr;
};

// A seed, 0 to 2^64 - 1.
std::uint64_t readSeed(pybind11::handle seed, const char* name);

}  // namespace vexel::python
