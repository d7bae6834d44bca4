// Writes functions/sequences/direction_numbers.csv: what a Sobol stream of up to 1111 dimensions
// starts from.  Build and run (two minutes):
//
//   c++ -std=c++20 -O2 -o direction_numbers tools/direction_numbers.cpp
//   ./direction_numbers > functions/sequences/direction_numbers.csv
//
// Each row: dimension, degree s and coefficient code a of a primitive polynomial
// x^s + a_1 x^(s-1) + ... + a_(s-1) x + 1 over GF(2) (a's most significant of s - 1 bits is a_1),
// and the initial direction integers m_1 .. m_s.  The first dimension is the van der Corput
// sequence and has no polynomial.  Polynomials come in order of degree and value; all of degree 1
// to 13 are there.
//
// Initial integers: all dimensions have Sobol's property A together (the d x d matrix of the
// leading bits of d dimensions is nonsingular; Sobol 1976), and among those the search prefers good
// two-dimensional projections, for which S. Joe and F. Y. Kuo argue (Constructing Sobol sequences
// with better two-dimensional projections, 2008): small t-values of the nets of 2^m points with the
// dimensions before.  Up to degree 5 all integers are tried, above it a random choice.  A dimension
// for which property A cannot be had sends the search back to the one before.

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <random>
#include <utility>
#include <vector>

namespace {

constexpr int kHighestDegree = 13;
constexpr int kBits = 16;                             // of the finest nets
constexpr std::array kNets = {6, 8, 10, 12, 14, 16};  // nets of 2^m points
constexpr double kWeightOfAny = 0.02;  // of a projection that is neither near nor among the first
constexpr int kAllUpToDegree = 5;
constexpr int kCandidates = 64;  // beyond it

using Row = std::array<std::uint64_t, 18>;        // a bit for each of 1111 dimensions and more
using Matrix = std::array<std::uint32_t, kBits>;  // row i: index digits to digit i

struct Polynomial {
  int degree = 0;
  std::uint32_t code = 0;
};

struct Candidate {
  std::vector<std::uint64_t> initial;
  Row leading{};  // leading bits, reduced by the dimensions before
  Matrix matrix{};
  double score = 0;
};

bool bitOf(const Row& r, int k) {
  return (r[static_cast<std::size_t>(k / 64)] >> (k % 64) & 1U) != 0;
}

// x has order 2^degree - 1 modulo the polynomial: the shift register runs through all states.
bool isPrimitive(std::uint32_t polynomial, int degree) {
  const std::uint32_t states = (1U << degree) - 1;
  std::uint32_t state = 1;
  for (std::uint32_t step = 1;; ++step) {
    state <<= 1;
    state ^= (state >> degree & 1U) != 0 ? polynomial : 0;
    if (state <= 1 || step == states) {
      return state == 1 && step == states;
    }
  }
}

std::vector<Polynomial> primitivePolynomials() {
  std::vector<Polynomial> found = {{}};
  for (int s = 1; s <= kHighestDegree; ++s) {
    for (std::uint32_t p = 1U << s | 1U; p < 2U << s; p += 2) {
      if (isPrimitive(p, s)) {
        found.push_back({s, (p ^ 1U << s) >> 1});
      }
    }
  }
  return found;
}

// The recurrence of the leading bits is that of the direction integers without its shifts.
Row leadingBits(const Polynomial& p, const std::vector<std::uint64_t>& m, int count) {
  Row bits{};
  for (int k = 0; k < count; ++k) {
    bool bit = false;
    if (k < p.degree) {
      bit = (m[static_cast<std::size_t>(k)] >> k & 1U) != 0;
    } else if (p.degree > 0) {
      bit = bitOf(bits, k - p.degree);
      for (int t = 1; t < p.degree; ++t) {
        bit ^= (p.code >> (t - 1) & 1U) != 0 && bitOf(bits, k - p.degree + t);
      }
    } else {
      bit = k == 0;
    }
    bits[static_cast<std::size_t>(k / 64)] |= std::uint64_t{bit} << (k % 64);
  }
  return bits;
}

Matrix generatorMatrix(const Polynomial& p, std::vector<std::uint64_t> m) {
  for (auto k = m.size(); k < kBits; ++k) {
    std::uint64_t value = 1;
    if (p.degree > 0) {
      const auto s = static_cast<std::size_t>(p.degree);
      value = m[k - s] << s ^ m[k - s];
      for (std::size_t t = 1; t < s; ++t) {
        value ^= (p.code >> (t - 1) & 1U) != 0 ? m[k - s + t] << (s - t) : 0;
      }
    }
    m.push_back(value);
  }
  Matrix rows{};
  for (std::size_t i = 0; i < kBits; ++i) {
    for (std::size_t k = i; k < kBits; ++k) {
      rows[i] |= static_cast<std::uint32_t>(m[k] >> (k - i) & 1U) << k;
    }
  }
  return rows;
}

// Rows of a matrix as a growing basis; add says whether the row is independent of those before.
struct Basis {
  std::array<std::uint32_t, 32> byTopBit{};
  bool add(std::uint32_t row) {
    while (row != 0) {
      std::uint32_t& other = byTopBit[static_cast<std::size_t>(std::bit_width(row) - 1)];
      if (other == 0) {
        other = row;
        return true;
      }
      row ^= other;
    }
    return false;
  }
};

// The t of the (t, m, 2)-net of the first 2^m points of two dimensions.
int tValue(const Matrix& a, const Matrix& b, int m) {
  const std::uint32_t mask = (1U << m) - 1;
  int strength = m;
  Basis ofA;
  for (int first = 0; first <= strength; ++first) {
    Basis basis = ofA;
    int count = first;
    while (count < strength && basis.add(b[static_cast<std::size_t>(count - first)] & mask)) {
      ++count;
    }
    strength = count;
    if (first < m && !ofA.add(a[static_cast<std::size_t>(first)] & mask)) {
      strength = std::min(strength, first);
    }
  }
  return m - strength;
}

// How bad the two-dimensional projections with the dimensions before are, near and first ones above
// all; infinite once it is known to be above limit.
double projections(const Matrix& matrix, const std::vector<Candidate>& before, double limit) {
  const auto j = before.size();
  double score = 0;
  for (std::size_t n = 0; n < j && score <= limit; ++n) {
    const std::size_t i = n % 2 == 0 ? n / 2 : j - (n + 1) / 2;  // from both ends
    const double weight =
        1.0 / static_cast<double>(j - i) + 1.0 / static_cast<double>(i + 1) + kWeightOfAny;
    for (const int m : kNets) {
      const double cost = 1U << tValue(before[i].matrix, matrix, m);
      score += weight * cost * cost;
    }
  }
  return score <= limit ? score : std::numeric_limits<double>::infinity();
}

class Search {
 public:
  Search() : polynomials_(primitivePolynomials()) {
    Candidate first{{1}, {}, generatorMatrix({}, {1}), 0};
    first.leading = leadingBits({}, first.initial, dimensions());
    chosen_.push_back(first);
  }

