// vexel::Kernel: the embedding API over the core.

#include <dlfcn.h>

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "builtins/builtins.hpp"
#include "embedding/exported_symbols.hpp"
#include "embedding/kernel_impl.hpp"
#include "language/interpreter.hpp"
#include "values/arrays.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"

namespace vexel {

Kernel::Impl::Impl(Kernel& k) : kernel(k) {
  state.raiseOutside = [this] { throwError(); };
  state.heap.addRoots([this](Marker& marker) {
    roots->mark(marker);
    calledNames.forget();
  });
}

// Libraries end while everything of theirs is alive; their code stays until the heap, whose
// objects may have dispose functions in it, is gone.
Kernel::Impl::~Impl() {
  const InsideHost inside;
  state.heap.setStress(false);
  state.heap.failAllocation(-1, false);
  for (const LoadedLibrary& library : libraries) {
    if (library.terminate != nullptr) {
      try {
        library.terminate(&state);
      } catch (const HostErrorToken&) {  // nobody to tell
      }
    }
  }
}

void Kernel::Impl::throwError() {
  const InsideHost inside;
  const PendingError error = std::exchange(state.error, {});
  if (error.message == kNoMemory) {
    throwNoMemory();
  }
  try {
    std::vector<Value> arguments;
    for (ALGEB x : error.arguments) {
      arguments.emplace_back(kernel, x);
    }
    throw Error(fillMessage(state, error.message, error.arguments), error.message,
                std::move(arguments));
  } catch (const HostErrorToken&) {  // an argument that cannot be printed
    throw Error(error.message, error.message, {});
  } catch (const std::bad_alloc&) {
    throwNoMemory();
  }
}

ALGEB Kernel::Impl::functionNamed(std::string_view text) {
  ALGEB& known = calledNames.of(text);
  ALGEB n = known != nullptr && vexel::text(known) == text ? known : vexel::name(state, text);
  if (nameFunction(n) == nullptr && nameValue(n) == nullptr) {
    raise(state, "no function %1", n);
  }
  return known = n;
}

void Kernel::Impl::throwNoMemory() {
  state.heap.recover();
  throw Error(kNoMemory, kNoMemory, {});
}

Kernel::Kernel() {
  impl_ = std::make_unique<Impl>(*this);
  impl_->run([&] { initialiseLanguage(impl_->state); });
}

Kernel::~Kernel() {
  std::vector<LoadedLibrary> libraries = impl_->libraries;
  // Objects that are finalised may release Values, which ask for impl().
  Impl* impl = impl_.get();
  delete impl;
  (void)impl_.release();
  for (const LoadedLibrary& library : libraries) {
    dlclose(library.handle);
  }
}

VKernelVector Kernel::vector() { return &impl_->state; }

// ---- values

Value Kernel::null() { return {*this, impl_->state.null}; }
Value Kernel::boolean(bool b) { return {*this, vexel::boolean(impl_->state, b)}; }

Value Kernel::integer(std::int64_t i) {
  return impl_->run([&] { return Value(*this, newInteger(impl_->state, i)); });
}

Value Kernel::real(double d) {
  return impl_->run([&] { return Value(*this, newFloat(impl_->state, d)); });
}

Value Kernel::string(std::string_view text) {
  return impl_->run([&] { return Value(*this, vexel::string(impl_->state, text)); });
}

Value Kernel::name(std::string_view text) {
  return impl_->run([&] { return Value(*this, vexel::name(impl_->state, text)); });
}

namespace {

void pushHandles(Handles& handles, std::span<const Value> values) {
  for (const Value& v : values) {
    handles.push(v.handle());
  }
}

// An argument sequence of handle(0), ... handle(n - 1), which may collect: they go straight to
// where the collector finds them.
template <typename F>
ALGEB argumentsOf(State& state, std::size_t n, F handle) {
  if (n == 1) {
    return handle(0);
  }
  ALGEB args = newSequence(state, n);
  for (std::size_t i = 0; i < n; ++i) {
    setOperand(args, i + 1, handle(i));
  }
  return args;
}

ALGEB argumentsOf(State& state, std::span<const Value> values) {
  return argumentsOf(state, values.size(), [&](std::size_t i) { return values[i].handle(); });
}

}  // namespace

Value Kernel::list(std::span<const Value> elements) {
  return impl_->run([&] {
    Handles handles(impl_->state);
    pushHandles(handles, elements);
    return Value(*this, newList(impl_->state, handles.span()));
  });
}

Value Kernel::list(std::span<const double> elements) {
  std::vector<Value> values;
  values.reserve(elements.size());
  for (const double x : elements) {
    values.push_back(real(x));
  }
  return list(values);
}

Value Kernel::sequence(std::span<const Value> elements) {
  return impl_->run([&] {
    Handles handles(impl_->state);
    pushHandles(handles, elements);
    return Value(*this, sequenceOf(impl_->state, handles.span()));
  });
}

Value Kernel::range(const Value& lower, const Value& upper) {
  return impl_->run([&] {
    return Value(*this, newPair(impl_->state, Tag::range, lower.handle(), upper.handle()));
  });
}

namespace {

void checkBounds(State& state, const RTableSettings& s, std::span<const V_INT> bounds) {
  if (s.num_dimensions < 0 || bounds.size() < 2 * static_cast<std::size_t>(s.num_dimensions)) {
    raise(state, "two bounds a dimension expected");
  }
}

}  // namespace

Value Kernel::array(const RTableSettings& s, const void* data, std::span<const V_INT> bounds) {
  return impl_->run([&] {
    checkBounds(impl_->state, s, bounds);
    return Value(*this, newArray(impl_->state, s, data, bounds.data()));
  });
}

Value Kernel::array(std::span<const double> x) {
  const RTableSettings s{RTABLE_FLOAT64, RTABLE_RECTANGULAR, RTABLE_COLUMN_MAJOR, 1, 0};
  const V_INT bounds[] = {1, static_cast<V_INT>(x.size())};
  return array(s, x.empty() ? nullptr : x.data(), bounds);
}

Value Kernel::array(std::initializer_list<double> x) {
  return array(std::span<const double>(x.begin(), x.size()));
}

Value Kernel::array(std::span<const std::int32_t> x) {
  const RTableSettings s{RTABLE_INTEGER32, RTABLE_RECTANGULAR, RTABLE_COLUMN_MAJOR, 1, 0};
  const V_INT bounds[] = {1, static_cast<V_INT>(x.size())};
  return array(s, x.empty() ? nullptr : x.data(), bounds);
}

Value Kernel::wrap(const RTableSettings& s, void* data, std::span<const V_INT> bounds,
                   std::shared_ptr<void> owner) {
  return impl_->run([&] {
    checkBounds(impl_->state, s, bounds);
    return Value(*this, wrapArray(impl_->state, s, data, bounds.data(), std::move(owner)));
  });
}

Value Kernel::unsignedInteger(std::uint64_t i) {
  return impl_->run([&] {
    BigInteger z;
    mpz_set_ui(z.get(), i);
    return Value(*this, newInteger(impl_->state, z.get()));
  });
}

Value Kernel::unsignedArray(std::span<const std::uint64_t> x) {
  const std::uint64_t most = *std::max_element(x.begin(), x.end());
  if (most > INT64_MAX) {
    throw Error("an array holds no integers beyond 2^63 - 1",
                "an array holds no integers beyond 2^63 - 1", {});
  }
  return toValue(std::span(reinterpret_cast<const std::int64_t*>(x.data()), x.size()));
}

Value Kernel::wrapMemory(const void* data, std::size_t elements, int type, bool readOnly,
                         std::initializer_list<V_INT> extents, int order) {
  return impl_->run([&] {
    std::vector<V_INT> bounds;
    V_INT count = 1;
    bool fits = true;
    for (const V_INT n : extents) {
      bounds.insert(bounds.end(), {1, n});
      fits = fits && n >= 0 && !__builtin_mul_overflow(count, n, &count);
    }
    if (!fits || count != static_cast<V_INT>(elements)) {
      raise(impl_->state, "rows times columns are not the number of elements, %1",
            newInteger(impl_->state, static_cast<std::int64_t>(elements)));
    }
    const RTableSettings s{type, RTABLE_RECTANGULAR, order,
                           static_cast<std::int32_t>(extents.size()), readOnly};
    return Value(*this,
                 wrapArray(impl_->state, s, const_cast<void*>(data), bounds.data(), nullptr));
  });
}

Value Argument::emptyArray(Kernel& kernel, const void*) {
  return kernel.array(std::span<const double>());
}

Value Kernel::call(std::string_view functionName, const Argument& a1, const Argument& a2,
                   const Argument& a3, const Argument& a4, const Argument& a5, const Argument& a6,
                   const Argument& a7, const Argument& a8, const Argument& a9, const Argument& a10,
                   const Argument& a11, const Argument& a12, const Argument& a13,
                   const Argument& a14, const Argument& a15, const Argument& a16) {
  const Argument arguments[] = {a1, a2,  a3,  a4,  a5,  a6,  a7,  a8,
                                a9, a10, a11, a12, a13, a14, a15, a16};
  return callArguments(functionName, arguments);
}

Value Kernel::callArguments(std::string_view functionName, std::span<const Argument> arguments) {
  const auto given = std::find_if(arguments.begin(), arguments.end(),
                                  [](const Argument& a) { return a.isAbsent(); });
  const auto n = static_cast<std::size_t>(given - arguments.begin());
  State& state = impl_->state;
  const auto handle = [&](std::size_t i) {
    const void* const object = arguments[i].object_;
    switch (arguments[i].kind_) {
      case Argument::Kind::real:
        return newFloat(state, *static_cast<const double*>(object));
      case Argument::Kind::integer:
        return newInteger(state, *static_cast<const int*>(object));
      case Argument::Kind::truth:
        return vexel::boolean(state, *static_cast<const bool*>(object));
      case Argument::Kind::value:
        return static_cast<const Value*>(object)->handle();
      default:
        return arguments[i].value(*this).handle();
    }
  };
  return impl_->run([&] {
    ALGEB args = argumentsOf(state, n, handle);
    return Value(*this, vexel::apply(state, impl_->functionNamed(functionName), args));
  });
}

// ---- functions of the embedding program

namespace {

using ValueFunction = std::function<Value(Kernel&, std::span<const Value>)>;

// Calls f as a host procedure: its exceptions become host errors with their arguments.
ALGEB callEmbedded(Kernel& kernel, State& state, const ValueFunction& f, ALGEB args) {
  std::vector<Value> values;
  for (std::size_t i = 1; i <= (isNull(args) ? 0 : argumentCount(args)); ++i) {
    values.emplace_back(kernel, argument(state, args, i));
  }
  try {
    const OutsideHost outside;
    const Value result = f(kernel, values);
    return result.handle() == nullptr ? state.null : result.handle();
  } catch (const Error& e) {
    Handles arguments(state);
    pushHandles(arguments, e.arguments());
    raise(state, e.message(), arguments.span());
  } catch (const Interrupted&) {
    throwInterrupt();
  }
}

}  // namespace

Value Kernel::function(std::string_view functionName, ValueFunction f) {
  return impl_->run([&] {
    State& state = impl_->state;
    auto machine = std::make_unique<MachineFunction>();
    machine->name = functionName;
    machine->call = [this, f = std::move(f)](State& s, ALGEB args) {
      return callEmbedded(*this, s, f, args);
    };
    Value value(*this, newFunction(state, std::move(machine)));
    if (!functionName.empty()) {
      setNameFunction(vexel::name(state, functionName), value.handle());
    }
    return value;
  });
}

Value Kernel::function(std::string_view functionName, std::function<double(double)> f) {
  Value value = function(functionName, [f](Kernel& kernel, std::span<const Value> args) {
    if (args.size() != 1) {
      throw Error("one argument expected", "one argument expected", {});
    }
    State& state = *kernel.vector();
    return kernel.real(f(kernel.impl().run([&] { return VexelEvalhf(&state, args[0].handle()); })));
  });
  machineFunction(value.handle()).hardware = [f](State& state, int n, const double* args) {
    if (n != 1) {
      raise(state, "one argument expected");
    }
    return f(args[1]);
  };
  return value;
}

// ---- running

Value Kernel::eval(std::string_view text) {
  return impl_->run([&] {
    interpreter(impl_->state).quit = false;  // quit and exit() end a text, not the kernel
    return Value(*this, impl_->state.language->runStatements(impl_->state, text));
  });
}

void Kernel::loadLibrary(const std::string& path) {
  impl_->run([&] {
    State& state = impl_->state;
    // RTLD_NOW: a function that a replaced numerical library lacks is an error here, with its name.
    // Found at the first call, it would end the process.
    void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
      const char* reason = dlerror();
      raise(state, reason != nullptr ? reason : "library not found");
    }
    LoadedLibrary loaded{library, nullptr};
    loaded.terminate =
        reinterpret_cast<ALGEB (*)(VKernelVector)>(dlsym(library, "STATS_StatsTerminate_HW"));
    impl_->libraries.push_back(loaded);
    const std::size_t before = impl_->entryPoints.size();
    for (const std::string& symbol : exportedFunctions(library)) {
      // The one entry point with C++ linkage goes by its source name.
      constexpr std::string_view kTally = "VexelTallySorted";
      const bool isTally = symbol.starts_with("_Z16VexelTallySorted");
      if (!isTally && !(symbol.starts_with("STATS_") && symbol.ends_with("_HW"))) {
        continue;
      }
      auto f = std::make_unique<MachineFunction>();
      f->name = isTally ? std::string(kTally) : symbol;
      f->entry = reinterpret_cast<MachineFunction::Entry>(dlsym(library, symbol.c_str()));
      const std::string entryName = f->name;
      ALGEB function = newFunction(state, std::move(f));
      setNameFunction(vexel::name(state, entryName), function);
      impl_->entryPoints.push_back(entryName);
    }
    if (impl_->entryPoints.size() == before) {
      raise(state, "the library %1 has no entry points", vexel::string(state, path));
    }
    if (auto* initialise = reinterpret_cast<ALGEB (*)(VKernelVector)>(
            dlsym(library, "STATS_StatsInitialize_HW"))) {
      initialise(&state);
    }
  });
}

