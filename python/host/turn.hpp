// One thread at a time: the right to use the host.
#pragma once

#include <pybind11/pybind11.h>

#include <csignal>
#include <vector>
#include <vexel/kernel.hpp>

namespace vexel::python {

namespace py = pybind11;

// While it lives, this thread may use the host; others wait, without the interpreter lock.  Made
// with the interpreter lock held; nests.
class Turn {
 public:
  Turn();
  ~Turn();
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;
};

// While it lives, Ctrl-C on the main thread interrupts the host too.
class InterruptWatch {
 public:
  InterruptWatch();
  ~InterruptWatch();
  InterruptWatch(const InterruptWatch&) = delete;
  InterruptWatch& operator=(const InterruptWatch&) = delete;

 private:
  bool installed_ = false;
  struct sigaction before_ {};
};

// A Value whose last holder may be any thread at any time: it is dropped when it is this thread's
// turn, or at the next turn of any thread.
class Held {
 public:
  explicit Held(Value value) : value_(std::move(value)) {}
  ~Held();
  Held(const Held&) = delete;
  Held& operator=(const Held&) = delete;
  const Value& value() const { return value_; }

 private:
  Value value_;
};

}  // namespace vexel::python
