// Quasi-random sequences and roots.
#include <vexel/roots.hpp>
#include <vexel/sequences.hpp>

#include "bindings.hpp"
#include "calls.hpp"
#include "random.hpp"

namespace vexel::python {

namespace {

Scramble readScramble(py::handle scramble) {
  if (scramble.ptr() == Py_False || scramble.is_none()) {
    return Scramble::none;
  }
  if (scramble.ptr() == Py_True) {
    return Scramble::owen;
  }
  return choose<Scramble>(scramble, "scramble");
}

// Degree, coefficients and integers of each dimension.
std::vector<SobolDimension> readDimensions(py::handle directions) {
  std::vector<SobolDimension> result;
  if (!directions.is_none()) {
    for (const py::handle row : directions) {
      const auto [degree, coefficients, integers] =
          row.cast<std::tuple<int, std::uint32_t, std::vector<std::uint64_t>>>();
      result.push_back({degree, coefficients, integers});
    }
  }
  return result;
}

Sobol makeSobol(std::size_t d, py::handle scramble, py::handle rng, std::uint64_t start, int bits,
                py::handle directions) {
  Generator generator(rng);
  const auto dimensions = readDimensions(directions);
  return Sobol(d, {.scramble = readScramble(scramble),
                   .rng = &*generator,
                   .start = start,
                   .bits = bits,
                   .dimensions = dimensions});
}

template <typename S>
S makeSequence(std::size_t d, py::handle scramble, py::handle rng, std::uint64_t start) {
  Generator generator(rng);
  return S(d, {.scramble = readScramble(scramble), .rng = &*generator, .start = start});
}

py::array pointsOf(PointSequence& sequence, std::size_t n, py::handle out) {
  const py::ssize_t shape[] = {static_cast<py::ssize_t>(n),
                               static_cast<py::ssize_t>(sequence.dimension())};
  if (n > sequence.limit() - sequence.index()) {
    throw std::length_error("n: " + std::to_string(sequence.limit() - sequence.index()) +
                            " points are left, " + std::to_string(n) + " were asked for");
  }
  py::array result = outputArray(out, shape);
  constexpr auto width = static_cast<py::ssize_t>(sizeof(double));
  auto* const to = static_cast<double*>(result.mutable_data());
  const py::ssize_t point = result.strides(0) / width;
  const py::ssize_t coordinate = result.strides(1) / width;
  const Work work(n * sequence.dimension());
  sequence.write(sequence.index(), n, to, point, coordinate);
  sequence.skip(n);
  return result;
}

// ---- roots

double callFunction(py::handle f, double x) {
  if (PyErr_CheckSignals() != 0) {
    throw py::error_already_set();
  }
  return f(py::float_(x)).cast<double>();
}

py::tuple findRoot(py::handle f, double low, double high, double target, py::handle derivative,
                   double tolerance, int maxIterations) {
  RootOptions options{.target = target, .tolerance = tolerance, .max_iterations = maxIterations};
  if (!derivative.is_none()) {
    options.derivative = [&](double x) { return callFunction(derivative, x); };
  }
  const Root r =
      vexel::find_root([&](double x) { return callFunction(f, x); }, Bracket{low, high}, options);
  return py::make_tuple(r.root, r.value, r.evaluations, r.converged);
}

std::int64_t findInteger(py::handle f, std::int64_t low, std::int64_t high, double target) {
  const auto call = [&](std::int64_t k) {
    if (PyErr_CheckSignals() != 0) {
      throw py::error_already_set();
    }
    return f(py::int_(k)).cast<double>();
  };
  return vexel::find_integer(call, low, high, {.target = target});
}

}  // namespace

void bindSequences(py::module_& m) {
  py::class_<PointSequence>(m, "PointSequence")
      .def("points", &pointsOf)
      .def("skip", &PointSequence::skip)
      .def("reset", &PointSequence::reset)
      .def("limit", &PointSequence::limit)
      .def("index", &PointSequence::index)
      .def("dimension", &PointSequence::dimension);
  m.def("sobol", &makeSobol);
  m.def("halton", &makeSequence<Halton>);
  m.def("faure", &makeSequence<Faure>);
  py::class_<Sobol, PointSequence>(m, "Sobol");
  py::class_<Halton, PointSequence>(m, "Halton");
  py::class_<Faure, PointSequence>(m, "Faure");

  m.def("find_root", &findRoot);
  m.def("find_integer", &findInteger);
  m.attr("OPEN_LOW") = openLow;
  m.attr("OPEN_HIGH") = openHigh;
  py::register_exception_translator([](std::exception_ptr p) {
    try {
      if (p) {
        std::rethrow_exception(p);
      }
    } catch (const RootError& e) {
      const py::object type = py::module_::import("vexel._roots").attr("RootError");
      PyErr_SetObject(type.ptr(), type(e.what(), e.best, e.value).ptr());
    }
  });
}

}  // namespace vexel::python
