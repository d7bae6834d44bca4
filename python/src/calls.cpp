#include "calls.hpp"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <limits>
#include <vector>

#include "lanes.hpp"

namespace vexel::python {

namespace {

constexpr auto patience = std::chrono::milliseconds(50);

// Looks at Python's signals and tells the progress; what they raise leaves the library's function.
bool ask(PyObject* progress, double done) {
  const py::gil_scoped_acquire lock;
  if (PyErr_CheckSignals() != 0) {
    throw py::error_already_set();
  }
  if (progress != nullptr) {
    const py::handle tell(progress);
    tell(py::float_(done));
  }
  return true;
}

}  // namespace

void checkProgress(py::handle progress) {
  if (progress && !progress.is_none()) {
    pythonHelper("reporter")(progress);
  }
}

Work::Work(std::size_t elements, py::handle progress) : elements_(elements) {
  if (progress && !progress.is_none()) {
    progress_ = pythonHelper("reporter")(progress);
  }
  const bool reports = progress_ && !progress_.is_none();
  if (elements <= lockedElements && !reports) {
    return;
  }
  report_ = [told = reports ? progress_.ptr() : nullptr, last = std::chrono::steady_clock::now(),
             most = 0.0](double done) mutable {
    const auto now = std::chrono::steady_clock::now();
    if (now - last < patience) {
      return true;
    }
    last = now;
    most = std::max(most, done);  // work in several passes begins each at 0
    return ask(told, most);
  };
  watch_.emplace([this](double done) { return report_(begin_ + share_ * done); });
  if (elements != keepLock) {
    released_.emplace();
  }
}

namespace {

// One axis, counted from the front.
int readAxis(py::handle axis, int dimensions) {
  if (PyIndex_Check(axis.ptr()) == 0 || PyBool_Check(axis.ptr()) != 0) {
    refuseKind("axis", "a whole number", axis);
  }
  const std::int64_t given = readWhole(axis, "axis");
  const std::int64_t found = given < 0 ? given + dimensions : given;
  if (found < 0 || found >= dimensions) {
    throw py::value_error(mustBe("axis",
                                 std::to_string(-dimensions) + " to " +
                                     std::to_string(dimensions - 1) + " for an array of " +
                                     std::to_string(dimensions) + " dimensions",
                                 std::to_string(given)));
  }
  return static_cast<int>(found);
}

// The weights of a lane: their own lane, or the same vector for all.
class WeightLanes {
 public:
  WeightLanes(Input& weights, const Input& x, int axis) {
    if (!weights.given()) {
      return;
    }
    const auto shape = x.shape();
    const auto came = weights.shape();
    if (std::equal(came.begin(), came.end(), shape.begin(), shape.end())) {
      lanes_.emplace(weights, axis);
      reader_.emplace(*lanes_);
    } else if (came.size() == 1 && came[0] == shape[static_cast<std::size_t>(axis)]) {
      same_ = weights.vector();
    } else {
      throw py::value_error(mustBe("weights",
                                   "of shape " + shapeText(shape) + " or (" +
                                       std::to_string(shape[static_cast<std::size_t>(axis)]) + ",)",
                                   shapeText(came)));
    }
  }
  Data operator[](std::size_t lane) { return reader_ ? (*reader_)[lane] : same_; }

