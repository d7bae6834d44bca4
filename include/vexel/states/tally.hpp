// Tally: distinct values and their counts of data that come in pieces.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>
#include <vexel/data.hpp>
#include <vexel/export.hpp>

namespace vexel {

class Tally {
 public:
  // Missing pairs are left out and counted; raise refuses them before anything is taken.
  VEXEL_API explicit Tally(Missing missing = Missing::propagate);
  VEXEL_API Tally(const Tally& other);
  VEXEL_API Tally& operator=(const Tally& other);
  Tally(Tally&&) noexcept = default;
  Tally& operator=(Tally&&) noexcept = default;

  // Values are taken as doubles; a point of weight 0 is not there.
  VEXEL_API Tally& update(Data x, Data weights = {});
  VEXEL_API Tally& merge(const Tally& other);

  VEXEL_API std::vector<double> values() const;  // ascending
  VEXEL_API std::vector<double> counts() const;  // or total weights, each rounded once
  VEXEL_API std::int64_t missing() const;

  VEXEL_API std::vector<std::uint8_t> to_bytes() const;
  VEXEL_API static Tally from_bytes(std::span<const std::uint8_t> bytes);

 private:
  struct Levels;
  std::shared_ptr<Levels> levels_;  // this state's alone
};

}  // namespace vexel
