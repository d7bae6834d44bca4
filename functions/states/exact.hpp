// Exact sums of products, as the states keep them.
#pragma once

#include <cstddef>
#include <cstdint>

#include "functions/data/bytes.hpp"
#include "kernels/exact_sum.hpp"
#include "kernels/whole.hpp"
#include "vexel/data.hpp"
#include "vexel/states/exact.hpp"

namespace vexel::states {

// A product of finite doubles, exactly: (-1)^negative words 2^exponent.
class Product {
 public:
  static constexpr int mostFactors = 9;

  explicit Product(double x) { multiply(x); }
  void multiply(double x);
  bool isZero() const { return size_ == 0; }
  void addTo(kernels::FixedPoint& sum) const;

 private:
  std::uint64_t words_[mostFactors + 1] = {1};
  int size_ = 1;
  int exponent_ = 0;
  bool negative_ = false;
};

// A sum of products of so many doubles each; its cells are as many in every state of the kind.
class Accumulator {
 public:
  Accumulator(ExactSum& sum, int factors);

  void add(const Product& product);
  void add(std::uint64_t word, int exponent, bool negative);  // +-word 2^exponent
  void add(double x);                                         // finite or not
  void add(const double* x, std::size_t n);  // all of a block of at most kernels::sumBlock
  // What an infinite or missing factor makes of the sum.
  void addSpecial(double x);
  void merge(const ExactSum& other);

 private:
  kernels::FixedPoint fixed() { return {sum_.cells, lowest_}; }
  void count(int summands);

  ExactSum& sum_;
  int lowest_;
};

// Whether nothing infinite or missing is among the summands.
bool isFinite(const ExactSum& sum);
// The sum rounded, once.
double rounded(const ExactSum& sum, int factors);
// Of a finite sum.
kernels::Whole exactly(const ExactSum& sum, int factors);

// The same bytes for every way to the same sum.
void put(ByteWriter& to, const ExactSum& sum, int factors);
ExactSum getExactSum(ByteReader& from, int factors);

// What other states have in their bytes, too.
Missing getPolicy(ByteReader& from);
std::int64_t getCount(ByteReader& from);  // not negative

}  // namespace vexel::states
