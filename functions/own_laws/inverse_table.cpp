#include "functions/own_laws/inverse_table.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace vexel::own_laws {

InverseTable::InverseTable(const std::vector<Segment>& segments, Interval support, double error)
    : support_(support) {
  for (const Segment& s : segments) {
    if (s.mass > 0) {
      addPieces(s, error);
    }
  }
  pieces_.push_back({.u = 2, .x = support.high, .c = {}, .reserved = 0});
  addGuide();
}

namespace {

// How far the mass up to x is from m; none if x is as near as its rounding lets it be.
double missAt(const Segment& s, double x, double m) {
  const double here = s.massTo(x);
  const double rounding = 4 * std::numeric_limits<double>::epsilon() * std::abs(x);
  const double other = here < m ? (x + rounding >= s.high ? s.mass : s.massTo(x + rounding))
                                : (x - rounding <= s.low ? 0 : s.massTo(x - rounding));
  const double miss = here < m ? m - other : other - m;
  return std::max(0.0, std::min(std::abs(here - m), miss));
}

}  // namespace

// Stretches of the segment's t, halved until they do and then tried twice as long.
void InverseTable::addPieces(const Segment& s, double error) {
  constexpr double shortest = 1e-5;
  if (!(s.high > s.low)) {  // a jump
    pieces_.push_back({.u = s.left, .x = s.low, .c = {}, .reserved = 0});
    return;
  }
  double at = -1;
  double length = 0.5;
  while (at < 1) {
    double end = std::min(1.0, at + length);
    if (1 - end < shortest) {
      end = 1;
    }
    const bool last = end - at <= 2 * shortest;
    if (tryPiece(s, at, end, degree, error)) {
      at = end;
      length *= 2;
    } else if (last) {
      // Points whose masses differ by their rounding only, as where the density begins at 0, make a
      // polynomial of any size; a line stays between its ends.
      tryPiece(s, at, end, 1, std::numeric_limits<double>::infinity());
      at = end;
      length *= 2;
    } else {
      length = 0.5 * (end - at);
    }
  }
}

bool InverseTable::tryPiece(const Segment& s, double begin, double end, std::size_t order,
                            double error) {
  // Points of the inverse at extremal points of a Chebyshev polynomial in t, from begin on.
  std::array<double, degree + 1> u{};
  std::array<double, degree + 1> x{};
  const double start = std::clamp(valueOf(s.cumulative, begin), 0.0, s.mass);
  const double length = std::clamp(valueOf(s.cumulative, end), 0.0, s.mass) - start;
  if (!(length > 1e-40)) {
    return true;  // no variate falls there
  }
  for (std::size_t i = 0; i <= order; ++i) {
    const double angle = 3.141592653589793 * static_cast<double>(i) / static_cast<double>(order);
    const double node = begin + (end - begin) * 0.5 * (1 - std::cos(angle));
    u[i] = (std::clamp(valueOf(s.cumulative, node), 0.0, s.mass) - start) / length;
    x[i] = s.map.x(s.tAt(node));
    if (i > 0 && !(u[i] > u[i - 1])) {
      // Flat to the last digit: any point will do.
      u[i] = std::nextafter(u[i - 1], 2.0);
    }
  }
  x[0] = begin == -1 ? s.low : x[0];
  x[order] = end == 1 ? s.high : x[order];
  // Newton's divided differences, then powers of u.
  std::array<double, degree + 1> difference = x;
  for (std::size_t k = 1; k <= order; ++k) {
    for (std::size_t i = order; i >= k; --i) {
      difference[i] = (difference[i] - difference[i - 1]) / (u[i] - u[i - k]);
    }
  }
  std::array<double, degree + 1> c{};
  for (std::size_t k = order + 1; k-- > 0;) {
    for (std::size_t i = order; i > 0; --i) {
      c[i] = c[i - 1] - u[k] * c[i];
    }
    c[0] = difference[k] - u[k] * c[0];
  }
  double worst = 0;
  for (std::size_t i = 0; i < order; ++i) {
    for (const double part : {0.25, 0.5, 0.75}) {
      const double v = u[i] + part * (u[i + 1] - u[i]);
      double value = 0;
      for (std::size_t k = order + 1; k-- > 0;) {
        value = value * v + c[k];
      }
      worst = std::max(worst, missAt(s, std::clamp(value, s.low, s.high), start + v * length));
    }
  }
  if (!(worst <= error)) {
    return false;
  }
  error_ = std::max(error_, worst);
  Piece piece{.u = s.left + start, .x = c[0], .c = {}, .reserved = 0};
  double power = 1;
  for (std::size_t k = 1; k <= order; ++k) {
    power *= length;
    piece.c[k - 1] = c[k] / power;
  }
  pieces_.push_back(piece);
  return true;
}

void InverseTable::addGuide() {
  int bits = 4;
  while (bits < 16 && std::size_t{1} << bits < 4 * pieces_.size()) {
    ++bits;
  }
  shift_ = 64 - bits;
  guide_.resize(std::size_t{1} << bits);
  std::uint32_t k = 0;
  for (std::size_t cell = 0; cell < guide_.size(); ++cell) {
    while (pieces_[k + 1].u <= static_cast<double>(cell) / static_cast<double>(guide_.size())) {
      ++k;
    }
    guide_[cell] = k;
  }
}

}  // namespace vexel::own_laws
