// Quasi-random sequences and roots.
#include <cmath>
#include <vexel/roots.hpp>
#include <vexel/sequences.hpp>

#include "bindings.hpp"
#include "calls.hpp"
#include "in_use.hpp"
#include "random.hpp"

VEXEL_USED_ALONE(vexel::PointSequence);

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
  if (directions.is_none()) {
    return result;
  }
  if (!PyList_Check(directions.ptr()) && !PyTuple_Check(directions.ptr())) {
    refuseKind("directions", "a list of (degree, coefficients, integers)", directions);
  }
  for (const py::handle row : directions) {
    if ((!PyList_Check(row.ptr()) && !PyTuple_Check(row.ptr())) || py::len(row) != 3) {
      refuseValue("directions", "(degree, coefficients, integers) for each dimension", row);
    }
    SobolDimension dimension;
    dimension.degree = static_cast<int>(readWhole(row[py::int_(0)], "directions: degree", 0, 64));
    dimension.coefficients = static_cast<std::uint32_t>(
        readWhole(row[py::int_(1)], "directions: coefficients", 0, 0xFFFFFFFF));
    for (const std::int64_t k : readWholes(row[py::int_(2)], "directions: integers")) {
      dimension.integers.push_back(static_cast<std::uint64_t>(std::max<std::int64_t>(k, 0)));
    }
    result.push_back(dimension);
  }
  return result;
}

Sobol makeSobol(Count<"d"> d, py::handle scramble, py::handle rng, Count<"start"> start,
                Parameter<int, "bits"> bits, py::handle directions) {
  Generator generator(rng);
  const auto dimensions = readDimensions(directions);
  return Sobol(d, {.scramble = readScramble(scramble),
                   .rng = &*generator,
                   .start = start,
                   .bits = bits,
                   .dimensions = dimensions});
}

template <typename S>
S makeSequence(Count<"d"> d, py::handle scramble, py::handle rng, Count<"start"> start) {
  Generator generator(rng);
  return S(d, {.scramble = readScramble(scramble), .rng = &*generator, .start = start});
}

py::array pointsOf(PointSequence& sequence, Count<"n"> count, py::handle out, py::handle progress) {
  const std::size_t n = count;
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
  const InUse use(&sequence);
  const Work work(n * sequence.dimension(), progress);
  sequence.write(sequence.index(), n, to, point, coordinate);
  sequence.skip(n);
  return result;
}

// ---- roots

void requireCallable(py::handle f, const char* name) {
  if (PyCallable_Check(f.ptr()) == 0) {
    refuseKind(name, "a callable", f);
  }
}

double callFunction(py::handle f, double x, const char* name) {
  if (PyErr_CheckSignals() != 0) {
    throw py::error_already_set();
  }
  return readResult(f(py::float_(x)), name);
}

py::tuple findRoot(py::handle f, py::handle bracket, Number<"target"> target, py::handle derivative,
                   Number<"tolerance"> tolerance, Parameter<int, "max_iterations"> maxIterations) {
  const Interval ends = readPair(bracket, "bracket", true);
  requireCallable(f, "f");
  RootOptions options{.target = target, .tolerance = tolerance, .max_iterations = maxIterations};
  if (!derivative.is_none()) {
    requireCallable(derivative, "derivative");
    options.derivative = [&](double x) { return callFunction(derivative, x, "derivative"); };
  }
  const Root r = vexel::find_root([&](double x) { return callFunction(f, x, "f"); },
                                  Bracket{ends.low, ends.high}, options);
  return py::make_tuple(r.root, r.value, r.evaluations, r.converged);
}

// An end of the search; None or an infinity is not known.
std::int64_t readEnd(py::handle end, const char* name, std::int64_t unknown) {
  const bool infinite = PyFloat_Check(end.ptr()) && std::isinf(PyFloat_AS_DOUBLE(end.ptr()));
  return end.is_none() || infinite ? unknown : readWhole(end, name);
}

std::int64_t findInteger(py::handle f, py::handle from, py::handle to, Number<"target"> target) {
  requireCallable(f, "f");
  const std::int64_t low = readEnd(from, "low", openLow);
  const std::int64_t high = readEnd(to, "high", openHigh);
  const auto call = [&](std::int64_t k) {
    if (PyErr_CheckSignals() != 0) {
      throw py::error_already_set();
    }
    return readResult(f(py::int_(k)), "f");
  };
  return vexel::find_integer(call, low, high, {.target = target});
}

}  // namespace

void bindSequences(py::module_& m) {
  py::class_<PointSequence>(m, "PointSequence")
      .def("points", &pointsOf)
      .def("skip", [](PointSequence& s, Count<"n"> n) { s.skip(n); })
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
