// Kernel densities and laws of one's own.
#include <vexel/kernel_density.hpp>
#include <vexel/own_laws.hpp>

#include "bindings.hpp"
#include "calls.hpp"
#include "laws.hpp"
#include "random.hpp"

namespace vexel::python {

namespace {

// ---- functions of Python for the library

// A Python object that may be copied and dropped without the lock.
std::shared_ptr<py::object> shared(py::handle object) {
  return {new py::object(py::reinterpret_borrow<py::object>(object)), [](py::object* p) {
            const py::gil_scoped_acquire lock;
            delete p;
          }};
}

// A compiled function of one double, in a capsule of this name.
constexpr const char* compiledName = "vexel.function";
struct Compiled {
  double (*call)(void* context, double x);
  void* context;
};

// A callable of one float or (vectorized) of an array; an integer is the address of a compiled
// double(double); a capsule holds a Compiled.
FunctionOfSpans functionOf(py::handle f, bool vectorized, const char* name) {
  auto kept = shared(f);
  if (py::isinstance<py::capsule>(f)) {
    const auto* compiled =
        static_cast<const Compiled*>(PyCapsule_GetPointer(f.ptr(), compiledName));
    if (compiled == nullptr) {
      throw py::error_already_set();
    }
    return [kept, compiled](std::span<const double> x, std::span<double> y) {
      for (std::size_t i = 0; i < x.size(); ++i) {
        y[i] = compiled->call(compiled->context, x[i]);
      }
    };
  }
  if (PyLong_CheckExact(f.ptr())) {
    const auto address = reinterpret_cast<double (*)(double)>(f.cast<std::uintptr_t>());
    return [address](std::span<const double> x, std::span<double> y) {
      for (std::size_t i = 0; i < x.size(); ++i) {
        y[i] = address(x[i]);
      }
    };
  }
  if (vectorized) {
    return [kept](std::span<const double> x, std::span<double> y) {
      const py::gil_scoped_acquire lock;
      const py::object result = (*kept)(toArray(x));
      Input values(result, "f(x)");
      if (values.size() != x.size()) {
        throw py::value_error("f must give as many values as it is given arguments, got " +
                              std::to_string(values.size()) + " for " + std::to_string(x.size()));
      }
      const Data data = values.flat();
      for (std::size_t i = 0; i < y.size(); ++i) {
        y[i] = data[i];
      }
    };
  }
  return [kept, name](std::span<const double> x, std::span<double> y) {
    const py::gil_scoped_acquire lock;
    for (std::size_t i = 0; i < x.size(); ++i) {
      y[i] = readResult((*kept)(py::float_(x[i])), name);
    }
  };
}

std::function<double(double)> scalarFunctionOf(py::handle f, const char* name) {
  if (f.is_none()) {
    return {};
  }
  return [f = functionOf(f, false, name)](double x) {
    double y = 0;
    f({&x, 1}, {&y, 1});
    return y;
  };
}

class OwnLawOf final : public LawFrame<OwnLaw> {
 public:
  using LawFrame<OwnLaw>::LawFrame;
  double likelihood(const Data& x, const Data& weights, Missing missing) const override {
    return law().log_likelihood(x, {.weights = weights, .missing = missing});
  }
  bool whole() const override { return false; }
  py::dict parameters() const override { return {}; }
};

std::unique_ptr<OwnLawOf> densityOf(py::handle f, py::handle support, Flag<"log"> log,
                                    py::handle derivative, py::handle mode, Number<"error"> error,
                                    Flag<"vectorized"> vectorized, py::handle progress) {
  const Work work(Work::keepLock, progress);
  DensityOptions options{.support = readPair(support, "support", true),
                         .log = log,
                         .derivative = scalarFunctionOf(derivative, "derivative"),
                         .error = error};
  if (!mode.is_none()) {
    options.mode = readNumber(mode, "mode");
  }
  return std::make_unique<OwnLawOf>(Density(functionOf(f, vectorized, "f"), options));
}

std::unique_ptr<OwnLawOf> cumulativeOf(py::handle f, py::handle support, py::handle density,
                                       Number<"error"> error, Flag<"vectorized"> vectorized,
                                       py::handle progress) {
  const Work work(Work::keepLock, progress);
  return std::make_unique<OwnLawOf>(CumulativeDistribution(
      functionOf(f, vectorized, "F"), {.support = readPair(support, "support", true),
                                       .density = scalarFunctionOf(density, "density"),
                                       .error = error}));
}

// ---- kernel densities

KernelDensity kdeOf(py::handle object, py::handle bandwidth, py::handle kernel,
                    Count<"points"> points, py::handle bounds, py::handle weights,
                    py::handle policy, py::handle progress) {
  Input x(object, "x");
  Input w(weights, "weights", Input::optional);
  const Data data = x.flat();
  KdeOptions options{.weights = w.flat(),
                     .kernel = choose<DensityKernel>(kernel, "kernel"),
                     .points = points,
                     .missing = missingPolicy(policy)};
  if (PyUnicode_Check(bandwidth.ptr())) {
    options.bandwidth = choose<BandwidthRule>(bandwidth, "bandwidth");
  } else {
    options.bandwidth = readNumber(bandwidth, "bandwidth");
  }
  if (!bounds.is_none()) {
    options.bounds = readPair(bounds, "bounds");
  }
  const Work work(data.size(), progress);
  return vexel::kde(data, options);
}

template <typename F>
py::object atPoints(py::handle object, py::handle out, py::handle progress, F f) {
  Input t(object, "t");
  return pointwise(
      t, out, progress,
      [&](const Data& data, std::span<double> to) {
        if (data.dense()) {
          f(data.doubles(), to);
          return;
        }
        std::vector<double> points(data.size());
        for (std::size_t i = 0; i < points.size(); ++i) {
          points[i] = data[i];
        }
        f(std::span<const double>(points), to);
      },
      Work::lockedElements + 1);  // each of them reads the data
}

}  // namespace

void bindDensities(py::module_& m) {
  py::class_<OwnLawOf, AnyLaw>(m, "OwnLaw")
      .def("log_concave", [](const OwnLawOf& l) { return l.law().log_concave(); })
      .def("log_integral", [](const OwnLawOf& l) { return l.law().log_integral(); })
      .def("error", [](const OwnLawOf& l) { return l.law().error(); })
      .def("evaluations", [](const OwnLawOf& l) { return l.law().evaluations(); });
  m.def("own_density", &densityOf);
  m.def("own_cumulative", &cumulativeOf);
  py::class_<KernelDensity>(m, "KernelDensity")
      .def(py::init(&kdeOf))
      .def("grid",
           [](const KernelDensity& d) { return py::make_tuple(toArray(d.x()), toArray(d.y())); })
      .def("bandwidth", &KernelDensity::bandwidth)
      .def("pdf",
           [](const KernelDensity& d, py::handle t, py::handle out, py::handle progress) {
             return atPoints(t, out, progress, [&](auto x, auto y) { d(x, y); });
           })
      .def("cdf",
           [](const KernelDensity& d, py::handle t, py::handle out, py::handle progress) {
             return atPoints(t, out, progress, [&](auto x, auto y) { d.cdf(x, y); });
           })
      .def("sample", [](const KernelDensity& d, py::handle n, py::handle rng, py::handle progress) {
        Generator generator(rng);
        return fillDoubles(
            "n", n, py::none(), progress, [&] { return d.sample(1, *generator)[0]; },
            [&](std::span<double> to) { d.sample(to, *generator); });
      });
}

}  // namespace vexel::python
