// Laws of the language: the 34 of vexel/distributions.hpp, made from their lists of parameters,
// laws of one's own, and the functions of any law.

#include <vexel/distributions.hpp>
#include <vexel/own_laws.hpp>

#include "builtins/functions/call.hpp"
#include "builtins/functions/objects.hpp"
#include "builtins/functions/statistics.hpp"
#include "mathematics/elementwise.hpp"
#include "values/errors.hpp"
#include "values/language.hpp"
#include "values/numbers.hpp"
#include "values/text.hpp"

namespace vexel {

namespace {

// What the laws of the library and one's own have in common.
template <typename L>
class LawOf : public LawObject {
 public:
  explicit LawOf(L l) : law(std::move(l)) {}

  double at(LawFunction f, double x) const override {
    switch (f) {
      case LawFunction::pdf:
        if constexpr (requires { law.pmf(x); }) {
          return law.pmf(x);
        } else {
          return law.pdf(x);
        }
      case LawFunction::logpdf:
        if constexpr (requires { law.logpmf(x); }) {
          return law.logpmf(x);
        } else {
          return law.logpdf(x);
        }
      case LawFunction::cdf:
        return law.cdf(x);
      case LawFunction::sf:
        return law.sf(x);
      case LawFunction::logcdf:
        return law.logcdf(x);
      case LawFunction::logsf:
        return law.logsf(x);
      case LawFunction::quantile:
        return law.quantile(x);
      default:
        return law.isf(x);
    }
  }
  void at(LawFunction f, Data x, std::span<double> out) const override {
    switch (f) {
      case LawFunction::pdf:
        if constexpr (requires { law.pmf(x); }) {
          return law.pmf(x, out);
        } else {
          return law.pdf(x, out);
        }
      case LawFunction::logpdf:
        if constexpr (requires { law.logpmf(x); }) {
          return law.logpmf(x, out);
        } else {
          return law.logpdf(x, out);
        }
      case LawFunction::cdf:
        return law.cdf(x, out);
      case LawFunction::sf:
        return law.sf(x, out);
      case LawFunction::logcdf:
        return law.logcdf(x, out);
      case LawFunction::logsf:
        return law.logsf(x, out);
      case LawFunction::quantile:
        return law.quantile(x, out);
      default:
        return law.isf(x, out);
    }
  }
  double moment(LawMoment m) const override {
    switch (m) {
      case LawMoment::mean:
        return law.mean();
      case LawMoment::var:
        return law.var();
      case LawMoment::std:
        return law.std();
      case LawMoment::skewness:
        return law.skewness();
      case LawMoment::kurtosis:
        return law.kurtosis();
      default:
        return law.median();
    }
  }
  Interval support() const override { return law.support(); }
  Interval interval(double level) const override { return law.interval(level); }
  std::vector<double> sample(std::size_t n, Random& rng) const override {
    return law.sample(n, rng);
  }

