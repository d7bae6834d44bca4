// Means, moments, deviations, quantiles, summaries, covariances.
#include <vexel/descriptive.hpp>

#include "bindings.hpp"
#include "calls.hpp"

namespace vexel::python {

namespace {

// The arguments that reductions share.
struct Common {
  py::handle weights;
  py::handle policy;
  py::handle axis;
  bool keepdims;
  py::handle out;
  py::handle progress;
};

// One number from each lane: f(x, weights, missing).
template <typename F>
py::object reduction(py::handle object, const Common& c, F f, const ReductionOfMany& ofMany = {}) {
  Input x(object, "x");
  Input w(c.weights, "weights", Input::optional);
  const Missing missing = missingPolicy(c.policy);
  if (!c.keepdims && c.axis.is_none() && c.out.is_none() && c.progress.is_none() &&
      x.dimensions() <= 1 && x.size() < 1000 && w.dimensions() <= 1) {
    return py::float_(f(x.vector(), w.vector(), missing));
  }
  return reduce(
      x, w, {c.axis, c.keepdims, c.out, c.progress, ofMany}, {},
      [&](const Data& lane, const Data& wl, double* result) { *result = f(lane, wl, missing); });
}

// What sorts short lanes many at a time; nothing for all elements.
template <typename F>
ReductionOfMany shortLanes(py::handle axis, F reduce) {
  constexpr std::size_t longest = 1024;
  constexpr std::size_t fewest = 16;
  return axis.is_none() ? ReductionOfMany() : ReductionOfMany{reduce, longest, longest, fewest, 8};
}

py::object meanOf(py::handle x, py::handle kind, py::handle weights, py::handle policy,
                  py::handle axis, Flag<"keepdims"> keepdims, py::handle out, py::handle progress) {
  const Mean which = choose<Mean>(kind, "kind");
  const auto ofOne = [=](const Data& d, const Data& w, Missing missing) {
    return vexel::mean(d, {.weights = w, .kind = which, .missing = missing});
  };
  const Common common{weights, policy, axis, keepdims, out, progress};
  if (axis.is_none() || which != Mean::arithmetic) {
    return reduction(x, common, ofOne);
  }
  const MeanOptions plain{.missing = missingPolicy(policy)};
  return reduction(
      x, common, ofOne,
      {[=](const Columns& lanes, std::span<double> means) { vexel::mean(lanes, means, plain); },
       128});
}

py::object trimmedMeanOf(py::handle x, Number<"cut"> lower, Number<"cut"> upper, bool winsorized,
                         py::handle weights, py::handle policy, py::handle axis,
                         Flag<"keepdims"> keepdims, py::handle out, py::handle progress) {
  return reduction(x, {weights, policy, axis, keepdims, out, progress},
                   [=](const Data& d, const Data& w, Missing missing) {
                     const auto f = winsorized ? vexel::winsorized_mean : vexel::trimmed_mean;
                     return f(d, Cut(lower, upper), {.weights = w, .missing = missing});
                   });
}

py::object momentOf(py::handle object, py::handle order, py::handle center, py::handle weights,
                    py::handle policy, py::handle axis, Flag<"keepdims"> keepdims, py::handle out,
                    py::handle progress) {
  std::optional<double> about;
  if (!center.is_none()) {
    about = readNumber(center, "center");
  }
  if (Input(order, "order").isNumber()) {
    const int k = static_cast<int>(readWhole(order, "order", 0, 64));
    return reduction(object, {weights, policy, axis, keepdims, out, progress},
                     [=](const Data& d, const Data& w, Missing missing) {
                       return vexel::moment(d, k,
                                            {.weights = w, .center = about, .missing = missing});
                     });
  }
  std::vector<int> orders;
  for (const std::int64_t k : readWholes(order, "order")) {
    orders.push_back(static_cast<int>(std::clamp<std::int64_t>(k, -1, 1000)));
  }
  Input x(object, "x");
  Input w(weights, "weights", Input::optional);
  const Missing missing = missingPolicy(policy);
  const py::ssize_t leading[] = {static_cast<py::ssize_t>(orders.size())};
  return reduce(x, w, {axis, keepdims, out, progress}, leading,
                [&](const Data& d, const Data& wl, double* result) {
                  std::ranges::copy(
                      vexel::moment(d, std::span<const int>(orders),
                                    {.weights = wl, .center = about, .missing = missing}),
                      result);
                });
}

template <auto f, auto ofMany>
py::object varianceOf(py::handle x, Number<"ddof"> ddof, py::handle weights, py::handle policy,
                      py::handle axis, Flag<"keepdims"> keepdims, py::handle out,
                      py::handle progress) {
  const VarianceOptions plain{.ddof = ddof, .missing = missingPolicy(policy)};
  return reduction(
      x, {weights, policy, axis, keepdims, out, progress},
      [=](const Data& d, const Data& w, Missing missing) {
        return f(d, {.weights = w, .ddof = ddof, .missing = missing});
      },
      {[=](const Columns& lanes, std::span<double> results) { ofMany(lanes, results, plain); },
       8192});
}

template <auto f>
py::object shapeOf(py::handle x, Flag<"bias"> bias, py::handle weights, py::handle policy,
                   py::handle axis, Flag<"keepdims"> keepdims, py::handle out,
                   py::handle progress) {
  return reduction(x, {weights, policy, axis, keepdims, out, progress},
                   [=](const Data& d, const Data& w, Missing missing) {
                     return f(d, {.weights = w, .bias = bias, .missing = missing});
                   });
}

py::object meanDeviationOf(py::handle x, py::handle center, py::handle weights, py::handle policy,
                           py::handle axis, Flag<"keepdims"> keepdims, py::handle out,
                           py::handle progress) {
  const Center about = choose<Center>(center, "center");
  return reduction(x, {weights, policy, axis, keepdims, out, progress},
                   [=](const Data& d, const Data& w, Missing missing) {
                     return vexel::mean_absolute_deviation(
                         d, {.weights = w, .center = about, .missing = missing});
                   });
}

py::object medianDeviationOf(py::handle x, Number<"scale"> scale, py::handle weights,
                             py::handle policy, py::handle axis, Flag<"keepdims"> keepdims,
                             py::handle out, py::handle progress) {
  return reduction(
      x, {weights, policy, axis, keepdims, out, progress},
      [=](const Data& d, const Data& w, Missing missing) {
        return vexel::median_absolute_deviation(d,
                                                {.weights = w, .scale = scale, .missing = missing});
      },
      shortLanes(axis,
                 [plain = MedianDeviationOptions{.scale = scale, .missing = missingPolicy(policy)}](
                     const Columns& lanes, std::span<double> results) {
                   vexel::median_absolute_deviation(lanes, results, plain);
                 }));
}

// Where it is the ends that are asked for, lanes of any length.
ReductionOfMany quantilesOfMany(py::handle axis, const Data& q, const QuantileOptions& options) {
  bool ends = true;
  for (std::size_t i = 0; i < q.size(); ++i) {
    ends = ends && (q[i] == 0.0 || q[i] == 1.0);
  }
  ReductionOfMany many = shortLanes(axis, [=](const Columns& lanes, std::span<double> results) {
    vexel::quantile(lanes, q, results, options);
  });
  if (ends) {
    many.longest = many.longestBeside = ReductionOfMany::unlimited;
    many.fewest = 2;
    many.lengthPerLane = ReductionOfMany::unlimited;
  }
  return many;
}

py::object quantileOf(py::handle object, py::handle probabilities, py::handle method,
                      py::handle weights, py::handle policy, py::handle axis,
                      Flag<"keepdims"> keepdims, py::handle out, py::handle progress) {
  const auto definition = choose<QuantileMethod>(method, "method");
  Input q(probabilities, "q");
  const QuantileOptions plain{.method = definition, .missing = missingPolicy(policy)};
  if (q.isNumber()) {
    const double p = q.number();
    return reduction(
        object, {weights, policy, axis, keepdims, out, progress},
        [=](const Data& d, const Data& w, Missing missing) {
          return vexel::quantile(d, p, {.weights = w, .method = definition, .missing = missing});
        },
        quantilesOfMany(axis, Data(&p, 1), plain));
  }
  const Data at = q.flat();
  Input x(object, "x");
  Input w(weights, "weights", Input::optional);
  const Missing missing = missingPolicy(policy);
  return reduce(
      x, w, {axis, keepdims, out, progress, quantilesOfMany(axis, at, plain)}, q.shape(),
      [&](const Data& d, const Data& wl, double* result) {
        std::ranges::copy(
            vexel::quantile(d, at, {.weights = wl, .method = definition, .missing = missing}),
            result);
      });
}

py::object medianOf(py::handle x, py::handle weights, py::handle policy, py::handle axis,
                    Flag<"keepdims"> keepdims, py::handle out, py::handle progress) {
  return reduction(
      x, {weights, policy, axis, keepdims, out, progress},
      [](const Data& d, const Data& w, Missing missing) {
        return vexel::median(d, {.weights = w, .missing = missing});
      },
      shortLanes(axis, [plain = WeightedOptions{.missing = missingPolicy(policy)}](
                           const Columns& lanes, std::span<double> results) {
        vexel::median(lanes, results, plain);
      }));
}

py::object iqrOf(py::handle x, py::handle method, py::handle weights, py::handle policy,
                 py::handle axis, Flag<"keepdims"> keepdims, py::handle out, py::handle progress) {
  const auto definition = choose<QuantileMethod>(method, "method");
  return reduction(
      x, {weights, policy, axis, keepdims, out, progress},
      [=](const Data& d, const Data& w, Missing missing) {
        return vexel::iqr(d, {.weights = w, .method = definition, .missing = missing});
      },
      shortLanes(axis,
                 [plain = QuantileOptions{.method = definition, .missing = missingPolicy(policy)}](
                     const Columns& lanes, std::span<double> results) {
                   vexel::iqr(lanes, results, plain);
                 }));
}

ReductionOfMany ranksOfMany(py::handle axis, std::span<const std::int64_t> ranks,
                            const WeightedOptions& options) {
  return shortLanes(axis, [=](const Columns& lanes, std::span<double> results) {
    vexel::order_statistic(lanes, ranks, results, options);
  });
}

py::object orderStatisticOf(py::handle object, py::handle k, py::handle weights, py::handle policy,
                            py::handle axis, Flag<"keepdims"> keepdims, py::handle out,
                            py::handle progress) {
  const WeightedOptions plain{.missing = missingPolicy(policy)};
  if (Input(k, "k").isNumber()) {
    const std::int64_t which = readWhole(k, "k");
    return reduction(
        object, {weights, policy, axis, keepdims, out, progress},
        [=](const Data& d, const Data& w, Missing missing) {
          return vexel::order_statistic(d, which, {.weights = w, .missing = missing});
        },
        ranksOfMany(axis, {&which, 1}, plain));
  }
  const std::vector<std::int64_t> ranks = readWholes(k, "k");
  Input x(object, "x");
  Input w(weights, "weights", Input::optional);
  const Missing missing = missingPolicy(policy);
  const py::ssize_t leading[] = {static_cast<py::ssize_t>(ranks.size())};
  return reduce(x, w, {axis, keepdims, out, progress, ranksOfMany(axis, ranks, plain)}, leading,
                [&](const Data& d, const Data& wl, double* result) {
                  std::ranges::copy(vexel::order_statistic(d, std::span<const std::int64_t>(ranks),
                                                           {.weights = wl, .missing = missing}),
                                    result);
                });
}

// The five numbers in a leading axis.
py::object fiveNumberOf(py::handle object, py::handle weights, py::handle policy, py::handle axis,
                        py::handle progress) {
  Input x(object, "x");
  Input w(weights, "weights", Input::optional);
  const Missing missing = missingPolicy(policy);
  const py::ssize_t leading[] = {5};
  const auto write = [](const FiveNumber& f, double* to, std::size_t apart) {
    const double fields[] = {f.min, f.lower_hinge, f.median, f.upper_hinge, f.max};
    for (const double field : fields) {
      *to = field;
      to += apart;
    }
  };
  const ReductionOfMany ofMany =
      shortLanes(axis, [=](const Columns& lanes, std::span<double> results) {
        std::vector<FiveNumber> fives(lanes.count());
        vexel::five_number(lanes, fives, {.missing = missing});
        for (std::size_t j = 0; j < fives.size(); ++j) {
          write(fives[j], &results[j], fives.size());
        }
      });
  return reduce(x, w, {axis, false, py::none(), progress, ofMany}, leading,
                [&](const Data& d, const Data& wl, double* result) {
                  write(vexel::five_number(d, {.weights = wl, .missing = missing}), result, 1);
                });
}

// The eleven fields in a leading axis.
py::object describeOf(py::handle object, py::handle weights, py::handle policy, py::handle axis,
                      py::handle progress) {
  Input x(object, "x");
  Input w(weights, "weights", Input::optional);
  const Missing missing = missingPolicy(policy);
  const py::ssize_t leading[] = {11};
  return reduce(x, w, {axis, false, py::none(), progress}, leading,
                [&](const Data& lane, const Data& wl, double* result) {
                  const Description d = vexel::describe(lane, {.weights = wl, .missing = missing});
                  const double fields[] = {d.count,   static_cast<double>(d.missing),
                                           d.mean,    d.std,
                                           d.min,     d.q1,
                                           d.median,  d.q3,
                                           d.max,     d.skewness,
                                           d.kurtosis};
                  std::ranges::copy(fields, result);
                });
}

// f(columns) for the columns of a matrix.
template <typename F>
py::array ofColumns(const Input& x, py::handle progress, F f) {
  if (x.dimensions() != 2) {
    throw py::value_error(mustBe("x", "a matrix with a variable in each column, or given with y",
                                 "an array of shape " + shapeText(x.shape())));
  }
  std::vector<Data> columns;
  for (py::ssize_t k = 0; k < x.shape()[1]; ++k) {
    columns.push_back(x.lane(0, k * x.byteStride(1)));
  }
  SquareMatrix result;
  {
    const Work work(x.size(), progress);
    result = f(std::span<const Data>(columns));
  }
  const auto size = static_cast<py::ssize_t>(result.size);
  return adopt(std::move(result.values)).reshape({size, size});
}

// One number from two vectors, or the matrix of a matrix' columns.
template <typename F, typename G>
py::object ofPairs(py::handle first, py::handle second, py::handle progress, F ofTwo, G ofMany) {
  Input x(first, "x");
  Input y(second, "y", Input::optional);
  if (!y.given()) {
    return ofColumns(x, progress, ofMany);
  }
  const Data a = x.vector();
  const Data b = y.vector();
  double result = 0;
  {
    const Work work(a.size(), progress);
    result = ofTwo(a, b);
  }
  return py::float_(result);
}

py::object covOf(py::handle x, py::handle y, Number<"ddof"> ddof, py::handle weights,
                 py::handle policy, py::handle progress) {
  Input w(weights, "weights", Input::optional);
  const CovarianceOptions options{
      .weights = w.vector(), .ddof = ddof, .missing = missingPolicy(policy)};
  return ofPairs(
      x, y, progress, [&](const Data& a, const Data& b) { return vexel::cov(a, b, options); },
      [&](std::span<const Data> columns) { return vexel::cov(columns, options); });
}

py::object corrOf(py::handle x, py::handle y, py::handle method, py::handle weights,
                  py::handle policy, py::handle progress) {
  Input w(weights, "weights", Input::optional);
  const CorrelationOptions options{.weights = w.vector(),
                                   .method = choose<Correlation>(method, "method"),
                                   .missing = missingPolicy(policy)};
  return ofPairs(
      x, y, progress, [&](const Data& a, const Data& b) { return vexel::corr(a, b, options); },
      [&](std::span<const Data> columns) { return vexel::corr(columns, options); });
}

}  // namespace

void bindStatistics(py::module_& m) {
  m.def("mean", &meanOf);
  m.def("trimmed_mean", &trimmedMeanOf);
  m.def("moment", &momentOf);
  constexpr auto variance = static_cast<double (*)(Data, const VarianceOptions&)>(&vexel::var);
  constexpr auto deviation = static_cast<double (*)(Data, const VarianceOptions&)>(&vexel::std);
  using OfMany = void (*)(const Columns&, std::span<double>, const VarianceOptions&);
  m.def("var", &varianceOf<variance, static_cast<OfMany>(&vexel::var)>);
  m.def("std", &varianceOf<deviation, static_cast<OfMany>(&vexel::std)>);
  m.def("skewness", &shapeOf<&vexel::skewness>);
  m.def("kurtosis", &shapeOf<&vexel::kurtosis>);
  m.def("mean_absolute_deviation", &meanDeviationOf);
  m.def("median_absolute_deviation", &medianDeviationOf);
  m.def("quantile", &quantileOf);
  m.def("median", &medianOf);
  m.def("iqr", &iqrOf);
  m.def("order_statistic", &orderStatisticOf);
  m.def("five_number", &fiveNumberOf);
  m.def("describe", &describeOf);
  m.def("cov", &covOf);
  m.def("corr", &corrOf);
}

}  // namespace vexel::python
