// How a function of the library is run for Python: without the interpreter lock where there is much
// to do, answering Ctrl-C, and along an axis.
#pragma once

#include <pybind11/pybind11.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <optional>
#include <vexel/columns.hpp>
#include <vexel/interruption.hpp>

#include "arrays.hpp"

namespace vexel::python {

// While it lives: with more than 10^4 elements the lock is released, and every 50 ms Python's
// signals are looked at and `progress` (a callable of one float, True for a bar, or None) is told
// the share done.
class Work {
 public:
  explicit Work(std::size_t elements, py::handle progress = py::none());
  // Work that calls back into Python keeps the lock, but answers Ctrl-C.
  static constexpr std::size_t keepLock = static_cast<std::size_t>(-1);
  static constexpr std::size_t lockedElements = 10000;  // so few keep it as well
  Work(const Work&) = delete;
  Work& operator=(const Work&) = delete;

  // Looks and tells between two pieces of work that do not do so themselves.
  void step(double done) const {
    if (report_) {
      report_(done);
    }
  }
  // What follows is part i of n equal ones.
  void part(std::size_t i, std::size_t n) {
    if (report_) {
      begin_ = static_cast<double>(i) / static_cast<double>(n);
      share_ = 1 / static_cast<double>(n);
      if (i % 64 == 0 || elements_ / n >= longParts) {
        report_(begin_);
      }
    }
  }

 private:
  static constexpr std::size_t longParts = 1024;  // of more elements there is a look at each

  std::size_t elements_;
  double begin_ = 0;  // of the part that is being done, in the whole
  double share_ = 1;
  py::object progress_;
  std::function<bool(double)> report_;
  std::optional<Watch> watch_;
  std::optional<py::gil_scoped_release> released_;
};

// Complains of a `progress` that is none, where there is nothing to tell it.
void checkProgress(py::handle progress);

// ---- along an axis ----

// k numbers from the elements x and their weights w (not given where there are none).
using Reduction = std::function<void(const Data& x, const Data& w, double* result)>;

// The same of many lanes at once: number i of lane j at results[i * lanes.count() + j].
struct ReductionOfMany {
  std::function<void(const Columns& lanes, std::span<double> results)> reduce = nullptr;
  // The longest lanes that it serves best, side by side in memory and otherwise.
  std::size_t longest = 0;
  std::size_t longestBeside = unlimited;
  std::size_t fewest = 2;                 // of lanes at one distance from each other
  std::size_t lengthPerLane = unlimited;  // so many times as long as there are lanes of that kind

  static constexpr std::size_t unlimited = static_cast<std::size_t>(-1);
};

struct ReduceArguments {
  py::handle axis;  // None: all elements; an integer; a tuple of them
  bool keepdims = false;
  py::handle out;
  py::handle progress;
  ReductionOfMany ofMany = {};  // used without weights
};

// The reduction of every lane.  Its k numbers per lane stand in a leading axis (or axes) of the
// shape `leading`, as NumPy's quantile has them; nothing there: one number.  A float for one.
py::object reduce(Input& x, Input& weights, const ReduceArguments& arguments,
                  std::span<const py::ssize_t> leading, const Reduction& reduction);

// n elements from n; returns how many it wrote, which is fewer only where missing ones go.
using Mapping = std::function<std::size_t(const Data& x, const Data& w, void* result)>;

// The same of many lanes at once: element i of lane j to element i * stride + j * apart behind
// first.
struct MappingOfMany {
  std::function<void(const Columns& lanes, void* first, std::ptrdiff_t stride,
                     std::ptrdiff_t apart)>
      map = nullptr;
  std::size_t longest = 0;
  std::size_t fewest = 16;
  std::size_t lengthPerLane = 8;
};

struct MapArguments {
  py::handle axis;  // None: of all elements, as one dimension
  py::handle out = py::none();
  py::handle progress = py::none();
  Element element = Element::float64;  // of the result
  MappingOfMany ofMany = {};           // used without weights
};

// The mapping of every lane along the axis, in an array of the same shape.
py::array map(Input& x, Input& weights, const MapArguments& arguments, const Mapping& mapping);

// One number for each element; a float for one number.
using Pointwise = std::function<void(const Data& x, std::span<double> result)>;
// each: how many elements' worth of work one argument is.
py::object pointwise(Input& x, py::handle out, py::handle progress, const Pointwise& f,
                     std::size_t each = 1);

// f(begin, end) over the numbers 0 to n in pieces, with a look at Python's signals between them.
// Elementwise work gives the same whatever the pieces, so they are as large as a few milliseconds
// allow: a quantile may take a nanosecond or a tenth of a millisecond.
template <typename F>
void inPieces(std::size_t n, py::handle progress, F f, std::size_t each = 1) {
  using Clock = std::chrono::steady_clock;
  constexpr std::size_t least = 64;
  constexpr std::size_t most = 1U << 14;
  // A value may take long where a few are asked for: there is a look at signals for few, too.
  constexpr std::size_t few = 8;
  const Work work(n * each < few || n * each > Work::lockedElements ? n * each : Work::keepLock,
                  progress);
  std::size_t piece = 4 * least;
  auto before = Clock::now();
  for (std::size_t begin = 0; begin < n;) {
    const std::size_t end = n - begin < piece ? n : begin + piece;
    f(begin, end);
    begin = end;
    work.step(static_cast<double>(begin) / static_cast<double>(n));
    const auto now = Clock::now();
    if (now - before < std::chrono::milliseconds(2)) {
      piece = std::min(2 * piece, most);
    } else if (now - before > std::chrono::milliseconds(10)) {
      piece = std::max(piece / 2, least);
    }
    before = now;
  }
}

// ---- without data

// The shape that a size means: nothing for None.
std::optional<std::vector<py::ssize_t>> readSize(py::handle size, const char* name);

// `out` filled, or a new array of the shape `size` (a whole number or a tuple); without either one
// value.
// `name` is the parameter's for the shape, "n" or "size".
py::object fillDoubles(const char* name, py::handle size, py::handle out, py::handle progress,
                       const std::function<double()>& one,
                       const std::function<void(std::span<double>)>& many);

}  // namespace vexel::python