 private:
  std::optional<Lanes> lanes_;
  std::optional<LaneReader> reader_;
  Data same_;
};

// All weights in the order of all elements.
Data flatWeights(Input& weights, const Input& x) {
  if (weights.given() && !std::ranges::equal(weights.shape(), x.shape())) {
    throw py::value_error(mustBe("weights", "of the shape of the data, " + shapeText(x.shape()),
                                 shapeText(weights.shape())));
  }
  return weights.flat();
}

std::vector<py::ssize_t> joined(std::span<const py::ssize_t> a, std::span<const py::ssize_t> b) {
  std::vector<py::ssize_t> shape(a.begin(), a.end());
  shape.insert(shape.end(), b.begin(), b.end());
  return shape;
}

std::size_t product(std::span<const py::ssize_t> shape) {
  std::size_t n = 1;
  for (const auto s : shape) {
    n *= static_cast<std::size_t>(s);
  }
  return n;
}

// Result j of lane i goes to element j * lanes + i of the C-ordered result.
py::object finish(const std::vector<double>& byElement, std::span<const py::ssize_t> shape,
                  py::handle out) {
  if (shape.empty() && out.is_none()) {
    return py::float_(byElement[0]);
  }
  py::array result = outputArray(out, shape);
  if (const auto place = contiguousDoubles(result); !place.empty()) {
    std::ranges::copy(byElement, place.begin());
  } else if (!byElement.empty()) {
    Doubles values = makeDoubles(shape);
    std::ranges::copy(byElement, values.mutable_data());
    result[py::ellipsis()] = values;
  }
  return result;
}

py::object reduceAll(Input& x, Input& weights, const ReduceArguments& a,
                     std::span<const py::ssize_t> leading, const Reduction& reduction) {
  const Data w = flatWeights(weights, x);
  const std::vector<py::ssize_t> ones(a.keepdims ? x.shape().size() : 0, 1);
  const Data data = x.flat();  // may give x another shape
  if (leading.empty() && a.out.is_none() && !a.keepdims) {
    double result = 0;
    {
      const Work work(data.size(), a.progress);
      reduction(data, w, &result);
    }
    return py::float_(result);
  }
  std::vector<double> results(product(leading));
  {
    const Work work(data.size(), a.progress);
    reduction(data, w, results.data());
  }
  return finish(results, joined(leading, ones), a.out);
}

// Several axes: they become the last one.
py::object reduceAxes(const Input& x, const Input& weights, const ReduceArguments& a,
                      std::span<const py::ssize_t> leading, const Reduction& reduction) {
  const py::tuple joinedAxes = pythonHelper("join_axes")(x.array(), weights.array(), a.axis);
  Input joinedX(joinedAxes[0], x.name());
  Input joinedWeights(joinedAxes[1], weights.name(), Input::optional);
  const py::int_ last(-1);
  const py::object values =
      reduce(joinedX, joinedWeights, {last, false, py::none(), a.progress}, leading, reduction);
  return pythonHelper("place")(values, a.keepdims ? py::object(joinedAxes[2]) : py::none(),
                               leading.size(), a.out);
}

void reduceLanes(const Lanes& lanes, WeightLanes& weights, const Reduction& reduction,
                 std::span<double> results, Work& work) {
  LaneReader reader(lanes);
  std::vector<double> one(lanes.count() == 0 ? 0 : results.size() / lanes.count());
  for (std::size_t i = 0; i < lanes.count(); ++i) {
    work.part(i, lanes.count());
    reduction(reader[i], weights[i], one.data());
    for (std::size_t j = 0; j < one.size(); ++j) {
      results[j * lanes.count() + i] = one[j];
    }
  }
}

// Whether lanes are taken many at a time.
bool manyAtATime(const Lanes& lanes, const ReductionOfMany& ofMany) {
  const auto width = static_cast<std::ptrdiff_t>(elementSize(lanes.input().element()));
  const bool beside = lanes.neighbour() == width;
  return ofMany.reduce && lanes.together() >= ofMany.fewest &&
         lanes.length() / ofMany.lengthPerLane <= lanes.together() &&
         lanes.length() <= (beside ? ofMany.longestBeside : ofMany.longest);
}

void reduceMany(const Lanes& lanes, const ReductionOfMany& ofMany, std::span<double> results,
                Work& work) {
  const std::size_t together = lanes.together();
  const std::size_t each = lanes.count() == 0 ? 0 : results.size() / lanes.count();
  const bool inPlace = each == 1 || together == lanes.count();
  std::vector<double> some(inPlace ? 0 : each * together);
  for (std::size_t i = 0; i < lanes.count(); i += together) {
    work.part(i / together, lanes.count() / together);
    if (inPlace) {
      ofMany.reduce(lanes.columns(i, together), results.subspan(i, each * together));
      continue;
    }
    ofMany.reduce(lanes.columns(i, together), some);
    for (std::size_t k = 0; k < each; ++k) {
      std::copy_n(&some[k * together], together, &results[k * lanes.count() + i]);
    }
  }
}

}  // namespace

py::object reduce(Input& x, Input& weights, const ReduceArguments& a,
                  std::span<const py::ssize_t> leading, const Reduction& reduction) {
  if (a.axis.is_none()) {
    return reduceAll(x, weights, a, leading, reduction);
  }
  if (PyTuple_Check(a.axis.ptr())) {
    return reduceAxes(x, weights, a, leading, reduction);
  }
  const int axis = readAxis(a.axis, x.dimensions());
  const Lanes lanes(x, axis);
  WeightLanes weightLanes(weights, x, axis);
  auto shape = joined(leading, lanes.rest());
  if (a.keepdims) {
    shape.insert(shape.begin() + static_cast<std::ptrdiff_t>(leading.size()) + axis, 1);
  }
  const bool direct = a.out.is_none() && !shape.empty();
  std::vector<double> kept(direct ? 0 : product(leading) * lanes.count());
  Doubles made =
      makeDoubles(direct ? std::span<const py::ssize_t>(shape) : std::span<const py::ssize_t>());
  const std::span<double> results =
      direct ? std::span(made.mutable_data(), product(shape)) : std::span(kept);
  {
    Work work(x.size(), a.progress);
    if (!weights.given() && manyAtATime(lanes, a.ofMany)) {
      reduceMany(lanes, a.ofMany, results, work);
    } else {
      reduceLanes(lanes, weightLanes, reduction, results, work);
    }
  }
  return direct ? made : finish(kept, shape, a.out);
}

namespace {

// Where results share memory with what they are made from, they are made elsewhere and copied.
bool overlap(const Input& x, const Input& weights, const py::array& result) {
  return x.overlaps(result) || weights.overlaps(result);
}

// The mapping of all elements as one dimension.
py::array mapAll(Input& x, Input& weights, const MapArguments& a, const Mapping& mapping) {
  const Data w = x.dimensions() <= 1 ? weights.vector() : flatWeights(weights, x);
  const Data data = x.flat();
  const py::ssize_t shape[] = {static_cast<py::ssize_t>(data.size())};
  py::array result = outputArray(a.out, shape, a.element);
  const bool direct = (result.flags() & py::array::c_style) != 0 && !overlap(x, weights, result);
  py::array place = direct ? result : makeArray(a.element, shape);
  std::size_t written = 0;
  {
    void* const to = place.mutable_data();
    const Work work(data.size(), a.progress);
    written = mapping(data, w, to);
  }
  if (!direct) {
    result[py::ellipsis()] = place;
  }
  if (written < data.size()) {
    return result[py::slice(0, static_cast<py::ssize_t>(written), 1)];
  }
  return result;
}

void fillMissing(char* lane, Element element, std::size_t from, std::size_t to) {
  for (std::size_t i = from; i < to; ++i) {
    if (element == Element::float64) {
      reinterpret_cast<double*>(lane)[i] = std::numeric_limits<double>::quiet_NaN();
    } else if (element == Element::float32) {
      reinterpret_cast<float*>(lane)[i] = std::numeric_limits<float>::quiet_NaN();
    }
  }
}

}  // namespace

namespace {

// The results of lanes, in an array of the shape of theirs.
struct MappedLanes {
  char* first;
  std::ptrdiff_t step;               // from an element of a lane to the next one, in bytes
  std::vector<py::ssize_t> strides;  // of the other axes
  Element element;