  L law;
};

// The value of a parameter as the language has it.
ALGEB valueOf(State& state, double x) { return newFloat(state, x); }
ALGEB valueOf(State& state, std::int64_t x) { return newInteger(state, x); }
ALGEB valueOf(State& state, Data x) {
  const RTableSettings settings{RTABLE_FLOAT64, RTABLE_RECTANGULAR, RTABLE_COLUMN_MAJOR, 1, 0};
  const V_INT bounds[] = {1, static_cast<V_INT>(x.size())};
  const ALGEB array = newArray(state, settings, nullptr, bounds);
  for (std::size_t i = 0; i < x.size(); ++i) {
    static_cast<double*>(arrayOf(array).data)[i] = x[i];
  }
  return array;
}

std::string textOf(double x) { return doubleText(x); }
std::string textOf(std::int64_t x) { return std::to_string(x); }
std::string textOf(Data x) { return std::to_string(x.size()) + " values"; }

template <typename L>
class LibraryLaw final : public LawOf<L> {
 public:
  using LawOf<L>::LawOf;
  double logLikelihood(Data x, Data weights, Missing missing) const override {
    return this->law.log_likelihood(x, {.weights = weights, .missing = missing});
  }
  bool discrete() const override { return L::discrete; }
  bool equals(const Foreign& other) const override {
    const auto* const same = dynamic_cast<const LibraryLaw*>(&other);
    return same != nullptr && same->law == this->law;
  }
  void print(State&, std::string& out) const override {
    out += std::string(L::name) + "(";
    const auto& parameters = this->law.parameters();
    bool first = true;
    std::apply(
        [&](const auto&... f) {
          ((out +=
            (first ? "" : ", ") + std::string(f.name) + " = " + textOf(parameters.*(f.member)),
            first = false),
           ...);
        },
        L::fields);
    out += ")";
  }
  ALGEB field(State& state, std::string_view part) override {
    ALGEB found = nullptr;
    const auto& parameters = this->law.parameters();
    std::apply(
        [&](const auto&... f) {
          ((found = part == f.name ? valueOf(state, parameters.*(f.member)) : found), ...);
        },
        L::fields);
    return found;
  }
  ALGEB parameters(State& state) const override {
    const ALGEB result = newTable(state);
    const auto& parameters = this->law.parameters();
    std::apply(
        [&](const auto&... f) {
          ((table(result).assign(name(state, f.name), valueOf(state, parameters.*(f.member)))),
           ...);
        },
        L::fields);
    return result;
  }
};

template <typename L>
class UsersLaw final : public LawOf<L> {
 public:
  // f is what the law is printed with, second the other procedure that it calls, or null.
  UsersLaw(L l, ALGEB f, ALGEB second) : LawOf<L>(std::move(l)), function_(f), second_(second) {}
  double logLikelihood(Data x, Data, Missing) const override { return this->law.log_likelihood(x); }
  void print(State& state, std::string& out) const override {
    const Interval s = this->law.support();
    out += std::string(std::is_same_v<L, Density> ? "Density(" : "CumulativeDistribution(");
    appendSource(state, out, function_);
    out += ", support = " + textOf(s.low) + " .. " + textOf(s.high) + ")";
  }
  void mark(Marker& marker) override {
    marker.mark(function_);
    if (second_ != nullptr) {
      marker.mark(second_);
    }
  }
  ALGEB parameters(State& state) const override { return newTable(state); }

