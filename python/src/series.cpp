// Moving statistics, filters, autocorrelation; hypothesis tests.
#include <algorithm>
#include <vexel/hypothesis.hpp>
#include <vexel/series.hpp>

#include "bindings.hpp"
#include "calls.hpp"

namespace vexel::python {

namespace {

py::array movingOf(py::handle object, Whole<"window"> window, py::handle statistic, py::handle q,
                   Whole<"min_count"> minCount, py::handle align, py::handle edges,
                   py::handle weights, py::handle policy, py::handle axis, py::handle out,
                   py::handle progress) {
  if (window < 1) {
    throw py::value_error(mustBe("window", "at least 1", std::to_string(window.value)));
  }
  if (minCount < 0) {
    throw py::value_error(mustBe("min_count", "at least 0", std::to_string(minCount.value)));
  }
  Input x(object, "x");
  Input w(weights, "weights", Input::optional);
  const MovingOptions options{.min_count = static_cast<std::size_t>(minCount),
                              .edges = choose<Edges>(edges, "edges"),
                              .align = choose<Align>(align, "align"),
                              .missing = missingPolicy(policy)};
  const auto size = static_cast<std::size_t>(window);
  const auto along = [&](auto what) {
    return map(x, w, {axis, out, progress}, [&](const Data& lane, const Data& wl, void* to) {
      MovingOptions o = options;
      o.weights = wl;
      vexel::moving(lane, size, what, std::span(static_cast<double*>(to), lane.size()), o);
      return lane.size();
    });
  };
  if (PyCallable_Check(statistic.ptr()) != 0) {
    // The lock is taken for each window.
    return along(WindowStatistic([&](std::span<const double> values) {
      const py::gil_scoped_acquire lock;
      return readResult(statistic(toArray(values)), "statistic");
    }));
  }
  if (textOf(statistic) == "quantile") {
    return along(Quantile{readNumber(q, "q")});
  }
  return along(choose<Statistic>(statistic, "statistic", ", \"quantile\" or a callable"));
}

std::vector<double> copyOf(const Data& data) {
  std::vector<double> values(data.size());
  for (std::size_t i = 0; i < values.size(); ++i) {
    values[i] = data[i];
  }
  return values;
}

py::array filterOf(py::handle object, py::handle taps, Flag<"recursive"> recursive,
                   py::handle initial, py::handle axis, py::handle out, py::handle progress) {
  Input x(object, "x");
  Input none(py::none(), "weights", Input::optional);
  Input t(taps, "taps");
  Input i(initial, "initial", Input::optional);
  // Copies, which `out` may not overlap.
  const std::vector<double> weights = copyOf(t.vector());
  const std::vector<double> before = copyOf(i.vector());
  const FilterOptions options{.recursive = recursive, .initial = before};
  return map(x, none, {axis, out, progress}, [&](const Data& lane, const Data&, void* to) {
    vexel::filter(lane, weights, std::span(static_cast<double*>(to), lane.size()), options);
    return lane.size();
  });
}

std::vector<std::size_t> readLags(py::handle lags) {
  std::vector<std::size_t> result;
  for (const std::int64_t lag : readWholes(lags, "lags")) {
    if (lag < 0) {
      throw py::value_error(mustBe("lags", "whole numbers from 0 on", std::to_string(lag)));
    }
    result.push_back(static_cast<std::size_t>(lag));
  }
  return result;
}

// A number means the lags from 0 to it.
py::object autocorrelationOf(py::handle object, py::handle lags, py::handle policy, py::handle axis,
                             py::handle out, py::handle progress) {
  Input x(object, "x");
  Input none(py::none(), "weights", Input::optional);
  std::vector<std::size_t> at = readLags(lags);
  if (Input(lags, "lags").isNumber()) {
    const std::size_t last = at.at(0);
    if (last >= static_cast<std::size_t>(std::max<py::ssize_t>(x.size(), 1))) {
      throw py::value_error(mustBe("lags",
                                   "less than the number of elements, " + std::to_string(x.size()),
                                   std::to_string(last)));
    }
    at.clear();
    for (std::size_t k = 0; k <= last; ++k) {
      at.push_back(k);
    }
  }
  const AutocorrelationOptions options{.missing = missingPolicy(policy)};
  const py::ssize_t leading[] = {static_cast<py::ssize_t>(at.size())};
  return reduce(x, none, {axis, false, out, progress}, leading,
                [&](const Data& lane, const Data&, double* result) {
                  std::ranges::copy(vexel::autocorrelation(lane, at, options), result);
                });
}

py::tuple pairOf(const TestResult& r) { return py::make_tuple(r.statistic, r.pvalue); }

py::tuple shapiroOf(py::handle object, py::handle policy, py::handle progress) {
  Input x(object, "x");
  const Data data = x.flat();
  const Missing missing = missingPolicy(policy);
  TestResult result{};
  {
    const Work work(data.size(), progress);
    result = vexel::shapiro(data, {.missing = missing});
  }
  return pairOf(result);
}

// cdf: a callable of one float.
py::tuple ksTestOf(py::handle object, py::handle cdf, py::handle policy, py::handle progress) {
  Input x(object, "x");
  const Data data = x.flat();
  const Missing missing = missingPolicy(policy);
  const Work work(Work::keepLock, progress);
  const auto function = [&](double t) { return readResult(cdf(py::float_(t)), "distribution"); };
  return pairOf(vexel::ks_test(data, function, {.missing = missing}));
}

py::tuple chiSquareTestOf(py::handle observed, py::handle expected, Number<"ddof"> ddof,
                          py::handle policy, py::handle progress) {
  Input o(observed, "observed");
  Input e(expected, "expected", Input::optional);
  const Data counts = o.flat();
  const Data wanted = e.flat();
  TestResult result{};
  const ChiSquareTestOptions options{.ddof = ddof, .missing = missingPolicy(policy)};
  {
    const Work work(counts.size(), progress);
    result = vexel::chi_square_test(counts, wanted, options);
  }
  return pairOf(result);
}

py::tuple tTestOf(py::handle first, Number<"mean"> mean, py::handle policy, py::handle progress) {
  Input x(first, "x");
  const Data data = x.flat();
  TestResult result{};
  const TTestOptions options{.missing = missingPolicy(policy)};
  {
    const Work work(data.size(), progress);
    result = vexel::t_test(data, mean, options);
  }
  return pairOf(result);
}

py::tuple tTestOfTwo(py::handle first, py::handle second, Flag<"equal_var"> equalVar,
                     py::handle policy, py::handle progress) {
  Input x(first, "x");
  Input y(second, "y");
  const Data a = x.flat();
  const Data b = y.flat();
  TestResult result{};
  const TTestOptions options{.equal_var = equalVar, .missing = missingPolicy(policy)};
  {
    const Work work(a.size() + b.size(), progress);
    result = vexel::t_test(a, b, options);
  }
  return pairOf(result);
}

}  // namespace

void bindSeries(py::module_& m) {
  m.def("moving", &movingOf);
  m.def("filter", &filterOf);
  m.def("autocorrelation", &autocorrelationOf);
  m.def("shapiro", &shapiroOf);
  m.def("ks_test", &ksTestOf);
  m.def("chi_square_test", &chiSquareTestOf);
  m.def("t_test", &tTestOf);
  m.def("t_test_two", &tTestOfTwo);
}

}  // namespace vexel::python
