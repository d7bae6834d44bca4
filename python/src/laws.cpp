#include "laws.hpp"

#include <cmath>
#include <vexel/distributions.hpp>
#include <vexel/hypothesis.hpp>

#include "bindings.hpp"
#include "calls.hpp"
#include "random.hpp"

namespace vexel::python {

namespace {

// ---- parameters from Python and back

void readParameter(py::handle value, const char* name, double& to) { to = readNumber(value, name); }

void readParameter(py::handle value, const char* name, std::int64_t& to) {
  to = readWhole(value, name);
}

// Field k of the parameters from element k of the values; data are kept by `inputs`.
template <typename L>
typename L::Parameters readParameters(const py::tuple& values,
                                      std::array<std::optional<Input>, 2>& inputs) {
  typename L::Parameters parameters{};
  std::size_t k = 0;
  std::apply(
      [&](const auto&... field) {
        const auto read = [&](const auto& f) {
          auto& to = parameters.*(f.member);
          if constexpr (std::is_same_v<std::remove_cvref_t<decltype(to)>, Data>) {
            to = inputs.at(k).emplace(values[k], f.name, k > 0).vector();
          } else {
            readParameter(values[k], f.name, to);
          }
          ++k;
        };
        (read(field), ...);
      },
      L::fields);
  return parameters;
}

template <typename L>
class LawOf final : public LawFrame<L> {
 public:
  using LawFrame<L>::LawFrame;