std::vector<std::string> Kernel::entryPoints() const { return impl_->entryPoints; }

Value Kernel::callValues(std::string_view functionName, std::span<const Value> args) {
  return impl_->run([&] {
    ALGEB sequence = argumentsOf(impl_->state, args);
    return Value(*this, vexel::apply(impl_->state, impl_->functionNamed(functionName), sequence));
  });
}

Value Kernel::apply(const Value& procedure, std::span<const Value> args) {
  return impl_->run([&] {
    return Value(*this,
                 vexel::apply(impl_->state, procedure.handle(), argumentsOf(impl_->state, args)));
  });
}

// ---- host state

void Kernel::seed(std::uint64_t seed) { impl_->state.random.seed(seed); }

void Kernel::scriptRandom(std::span<const std::int32_t> integers, std::span<const double> doubles) {
  impl_->state.random.script(integers, doubles);
}

void Kernel::unscriptRandom() { impl_->state.random.unscript(); }
std::uint64_t Kernel::drawsTaken() const { return impl_->state.random.drawsTaken(); }

void Kernel::onUserInfo(
    std::function<void(int level, const std::string& channel, const std::string& text)> f) {
  impl_->state.userInfo = std::move(f);
}

void Kernel::infoLevel(std::string_view channel, int level) {
  impl_->state.infoLevels[std::string(channel)] = level;
}

void Kernel::interrupt() noexcept { requestInterrupt(); }
void Kernel::clearInterrupt() noexcept { vexel::clearInterrupt(); }

void Kernel::collect() {
  impl_->run([&] { impl_->state.heap.collect(); });
}
void Kernel::stress(bool on) { impl_->state.heap.setStress(on); }
std::size_t Kernel::liveObjects() const { return impl_->state.heap.liveObjects(); }
void Kernel::failAllocation(std::int64_t n, bool lasting) {
  impl_->state.heap.failAllocation(n, lasting);
}

}  // namespace vexel