 private:
  ALGEB function_;
  ALGEB second_;
};

ALGEB newLaw(State& state, std::unique_ptr<LawObject> law) {
  return newForeign(state, Tag::foreign, std::move(law), 512);
}

template <typename T>
T argumentFor(Call& call, const char* parameter, double fallback) {
  if constexpr (std::is_same_v<T, double>) {
    return call.number(parameter, fallback);
  } else if constexpr (std::is_same_v<T, std::int64_t>) {
    return call.integer(parameter, fallback == fallback ? static_cast<std::int64_t>(fallback) : 0);
  } else {
    return call.data(parameter);
  }
}

template <typename L>
ALGEB makeLaw(Call& call) {
  typename L::Parameters parameters{};
  std::apply(
      [&](const auto&... f) {
        ((parameters.*(f.member) =
              argumentFor<typename std::decay_t<decltype(f)>::Type>(call, f.name, f.fallback)),
         ...);
      },
      L::fields);
  return newLaw(call.state(), std::make_unique<LibraryLaw<L>>(L(parameters)));
}

template <typename L>
ALGEB fitLaw(Call& call) {
  if constexpr (requires { L::fit(Data(), FitOptions{}); }) {
    return newLaw(call.state(), std::make_unique<LibraryLaw<L>>(L::fit(
                                    call.data("x"),
                                    {.weights = call.data("weights"), .missing = call.missing()})));
  } else if constexpr (requires { L::fit(Data(), typename L::FitOptions{}); }) {
    typename L::FitOptions options{};
    if constexpr (requires { options.n; }) {
      options.n = call.integer("n", -1);
    }
    if constexpr (requires { options.population; }) {
      options.population = call.integer("population", -1);
    }
    if constexpr (requires { options.drawn; }) {
      options.drawn = call.integer("drawn", -1);
    }
    options.weights = call.data("weights");
    options.missing = call.missing();
    return newLaw(call.state(), std::make_unique<LibraryLaw<L>>(L::fit(call.data("x"), options)));
  } else {
    call.refuse("law", "a law that can be fitted");
  }
}

ALGEB fit(Call& call) {
  const std::string wanted = call.word("law");
  ALGEB result = nullptr;
  Laws::forEach([&]<typename L>() {
    if (result == nullptr && wanted == L::name) {
      result = fitLaw<L>(call);
    }
  });
  if (result == nullptr) {
    call.refuse("law", "the name of a law");
  }
  return result;
}

const LawObject& lawOf(Call& call) {
  const LawObject* const law = objectOf<LawObject>(call.value("law"));
  if (law == nullptr) {
    call.refuse("law", "a law");
  }
  return *law;
}

template <typename F>
ALGEB valuesOf(Call& call, const char* parameter, F f) {
  const ALGEB x = call.value(parameter);
  if (!isContainer(x)) {
    return call.real(f(call.number(parameter)));
  }
  const Data from = call.data(parameter);
  std::vector<double> out(from.size());
  for (std::size_t i = 0; i < out.size(); ++i) {
    lookAtInterrupt();
    out[i] = f(from[i]);
  }
  return call.reals(out, x);
}

// A kernel density has these two of a law's functions, and sample.
const KernelDensity* kernelDensityOf(Call& call) {
  const auto* const found = objectOf<DensityObject>(call.value("law"));
  return found == nullptr ? nullptr : &found->density;
}

template <LawFunction f>
ALGEB functionOfLaw(Call& call) {
  if constexpr (f == LawFunction::pdf || f == LawFunction::cdf) {
    if (const KernelDensity* const d = kernelDensityOf(call)) {
      return valuesOf(call, "x",
                      [d](double t) { return f == LawFunction::pdf ? (*d)(t) : d->cdf(t); });
    }
  }
  return lawValues(call, lawOf(call), f, "x");
}

ALGEB intervalOfLaw(Call& call) {
  const Interval i = lawOf(call).interval(call.number("level"));
  return newPair(call.state(), Tag::range, call.real(i.low), call.real(i.high));
}

ALGEB supportOfLaw(Call& call) {
  const Interval s = lawOf(call).support();
  return newPair(call.state(), Tag::range, call.real(s.low), call.real(s.high));
}

ALGEB logLikelihood(Call& call) {
  return call.real(lawOf(call).logLikelihood(call.data("x"), call.data("weights"), call.missing()));
}

ALGEB parametersOfLaw(Call& call) { return lawOf(call).parameters(call.state()); }

ALGEB sample(Call& call) {
  if (const auto* const urn = objectOf<UrnObject>(call.value("law"))) {
    return call.positions(urn->urn.sample(call.size("size", 1), call.random()));
  }
  const KernelDensity* const d = kernelDensityOf(call);
  const std::size_t n = call.size("size", 1);
  const std::vector<double> x =
      d != nullptr ? d->sample(n, call.random()) : lawOf(call).sample(n, call.random());
  return call.given("size") ? call.reals(x, nullptr) : call.real(x[0]);
}

// The procedure that a parameter is, or that its text says; null where it is not given.
ALGEB procedureFor(Call& call, const char* parameter) {
  if (!call.given(parameter)) {
    return nullptr;
  }
  ALGEB f = call.value(parameter);
  if (is(f, Tag::string)) {
    f = call.keep(call.state().language->runStatements(call.state(), std::string(text(f)) + "\n;"));
  }
  if (!isProcedure(f)) {
    call.refuse(parameter, "a procedure or the text of one");
  }
  return f;
}

// A procedure's values for a law, which keeps the handle; none of none.
std::function<double(double)> functionOf(Call& call, ALGEB procedure) {
  if (procedure == nullptr) {
    return {};
  }
  return NumericProcedure(call.state(), procedure);
}

Interval supportFor(Call& call, Interval fallback) {
  return call.given("support") ? *call.range("support") : fallback;
}

constexpr Interval kLine{-std::numeric_limits<double>::infinity(),
                         std::numeric_limits<double>::infinity()};

ALGEB density(Call& call) {
  const ALGEB f = procedureFor(call, "f");
  const ALGEB derivative = procedureFor(call, "derivative");
  DensityOptions options{.support = supportFor(call, kLine),
                         .log = call.boolean("log"),
                         .derivative = functionOf(call, derivative)};
  if (call.given("mode")) {
    options.mode = call.number("mode");
  }
  return newLaw(call.state(), std::make_unique<UsersLaw<Density>>(
                                  Density(functionOf(call, f), options), f, derivative));
}

ALGEB cumulativeDistribution(Call& call) {
  const ALGEB f = procedureFor(call, "F");
  const ALGEB density = procedureFor(call, "density");
  const CumulativeDistributionOptions options{.support = supportFor(call, kLine),
                                              .density = functionOf(call, density)};
  return newLaw(call.state(),
                std::make_unique<UsersLaw<CumulativeDistribution>>(
                    CumulativeDistribution(functionOf(call, f), options), f, density));
}

constexpr FunctionRow kRows[] = {
    {"pdf", "law, x", "the density of a law", "pdf(Normal(), [0, 1]);",
     functionOfLaw<LawFunction::pdf>},
    {"pmf", "law, x", "the probability of a value of a discrete law", "pmf(Poisson(2), 1);",
     functionOfLaw<LawFunction::pdf>},
    {"logpdf", "law, x", "the logarithm of the density", "logpdf(Normal(), 100);",
     functionOfLaw<LawFunction::logpdf>},
    {"logpmf", "law, x", "the logarithm of the probability", "logpmf(Poisson(2), 1000);",
     functionOfLaw<LawFunction::logpdf>},
    {"cdf", "law, x", "the probability of at most x", "cdf(Gamma(shape = 5/2, scale = 2), 4);",
     functionOfLaw<LawFunction::cdf>},
    {"sf", "law, x", "the probability of more than x", "sf(Gamma(shape = 5/2, scale = 2), 40);",
     functionOfLaw<LawFunction::sf>},
    {"logcdf", "law, x", "the logarithm of cdf", "logcdf(Normal(), -1000);",
     functionOfLaw<LawFunction::logcdf>},
    {"logsf", "law, x", "the logarithm of sf", "logsf(StudentT(3), 1e200);",
     functionOfLaw<LawFunction::logsf>},
    {"ppf", "law, x", "the quantile of a law", "ppf(Binomial(10, 1/3), 0.5);",
     functionOfLaw<LawFunction::quantile>},
    {"isf", "law, x", "the value whose sf is x", "isf(Normal(), 1e-200);",
     functionOfLaw<LawFunction::isf>},
    {"interval", "law, level", "the central interval of that probability",
     "interval(Normal(), 0.95);", intervalOfLaw},
    {"support", "law", "the range of values", "support(Beta(2, 3));", supportOfLaw},
    {"parameters", "law", "a table of the parameters", "parameters(Gamma(2, 3));", parametersOfLaw},
    {"log_likelihood", "law, x; weights, missing = propagate",
     "the sum of the logarithms of the densities", "log_likelihood(Exponential(2), [1, 2, 3]);",
     logLikelihood},
    {"sample", "law, size = 1, rng = none", "exact variates of a law, a kernel density or an urn",
     "sample(Gamma(2, 3), 2, rng = 42);", sample},
    {"rvs", "law, size = 1, rng = none", "exact variates of a law, as sample",
     "rvs(Poisson(3), 4, rng = 42);", sample},
    {"fit", "law, x; n, population, drawn, weights, missing = propagate",
     "the law of that name with the largest likelihood", "fit(Exponential, [1, 2, 6]);", fit},
    {"Density", "f; support = -infinity .. infinity, log = false, mode, derivative",
     "the law with the density f, which need not integrate to 1",
     "own := Density(t -> exp(-t^4), support = -5 .. 5): cdf(own, 0);", density},
    {"CumulativeDistribution", "F; support = -infinity .. infinity, density",
     "the law with the distribution function F",
     "own := CumulativeDistribution(t -> t^2, support = 0 .. 1): median(own);",
     cumulativeDistribution},
};

template <typename L>
std::string parameterList() {
  std::string list;
  std::apply(
      [&](const auto&... f) {
        ((list += (list.empty() ? "" : ", ") + std::string(f.name) +
                  (f.fallback == f.fallback ? " = " + textOf(f.fallback) : "")),
         ...);
      },
      L::fields);
  return list;
}

}  // namespace

ALGEB lawValues(Call& call, const LawObject& law, LawFunction f, const char* parameter) {
  const ALGEB x = call.value(parameter);
  if (!isContainer(x)) {
    return call.real(law.at(f, call.number(parameter)));
  }
  const Data from = call.data(parameter);
  std::vector<double> out(from.size());
  law.at(f, from, out);
  return call.reals(out, x);
}

void defineLawFunctions(State& state) {
  defineRows(state, kRows);
  Laws::forEach([&]<typename L>() {
    static const std::string parameters = parameterList<L>();
    const FunctionRow row{L::name, parameters.c_str(), "a law", nullptr, makeLaw<L>};
    defineRows(state, std::span<const FunctionRow>(&row, 1));
  });
}

}  // namespace vexel
