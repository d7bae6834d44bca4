// Ranks: exact quantiles of data that come in pieces, in at most four passes over them.
//
//   vexel::Ranks r({0.25, 0.5, 0.75});
//   while (!r.done()) {
//     for (const auto& piece : pieces) r.update(piece);
//     r.next_pass();
//   }
//   std::vector<double> quartiles = r.result();
//
// Each pass settles 16 of the 64 bits of every order statistic asked for, so memory is bounded by a
// megabyte for each of them.  Many machines: each updates a copy of the state with its data, the
// copies are merged, next_pass() of the merged one is sent out again.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>
#include <vexel/data.hpp>
#include <vexel/descriptive.hpp>
#include <vexel/export.hpp>

namespace vexel {

class Ranks {
 public:
  // Up to 250 probabilities; NaN gives NaN.
  VEXEL_API explicit Ranks(Data q, QuantileMethod method = QuantileMethod::linear,
                           Missing missing = Missing::propagate);
  VEXEL_API Ranks(const Ranks& other);
  VEXEL_API Ranks& operator=(const Ranks& other);
  Ranks(Ranks&&) noexcept = default;
  Ranks& operator=(Ranks&&) noexcept = default;

  VEXEL_API Ranks& update(Data x, Data weights = {});
  VEXEL_API Ranks& merge(const Ranks& other);  // of the same quantiles in the same pass

  // Whether result() can be asked for: all passes are over, or the last one has data.
  VEXEL_API bool done() const;
  VEXEL_API Ranks& next_pass();
  VEXEL_API int pass() const;  // from 1
  // What it was made for.
  VEXEL_API std::span<const double> q() const;
  VEXEL_API QuantileMethod method() const;
  // The quantiles; std::logic_error before the last pass.
  VEXEL_API std::vector<double> result() const;
  VEXEL_API double weight() const;         // total; the count where there are no weights
  VEXEL_API std::int64_t missing() const;  // pairs left out

  VEXEL_API std::vector<std::uint8_t> to_bytes() const;
  VEXEL_API static Ranks from_bytes(std::span<const std::uint8_t> bytes);

 private:
  struct Search;
  std::shared_ptr<Search> search_;  // this state's alone
};

}  // namespace vexel
