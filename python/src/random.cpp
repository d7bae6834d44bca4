#include "random.hpp"

#include <vexel/sampling.hpp>

#include "bindings.hpp"
#include "calls.hpp"

namespace vexel::python {

std::uint64_t readSeed(py::handle seed, const char* name) {
  const bool truth = PyBool_Check(seed.ptr()) != 0;
  const py::object whole =
      py::reinterpret_steal<py::object>(truth ? nullptr : PyNumber_Index(seed.ptr()));
  if (!whole) {
    PyErr_Clear();
    refuseKind(name,
               std::string_view(name) == "rng"
                   ? "a Random, a whole number from 0 to 2^64 - 1 or None"
                   : "a whole number from 0 to 2^64 - 1",
               seed);
  }
  const std::uint64_t value = PyLong_AsUnsignedLongLong(whole.ptr());
  if (PyErr_Occurred() != nullptr) {
    PyErr_Clear();
    refuseValue(name, "0 to 2^64 - 1", seed);
  }
  return value;
}

Generator::Generator(py::handle rng) {
  if (rng.is_none()) {
    random_ = &own_.emplace();
  } else if (py::isinstance<Random>(rng)) {
    owner_ = py::reinterpret_borrow<py::object>(rng);
    random_ = owner_.cast<Random*>();
    inUse_.emplace(random_);
  } else if (py::hasattr(rng, "bit_generator")) {
    random_ = &own_.emplace(readSeed(
        rng.attr("integers")(0, py::int_(-1).attr("__and__")(py::int_(0x7FFFFFFFFFFFFFFF))),
        "rng"));
  } else {
    random_ = &own_.emplace(readSeed(rng, "rng"));
  }
}

// None is one value; else a whole number or a tuple or list of them.
std::optional<std::vector<py::ssize_t>> readSize(py::handle size, const char* name) {
  if (size.is_none()) {
    return std::nullopt;
  }
  std::vector<py::ssize_t> shape;
  if (PyTuple_Check(size.ptr()) || PyList_Check(size.ptr())) {
    for (const py::handle n : size) {
      shape.push_back(readWhole(n, name, 0));
    }
  } else {
    shape.push_back(readWhole(size, name, 0));
  }
  return shape;
}

// Fills `out`, a new array of the shape `size`, or gives one value.
py::object fillDoubles(const char* name, py::handle size, py::handle out, py::handle progress,
                       const std::function<double()>& one,
                       const std::function<void(std::span<double>)>& many) {
  const auto shape = readSize(size, name);
  if (!shape && out.is_none()) {
    checkProgress(progress);
    return py::float_(one());
  }
  py::array result;
  if (out.is_none()) {
    result = makeDoubles(*shape);
  } else {
    std::vector<py::ssize_t> wanted;
    if (shape) {
      wanted = *shape;
    } else if (py::isinstance<py::array>(out)) {
      const auto given = py::reinterpret_borrow<py::array>(out);
      wanted.assign(given.shape(), given.shape() + given.ndim());
    }
    result = outputArray(out, wanted);
  }
  const bool direct = (result.flags() & py::array::c_style) != 0;
  const std::span<const py::ssize_t> dimensions(result.shape(),
                                                static_cast<std::size_t>(result.ndim()));
  py::array place = direct ? result : py::array(makeDoubles(dimensions));
  auto* const to = static_cast<double*>(place.mutable_data());
  inPieces(static_cast<std::size_t>(result.size()), progress,
           [&](std::size_t begin, std::size_t end) {
             many({to + begin, end - begin});
           });
  if (!direct) {
    result[py::ellipsis()] = place;
  }
  return result;
}

namespace {

// The same for integers.
py::object fillIntegers(py::handle size, py::handle out, py::handle progress,
                        const std::function<std::int64_t()>& one,
                        const std::function<void(std::span<std::int64_t>)>& many) {
  const auto shape = readSize(size, "n");
  if (!shape && out.is_none()) {
    checkProgress(progress);
    return py::int_(one());
  }
  py::array_t<std::int64_t> result;
  if (!out.is_none()) {
    const auto given =
        py::isinstance<py::array>(out) ? py::reinterpret_borrow<py::array>(out) : py::array();
    std::vector<py::ssize_t> wanted(given.shape(), given.shape() + given.ndim());
    result = py::array_t<std::int64_t>(outputArray(out, shape ? *shape : wanted, Element::int64));
    if (result.ptr() != out.ptr() || (result.flags() & py::array::c_style) == 0) {
      throw py::value_error("out must be a C-contiguous array of int64");
    }
  } else {
    result = py::array_t<std::int64_t>(*shape);
  }
  const std::span<std::int64_t> place(result.mutable_data(),
                                      static_cast<std::size_t>(result.size()));
  inPieces(place.size(), progress,
           [&](std::size_t begin, std::size_t end) { many(place.subspan(begin, end - begin)); });
  return result;
}

// Integers up to the largest, 2^63 - 1: drawn one lower and moved, since 2^63 is no int64.
py::object integersToLast(Random& rng, std::int64_t low, py::handle size, py::handle out,
                          py::handle progress) {
  constexpr auto last = std::numeric_limits<std::int64_t>::max();
  if (low == -last - 1) {
    return fillIntegers(
        size, out, progress, [&] { return static_cast<std::int64_t>(rng.bits()); },
        [&](std::span<std::int64_t> place) {
          for (auto& k : place) {
            k = static_cast<std::int64_t>(rng.bits());
          }
        });
  }
  return fillIntegers(
      size, out, progress, [&] { return rng.integers(low - 1, last) + 1; },
      [&](std::span<std::int64_t> place) {
        rng.integers(low - 1, last, place);
        for (auto& k : place) {
          ++k;
        }
      });
}

py::object integersOf(Random& rng, py::handle low, py::handle high, py::handle size, py::handle out,
                      py::handle progress) {
  const InUse use(size.is_none() && out.is_none() ? nullptr : &rng);
  const char* const upper = high.is_none() ? "low" : "high";
  const py::handle end = high.is_none() ? low : high;
  const std::int64_t from = high.is_none() ? 0 : readWhole(low, "low");
  int overflow = 0;
  if (PyLong_Check(end.ptr())) {
    (void)PyLong_AsLongLongAndOverflow(end.ptr(), &overflow);
  }
  if (overflow != 0) {
    if (!end.equal(py::int_(std::uint64_t{1} << 63U))) {
      refuseValue(upper, "-2^63 to 2^63", end);
    }
    return integersToLast(rng, from, size, out, progress);
  }
  const std::int64_t to = readWhole(end, upper);
  return fillIntegers(
      size, out, progress, [&] { return rng.integers(from, to); },
      [&](std::span<std::int64_t> place) { rng.integers(from, to, place); });
}

// Doubles by one of the methods that give one, or fill a span.
template <auto draw>
py::object drawsOf(Random& rng, py::handle n, py::handle out, py::handle progress) {
  const InUse use(n.is_none() && out.is_none() ? nullptr : &rng);
  return fillDoubles(
      "n", n, out, progress, [&] { return draw(rng); },
      [&](std::span<double> to) { draw(rng, to); });
}

py::object bitsOf(Random& rng, py::handle size) {
  if (size.is_none()) {
    return py::int_(rng.bits());
  }
  py::array_t<std::uint64_t> result(*readSize(size, "n"));
  rng.bits({result.mutable_data(), static_cast<std::size_t>(result.size())});
  return result;
}

py::array choiceOf(std::size_t size, std::size_t n, py::handle rng, py::handle weights,
                   Flag<"replace"> replace, py::handle progress) {
  Generator generator(rng);
  Input w(weights, "weights", Input::optional);
  const ChoiceOptions options{.weights = w.vector(), .replace = replace};
  std::vector<std::int64_t> result;
  {
    const Work work(n + (replace ? 0 : size), progress);
    result = vexel::choice(size, n, *generator, options);
  }
  return adopt(std::move(result));
}

py::array permutationOf(Count<"n"> n, py::handle rng, py::handle progress) {
  Generator generator(rng);
  std::vector<std::int64_t> result;
  {
    const Work work(n, progress);
    result = vexel::permutation(n, *generator);
  }
  return adopt(std::move(result));
}

// In place: a one-dimensional array of one of the four types, or a list.  False for anything else.
bool shuffleOf(py::handle x, py::handle rng) {
  Generator generator(rng);
  if (PyList_CheckExact(x.ptr())) {
    PyObject** const items = PySequence_Fast_ITEMS(x.ptr());
    vexel::shuffle(std::span<PyObject*>(items, py::len(x)), *generator);
    return true;
  }
  if (!py::isinstance<py::array>(x)) {
    return false;
  }
  auto array = py::reinterpret_borrow<py::array>(x);
  if (array.ndim() != 1 || (array.flags() & py::array::c_style) == 0 || !array.writeable()) {
    return false;
  }
  const Input elements(x, "x");
  if (elements.lane(0, 0).data() != array.data()) {
    return false;
  }
  const auto shuffle = [&]<typename T>(T* first) {
    vexel::shuffle(std::span<T>(first, elements.size()), *generator);
    return true;
  };
  void* const data = array.mutable_data();
  switch (elements.element()) {
    case Element::float32:
      return shuffle(static_cast<float*>(data));
    case Element::int32:
      return shuffle(static_cast<std::int32_t*>(data));
    case Element::int64:
      return shuffle(static_cast<std::int64_t*>(data));
    default:
      return shuffle(static_cast<double*>(data));
  }
}

py::dict stateOf(const Random& rng) {
  const RandomState s = rng.state();
  py::array_t<std::uint64_t> lanes({8, 4});
  for (std::size_t i = 0; i < 32; ++i) {
    lanes.mutable_data()[i] = s.lanes[i / 4][i % 4];
  }
  py::dict state;
  state["seed"] = s.seed;
  state["block"] = s.block;
  state["position"] = s.position;
  state["lanes"] = lanes;
  return state;
}

void setState(Random& rng, py::handle state) {
  if (!PyDict_Check(state.ptr())) {
    refuseKind("state", "a dictionary as `state` gives it", state);
  }
  for (const char* const key : {"seed", "block", "position", "lanes"}) {
    if (!state.contains(key)) {
      throw py::value_error(mustBe("state", "a dictionary of seed, block, position and lanes",
                                   "one without " + std::string(key)));
    }
  }
  RandomState s;
  s.seed = readSeed(state["seed"], "state: seed");
  s.block = readSeed(state["block"], "state: block");
  s.position = static_cast<std::uint32_t>(readWhole(state["position"], "state: position", 0, 7));
  const auto lanes =
      py::array_t<std::uint64_t, py::array::c_style | py::array::forcecast>::ensure(state["lanes"]);
  if (!lanes || lanes.size() != 32) {
    PyErr_Clear();
    refuseValue("state[\"lanes\"]", "an array of 8 lanes of 4 words", state["lanes"]);
  }
  for (std::size_t i = 0; i < 32; ++i) {
    s.lanes[i / 4][i % 4] = lanes.data()[i];
  }
  rng = Random(s);
}

py::bytes toBytes(const Random& rng) {
  const auto bytes = rng.to_bytes();
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

Random fromBytes(py::handle bytes) {
  const std::string_view text = readBytes(bytes, "data");
  return Random::from_bytes(std::as_bytes(std::span(text.data(), text.size())));
}

// The functions that NumPy's generators draw with, of a Random.
struct BitFunctions {
  void* state;
  std::uint64_t (*next64)(void*);
  std::uint32_t (*next32)(void*);
  double (*nextDouble)(void*);
  std::uint64_t (*nextRaw)(void*);
};

py::capsule bitFunctionsOf(Random& rng) {
  static const auto bits = [](void* r) { return static_cast<Random*>(r)->bits(); };
  auto* functions = new BitFunctions{
      &rng, bits,
      [](void* r) { return static_cast<std::uint32_t>(static_cast<Random*>(r)->bits() >> 32); },
      // NumPy promises [0, 1); this is within.
      [](void* r) { return static_cast<Random*>(r)->uniform(); }, bits};
  return py::capsule(functions, "BitGenerator", [](PyObject* capsule) {
    delete static_cast<BitFunctions*>(PyCapsule_GetPointer(capsule, "BitGenerator"));
  });
}

py::tuple bootstrapOf(py::handle object, py::handle statistic, py::handle replicateCount,
                      Number<"confidence"> confidence, py::handle method, py::handle rng,
                      py::handle policy, py::handle progress) {
  Input x(object, "x");
  const Data data = x.vector();
  const auto replicates = static_cast<std::size_t>(readWhole(replicateCount, "replicates", 1));
  Generator generator(rng);
  const BootstrapOptions options{.replicates = replicates,
                                 .confidence = confidence,
                                 .method = choose<BootstrapMethod>(method, "method"),
                                 .missing = missingPolicy(policy)};
  Bootstrap b;
  if (PyCallable_Check(statistic.ptr()) != 0) {
    const Work work(Work::keepLock, progress);
    b = vexel::bootstrap(
        data,
        [&](std::span<const double> y) { return readResult(statistic(toArray(y)), "statistic"); },
        *generator, options);
  } else {
    const auto which = choose<Statistic>(statistic, "statistic", " or a callable");
    const Work work(data.size() * replicates, progress);
    b = vexel::bootstrap(data, which, *generator, options);
  }
  return py::make_tuple(b.estimate, b.standard_error,
                        py::make_tuple(b.interval.low, b.interval.high),
                        adopt(std::move(b.replicates)));
}

}  // namespace

void bindRandom(py::module_& m) {
  py::class_<Random>(m, "Random")
      .def(py::init([](py::handle seed, py::handle block) {
             return seed.is_none() ? Random()
                                   : Random(readSeed(seed, "seed"), readSeed(block, "block"));
           }),
           py::arg("seed") = py::none(), py::arg("block") = 0)
      .def_property_readonly("seed", &Random::seed)
      .def_property_readonly("block", &Random::block)
      .def_property("state", &stateOf, &setState)
      .def("_assign", [](Random& rng, const Random& other) { rng = other; })
      .def("jump", &Random::jump)
      .def("bits", &bitsOf, py::arg("n") = py::none())
      .def("uniform", &drawsOf<[](Random& r, auto... to) { return r.uniform(to...); }>)
      .def("normal", &drawsOf<[](Random& r, auto... to) { return r.normal(to...); }>)
      .def("exponential", &drawsOf<[](Random& r, auto... to) { return r.exponential(to...); }>)
      .def("integers", &integersOf)
      .def("to_bytes", &toBytes)
      .def_static("from_bytes", &fromBytes)
      .def("_bit_functions", &bitFunctionsOf)
      .def("__eq__", [](const Random& a, py::handle b) {
        return py::isinstance<Random>(b) && a == *b.cast<Random*>();
      });
  py::class_<Urn>(m, "Urn")
      .def(py::init([](py::handle weights) {
        Input w(weights, "weights", Input::optional);
        return Urn(w.vector());
      }))
      .def("size", &Urn::size)
      .def("sample",
           [](const Urn& urn, py::handle n, py::handle rng, py::handle out, py::handle progress) {
             Generator generator(rng);
             return fillIntegers(
                 n, out, progress, [&] { return urn.sample(*generator); },
                 [&](std::span<std::int64_t> to) { urn.sample(to, *generator); });
           });
  m.def("stream", [](py::handle rng) { return Random(*Generator(rng)); });
  m.def("checked_size", [](py::handle size, const char* name) { return readSize(size, name); });
  m.def("choice", &choiceOf);
  m.def("permutation", &permutationOf);
  m.def("shuffle", &shuffleOf);
  m.def("bootstrap", &bootstrapOf);
}

}  // namespace vexel::python
