// States of the language: data that come in pieces, or from several places.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string_view>
#include <vexel/states.hpp>

#include "builtins/functions/call.hpp"
#include "builtins/functions/objects.hpp"
#include "builtins/functions/statistics.hpp"
#include "mathematics/elementwise.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/text.hpp"

namespace vexel {

namespace {

class StateObject : public Foreign {
 public:
  virtual void update(Call& call) = 0;
  virtual bool merge(const StateObject& other) = 0;  // false: of another kind
  virtual std::vector<std::uint8_t> bytes() const = 0;
};

ALGEB arrayOfReals(State& state, std::span<const double> x) {
  const RTableSettings settings{RTABLE_FLOAT64, RTABLE_RECTANGULAR, RTABLE_COLUMN_MAJOR, 1, 0};
  const V_INT bounds[] = {1, static_cast<V_INT>(x.size())};
  return newArray(state, settings, x.data(), bounds);
}

ALGEB matrixOf(State& state, const SquareMatrix& m) {
  const RTableSettings settings{RTABLE_FLOAT64, RTABLE_RECTANGULAR, RTABLE_ROW_MAJOR, 2, 0};
  const V_INT bounds[] = {1, static_cast<V_INT>(m.size), 1, static_cast<V_INT>(m.size)};
  return newArray(state, settings, m.values.data(), bounds);
}

ALGEB toValue(State& state, double x) { return newFloat(state, x); }
ALGEB toValue(State& state, std::int64_t x) { return newInteger(state, x); }
ALGEB toValue(State& state, int x) { return newInteger(state, x); }
ALGEB toValue(State& state, bool x) { return boolean(state, x); }
ALGEB toValue(State& state, const std::vector<double>& x) { return arrayOfReals(state, x); }
ALGEB toValue(State& state, const SquareMatrix& m) { return matrixOf(state, m); }

// The parts that a state has, by name.
template <typename S>
struct Part {
  const char* name;
  ALGEB (*get)(State&, const S&);
};
template <auto member, typename S>
ALGEB partOf(State& state, const S& s) {
  return toValue(state, (s.*member)());
}

template <typename S>
constexpr const char* kName = nullptr;
template <typename S>
constexpr std::string_view kTag{};  // what its bytes begin with, behind "vexl"
template <typename S>
constexpr Part<S> kParts[1] = {};

template <>
constexpr const char* kName<Sums> = "Sums";
template <>
constexpr std::string_view kTag<Sums> = "sums";
template <>
constexpr Part<Sums> kParts<Sums>[] = {{"sum", partOf<&Sums::sum>},
                                       {"mean", partOf<&Sums::mean>},
                                       {"weight", partOf<&Sums::weight>},
                                       {"count", partOf<&Sums::count>},
                                       {"missing", partOf<&Sums::missing>}};
template <>
constexpr const char* kName<Moments> = "Moments";
template <>
constexpr std::string_view kTag<Moments> = "mome";
template <>
constexpr Part<Moments> kParts<Moments>[] = {
    {"mean", partOf<&Moments::mean>},         {"var", partOf<&Moments::var>},
    {"std", partOf<&Moments::std>},           {"skewness", partOf<&Moments::skewness>},
    {"kurtosis", partOf<&Moments::kurtosis>}, {"weight", partOf<&Moments::weight>},
    {"count", partOf<&Moments::count>},       {"missing", partOf<&Moments::missing>}};
template <>
constexpr const char* kName<Covariance> = "Covariance";
template <>
constexpr std::string_view kTag<Covariance> = "cova";
template <>
constexpr Part<Covariance> kParts<Covariance>[] = {
    {"mean", partOf<&Covariance::mean>},   {"cov", partOf<&Covariance::cov>},
    {"corr", partOf<&Covariance::corr>},   {"weight", partOf<&Covariance::weight>},
    {"count", partOf<&Covariance::count>}, {"missing", partOf<&Covariance::missing>}};
template <>
constexpr const char* kName<Extremes> = "Extremes";
template <>
constexpr std::string_view kTag<Extremes> = "extr";
template <>
constexpr Part<Extremes> kParts<Extremes>[] = {{"min", partOf<&Extremes::min>},
                                               {"max", partOf<&Extremes::max>},
                                               {"count", partOf<&Extremes::count>},
                                               {"missing", partOf<&Extremes::missing>}};
template <>
constexpr const char* kName<Tally> = "Tally";
template <>
constexpr std::string_view kTag<Tally> = "taly";
template <>
constexpr Part<Tally> kParts<Tally>[] = {{"values", partOf<&Tally::values>},
                                         {"counts", partOf<&Tally::counts>},
                                         {"missing", partOf<&Tally::missing>}};
template <>
constexpr const char* kName<Histogram> = "Histogram";
template <>
constexpr std::string_view kTag<Histogram> = "hist";
template <>
constexpr Part<Histogram> kParts<Histogram>[] = {{"counts", partOf<&Histogram::counts>},
                                                 {"edges", partOf<&Histogram::edges>},
                                                 {"missing", partOf<&Histogram::missing>}};
template <>
constexpr const char* kName<DensityGrid> = "DensityGrid";
template <>
constexpr std::string_view kTag<DensityGrid> = "dgrd";
template <>
constexpr Part<DensityGrid> kParts<DensityGrid>[] = {{"x", partOf<&DensityGrid::x>},
                                                     {"weight", partOf<&DensityGrid::weight>},
                                                     {"missing", partOf<&DensityGrid::missing>}};
template <>
constexpr const char* kName<Ranks> = "Ranks";
template <>
constexpr std::string_view kTag<Ranks> = "rank";
template <>
constexpr Part<Ranks> kParts<Ranks>[] = {{"done", partOf<&Ranks::done>},
                                         {"pass", partOf<&Ranks::pass>},
                                         {"result", partOf<&Ranks::result>},
                                         {"weight", partOf<&Ranks::weight>},
                                         {"missing", partOf<&Ranks::missing>}};

template <typename S>
class Holder final : public StateObject {
 public:
  explicit Holder(S s) : held(std::move(s)) {}
  void update(Call& call) override {
    if constexpr (std::is_same_v<S, Covariance>) {
      held.update(call.columns("x"), call.data("weights"));
    } else {
      held.update(call.data("x"), call.data("weights"));
    }
  }
  bool merge(const StateObject& other) override {
    const auto* const same = dynamic_cast<const Holder*>(&other);
    if (same != nullptr) {
      held.merge(same->held);
    }
    return same != nullptr;
  }
  std::vector<std::uint8_t> bytes() const override { return held.to_bytes(); }
  void print(State&, std::string& out) const override { out += std::string(kName<S>) + "()"; }
  ALGEB field(State& state, std::string_view part) override {
    for (const Part<S>& p : kParts<S>) {
      if (part == p.name) {
        return p.get(state, held);
      }
    }
    return nullptr;
  }