  double likelihood(const Data& x, const Data& weights, Missing missing) const override {
    return this->law().log_likelihood(x, {.weights = weights, .missing = missing});
  }
  bool whole() const override { return L::discrete && !std::is_same_v<L, Empirical>; }
  py::dict parameters() const override {
    const auto& parameters = this->law().parameters();
    py::dict result;
    std::apply(
        [&](const auto&... field) {
          const auto write = [&](const auto& f) {
            const auto& value = parameters.*(f.member);
            if constexpr (std::is_same_v<std::remove_cvref_t<decltype(value)>, Data>) {
              result[f.name] = toArray(value.doubles());
            } else {
              result[f.name] = value;
            }
          };
          (write(field), ...);
        },
        L::fields);
    return result;
  }
};

template <typename L>
std::unique_ptr<AnyLaw> fitted(const Data& x, const Data& weights, Missing missing,
                               const py::dict& given, py::handle progress) {
  if constexpr (requires { &L::fit; }) {
    using Options = decltype([]<typename O>(L (*)(Data, const O&)) { return O{}; }(&L::fit));
    Options options{};
    options.weights = weights;
    options.missing = missing;
    if constexpr (requires { options.n; }) {
      readParameter(given["n"], "n", options.n);
    }
    if constexpr (requires { options.population; }) {
      readParameter(given["population"], "population", options.population);
      readParameter(given["drawn"], "drawn", options.drawn);
    }
    const Work work(x.size(), progress);
    return std::make_unique<LawOf<L>>(L::fit(x, options));
  } else {
    throw py::type_error(std::string(L::name) + " cannot be fitted");
  }
}

// Calls f.template operator()<L>() for the law of that name.
template <typename F>
std::unique_ptr<AnyLaw> byName(std::string_view name, F f) {
  std::unique_ptr<AnyLaw> result;
  Laws::forEach([&]<typename L>() {
    if (name == L::name) {
      result = f.template operator()<L>();
    }
  });
  if (!result) {
    throw py::value_error("no law of the name " + std::string(name));
  }
  return result;
}

std::unique_ptr<AnyLaw> makeLaw(const std::string& name, const py::tuple& values) {
  return byName(name, [&]<typename L>() -> std::unique_ptr<AnyLaw> {
    std::array<std::optional<Input>, 2> inputs;
    return std::make_unique<LawOf<L>>(L(readParameters<L>(values, inputs)));
  });
}

std::unique_ptr<AnyLaw> fitLaw(const std::string& name, py::handle object, py::handle weights,
                               py::handle policy, const py::dict& given, py::handle progress) {
  Input x(object, "x");
  Input w(weights, "weights", Input::optional);
  const Data data = x.flat();
  const Data wd = w.flat();
  const Missing missing = missingPolicy(policy);
  return byName(name, [&]<typename L>() { return fitted<L>(data, wd, missing, given, progress); });
}

// ---- methods

template <LawFunction f>
py::object evaluate(const AnyLaw& law, py::handle x, py::handle out, py::handle progress) {
  if (PyFloat_Check(x.ptr()) && out.is_none() && progress.is_none()) {
    return py::float_(law.at(f, PyFloat_AS_DOUBLE(x.ptr())));
  }
  Input input(x, f == LawFunction::quantile ? "p" : f == LawFunction::isf ? "q" : "x");
  if (input.isNumber() && out.is_none()) {
    checkProgress(progress);
    return py::float_(law.at(f, input.number()));
  }
  return pointwise(input, out, progress,
                   [&](const Data& data, std::span<double> to) { law.at(f, data, to); });
}

py::object likelihoodOf(const AnyLaw& law, py::handle object, py::handle weights, py::handle policy,
                        py::handle progress) {
  Input x(object, "x");
  Input w(weights, "weights", Input::optional);
  const Data data = x.flat();
  const Data wd = w.flat();
  const Missing missing = missingPolicy(policy);
  double result = 0;
  {
    const Work work(data.size(), progress);
    result = law.likelihood(data, wd, missing);
  }
  return py::float_(result);
}

py::object sampleOf(const AnyLaw& law, py::handle size, py::handle rng, py::handle out,
                    py::handle progress) {
  Generator generator(rng);
  const py::object values = fillDoubles(
      "size", size, out, progress, [&] { return law.sample(*generator); },
      [&](std::span<double> to) { law.sample(to, *generator); });
  if (!law.whole() || !out.is_none()) {
    return values;
  }
  return size.is_none() ? py::object(py::int_(values)) : pythonHelper("whole")(values);
}

py::tuple pairOf(const Interval& interval) { return py::make_tuple(interval.low, interval.high); }

// Of one level, or of an array of them.
py::tuple intervalOf(const AnyLaw& law, py::handle object, py::handle progress) {
  Input level(object, "level");
  std::vector<double> upper;
  upper.reserve(level.size());
  const py::object lower =
      pointwise(level, py::none(), progress, [&](const Data& data, std::span<double> to) {
        for (std::size_t i = 0; i < to.size(); ++i) {
          const Interval ends = law.interval(data[i]);
          to[i] = ends.low;
          upper.push_back(ends.high);
        }
      });
  if (level.isNumber()) {
    return py::make_tuple(lower, upper[0]);
  }
  return py::make_tuple(lower, adopt(std::move(upper)).attr("reshape")(lower.attr("shape")));
}

struct CdfOf {
  const AnyLaw& law;
  double cdf(double t) const { return law.at(LawFunction::cdf, t); }
  void cdf(const Data& t, std::span<double> out) const { law.at(LawFunction::cdf, t, out); }
};

py::tuple ksTestOf(py::handle object, const AnyLaw& law, py::handle policy, py::handle progress) {
  Input x(object, "x");
  const Data data = x.flat();
  const Missing missing = missingPolicy(policy);
  TestResult result{};
  {
    const Work work(data.size(), progress);
    result = vexel::ks_test(data, CdfOf{law}, {.missing = missing});
  }
  return py::make_tuple(result.statistic, result.pvalue);
}

}  // namespace

void bindLaws(py::module_& m) {
  py::class_<AnyLaw>(m, "Law")
      .def("density", &evaluate<LawFunction::density>)
      .def("logdensity", &evaluate<LawFunction::logdensity>)
      .def("cdf", &evaluate<LawFunction::cdf>)
      .def("sf", &evaluate<LawFunction::sf>)
      .def("logcdf", &evaluate<LawFunction::logcdf>)
      .def("logsf", &evaluate<LawFunction::logsf>)
      .def("quantile", &evaluate<LawFunction::quantile>)
      .def("isf", &evaluate<LawFunction::isf>)
      .def("interval", &intervalOf)
      .def("support", [](const AnyLaw& l) { return pairOf(l.support()); })
      .def("mean", &AnyLaw::mean)
      .def("var", &AnyLaw::var)
      .def("std", &AnyLaw::std)
      .def("skewness", &AnyLaw::skewness)
      .def("kurtosis", &AnyLaw::kurtosis)
      .def("log_likelihood", &likelihoodOf)
      .def("sample", &sampleOf)
      .def("parameters", &AnyLaw::parameters);
  m.def("make_law", &makeLaw);
  m.def("fit_law", &fitLaw);
  m.def("ks_test_law", &ksTestOf);
}

}  // namespace vexel::python
