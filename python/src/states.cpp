// States of data that come in pieces.
#include <algorithm>
#include <vexel/states.hpp>

#include "bindings.hpp"
#include "calls.hpp"
#include "in_use.hpp"

VEXEL_USED_ALONE(vexel::Sums);
VEXEL_USED_ALONE(vexel::Moments);
VEXEL_USED_ALONE(vexel::Covariance);
VEXEL_USED_ALONE(vexel::Extremes);
VEXEL_USED_ALONE(vexel::Tally);
VEXEL_USED_ALONE(vexel::Histogram);
VEXEL_USED_ALONE(vexel::DensityGrid);
VEXEL_USED_ALONE(vexel::Ranks);

namespace vexel::python {

namespace {

template <typename State>
py::bytes toBytes(const State& state) {
  std::vector<std::uint8_t> bytes;
  {
    const Work work(Work::keepLock);
    bytes = state.to_bytes();
  }
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

template <typename State>
State fromBytes(py::handle bytes) {
  const std::string_view text = readBytes(bytes, "data");
  return State::from_bytes(
      std::span(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
}

template <typename State>
void update(State& state, py::handle object, py::handle weights, py::handle progress) {
  Input x(object, "x");
  Input w(weights, "weights", Input::optional);
  const Data data = x.flat();
  const Data wd = w.flat();
  const InUse use(&state);
  const Work work(data.size(), progress);
  state.update(data, wd);
}

void updateColumns(Covariance& state, py::handle object, py::handle weights, py::handle progress) {
  Input x(object, "x");
  Input w(weights, "weights", Input::optional);
  const auto shape = x.shape();
  const auto k = static_cast<py::ssize_t>(state.variables());
  if (shape.size() != 2 || shape[1] != k) {
    throw py::value_error(mustBe("x", "a matrix of " + std::to_string(k) + " columns",
                                 "one of shape " + shapeText(shape)));
  }
  std::vector<Data> columns;
  for (py::ssize_t i = 0; i < k; ++i) {
    columns.push_back(x.lane(0, i * x.byteStride(1)));
  }
  const Data wd = w.vector();
  const InUse use(&state);
  const Work work(x.size(), progress);
  state.update(columns, wd);
}

// What every state has.
template <typename State>
py::class_<State> bindState(py::module_& m, const char* name) {
  return py::class_<State>(m, name)
      .def("_merge",
           [name](State& s, py::handle other) {
             const State& theirs = readObject<State>(other, "other", name);
             const Work work(Work::keepLock);
             s.merge(theirs);
           })
      .def("to_bytes", &toBytes<State>)
      .def("_assign", [](State& s, py::handle bytes) { s = fromBytes<State>(bytes); });
}

py::array matrixOf(SquareMatrix&& m) {
  const auto size = static_cast<py::ssize_t>(m.size);
  return adopt(std::move(m.values)).reshape({size, size});
}

// States of a few numbers.
void bindSummaries(py::module_& m) {
  bindState<Sums>(m, "Sums")
      .def(py::init([](py::handle policy) { return Sums(missingPolicy(policy)); }))
      .def("_update", &update<Sums>)
      .def_property_readonly("sum", &Sums::sum)
      .def_property_readonly("weight", &Sums::weight)
      .def_property_readonly("mean", &Sums::mean)
      .def_property_readonly("count", &Sums::count)
      .def_property_readonly("missing", &Sums::missing);
  bindState<Moments>(m, "Moments")
      .def(py::init([](Parameter<int, "order"> order, py::handle policy) {
        return Moments(order, missingPolicy(policy));
      }))
      .def("_update", &update<Moments>)
      .def_property_readonly("mean", &Moments::mean)
      .def_property_readonly("var", &Moments::var)
      .def_property_readonly("std", &Moments::std)
      .def_property_readonly("skewness", &Moments::skewness)
      .def_property_readonly("kurtosis", &Moments::kurtosis)
      .def("moment", [](const Moments& s, Parameter<int, "k"> k) { return s.moment(k); })
      .def_property_readonly("order", &Moments::order)
      .def_property_readonly("weight", &Moments::weight)
      .def_property_readonly("count", &Moments::count)
      .def_property_readonly("missing", &Moments::missing);
  bindState<Covariance>(m, "Covariance")
      .def(py::init(
          [](Count<"k"> k, py::handle policy) { return Covariance(k, missingPolicy(policy)); }))
      .def("_update", &updateColumns)
      .def_property_readonly("mean", [](const Covariance& s) { return adopt(s.mean()); })
      .def_property_readonly("cov", [](const Covariance& s) { return matrixOf(s.cov()); })
      .def_property_readonly("corr", [](const Covariance& s) { return matrixOf(s.corr()); })
      .def_property_readonly("weight", &Covariance::weight)
      .def_property_readonly("variables", &Covariance::variables)
      .def_property_readonly("count", &Covariance::count)
      .def_property_readonly("missing", &Covariance::missing);
  bindState<Extremes>(m, "Extremes")
      .def(py::init([](py::handle policy) { return Extremes(missingPolicy(policy)); }))
      .def("_update", &update<Extremes>)
      .def_property_readonly("min", &Extremes::min)
      .def_property_readonly("max", &Extremes::max)
      .def_property_readonly("count", &Extremes::count)
      .def_property_readonly("missing", &Extremes::missing);
}

// States that grow with the data's values, or have a size of their own.
void bindTables(py::module_& m) {
  bindState<Tally>(m, "Tally")
      .def(py::init([](py::handle policy) { return Tally(missingPolicy(policy)); }))
      .def("_update", &update<Tally>)
      .def_property_readonly("values",
                             [](const Tally& s) {
                               const Work work(Work::keepLock);
                               return adopt(s.values());
                             })
      .def_property_readonly("counts",
                             [](const Tally& s) {
                               const Work work(Work::keepLock);
                               return adopt(s.counts());
                             })
      .def_property_readonly("missing", &Tally::missing);
  bindState<Histogram>(m, "Histogram")
      .def(py::init([](py::handle edges, py::handle policy) {
        Input e(edges, "edges");
        return Histogram(e.vector(), missingPolicy(policy));
      }))
      .def("_update", &update<Histogram>)
      .def_property_readonly("counts", [](const Histogram& s) { return adopt(s.counts()); })
      .def_property_readonly("edges", [](const Histogram& s) { return toArray(s.edges()); })
      .def_property_readonly("missing", &Histogram::missing);
  bindState<DensityGrid>(m, "DensityGrid")
      .def(py::init([](py::handle bounds, Count<"points"> points, py::handle policy) {
        return DensityGrid(readPair(bounds, "bounds"), points, missingPolicy(policy));
      }))
      .def("_update", &update<DensityGrid>)
      .def_property_readonly("x", [](const DensityGrid& s) { return adopt(s.x()); })
      .def("_density",
           [](const DensityGrid& s, Number<"bandwidth"> bandwidth, py::handle kernel) {
             const auto shape = choose<DensityKernel>(kernel, "kernel");
             const Work work(Work::keepLock);
             return adopt(s.density(bandwidth, shape));
           })
      .def_property_readonly("weight", &DensityGrid::weight)
      .def_property_readonly("missing", &DensityGrid::missing);
  bindState<Ranks>(m, "Ranks")
      .def(py::init([](py::handle q, py::handle method, py::handle policy) {
        Input probabilities(q, "q");
        return Ranks(probabilities.vector(), choose<QuantileMethod>(method, "method"),
                     missingPolicy(policy));
      }))
      .def("_update", &update<Ranks>)
      .def_property_readonly("done", &Ranks::done)
      .def("_next_pass", [](Ranks& s) { s.next_pass(); })
      .def_property_readonly("number", &Ranks::pass)
      .def_property_readonly("q", [](const Ranks& s) { return toArray(s.q()); })
      .def_property_readonly("method", [](const Ranks& s) { return nameOf(s.method()); })
      .def_property_readonly("result",
                             [](const Ranks& s) {
                               if (!s.done()) {
                                 throw py::value_error(
                                     "result: passes are to come; update with all data and call "
                                     "next_pass until done");
                               }
                               return adopt(s.result());
                             })
      .def_property_readonly("weight", &Ranks::weight)
      .def_property_readonly("missing", &Ranks::missing);
}

}  // namespace

void bindStates(py::module_& m) {
  bindSummaries(m);
  bindTables(m);
}

}  // namespace vexel::python
