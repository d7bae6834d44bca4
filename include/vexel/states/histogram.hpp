// Histogram: counts between given edges of data that come in pieces.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>
#include <vexel/data.hpp>
#include <vexel/export.hpp>

namespace vexel {

class Histogram {
 public:
  // Bin i is [edges[i], edges[i+1]), the last one closed.  Missing pairs are left out and counted;
  // raise refuses them before anything is taken.
  VEXEL_API explicit Histogram(Data edges, Missing missing = Missing::propagate);
  VEXEL_API Histogram(const Histogram& other);
  VEXEL_API Histogram& operator=(const Histogram& other);
  Histogram(Histogram&&) noexcept = default;
  Histogram& operator=(Histogram&&) noexcept = default;

  VEXEL_API Histogram& update(Data x, Data weights = {});
  VEXEL_API Histogram& merge(const Histogram& other);  // of the same edges

  VEXEL_API std::vector<double> counts() const;  // or total weights, each rounded once
  VEXEL_API const std::vector<double>& edges() const;
  VEXEL_API std::int64_t missing() const;

  VEXEL_API std::vector<std::uint8_t> to_bytes() const;
  VEXEL_API static Histogram from_bytes(std::span<const std::uint8_t> bytes);

 private:
  struct Cells;
  std::shared_ptr<Cells> cells_;  // this state's alone
};

}  // namespace vexel
