// Random numbers, the bootstrap, quasi-random sequences and roots of the language.

#include <vexel/random.hpp>
#include <vexel/roots.hpp>
#include <vexel/sampling.hpp>
#include <vexel/sequences.hpp>

#include "builtins/builtins.hpp"
#include "builtins/functions/call.hpp"
#include "builtins/functions/objects.hpp"
#include "builtins/functions/statistics.hpp"
#include "mathematics/elementwise.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"

namespace vexel {

namespace {

template <typename T>
T& objectFor(Call& call, const char* parameter, const char* expected) {
  T* const found = objectOf<T>(call.value(parameter));
  if (found == nullptr) {
    call.refuse(parameter, expected);
  }
  return *found;
}

ALGEB makeRandom(Call& call) {
  const std::uint64_t block = call.unsignedInteger("block");
  Random random = call.given("seed") ? Random(call.unsignedInteger("seed"), block) : Random();
  return newForeign(call.state(), Tag::foreign, std::make_unique<RandomObject>(std::move(random)),
                    2048);
}

// One number without a size, else an array.
template <typename Draw>
ALGEB draws(Call& call, Draw draw) {
  const std::vector<double> x = draw(call.random(), call.size("n", 1));
  return call.given("n") ? call.reals(x, nullptr) : call.real(x[0]);
}

ALGEB uniform(Call& call) {
  return draws(call, [](Random& r, std::size_t n) { return r.uniform(n); });
}
ALGEB normal(Call& call) {
  return draws(call, [](Random& r, std::size_t n) { return r.normal(n); });
}
ALGEB exponential(Call& call) {
  return draws(call, [](Random& r, std::size_t n) { return r.exponential(n); });
}

ALGEB integers(Call& call) {
  const auto x =
      call.random().integers(call.integer("low"), call.integer("high"), call.size("n", 1));
  return call.given("n") ? call.integers(x, nullptr) : newInteger(call.state(), x[0]);
}

// The elements at positions from 0 of a list or array.
ALGEB chosen(Call& call, ALGEB x, std::span<const std::int64_t> at) {
  State& state = call.state();
  Handles all(state);
  elementsOf(state, x, all);
  Handles result(state);
  for (const std::int64_t i : at) {
    result.push(all[static_cast<std::size_t>(i)]);
  }
  if (isList(x)) {
    return newList(state, result.span());
  }
  const RTableSettings settings{arrayOf(x).type, RTABLE_RECTANGULAR, RTABLE_COLUMN_MAJOR, 1, 0};
  const V_INT bounds[] = {1, static_cast<V_INT>(at.size())};
  const ALGEB array = newArray(state, settings, nullptr, bounds);
  for (std::size_t i = 0; i < at.size(); ++i) {
    setElementAt(array, static_cast<std::int64_t>(i),
                 objectToElement(state, arrayOf(x).type, result[i]));
  }
  return array;
}

std::size_t sizeOf(ALGEB x) {
  return isArray(x) ? static_cast<std::size_t>(arrayOf(x).count) : countOf(x);
}

// Elements of a list, or numbers from 1 to x.
ALGEB choiceOf(Call& call) {
  const ALGEB x = call.value("x");
  if (!isContainer(x) && !isInteger(x)) {
    call.refuse("x", "a list, an array or how many");
  }
  const std::size_t size = isContainer(x) ? sizeOf(x) : call.size("x");
  auto at = choice(size, call.size("n"), call.random(),
                   {.weights = call.data("weights"), .replace = call.boolean("replace", true)});
  return isContainer(x) ? chosen(call, x, at) : call.positions(std::move(at));
}

ALGEB permutationOf(Call& call) {
  const ALGEB n = call.value("n");
  if (isContainer(n)) {
    return chosen(call, n, permutation(sizeOf(n), call.random()));
  }
  return call.positions(permutation(call.size("n"), call.random()));
}

// In place, as its name says.
ALGEB shuffleOf(Call& call) {
  State& state = call.state();
  const ALGEB x = call.value("x");
  if (!isContainer(x) || (isArray(x) && arrayOf(x).readOnly != 0)) {
    call.refuse("x", "a list or an array that can be changed");
  }
  const auto order = permutation(sizeOf(x), call.random());
  Handles all(state);
  elementsOf(state, x, all);
  for (std::size_t i = 0; i < order.size(); ++i) {
    const ALGEB e = all[static_cast<std::size_t>(order[i])];
    if (isList(x)) {
      setOperand(x, i + 1, e);
    } else {
      setElementAt(x, static_cast<std::int64_t>(i), objectToElement(state, arrayOf(x).type, e));
    }
  }
  return x;
}

ALGEB jump(Call& call) {
  objectFor<RandomObject>(call, "rng", "a Random").random.jump();
  return call.value("rng");
}

ALGEB makeUrn(Call& call) {
  return newForeign(call.state(), Tag::foreign,
                    std::make_unique<UrnObject>(Urn(call.data("weights"))));
}

ALGEB newUnsigned(State& state, std::uint64_t x) {
  BigInteger z;
  mpz_set_ui(z.get(), x);
  return newInteger(state, z.get());
}

ALGEB draw(Call& call) {
  const Urn& urn = objectFor<UrnObject>(call, "urn", "an Urn").urn;
  return call.positions(urn.sample(call.size("n"), call.random()));
}

ALGEB bootstrapOf(Call& call) {
  const BootstrapOptions options{.replicates = call.size("replicates", 9999),
                                 .confidence = call.number("confidence", 0.95),
                                 .method = call.choice("method", BootstrapMethod::BCa),
                                 .missing = call.missing()};
  const ALGEB statistic = call.value("statistic");
  State& state = call.state();
  Bootstrap b{};
  if (is(statistic, Tag::procedure)) {
    b = bootstrap(
        call.data("x"),
        [&](std::span<const double> x) {
          const ALGEB array = call.reals(x, nullptr);
          return doubleOfValue(state, apply(state, statistic, std::span<const ALGEB>(&array, 1)));
        },
        call.random(), options);
  } else {
    b = bootstrap(call.data("x"), statisticOf(call), call.random(), options);
  }
  return call.parts({{"estimate", call.real(b.estimate)},
                     {"standard_error", call.real(b.standard_error)},
                     {"interval", newPair(state, Tag::range, call.real(b.interval.low),
                                          call.real(b.interval.high))},
                     {"replicates", call.reals(b.replicates, nullptr)}});
}

// --- sequences

Scramble scrambleOf(Call& call) {
  const ALGEB x = call.value("scramble");
  if (x != nullptr && isBoolean(call.state(), x)) {
    return x == call.state().trueValue ? Scramble::owen : Scramble::none;
  }
  return call.choice("scramble", Scramble::none);
}

template <typename S>
ALGEB makeSequence(Call& call) {
  const Scramble scramble = scrambleOf(call);
  const std::size_t d = call.size("d");
  const std::uint64_t start = call.size("start");
  const auto wrap = [&](const char* name, PointSequence s) {
    return newForeign(call.state(), Tag::foreign,
                      std::make_unique<SequenceObject>(name, std::move(s)), 4096);
  };
  if constexpr (std::is_same_v<S, Sobol>) {
    return wrap(
        "Sobol",
        Sobol(d, {.scramble = scramble,
                  .rng = &call.random(),
                  .start = start,
                  .bits = static_cast<int>(std::min<std::size_t>(call.size("bits", 62), 1000))}));
  } else {
    return wrap(std::is_same_v<S, Halton> ? "Halton" : "Faure",
                S(d, {.scramble = scramble, .rng = &call.random(), .start = start}));
  }
}

PointSequence& sequenceFor(Call& call) {
  return objectFor<SequenceObject>(call, "sequence", "a Sobol, Halton or Faure sequence").sequence;
}

ALGEB pointsOf(Call& call) {
  PointSequence& s = sequenceFor(call);
  const std::size_t n = call.size("n");
  return call.matrix(s.points(n), n, s.dimension());
}

ALGEB skipOf(Call& call) {
  sequenceFor(call).skip(call.size("n"));
  return call.value("sequence");
}

ALGEB resetOf(Call& call) {
  sequenceFor(call).reset();
  return call.value("sequence");
}

// --- roots

NumericProcedure procedureFor(Call& call, const char* parameter) {
  if (!isProcedure(call.value(parameter))) {
    call.refuse(parameter, "a procedure");
  }
  return {call.state(), call.value(parameter)};
}

ALGEB findRoot(Call& call) {
  NumericProcedure f = procedureFor(call, "f");
  const Interval bracket = *call.range("bracket");
  RootOptions options{.target = call.number("target"),
                      .max_iterations = static_cast<int>(
                          std::min<std::int64_t>(call.integer("max_iterations", 100), 1'000'000))};
  if (call.given("derivative")) {
    options.derivative = procedureFor(call, "derivative");
  }
  if (call.given("tolerance")) {
    options.tolerance = call.number("tolerance");
  }
  const Root r = find_root(f, {bracket.low, bracket.high}, options);
  return call.parts({{"root", call.real(r.root)},
                     {"value", call.real(r.value)},
                     {"evaluations", newInteger(call.state(), r.evaluations)},
                     {"converged", boolean(call.state(), r.converged)}});
}

ALGEB findInteger(Call& call) {
  NumericProcedure f = procedureFor(call, "f");
  const auto end = [&](const char* parameter, std::int64_t open) {
    const ALGEB x = call.value(parameter);
    return isInfinite(call.state(), x) ? open : call.integer(parameter);
  };
  return newInteger(
      call.state(),
      find_integer([&](std::int64_t k) { return f(static_cast<double>(k)); }, end("low", openLow),
                   end("high", openHigh), {.target = call.number("target")}));
}

constexpr FunctionRow kRows[] = {
    {"Random", "seed = none, block = 0", "a stream of random numbers: R[seed], R[block]",
     "R := Random(42): uniform(2, rng = R), uniform(rng = R);", makeRandom},
    {"uniform", "n = 1; rng", "random numbers, uniform between 0 and 1", "uniform(2, rng = 42);",
     uniform},
    {"normal", "n = 1; rng", "standard normal random numbers", "normal(2, rng = 42);", normal},
    {"exponential", "n = 1; rng", "standard exponential random numbers",
     "exponential(2, rng = 42);", exponential},
    {"integers", "low, high, n = 1; rng", "random integers low <= k < high",
     "integers(1, 7, 4, rng = 42);", integers},
    {"choice", "x, n; weights, replace = true, rng",
     "n elements of x at random, or numbers from 1 to x",
     "choice([\"x\", \"y\", \"z\"], 4, rng = 42);", choiceOf},
    {"permutation", "n, rng = none", "1 .. n, or a list or array, in random order",
     "permutation(5, rng = 42);", permutationOf},
    {"shuffle", "x, rng = none", "x in random order, in place", "shuffle([1, 2, 3, 4], rng = 42);",
     shuffleOf},
    {"jump", "rng", "moves a Random to its next block", "R := Random(42): jump(R);", jump},
    {"Urn", "weights", "positions with these probabilities, for draw", "U := Urn([1, 2, 1]);",
     makeUrn},
    {"draw", "urn, n, rng = none", "n positions, from 1, drawn from an urn",
     "draw(Urn([1, 2, 1]), 5, rng = 42);", draw},
    {"bootstrap",
     "x, statistic; replicates = 9999, confidence = 0.95, method = BCa, rng, missing = propagate",
     "estimate, standard error and confidence interval of a statistic",
     "b := bootstrap([1, 2, 4, 8, 9], median, replicates = 999, rng = 42): b[estimate], "
     "b[interval];",
     bootstrapOf},
    {"Sobol", "d; scramble = false, rng, start = 0, bits = 62",
     "Sobol's sequence in d dimensions: S[index], S[dimension]", "points(Sobol(2), 3);",
     makeSequence<Sobol>},
    {"Halton", "d; scramble = false, rng, start = 0", "Halton's sequence in d dimensions",
     "points(Halton(2), 3);", makeSequence<Halton>},
    {"Faure", "d; scramble = false, rng, start = 0", "Faure's sequence in d dimensions",
     "points(Faure(2, start = 1), 2);", makeSequence<Faure>},
    {"points", "sequence, n", "the next n points, a row each",
     "S := Sobol(1): points(S, 2): points(S, 2);", pointsOf},
    {"skip", "sequence, n", "moves a sequence on by n points", "skip(Sobol(1), 5);", skipOf},
    {"reset", "sequence", "moves a sequence back to its start", "reset(Sobol(1));", resetOf},
    {"find_root", "f, bracket; target = 0, derivative, tolerance, max_iterations = 100",
     "where f is target, within a range that may be open",
     "find_root(t -> cos(t) - t, 0 .. 1)[root];", findRoot},
    {"find_integer", "f, low, high; target = 0", "the smallest integer at which f reaches target",
     "find_integer(k -> k^2, 0, infinity, target = 50);", findInteger},
};

}  // namespace

void RandomObject::print(State&, std::string& out) const {
  out += "Random(" + std::to_string(random.seed()) + ", " + std::to_string(random.block()) + ")";
}

ALGEB RandomObject::field(State& state, std::string_view part) {
  return part == "seed"    ? newUnsigned(state, random.seed())
         : part == "block" ? newUnsigned(state, random.block())
                           : nullptr;
}

void UrnObject::print(State&, std::string& out) const {
  out += "Urn(" + std::to_string(urn.size()) + " positions)";
}

void SequenceObject::print(State&, std::string& out) const {
  out += std::string(name) + "(" + std::to_string(sequence.dimension()) +
         ", start = " + std::to_string(sequence.index()) + ")";
}

ALGEB SequenceObject::field(State& state, std::string_view part) {
  return part == "index"       ? newUnsigned(state, sequence.index())
         : part == "dimension" ? newUnsigned(state, sequence.dimension())
                               : nullptr;
}

void defineRandomFunctions(State& state) { defineRows(state, kRows); }

}  // namespace vexel
