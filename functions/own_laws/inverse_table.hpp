// The inverse of a distribution function as a table of polynomials, for sampling by inversion.
//
// G. Derflinger, W. Hörmann and J. Leydold, Random variate generation by numerical inversion when
// only the density is known, ACM Transactions on Modeling and Computer Simulation 20(4), 2010:
// Newton's polynomial through points of the inverse, of degree 5 here, on stretches so short that
// the probability of what it gives is right to the error asked for.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "functions/own_laws/segment.hpp"
#include "vexel/interval.hpp"

namespace vexel::own_laws {

class InverseTable {
 public:
  InverseTable() = default;
  // Of segments whose masses are shares of 1.
  InverseTable(const std::vector<Segment>& segments, Interval support, double error);

  // x with probability u of being at most it, 0 < u < 1; bits are the draw that u came from.
  double at(std::uint64_t bits, double u) const {
    const Piece* piece = &pieces_[guide_[bits >> shift_]];
    while (u >= piece[1].u) {
      ++piece;
    }
    const double v = u - piece->u;
    const double* c = piece->c;
    const double x = piece->x + v * (c[0] + v * (c[1] + v * (c[2] + v * (c[3] + v * c[4]))));
    return x < support_.low ? support_.low : x > support_.high ? support_.high : x;
  }

  double error() const { return error_; }  // largest that was seen between the points

 private:
  static constexpr std::size_t degree = 5;
  struct Piece {
    double u;
    double x;
    double c[degree];
    double reserved;  // 64 bytes
  };

  void addPieces(const Segment& segment, double error);
  // Adds a piece of the order (of the polynomial, at most degree) unless its error is larger.
  bool tryPiece(const Segment& segment, double begin, double end, std::size_t order, double error);
  void addGuide();

  Interval support_{};
  std::vector<Piece> pieces_;  // and one that begins at 1
  std::vector<std::uint32_t> guide_;
  int shift_ = 63;
  double error_ = 0;
};

}  // namespace vexel::own_laws
