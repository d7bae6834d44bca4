// The embedding API: a Vexel kernel inside a C++ program.
//
//   vexel::Kernel kernel;
//   kernel.loadLibrary("libstats_hw.so");
//   std::vector<double> x = {3, 1, 2};
//   vexel::Value mean =
//       kernel.call("STATS_VexelMean_HW", kernel.wrap(x), kernel.array({}), false, 0);
//   double m = mean.number();
//
// One kernel per process is in use at a time, by one thread at a time.  A Value is a rooted handle:
// it keeps its object alive and may be copied freely; one that outlives its kernel can only be
// dropped. Every function that can fail throws vexel::Error and leaves the kernel usable.
#pragma once

#if __cplusplus < 202002L
#error "vexel/kernel.hpp needs C++20 (-std=c++20)"
#endif

#include <vexelc/vexelc.h>

#include <concepts>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>
#include <vexel/interruption.hpp>

namespace vexel {

class Kernel;

// A rooted handle of a host object.
class Value {
 public:
  Value() = default;  // the host's NULL, of no kernel
  Value(Kernel& kernel, ALGEB handle);
  Value(const Value& other);
  Value(Value&& other) noexcept;
  Value& operator=(Value other) noexcept;
  ~Value();

  ALGEB handle() const { return handle_; }
  Kernel* kernel() const;  // nullptr for none, or when it is gone

  // What it is.
  bool isNull() const;
  bool isNumeric() const;
  bool isInteger() const;
  bool isArray() const;
  bool isList() const;

  // Conversions; throw Error for a value of another kind.
  double number() const;                // nearest double of a number
  std::int64_t integer() const;         // an integer that fits
  bool boolean() const;                 // true, false
  std::string text() const;             // printed form; a string without its quotes
  std::string source() const;           // printed form that reads back
  std::string json() const;             // one line of JSON
  std::vector<double> numbers() const;  // a list or array (dense or sparse) of numbers

  // Elements of a list, sequence or one-dimensional array, from 0.
  std::size_t size() const;
  Value operator[](std::size_t i) const;

  // The same object (equal numbers, names and strings are the same object).
  friend bool operator==(const Value& a, const Value& b) { return a.handle_ == b.handle_; }

 private:
  Kernel* kernel_ = nullptr;
  ALGEB handle_ = nullptr;
  void* root_ = nullptr;
};

// A host error: what() is its text, filled, with long arguments shortened.
class VEXEL_API Error : public std::runtime_error {
 public:
  Error(std::string filled, std::string message, std::vector<Value> arguments);
  ~Error() override;
  const std::string& message() const { return message_; }  // with %1, %2 unfilled
  const std::vector<Value>& arguments() const { return arguments_; }

 private:
  std::string message_;
  std::vector<Value> arguments_;
};

class Kernel {
 public:
  Kernel();
  ~Kernel();
  Kernel(const Kernel&) = delete;
  Kernel& operator=(const Kernel&) = delete;

  VKernelVector vector();  // what a loaded library is called with

  // --- values ---
  Value null();
  Value boolean(bool b);
  Value integer(std::int64_t i);
  Value real(double d);
  Value string(std::string_view text);
  Value name(std::string_view text);
  Value list(std::span<const Value> elements);
  Value list(std::span<const double> elements);
  Value list(std::initializer_list<double> elements) {
    return list(std::span<const double>(elements.begin(), elements.size()));
  }
  Value sequence(std::span<const Value> elements);  // one element: the element itself
  Value range(const Value& lower, const Value& upper);

  // New dense arrays of the given element type (RTABLE_ codes), bounds 1..n, elements copied.
  Value array(std::span<const double> x);  // float[8]
  Value array(std::initializer_list<double> x);
  Value array(std::span<const std::int32_t> x);  // integer[4]
  Value array(const RTableSettings& s, const void* data, std::span<const V_INT> bounds);

  // An array over memory that the caller owns and keeps alive and in place as long as the kernel
  // can reach the array.  Nothing is copied; the library writes into the caller's memory.
  Value wrap(std::span<double> x);
  // The same for any dense array of a machine type; owner is dropped when the array is collected,
  // perhaps in the middle of a later call, and may be what keeps the memory.
  Value wrap(const RTableSettings& s, void* data, std::span<const V_INT> bounds,
             std::shared_ptr<void> owner);

  // A C++ function as a host procedure.  It may throw Error; other exceptions become host errors.
  // A function of one double is also a hardware function.
  Value function(std::string_view name, std::function<Value(Kernel&, std::span<const Value>)> f);
  Value function(std::string_view name, std::function<double(double)> f);

  // --- running ---
  // Runs statements of the language; the value of the last one.
  Value eval(std::string_view text);

  // Loads a library and initialises it.  Its exported entry points become callable by name.
  void loadLibrary(const std::string& path);
  std::vector<std::string> entryPoints() const;

  // Calls an entry point, built-in function or procedure by name.  Arguments: Values, bool,
  // integers, doubles, texts, vectors and spans of doubles (copied to an array).
  template <typename... Args>
  Value call(std::string_view name, Args&&... args) {
    const Value values[] = {toValue(std::forward<Args>(args))..., Value()};
    return callValues(name, std::span<const Value>(values, sizeof...(Args)));
  }
  Value callValues(std::string_view name, std::span<const Value> args);
  Value apply(const Value& procedure, std::span<const Value> args);

  // --- host state ---
  void seed(std::uint64_t seed);
  // Scripted draws: the next draws come from these values in turn, integers and doubles each from
  // their own queue; an empty queue raises.  nullptr-like empty spans and unscript() end it.
  void scriptRandom(std::span<const std::int32_t> integers, std::span<const double> doubles);
  void unscriptRandom();
  std::uint64_t drawsTaken() const;  // draws of either kind since the kernel was made

  // Messages of VexelUserInfo at or below the channel's level; default: standard error.
  void onUserInfo(
      std::function<void(int level, const std::string& channel, const std::string& text)> f);
  void infoLevel(std::string_view channel, int level);

  // Sets the flag that evaluation and random draws look at; safe in a signal handler.
  static void interrupt() noexcept;
  // Forgets an interrupt that nothing has seen yet.
  static void clearInterrupt() noexcept;

  // --- collector ---
  void collect();
  void stress(bool on);             // collect at every allocation
  std::size_t liveObjects() const;  // after the last collection, plus what was made since
  // Lets the n-th host allocation from now (0: the next), and if lasting every later one, raise
  // "not enough memory"; -1: none.
  void failAllocation(std::int64_t n, bool lasting = false);

  Value toValue(const Value& v) { return v; }
  Value toValue(bool b) { return boolean(b); }
  template <std::integral I>
  Value toValue(I i) {
    return integer(static_cast<std::int64_t>(i));
  }
  Value toValue(double d) { return real(d); }
  Value toValue(const char* text) { return string(text); }
  Value toValue(const std::string& text) { return string(text); }
  Value toValue(const std::vector<double>& x) { return array(std::span<const double>(x)); }
  Value toValue(std::span<const double> x) { return array(x); }

  struct Impl;
  Impl& impl() { return *impl_; }

 private:
  std::unique_ptr<Impl> impl_;
};

}  // namespace vexel
