// vexel._host: the host for Python.  vexel/_kernel.py gives it its form.
#include <pybind11/stl.h>

#include "module.hpp"
#include "values.hpp"

namespace vexel::python {

namespace {

py::object evaluate(const std::string& text) {
  const Turn turn;
  Host& host = Host::instance();
  return host.toPython(host.run([&] { return host.kernel().eval(text); }));
}

// The value itself, whatever it is.
std::shared_ptr<Held> evaluateHeld(const std::string& text) {
  const Turn turn;
  Host& host = Host::instance();
  return std::make_shared<Held>(host.run([&] { return host.kernel().eval(text); }));
}

std::vector<Value> convertAll(Host& host, const py::args& arguments) {
  std::vector<Value> values;
  values.reserve(arguments.size());
  for (const py::handle a : arguments) {
    values.push_back(host.toHost(a));
  }
  return values;
}

py::object callNamed(const std::string& name, const py::args& arguments) {
  const Turn turn;
  Host& host = Host::instance();
  const auto values = convertAll(host, arguments);
  return host.toPython(host.run([&] { return host.kernel().callValues(name, values); }));
}

std::shared_ptr<Held> callHeld(const std::string& name, const py::args& arguments) {
  const Turn turn;
  Host& host = Host::instance();
  const auto values = convertAll(host, arguments);
  return std::make_shared<Held>(host.run([&] { return host.kernel().callValues(name, values); }));
}

py::object applyTo(const Held& procedure, const py::args& arguments) {
  const Turn turn;
  Host& host = Host::instance();
  const auto values = convertAll(host, arguments);
  return host.toPython(host.run([&] { return host.kernel().apply(procedure.value(), values); }));
}

std::shared_ptr<Held> applyHeld(const Held& procedure, const py::args& arguments) {
  const Turn turn;
  Host& host = Host::instance();
  const auto values = convertAll(host, arguments);
  return std::make_shared<Held>(
      host.run([&] { return host.kernel().apply(procedure.value(), values); }));
}

template <typename F>
auto inTurn(F f) {
  return [f](const Held& h) {
    const Turn turn;
    return f(Host::instance(), h.value());
  };
}

// ---- compiled functions

// What vexel._core calls: see its densities.cpp.
struct Compiled {
  double (*call)(void* context, double x);
  void* context;
  std::shared_ptr<Held> procedure;
};

struct HardwareCall {
  VKernelVector kv;
  ALGEB procedure;
  double arguments[2];
  double result;
};

double callCompiled(void* context, double x) {
  const auto& procedure = static_cast<const Compiled*>(context)->procedure;
  const py::gil_scoped_acquire lock;
  const Turn turn;
  HardwareCall call{Host::instance().kernel().vector(), procedure->value().handle(), {0, x}, 0};
  V_BOOL failed = 0;
  VexelTrapError(
      call.kv,
      [](void* data) -> void* {
        auto& c = *static_cast<HardwareCall*>(data);
        c.result = EvalhfVexelProc(c.kv, c.procedure, 1, c.arguments);
        return nullptr;
      },
      &call, &failed);
  if (failed != 0) {
    throw std::invalid_argument("f: " + procedure->value().text() + " has no value at " +
                                std::to_string(x));
  }
  return call.result;
}

py::capsule compile(const std::shared_ptr<Held>& procedure) {
  auto* compiled = new Compiled{callCompiled, nullptr, procedure};
  compiled->context = compiled;
  return py::capsule(compiled, "vexel.function", [](PyObject* capsule) {
    delete static_cast<Compiled*>(PyCapsule_GetPointer(capsule, "vexel.function"));
  });
}

void bind(py::module_& m) {
  py::class_<Held, std::shared_ptr<Held>>(m, "Value")
      .def("text", inTurn([](Host&, const Value& v) { return v.text(); }))
      .def("source", inTurn([](Host&, const Value& v) { return v.source(); }))
      .def("kind", inTurn([](Host& h, const Value& v) { return h.kindOf(v); }))
      .def("parts", inTurn([](Host& h, const Value& v) {
             py::list parts;
             const auto n = h.kernel().call("count", v).integer();
             for (std::int64_t i = 1; i <= n; ++i) {
               parts.append(std::make_shared<Held>(h.kernel().call("part", v, i)));
             }
             return parts;
           }))
      .def("python", inTurn([](Host& h, const Value& v) { return h.toPython(v); }))
      .def("__call__", &applyTo)
      .def("held", &applyHeld);
  m.def("eval", &evaluate);
  m.def("eval_held", &evaluateHeld);
  m.def("call", &callNamed);
  m.def("call_held", &callHeld);
  m.def("compile", &compile);
  m.def("function", [](const std::string& name, py::handle f) {
    const Turn turn;
    return std::make_shared<Held>(Host::instance().procedure(f, name));
  });
  m.def("held", [](py::handle object) {
    const Turn turn;
    return std::make_shared<Held>(Host::instance().toHost(object));
  });
  m.def("load", [](const std::string& path) {
    const Turn turn;
    Host& host = Host::instance();
    host.run([&] {
      host.kernel().loadLibrary(path);
      return 0;
    });
  });
  m.def("entry_points", [] {
    const Turn turn;
    return Host::instance().kernel().entryPoints();
  });
  m.def("seed", [](std::uint64_t seed) {
    const Turn turn;
    Host::instance().kernel().seed(seed);
  });
  m.def("collect", [] {
    const Turn turn;
    Host& host = Host::instance();
    host.run([&] {
      host.kernel().collect();
      return host.kernel().liveObjects();
    });
    return host.kernel().liveObjects();
  });
}

int fill(PyObject* object) noexcept {
  try {
    auto m = py::reinterpret_borrow<py::module_>(object);
    py::options options;
    options.disable_function_signatures();
    bind(m);
    return 0;
  } catch (py::error_already_set& e) {
    e.restore();
  } catch (const std::exception& e) {
    PyErr_SetString(PyExc_ImportError, e.what());
  }
  return -1;
}

}  // namespace

}  // namespace vexel::python

VEXEL_PYTHON_MODULE(_host, vexel::python::fill)