  MappedLanes(py::array& result, int along, Element e)
      : first(static_cast<char*>(result.mutable_data())),
        step(result.strides(along)),
        strides(result.strides(), result.strides() + result.ndim()),
        element(e) {
    strides.erase(strides.begin() + along);
  }
};

void mapLanes(const Lanes& lanes, WeightLanes& weights, const Mapping& mapping,
              const MappedLanes& to, Work& work) {
  LaneReader reader(lanes);
  const std::size_t width = elementSize(to.element);
  const std::size_t n = lanes.length();
  std::vector<char> one(n * width);
  for (std::size_t i = 0; i < lanes.count(); ++i) {
    work.part(i, lanes.count());
    fillMissing(one.data(), to.element, mapping(reader[i], weights[i], one.data()), n);
    char* place = to.first + lanes.offset(i, to.strides);
    constexpr std::size_t some = std::size_t{1} << 18;  // between looks at the signals
    for (std::size_t k = 0; k < n; ++k, place += to.step) {
      std::memcpy(place, one.data() + k * width, width);
      if (k % some == some - 1) {
        work.step(0);  // what is done stays
      }
    }
  }
}

// False where the lanes are too long, or lie too irregularly.
bool mapMany(const Lanes& lanes, const MappingOfMany& ofMany, const MappedLanes& to, Work& work) {
  const auto width = static_cast<std::ptrdiff_t>(elementSize(to.element));
  const std::size_t together = std::min(lanes.together(), lanes.together(to.strides));
  const bool whole = std::ranges::all_of(to.strides, [&](auto s) { return s % width == 0; });
  if (!ofMany.map || together < ofMany.fewest || lanes.length() > ofMany.longest ||
      lanes.length() > ofMany.lengthPerLane * together || !whole || to.step % width != 0) {
    return false;
  }
  for (std::size_t i = 0; i < lanes.count(); i += together) {
    work.part(i / together, lanes.count() / together);
    ofMany.map(lanes.columns(i, together), to.first + lanes.offset(i, to.strides), to.step / width,
               to.strides.back() / width);
  }
  return true;
}

}  // namespace

py::array map(Input& x, Input& weights, const MapArguments& a, const Mapping& mapping) {
  if (a.axis.is_none() || x.dimensions() == 1) {
    if (!a.axis.is_none()) {
      readAxis(a.axis, 1);
    }
    return mapAll(x, weights, a, mapping);
  }
  if (x.dimensions() == 0) {
    throw py::value_error(mustBe(x.name(), "an array", "one number"));
  }
  const int along = readAxis(a.axis, x.dimensions());
  const Lanes lanes(x, along);
  WeightLanes weightLanes(weights, x, along);
  py::array result = outputArray(a.out, x.shape(), a.element);
  if (overlap(x, weights, result)) {
    const py::object out = result;
    result = map(x, weights, {a.axis, py::none(), a.progress, a.element, a.ofMany}, mapping);
    out[py::ellipsis()] = result;
    return out;
  }
  const MappedLanes to(result, along, a.element);
  Work work(x.size(), a.progress);
  if (weights.given() || !mapMany(lanes, a.ofMany, to, work)) {
    mapLanes(lanes, weightLanes, mapping, to, work);
  }
  return result;
}

namespace {

template <typename T>
Data part(const T* first, const Data& data, std::size_t begin, std::size_t end) {
  return Data(first + static_cast<std::ptrdiff_t>(begin) * data.stride(), end - begin,
              data.stride());
}

Data part(const Data& data, std::size_t begin, std::size_t end) {
  switch (data.element()) {
    case Element::float32:
      return part(static_cast<const float*>(data.data()), data, begin, end);
    case Element::int32:
      return part(static_cast<const std::int32_t*>(data.data()), data, begin, end);
    case Element::int64:
      return part(static_cast<const std::int64_t*>(data.data()), data, begin, end);
    default:
      return part(static_cast<const double*>(data.data()), data, begin, end);
  }
}

std::span<const py::ssize_t> shapeOf(const py::array& array) {
  return {array.shape(), static_cast<std::size_t>(array.ndim())};
}

}  // namespace

py::object pointwise(Input& x, py::handle out, py::handle progress, const Pointwise& f,
                     std::size_t each) {
  if (x.isNumber() && out.is_none() && each == 1) {
    checkProgress(progress);
    double result = 0;
    f(x.flat(), {&result, 1});
    return py::float_(result);
  }
  py::array result = outputArray(out, x.shape());
  const Data data = x.flat();
  const bool direct = (result.flags() & py::array::c_style) != 0 && !x.overlaps(result);
  py::array place = direct ? result : py::array(makeArray(Element::float64, shapeOf(result)));
  auto* const to = static_cast<double*>(place.mutable_data());
  inPieces(
      data.size(), progress,
      [&](std::size_t begin, std::size_t end) {
        f(part(data, begin, end), {to + begin, end - begin});
      },
      each);
  if (x.isNumber() && out.is_none()) {
    return py::float_(*to);
  }
  if (!direct) {
    result[py::ellipsis()] = place;
  }
  return result;
}

}  // namespace vexel::python
