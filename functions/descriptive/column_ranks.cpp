#include "functions/descriptive/column_ranks.hpp"

#include <algorithm>
#include <cmath>
#include <optional>
#include <stdexcept>
#include <string>

#include "functions/data/sample.hpp"
#include "functions/descriptive/column_ends.hpp"
#include "functions/descriptive/column_strips.hpp"
#include "kernels/sorting/network.hpp"
#include "kernels/watch.hpp"

namespace vexel {

namespace {

using kernels::End;

// A place among n points.
struct Spot {
  std::size_t low;
  std::size_t high;
  double fraction;
};

class Spots {
 public:
  Spots(const RanksOfColumns& wanted, std::size_t most) : wanted_(wanted), known_(most + 1) {}

  // Among n points.
  const std::vector<Spot>& operator()(std::size_t n) {
    std::vector<Spot>& spots = known_[n];
    if (spots.empty()) {
      for (const Place& place : wanted_.places(static_cast<double>(n))) {
        spots.push_back({rankOf(place.low, n), rankOf(place.high, n), place.fraction});
      }
    }
    return spots;
  }

 private:
  const RanksOfColumns& wanted_;
  std::vector<std::vector<Spot>> known_;
};

std::vector<std::size_t> ranksOf(const std::vector<Spot>& spots) {
  std::vector<std::size_t> ranks;
  for (const Spot& spot : spots) {
    ranks.push_back(spot.low);
    ranks.push_back(spot.high);
  }
  return ranks;
}

double share(std::size_t done, const Columns& columns) {
  return static_cast<double>(done) / static_cast<double>(columns.count());
}

// Short columns are sorted, as far as it takes.
class SortedColumns {
 public:
  SortedColumns(const Columns& columns, const RanksOfColumns& wanted)
      : columns_(columns),
        wanted_(wanted),
        n_(columns.first().size()),
        spots_(wanted, n_),
        strip_(columns),
        network_(kernels::sortingNetwork(n_, ranksOf(spots_(n_)))),
        values_(spots_(n_).size() * ColumnStrip::width) {}

  void go() {
    constexpr std::size_t elements = std::size_t{1} << 18;  // between polls
    const std::size_t some = std::max(std::size_t{1}, elements / (n_ * ColumnStrip::width));
    std::size_t strips = 0;
    for (std::size_t j = 0; j < columns_.count(); j += ColumnStrip::width) {
      goOn(j);
      if (++strips % some == 0) {
        kernels::poll(share(j, columns_));
      }
    }
  }

 private:
  void goOn(std::size_t begin) {
    strip_.moveTo(begin);
    if (wanted_.missing == Missing::omit && strip_.anyMissing()) {
      if (whole_.empty()) {
        whole_ = kernels::sortingNetwork(n_);
      }
      strip_.exchange(whole_);
    } else {
      strip_.exchange(network_);
    }
    bool left[ColumnStrip::width] = {};
    for (std::size_t j = 0; j < strip_.columns(); ++j) {
      const std::size_t missing = strip_.missing(j);
      if (missing == n_ || (missing > 0 && wanted_.missing == Missing::raise)) {
        left[j] = true;
      } else if (missing > 0 && wanted_.missing == Missing::propagate) {
        for (std::size_t at = j; at < values_.size(); at += ColumnStrip::width) {
          values_[at] = kNaN;
        }
      } else {
        left[j] = !find(j, spots_(n_ - missing));
      }
    }
    wanted_.take({begin, strip_.columns(), values_.data(), ColumnStrip::width});
    for (std::size_t j = 0; j < strip_.columns(); ++j) {
      if (left[j]) {
        wanted_.alone(begin + j);
      }
    }
  }

  // False where there may be zeros of both signs.
  bool find(std::size_t j, const std::vector<Spot>& spots) {
    const bool zeros = strip_.hasNegativeZero(j);
    for (std::size_t k = 0; k < spots.size(); ++k) {
      const double low = strip_.row(spots[k].low)[j];
      const double high = strip_.row(spots[k].high)[j];
      if (zeros && (low == 0.0 || high == 0.0)) {
        return false;
      }
      values_[k * ColumnStrip::width + j] = between(low, high, spots[k].fraction);
    }
    return true;
  }

