// Ranks: order statistics found some bits of their ordered keys at a time.  The first pass takes
// the most, so that few of the data are left to count in the second one.
#include "vexel/states/ranks.hpp"

#include <algorithm>
#include <bitset>
#include <limits>

#include "functions/descriptive/quantiles.hpp"
#include "functions/states/totals_bytes.hpp"
#include "numerics/sorting/sort_keys.hpp"

namespace vexel {

namespace {

constexpr int kPasses = 4;
constexpr int kKnown[kPasses + 2] = {0, 0, 20, 35, 50, 64};  // bits before each pass, and after all
constexpr std::uint32_t kVersion = 3;                        // 2 took 16 bits in every pass
constexpr std::size_t kMostQuantiles = 250;
constexpr std::size_t nowhere = static_cast<std::size_t>(-1);
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

constexpr std::size_t cellsOfPass(int pass) {
  return std::size_t{1} << (kKnown[pass + 1] - kKnown[pass]);
}

constexpr std::size_t kHashes = std::size_t{1} << 16;
constexpr std::size_t hash(std::uint64_t prefix) {
  return static_cast<std::size_t>(prefix * 0x9E3779B97F4A7C15 >> 48);  // 2^64 over the golden ratio
}

}  // namespace

struct Ranks::Search {
  Missing policy;
  QuantileMethod method;
  std::vector<double> q;
  std::int64_t missing = 0;
  int pass = 1;  // kPasses + 1: all is found
  bool fed = false;
  kernels::ExactTotals weight{1};
  // Of the order statistics looked for, two for each quantile once the total weight is known: the
  // bits found so far, and the weight of what has smaller ones.
  std::vector<std::uint64_t> found;
  kernels::ExactTotals before;
  // The weights by the next bits, for each of the distinct bits so far.
  std::vector<std::uint64_t> prefixes{0};
  // Of the prefixes' hashes: most numbers are nobody's, and need no search.
  std::bitset<kHashes> lookedFor;
  kernels::ExactTotals counts{cellsOfPass(1)};

  Search(Data probabilities, QuantileMethod definition, Missing missingPolicy)
      : policy(missingPolicy), method(definition), q(probabilities.size()) {
    if (q.size() > kMostQuantiles) {
      throw std::length_error(mustBe("q", "at most 250 probabilities", std::to_string(q.size())));
    }
    for (std::size_t i = 0; i < q.size(); ++i) {
      q[i] = probabilities[i];
      if (q[i] < 0 || q[i] > 1) {
        throw std::domain_error(mustBe("q", "probabilities from 0 to 1", number(q[i])));
      }
    }
  }

  bool over() const { return pass > kPasses; }

  // Where counts has the cells of a prefix; nowhere if nobody looks for it.
  std::size_t cellsOf(std::uint64_t prefix) const {
    const auto at = std::lower_bound(prefixes.begin(), prefixes.end(), prefix);
    return at == prefixes.end() || *at != prefix
               ? nowhere
               : static_cast<std::size_t>(at - prefixes.begin()) * cellsOfPass(pass);
  }

  // The cell of a number in this pass, or nowhere.
  std::size_t cellOf(double x) const {
    const std::uint64_t key = nag2::ascendingKey(x);
    const auto bits =
        static_cast<std::size_t>(key >> (64 - kKnown[pass + 1])) & (cellsOfPass(pass) - 1);
    if (pass == 1) {
      return bits;
    }
    const std::uint64_t prefix = key >> (64 - kKnown[pass]);
    if (!lookedFor[hash(prefix)]) {
      return nowhere;
    }
    const std::size_t cells = cellsOf(prefix);
    return cells == nowhere ? nowhere : cells + bits;
  }

  void take(double x, double w) {
    if (const std::size_t cell = cellOf(x); cell != nowhere) {
      counts.add(cell, w);
    }
    if (pass == 1) {
      weight.add(0, w);
    }
  }