  // The chosen candidates of all dimensions.
  const std::vector<Candidate>& run() {
    std::vector<std::vector<Candidate>> left = {{}};  // of each dimension, the best one last
    left.push_back(candidates(1));
    while (static_cast<int>(chosen_.size()) < dimensions()) {
      if (left.back().empty()) {
        left.pop_back();
        chosen_.pop_back();
        continue;
      }
      chosen_.push_back(std::move(left.back().back()));
      left.back().pop_back();
      if (static_cast<int>(chosen_.size()) < dimensions()) {
        left.push_back(candidates(static_cast<int>(chosen_.size())));
      }
    }
    return chosen_;
  }
  const std::vector<Polynomial>& polynomials() const { return polynomials_; }

 private:
  int dimensions() const { return static_cast<int>(polynomials_.size()); }

  // Those of dimension j (from 0) that keep property A, the best one last.
  std::vector<Candidate> candidates(int j) {
    const Polynomial& p = polynomials_[static_cast<std::size_t>(j)];
    const bool all = p.degree <= kAllUpToDegree;
    double limit = std::numeric_limits<double>::max();
    int considered = 0;
    std::vector<Candidate> found;
    const auto consider = [&](auto bits) {  // bits(k): k bits
      Candidate c;
      for (int k = 0; k < p.degree; ++k) {
        c.initial.push_back(bits(k) << 1 | 1U);
      }
      c.leading = leadingBits(p, c.initial, dimensions());
      for (int i = 0; i < j; ++i) {
        if (bitOf(c.leading, i)) {
          const Row& other = chosen_[static_cast<std::size_t>(i)].leading;
          for (std::size_t w = 0; w < other.size(); ++w) {
            c.leading[w] ^= other[w];
          }
        }
      }
      if (bitOf(c.leading, j)) {
        c.matrix = generatorMatrix(p, c.initial);
        c.score = projections(c.matrix, chosen_, limit);
        if (c.score <= limit) {
          limit = all ? limit : c.score;
          found.push_back(std::move(c));
        }
        ++considered;
      }
    };
    if (all) {
      const int freeBits = p.degree * (p.degree - 1) / 2;
      for (std::uint64_t choice = 0; choice >> freeBits == 0; ++choice) {
        consider([rest = choice](int k) mutable {
          const std::uint64_t low = rest & ((std::uint64_t{1} << k) - 1);
          rest >>= k;
          return low;
        });
      }
    } else {
      for (int attempt = 0; attempt < 100 * kCandidates && considered < kCandidates; ++attempt) {
        consider([this](int k) { return k > 0 ? random_() >> (64 - k) : 0; });
      }
    }
    std::stable_sort(found.begin(), found.end(),
                     [](const Candidate& a, const Candidate& b) { return a.score > b.score; });
    return found;
  }

  std::vector<Polynomial> polynomials_;
  std::vector<Candidate> chosen_;
  std::mt19937_64 random_{20240229};
};

}  // namespace

int main() {
  Search search;
  const std::vector<Candidate>& chosen = search.run();
  std::printf("dimension,degree,code");
  for (int k = 1; k <= kHighestDegree; ++k) {
    std::printf(",m%d", k);
  }
  std::printf("\n");
  for (std::size_t j = 0; j < chosen.size(); ++j) {
    const auto& [degree, code] = search.polynomials()[j];
    std::printf("%zu,%d,%u", j + 1, degree, static_cast<unsigned>(code));
    for (std::size_t k = 0; k < kHighestDegree; ++k) {
      if (k < chosen[j].initial.size()) {
        std::printf(",%llu", static_cast<unsigned long long>(chosen[j].initial[k]));
      } else {
        std::printf(",");
      }
    }
    std::printf("\n");
  }
}
