// Sorting, ranks, tallies, histograms, cumulative sums, trimming.
#include <vexel/columns.hpp>
#include <vexel/ordering.hpp>

#include "bindings.hpp"
#include "calls.hpp"

namespace vexel::python {

namespace {

// Calls f.template operator()<T>() for the element type of x.
template <typename F>
auto byElement(Element element, F&& f) {
  switch (element) {
    case Element::float32:
      return f.template operator()<float>();
    case Element::int32:
      return f.template operator()<std::int32_t>();
    case Element::int64:
      return f.template operator()<std::int64_t>();
    default:
      return f.template operator()<double>();
  }
}

// What orders short lanes many at a time; large integers go one by one.
template <typename F>
MappingOfMany ofShort(const Input& x, F map, std::size_t longest) {
  return x.dimensions() < 2 || x.element() == Element::int64 ? MappingOfMany()
                                                             : MappingOfMany{map, longest};
}

py::array sortOf(py::handle object, py::handle axis, py::handle policy, py::handle out,
                 py::handle progress) {
  Input x(object, "x");
  Input none(py::none(), "weights", Input::optional);
  const SortOptions options{.missing = missingPolicy(policy)};
  return byElement(x.element(), [&]<typename T>() {
    const auto many = [&](const Columns& lanes, void* to, std::ptrdiff_t stride,
                          std::ptrdiff_t apart) {
      vexel::sort(lanes, ColumnsOut<T>{static_cast<T*>(to), stride, apart}, options);
    };
    return map(x, none, {axis, out, progress, x.element(), ofShort(x, many, 512)},
               [&](const Data& lane, const Data&, void* to) {
                 return vexel::sort(lane, std::span(static_cast<T*>(to), lane.size()), options);
               });
  });
}

py::array argsortOf(py::handle object, py::handle axis, py::handle policy, py::handle out,
                    py::handle progress) {
  Input x(object, "x");
  Input none(py::none(), "weights", Input::optional);
  const SortOptions options{.missing = missingPolicy(policy)};
  const auto many = [&](const Columns& lanes, void* to, std::ptrdiff_t stride,
                        std::ptrdiff_t apart) {
    vexel::argsort(lanes, ColumnsOut<std::int64_t>{static_cast<std::int64_t*>(to), stride, apart},
                   options);
  };
  return map(x, none, {axis, out, progress, Element::int64, ofShort(x, many, 256)},
             [&](const Data& lane, const Data&, void* to) {
               const std::span place(static_cast<std::int64_t*>(to), lane.size());
               const std::size_t n = vexel::argsort(lane, place, options);
               return lane.size() == x.size() ? n : lane.size();
             });
}

py::array rankOf(py::handle object, py::handle method, py::handle axis, py::handle policy,
                 py::handle out, py::handle progress) {
  Input x(object, "x");
  Input none(py::none(), "weights", Input::optional);
  const RankOptions options{.method = choose<RankMethod>(method, "method"),
                            .missing = missingPolicy(policy)};
  const auto many = [&](const Columns& lanes, void* to, std::ptrdiff_t stride,
                        std::ptrdiff_t apart) {
    vexel::rank(lanes, ColumnsOut<double>{static_cast<double*>(to), stride, apart}, options);
  };
  return map(x, none, {axis, out, progress, Element::float64, ofShort(x, many, 256)},
             [&](const Data& lane, const Data&, void* to) {
               vexel::rank(lane, std::span(static_cast<double*>(to), lane.size()), options);
               return lane.size();
             });
}

py::tuple tallyOf(py::handle object, py::handle weights, py::handle policy, py::handle progress) {
  Input x(object, "x");
  Input w(weights, "weights", Input::optional);
  const Data data = x.flat();
  const TallyOptions options{.weights = w.flat(), .missing = missingPolicy(policy)};
  return byElement(x.element(), [&]<typename T>() -> py::tuple {
    TallyResult<T> result;
    {
      const Work work(data.size(), progress);
      result = vexel::tallyOf<T>(data, options);
    }
    return py::make_tuple(adopt(std::move(result.values)), adopt(std::move(result.counts)),
                          result.missing);
  });
}

py::object modeOf(py::handle object, py::handle weights, py::handle policy, py::handle axis,
                  Flag<"keepdims"> keepdims, py::handle progress) {
  Input x(object, "x");
  Input w(weights, "weights", Input::optional);
  const Missing missing = missingPolicy(policy);
  return reduce(x, w, {axis, keepdims, py::none(), progress}, {},
                [&](const Data& lane, const Data& wl, double* result) {
                  *result = vexel::mode(lane, {.weights = wl, .missing = missing});
                });
}

// A count, a rule's name or edges; the edges are kept by `place`.
Bins readBins(py::handle bins, std::optional<Input>& place) {
  if (PyUnicode_Check(bins.ptr())) {
    return choose<BinRule>(bins, "bins");
  }
  place.emplace(bins, "bins");
  if (place->isNumber()) {
    return readWhole(bins, "bins", 1);
  }
  return place->vector();
}

std::optional<Interval> readRange(py::handle range) {
  return range.is_none() ? std::nullopt : std::optional(readPair(range, "range"));
}

py::tuple histogramOf(py::handle object, py::handle bins, py::handle range, Flag<"density"> density,
                      py::handle weights, py::handle policy, py::handle progress) {
  Input x(object, "x");
  Input w(weights, "weights", Input::optional);
  std::optional<Input> edges;
  const Bins how = readBins(bins, edges);
  const Data data = x.flat();
  const HistogramOptions options{.weights = w.flat(),
                                 .range = readRange(range),
                                 .density = density,
                                 .missing = missingPolicy(policy)};
  HistogramResult result;
  {
    const Work work(data.size(), progress);
    result = vexel::histogram(data, how, options);
  }
  return py::make_tuple(adopt(std::move(result.counts)), adopt(std::move(result.edges)),
                        result.missing);
}

py::tuple frequencyTableOf(py::handle object, py::handle bins, py::handle range, py::handle weights,
                           py::handle policy, py::handle progress) {
  Input x(object, "x");
  Input w(weights, "weights", Input::optional);
  std::optional<Input> edges;
  const Bins how = readBins(bins, edges);
  const Data data = x.flat();
  const HistogramOptions options{
      .weights = w.flat(), .range = readRange(range), .missing = missingPolicy(policy)};
  FrequencyTable t;
  {
    const Work work(data.size(), progress);
    t = vexel::frequency_table(data, how, options);
  }
  return py::make_tuple(adopt(std::move(t.lower)), adopt(std::move(t.upper)),
                        adopt(std::move(t.count)), adopt(std::move(t.relative)),
                        adopt(std::move(t.cumulative)));
}

py::array cumulativeOf(py::handle object, py::handle kind, py::handle weights, py::handle policy,
                       py::handle axis, py::handle out, py::handle progress) {
  Input x(object, "x");
  Input w(weights, "weights", Input::optional);
  CumulativeOptions options{.kind = choose<Cumulative>(kind, "kind"),
                            .missing = missingPolicy(policy)};
  return map(x, w, {axis, out, progress}, [&](const Data& lane, const Data& wl, void* to) {
    CumulativeOptions o = options;
    o.weights = wl;
    vexel::cumulative(lane, std::span(static_cast<double*>(to), lane.size()), o);
    return lane.size();
  });
}

py::array trimOf(py::handle object, Number<"cut"> lower, Number<"cut"> upper, py::handle weights,
                 py::handle policy, py::handle progress) {
  Input x(object, "x");
  Input w(weights, "weights", Input::optional);
  const Data data = x.flat();
  const TrimOptions options{.weights = w.flat(), .missing = missingPolicy(policy)};
  return byElement(x.element(), [&]<typename T>() -> py::array {
    std::vector<T> result;
    {
      const Work work(data.size(), progress);
      result = vexel::trimmed<T>(data, Cut(lower, upper), options);
    }
    return adopt(std::move(result));
  });
}

py::array winsorizeOf(py::handle object, Number<"cut"> lower, Number<"cut"> upper,
                      py::handle weights, py::handle policy, py::handle axis, py::handle out,
                      py::handle progress) {
  Input x(object, "x");
  Input w(weights, "weights", Input::optional);
  const Missing missing = missingPolicy(policy);
  return byElement(x.element(), [&]<typename T>() {
    return map(
        x, w, {axis, out, progress, x.element()}, [&](const Data& lane, const Data& wl, void* to) {
          const auto result =
              vexel::winsorized<T>(lane, Cut(lower, upper), {.weights = wl, .missing = missing});
          std::ranges::copy(result, static_cast<T*>(to));
          return result.size();
        });
  });
}

}  // namespace

void bindOrdering(py::module_& m) {
  m.def("sort", &sortOf);
  m.def("argsort", &argsortOf);
  m.def("rank", &rankOf);
  m.def("tally", &tallyOf);
  m.def("mode", &modeOf);
  m.def("histogram", &histogramOf);
  m.def("frequency_table", &frequencyTableOf);
  m.def("cumulative", &cumulativeOf);
  m.def("trim", &trimOf);
  m.def("winsorize", &winsorizeOf);
}

}  // namespace vexel::python
