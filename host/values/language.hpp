// What the values ask of the language above them: evaluation of objects, of procedures and of text.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "memory/handle.hpp"

namespace vexel {

// A place in a text that is run; line 0 when it is unknown.
struct TextPlace {
  std::shared_ptr<const std::string> text;  // the text's name: a file
  int line = 0;
  int column = 0;
};

// The only way up from the values: a kernel's state holds one.  Everything but where() may collect
// and raise.
class Language {
 public:
  virtual ~Language() = default;

  // What is being run.
  virtual TextPlace where() const = 0;

  // x evaluated: names by their values (themselves without one), symbolic expressions anew.
  virtual ALGEB evaluate(State& state, ALGEB x) = 0;

  // x in software floating point of that many decimal digits; parts without a value stay symbolic.
  virtual ALGEB evalf(State& state, ALGEB x, int digits) = 0;

  // x in 64-bit floating point; raises when it has no hardware value.
  virtual double evaluateHardware(State& state, ALGEB x) = 0;

  // A procedure of the language (tag procedure) called with an argument sequence (objects.hpp).
  virtual ALGEB callProcedure(State& state, ALGEB procedure, ALGEB args) = 0;

  // The same on args[1] ... args[n] in 64-bit floating point; raises when it has no hardware form.
  virtual double callHardware(State& state, ALGEB procedure, int n, const double* args) = 0;

  // Runs statements; the value of the last one.
  virtual ALGEB runStatements(State& state, std::string_view text) = 0;
};

}  // namespace vexel
