// Quasi-random points of the unit cube: the sequences of Sobol, Halton and Faure.
//
//   vexel::Sobol sobol(10);
//   std::vector<double> p = sobol.points(1024);               1024 points, ten coordinates each
//   vexel::Halton halton(3, {.scramble = vexel::Scramble::owen, .seed = 1});
//   halton.points(1000, out, vexel::PointOrder::column);      into the caller's memory
//
// Index 0 is the origin, for every sequence, and 2^m points of Sobol's sequence (b^m of Faure's)
// from index 0 or a multiple of that number form a net.  Leaving out the origin destroys it.
// Coordinates are at least 0 and below 1.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>
#include <vexel/export.hpp>

namespace vexel {

class Random;
struct SequenceBody;  // of one kind of sequence

// none   the sequence itself
// owen   nested uniform scrambling (Owen 1995): every point uniform on the cube, nets stay nets,
// and
//        for smooth functions the error of a mean falls like n^(-3/2)
// shift  one random digital shift of all points: every point uniform, nets stay nets
enum class Scramble : std::uint8_t { none, owen, shift };

// row: the coordinates of a point are neighbours; column: the points of a coordinate are.
enum class PointOrder : std::uint8_t { row, column };

struct SequenceOptions {
  Scramble scramble = Scramble::none;
  // What scrambling draws its keys from, one 64-bit draw for each dimension: a generator, or a seed
  // for one; with neither a seed from the operating system.
  Random* rng = nullptr;
  std::optional<std::uint64_t> seed{};
  std::uint64_t start = 0;  // the index of the first point
};

// A dimension of a Sobol sequence: a primitive polynomial x^s + a_1 x^(s-1) + ... + a_(s-1) x + 1
// over GF(2), coefficients = the number with the s - 1 binary digits a_1 ... a_(s-1), and its first
// s direction integers, odd and m_k < 2^k.  degree 0 is van der Corput's sequence.
struct SobolDimension {
  int degree = 0;
  std::uint32_t coefficients = 0;
  std::vector<std::uint64_t> integers;
};

struct SobolOptions {
  Scramble scramble = Scramble::none;
  Random* rng = nullptr;
  std::optional<std::uint64_t> seed{};
  std::uint64_t start = 0;
  int bits = 62;                                 // of an index, 1 to 62: there are 2^bits points
  std::span<const SobolDimension> dimensions{};  // the caller's in place of the built-in ones
};

// What the three have in common.  A value: copies go their own ways.
class VEXEL_API PointSequence {
 public:
  PointSequence(const PointSequence& other);
  PointSequence(PointSequence&& other) noexcept;
  PointSequence& operator=(PointSequence other) noexcept;
  ~PointSequence();

  std::size_t dimension() const;
  std::uint64_t index() const;  // of the next point
  std::uint64_t limit() const;  // how many points there are: indices are below it
  Scramble scramble() const;
  // The keys of the scrambling, one a dimension; what makes a sequence its own.
  const std::vector<std::uint64_t>& keys() const;

  // The next n points; std::length_error when there are fewer, and then none is taken.
  std::vector<double> points(std::size_t n);
  // Into out, of n times dimension() elements (std::invalid_argument for another size).
  void points(std::size_t n, std::span<double> out, PointOrder order = PointOrder::row);
  // Coordinate j of the i-th of n points from `index` on to out[i * point + j * coordinate],
  // without moving the sequence: any number of threads at once.
  void write(std::uint64_t index, std::size_t n, double* out, std::ptrdiff_t point,
             std::ptrdiff_t coordinate) const;

  // Moves on by n points, in constant time.  std::length_error beyond the last.
  void skip(std::uint64_t n);
  // Back to the index that the sequence was made with.
  void reset();

 protected:
  explicit PointSequence(std::unique_ptr<SequenceBody> body);
  std::unique_ptr<SequenceBody> body_;
};

// I. M. Sobol (1967), in the Gray-code order of Antonov and Saleev (1979).  The built-in direction
// integers serve 1 to 1111 dimensions and have property A in all of them together (every one of the
// 2^d equal subcubes holds one of the first 2^d points); their two-dimensional projections were
// searched for.  The first points in one dimension are 0, 1/2, 3/4, 1/4, 3/8, 7/8.
class VEXEL_API Sobol : public PointSequence {
 public:
  // std::invalid_argument for a dimension or bits out of range, or directions that are none.
  explicit Sobol(std::size_t dimension, const SobolOptions& options = {});
  static constexpr std::size_t maxDimension = 1111;
};

// J. H. Halton (1960): coordinate j of point n is the radical inverse of n in the j-th prime.  The
// first points in two dimensions are (0, 0), (1/2, 1/3), (1/4, 2/3), (3/4, 1/9).  In many
// dimensions the plain sequence needs very many points before neighbouring coordinates stop going
// together: scramble it.
class VEXEL_API Halton : public PointSequence {
 public:
  explicit Halton(std::size_t dimension, const SequenceOptions& options = {});
  static constexpr std::size_t maxDimension = 100'000;
};

// H. Faure (1982), in base b, the smallest prime not below the dimension.  The first points in
// three dimensions are (0, 0, 0), (1/3, 1/3, 1/3), (2/3, 2/3, 2/3), (1/9, 4/9, 7/9).
class VEXEL_API Faure : public PointSequence {
 public:
  explicit Faure(std::size_t dimension, const SequenceOptions& options = {});
  static constexpr std::size_t maxDimension = 10'000;
};

}  // namespace vexel