  S held;
};

template <typename S>
ALGEB hold(Call& call, S s) {
  return newForeign(call.state(), Tag::foreign, std::make_unique<Holder<S>>(std::move(s)), 1024);
}

ALGEB makeSums(Call& call) { return hold(call, Sums(call.missing())); }

ALGEB makeMoments(Call& call) {
  const auto order = static_cast<int>(std::clamp<std::int64_t>(call.integer("order", 4), 0, 100));
  return hold(call, Moments(order, call.missing()));
}

ALGEB makeCovariance(Call& call) { return hold(call, Covariance(call.size("k"), call.missing())); }

ALGEB makeExtremes(Call& call) { return hold(call, Extremes(call.missing())); }

ALGEB makeTally(Call& call) { return hold(call, Tally(call.missing())); }

ALGEB makeHistogram(Call& call) {
  return hold(call, Histogram(call.data("edges"), call.missing()));
}

ALGEB makeDensityGrid(Call& call) {
  return hold(call, DensityGrid(*call.range("bounds"), call.size("points"), call.missing()));
}

ALGEB makeRanks(Call& call) {
  const double one[] = {isContainer(call.value("q")) ? 0 : call.number("q")};
  return hold(call, Ranks(isContainer(call.value("q")) ? call.data("q") : Data(one),
                          quantileMethodOf(call), call.missing()));
}

StateObject& stateFor(Call& call, const char* parameter) {
  auto* const found = objectOf<StateObject>(call.value(parameter));
  if (found == nullptr) {
    call.refuse(parameter, "a state such as Moments()");
  }
  return *found;
}

ALGEB update(Call& call) {
  stateFor(call, "state").update(call);
  return call.value("state");
}

ALGEB merge(Call& call) {
  if (!stateFor(call, "state").merge(stateFor(call, "other"))) {
    call.refuse("other", "a state of the same kind");
  }
  return call.value("state");
}

// A state's bytes or those of a Random, as an array of 0 to 255.
ALGEB toBytes(Call& call) {
  std::vector<std::int64_t> bytes;
  if (const auto* const random = objectOf<RandomObject>(call.value("state"))) {
    for (const std::byte b : random->random.to_bytes()) {
      bytes.push_back(std::to_integer<std::int64_t>(b));
    }
  } else {
    const std::vector<std::uint8_t> held = stateFor(call, "state").bytes();
    bytes.assign(held.begin(), held.end());
  }
  return call.integers(bytes, nullptr);
}

// The state that the bytes say they are of, null where they name none.
template <typename... S>
ALGEB stateFrom(Call& call, std::span<const std::uint8_t> bytes) {
  const std::string_view head(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  ALGEB found = nullptr;
  if (head.substr(0, 4) == "vexl") {
    ((found = head.substr(4, 4) == kTag<S> ? hold(call, S::from_bytes(bytes)) : found), ...);
  }
  return found;
}

ALGEB fromBytes(Call& call) {
  const Data data = call.data("bytes");
  std::vector<std::uint8_t> bytes(data.size());
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    lookAtInterrupt();
    if (!(data[i] >= 0 && data[i] <= 255 && data[i] == std::floor(data[i]))) {
      call.refuse("bytes", "whole numbers from 0 to 255");
    }
    bytes[i] = static_cast<std::uint8_t>(data[i]);
  }
  const ALGEB found =
      stateFrom<Sums, Moments, Covariance, Extremes, Tally, Histogram, DensityGrid, Ranks>(call,
                                                                                           bytes);
  if (found != nullptr) {
    return found;
  }
  if (bytes.size() < 3 || bytes[0] != 'V' || bytes[1] != 'X' || bytes[2] != 'R') {
    call.refuse("bytes", "what to_bytes has given");
  }
  return newForeign(call.state(), Tag::foreign,
                    std::make_unique<RandomObject>(
                        Random::from_bytes(std::as_bytes(std::span(std::as_const(bytes))))),
                    2048);
}

ALGEB nextPass(Call& call) {
  auto* const ranks = objectOf<Holder<Ranks>>(call.value("state"));
  if (ranks == nullptr) {
    call.refuse("state", "a Ranks");
  }
  ranks->held.next_pass();
  return call.value("state");
}

ALGEB densityOfGrid(Call& call) {
  auto* const grid = objectOf<Holder<DensityGrid>>(call.value("state"));
  if (grid == nullptr) {
    call.refuse("state", "a DensityGrid");
  }
  return call.reals(grid->held.density(call.number("bandwidth"), densityKernelOf(call)), nullptr);
}

ALGEB momentOf(Call& call, const Holder<Moments>& moments) {
  return call.real(moments.held.moment(
      static_cast<int>(std::clamp<std::int64_t>(call.integer("order"), -1, 100))));
}

ALGEB momentOfMoments(Call& call) {
  auto* const moments = objectOf<Holder<Moments>>(call.value("state"));
  if (moments == nullptr) {
    call.refuse("state", "a Moments");
  }
  return momentOf(call, *moments);
}

}  // namespace

ALGEB momentOfState(Call& call) {
  auto* const moments = objectOf<Holder<Moments>>(call.value("x"));
  return moments == nullptr ? nullptr : momentOf(call, *moments);
}

ALGEB resultOfState(State& state, ALGEB x, std::string_view name) {
  auto* const found = objectOf<StateObject>(x);
  return found == nullptr ? nullptr : found->field(state, name);
}

namespace {

constexpr FunctionRow kRows[] = {
    {"Sums", "; missing = propagate", "a state: sum, mean, weight, count, missing",
     "s := update(Sums(), [1e100, 1, -1e100]): s[sum];", makeSums},
    {"Moments", "order = 4; missing = propagate",
     "a state: mean, var, std, skewness, kurtosis, weight, count, missing",
     "a := update(Moments(), [1, 2]): b := update(Moments(), [3, 4]): merge(a, b)[var];",
     makeMoments},
    {"Covariance", "k; missing = propagate",
     "a state of k columns: mean, cov, corr, weight, count, missing",
     "c := update(Covariance(2), [[1, 2, 3], [2, 4, 7]]): c[mean];", makeCovariance},
    {"Extremes", "; missing = propagate", "a state: min, max, count, missing",
     "e := update(Extremes(), [3, 1, 2]): e[min], e[max];", makeExtremes},
    {"Tally", "; missing = propagate", "a state: values, counts, missing",
     "t := update(Tally(), [2, 1, 2]): t[counts];", makeTally},
    {"Histogram", "edges; missing = propagate", "a state: counts, edges, missing",
     "h := update(Histogram([0, 1, 2]), [0.5, 1.5, 2]): h[counts];", makeHistogram},
    {"DensityGrid", "bounds, points; missing = propagate",
     "a state: x, weight, missing; see density",
     "g := update(DensityGrid(0 .. 4, 5), [1, 2, 3]): density(g, 1);", makeDensityGrid},
    {"Ranks", "q; method = linear, missing = propagate",
     "a state of exact quantiles in passes: done, result, pass, weight, missing",
     "r := Ranks(0.5): while not r[done] do update(r, [3, 1, 2]); if not r[done] then next_pass(r) "
     "end end: r[result];",
     makeRanks},
    {"update", "state, x; weights", "takes data into a state, and gives the state",
     "update(Extremes(), [1, 2])[max];", update},
    {"merge", "state, other", "takes another state of the same kind in, and gives the state",
     "merge(update(Sums(), [1]), update(Sums(), [2]))[sum];", merge},
    {"to_bytes", "state",
     "the bytes of a state or a Random, for from_bytes here, in C++ and Python",
     "count(to_bytes(Random(1)));", toBytes},
    {"from_bytes", "bytes", "the state or Random that to_bytes was asked for",
     "from_bytes(to_bytes(update(Sums(), [1, 2])))[sum];", fromBytes},
    {"next_pass", "state", "begins the next pass of a Ranks", nullptr, nextPass},
    {"density", "state, bandwidth; kernel = gaussian", "the density at the points of a DensityGrid",
     nullptr, densityOfGrid},
    {"moment_of", "state, order", "a moment about the mean of a Moments",
     "moment_of(update(Moments(), [1, 2, 3]), 2);", momentOfMoments},
};

}  // namespace

void defineStateFunctions(State& state) { defineRows(state, kRows); }

}  // namespace vexel