  // Of weight 1 each; how many are missing.
  std::int64_t take(std::span<const double> x) {
    const auto absent = std::count_if(x.begin(), x.end(), isMissing<double>);
    if (policy == Missing::raise && absent > 0) {
      throwMissing("update");
    }
    kernels::inStretches(x.size(), [&](std::size_t begin, std::size_t end) {
      for (std::size_t i = begin; i < end; ++i) {
        if (isMissing(x[i])) {
          continue;
        }
        if (const std::size_t cell = cellOf(x[i]); cell != nowhere) {
          counts.add(cell, 1);
        }
      }
    });
    if (pass == 1) {
      weight.add(0, static_cast<double>(x.size()) - static_cast<double>(absent));
    }
    return absent;
  }

  // The targets of all quantiles, low and high in turn.
  std::vector<Place> places() const {
    std::vector<Place> all;
    for (const double p : q) {
      all.push_back(placeOf(std::isnan(p) ? 0.0 : p, weight.total(0), method));
    }
    return all;
  }

  void startPass() {
    ++pass;
    fed = false;
    prefixes = found;
    std::sort(prefixes.begin(), prefixes.end());
    prefixes.erase(std::unique(prefixes.begin(), prefixes.end()), prefixes.end());
    lookedFor.reset();
    for (const std::uint64_t prefix : prefixes) {
      lookedFor.set(hash(prefix));
    }
    counts = kernels::ExactTotals(over() ? 0 : prefixes.size() * cellsOfPass(pass));
  }

  void step() {
    if (over()) {
      return;
    }
    if (weight.isZero(0)) {
      pass = kPasses + 1;
      counts = {};
      return;
    }
    if (pass == 1) {
      found.assign(2 * q.size(), 0);
      before = kernels::ExactTotals(found.size());
    }
    const std::vector<Place> all = places();
    for (std::size_t i = 0; i < found.size(); ++i) {
      settle(i, i % 2 == 0 ? all[i / 2].low : all[i / 2].high);
    }
    startPass();
  }

  // The next bits of order statistic i.
  void settle(std::size_t i, Target target) {
    const std::size_t cells = cellsOf(found[i]);
    kernels::ExactTotals sum(1);
    sum.merge(0, before, i);
    std::size_t last = nowhere;
    counts.forEach(cells, cells + cellsOfPass(pass), [&](std::size_t cell) {
      before.assign(i, sum, 0);
      sum.merge(0, counts, cell);
      last = cell - cells;
      const double reached = sum.total(0);
      return !(target.beyond ? reached > target.weight : reached >= target.weight);
    });
    if (last == nowhere) {
      throw std::logic_error("Ranks: a pass did not have the data of the first one");
    }
    found[i] = found[i] << (kKnown[pass + 1] - kKnown[pass]) | last;
  }
};

Ranks::Ranks(Data q, QuantileMethod method, Missing missing)
    : search_(std::make_shared<Search>(q, method, missing)) {}
Ranks::Ranks(const Ranks& other) : search_(std::make_shared<Search>(*other.search_)) {}
Ranks& Ranks::operator=(const Ranks& other) {
  search_ = std::make_shared<Search>(*other.search_);
  return *this;
}

Ranks& Ranks::update(Data x, Data weights) {
  if (search_->over()) {
    return *this;
  }
  changeAll(search_, [&](Search& s) {
    const std::int64_t missing =
        weights.given()
            ? takePairs(x, weights, s.policy, [&](double value, double w) { s.take(value, w); })
            : s.take(Doubles(x).span());
    s.missing += s.pass == 1 ? missing : 0;
    s.fed |= x.size() > 0;
  });
  return *this;
}

Ranks& Ranks::merge(const Ranks& other) {
  const Search theirs = *other.search_;
  Search& s = *search_;
  const auto same = [](double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); };
  if (s.method != theirs.method || s.pass != theirs.pass || s.found != theirs.found ||
      !std::equal(s.q.begin(), s.q.end(), theirs.q.begin(), theirs.q.end(), same)) {
    throw std::invalid_argument("Ranks: other quantiles, or another pass");
  }
  s.counts.merge(theirs.counts);
  if (s.pass == 1) {
    s.weight.merge(0, theirs.weight, 0);
    s.missing += theirs.missing;
  }
  s.fed |= theirs.fed;
  return *this;
}