  const Columns& columns_;
  const RanksOfColumns& wanted_;
  std::size_t n_;
  Spots spots_;
  ColumnStrip strip_;
  std::vector<kernels::Exchange> network_;
  std::vector<kernels::Exchange> whole_;
  std::vector<double> values_;
};

// Where nothing but the first and the last of the sorted points is asked for.
class OuterColumns {
 public:
  OuterColumns(const Columns& columns, const RanksOfColumns& wanted, std::vector<Spot> spots)
      : columns_(columns), wanted_(wanted), spots_(std::move(spots)) {
    for (const Spot& spot : spots_) {
      for (const std::size_t rank : {spot.low, spot.high}) {
        (rank == 0 ? least_ : greatest_) = true;
      }
    }
  }

  void go() {
    const std::size_t most = std::min(mostEnds, columns_.count());
    values_.resize(most * spots_.size());
    for (std::size_t j = 0; j < columns_.count(); j += most) {
      const std::size_t n = std::min(most, columns_.count() - j);
      if (least_) {
        findEnds(columns_, End::least, j, n, low_);
      }
      if (greatest_) {
        findEnds(columns_, End::greatest, j, n, high_);
      }
      give(j, n);
      kernels::poll(share(j + n, columns_));
    }
  }

 private:
  enum class Known : std::uint8_t { yes, missing, no };

  Known look(const EndsFound& low, const EndsFound& high, std::size_t j) const {
    const bool missing = low.missing[j] != 0;
    if (low.doubtful[j] != 0 || high.doubtful[j] != 0 ||
        (missing && wanted_.missing == Missing::raise)) {
      return Known::no;
    }
    if (missing && wanted_.missing == Missing::propagate) {
      return Known::missing;
    }
    // An infinity may be what is left of nothing.
    const bool sure =
        !missing || (wanted_.ends && std::isfinite(low.values[j]) && std::isfinite(high.values[j]));
    return sure ? Known::yes : Known::no;
  }

  void give(std::size_t begin, std::size_t n) {
    const EndsFound& low = least_ ? low_ : high_;
    const EndsFound& high = greatest_ ? high_ : low_;
    for (std::size_t k = 0; k < spots_.size(); ++k) {
      const Spot& spot = spots_[k];
      const std::vector<double>& from = (spot.low == 0 ? low : high).values;
      const std::vector<double>& to = (spot.high == 0 ? low : high).values;
      if (&from == &to) {
        std::copy_n(from.data(), n, &values_[k * n]);
        continue;
      }
      for (std::size_t j = 0; j < n; ++j) {
        values_[k * n + j] = between(from[j], to[j], spot.fraction);
      }
    }
    left_.clear();
    for (std::size_t j = 0; j < n && !(low.plain && high.plain); ++j) {
      const Known known = look(low, high, j);
      for (std::size_t k = 0; k < spots_.size() && known == Known::missing; ++k) {
        values_[k * n + j] = kNaN;
      }
      if (known == Known::no) {
        left_.push_back(begin + j);
      }
    }
    wanted_.take({begin, n, values_.data(), n});
    for (const std::size_t j : left_) {
      wanted_.alone(j);
    }
  }

  const Columns& columns_;
  const RanksOfColumns& wanted_;
  std::vector<Spot> spots_;
  std::vector<double> values_;
  EndsFound low_;
  EndsFound high_;
  std::vector<std::size_t> left_;
  bool least_ = false;
  bool greatest_ = false;
};

}  // namespace

void ranksOfColumns(const Columns& columns, const RanksOfColumns& wanted) {
  const std::size_t n = columns.first().size();
  if (n > 0) {
    std::vector<Spot> spots;
    bool outer = true;
    for (const Place& place : wanted.places(static_cast<double>(n))) {
      spots.push_back({rankOf(place.low, n), rankOf(place.high, n), place.fraction});
      for (const std::size_t rank : {spots.back().low, spots.back().high}) {
        outer = outer && (rank == 0 || rank == n - 1);
      }
    }
    if (outer && !spots.empty()) {
      OuterColumns(columns, wanted, std::move(spots)).go();
      return;
    }
    if (ColumnStrip::serves(columns) && !spots.empty()) {
      SortedColumns(columns, wanted).go();
      return;
    }
  }
  for (std::size_t j = 0; j < columns.count(); ++j) {
    wanted.alone(j);
    kernels::poll(share(j, columns));
  }
}

void requireRoom(const char* function, const Columns& columns, std::size_t k,
                 std::span<const double> out) {
  if (out.size() != k * columns.count()) {
    throw std::length_error(
        std::string(function) + ": out must have as many elements as there are " +
        (k == 1 ? "columns, " : "results, ") + std::to_string(k * columns.count()) + ", got " +
        std::to_string(out.size()));
  }
}

}  // namespace vexel