bool Ranks::done() const { return search_->over() || (search_->pass == kPasses && search_->fed); }

Ranks& Ranks::next_pass() {
  search_->step();
  return *this;
}

int Ranks::pass() const { return search_->pass; }

std::span<const double> Ranks::q() const { return search_->q; }

QuantileMethod Ranks::method() const { return search_->method; }

std::vector<double> Ranks::result() const {
  if (!done()) {
    throw std::logic_error("Ranks: there are passes to come");
  }
  Search s = *search_;
  s.step();
  std::vector<double> out(s.q.size(), kNan);
  if (s.found.empty() || (s.missing > 0 && s.policy == Missing::propagate)) {
    return out;
  }
  const std::vector<Place> all = s.places();
  for (std::size_t i = 0; i < out.size(); ++i) {
    if (!std::isnan(s.q[i])) {
      out[i] = between(nag2::fromAscendingKey<double>(s.found[2 * i]),
                       nag2::fromAscendingKey<double>(s.found[2 * i + 1]), all[i].fraction);
    }
  }
  return out;
}

double Ranks::weight() const { return search_->weight.total(0); }
std::int64_t Ranks::missing() const { return search_->missing; }

std::vector<std::uint8_t> Ranks::to_bytes() const {
  const Search& s = *search_;
  ByteWriter out("rank", kVersion);
  out.put(static_cast<std::uint8_t>(s.policy)).put(static_cast<std::uint8_t>(s.method)).put(s.q);
  out.put(s.missing).put(static_cast<std::uint8_t>(s.pass)).put(static_cast<std::uint8_t>(s.fed));
  putTotals(out, s.weight);
  out.put(s.found);
  putTotals(out, s.before);
  putTotals(out, s.counts);
  return out.finish();
}

Ranks Ranks::from_bytes(std::span<const std::uint8_t> bytes) {
  ByteReader in(bytes, "rank", kVersion, "Ranks", kVersion);
  const Missing policy = getMissing(in);
  const auto method = in.get<std::uint8_t>();
  in.check(method <= static_cast<std::uint8_t>(QuantileMethod::normal_unbiased),
           "there is no such definition");
  const auto q = in.getVector<double>();
  in.check(q.size() <= kMostQuantiles &&
               std::none_of(q.begin(), q.end(), [](double p) { return p < 0 || p > 1; }),
           "these are no probabilities");
  Ranks r(q, static_cast<QuantileMethod>(method), policy);
  Search& s = *r.search_;
  s.missing = getCount(in);
  const int pass = in.get<std::uint8_t>();
  in.check(pass >= 1 && pass <= kPasses + 1, "there is no such pass");
  s.pass = pass;
  const bool fed = in.get<bool>();
  s.weight = getTotals(in, 1);
  s.found = in.getVector<std::uint64_t>();
  const bool searching = pass > 1 && !s.weight.isZero(0);
  in.check(s.found.size() == (searching ? 2 * q.size() : 0),
           "the order statistics are not two each");
  in.check(!(pass > 1 && pass <= kPasses && s.weight.isZero(0)), "a search without data goes on");
  for (const std::uint64_t bits : s.found) {
    in.check(s.over() || bits >> kKnown[pass] == 0, "there are more bits than passes");
  }
  s.before = getTotals(in, s.found.size());
  if (pass > 1) {
    s.pass = pass - 1;
    s.startPass();
  }
  s.fed = fed;
  s.counts = getTotals(in, s.counts.size());
  in.finish();
  return r;
}

}  // namespace vexel
