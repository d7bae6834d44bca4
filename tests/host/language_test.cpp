// The host's mathematics from the outside: what expressions become, what has no value, and
// expressions that share their parts.

#include <string>

#include "kernel_test.hpp"

namespace {

struct Case {
  const char* script;
  const char* expected;
};

class LanguageTest : public KernelTest {
 protected:
  std::string source(const std::string& script) {
    try {
      return kernel.eval(script).source();
    } catch (const vexel::Error& e) {
      return std::string("Error, ") + e.what();
    }
  }
};

TEST_F(LanguageTest, ExpressionsBecomeTheirValues) {
  static constexpr Case kCases[] = {
      // decimal floats
      {"evalf(sqrt(2) + Pi)", "4.55580621596289"},
      {"Digits := 8: p := 5.55^3: Digits := 2: [p, 0.2^(-3)]", "[170.95388, 120.0]"},
      // complex floats
      {"[exp(1.0*I), sqrt(Complex(3.0, 4)), 2.0^I]",
       "[0.54030230586814 + 0.841470984807897*I, 2.0 + 1.0*I, "
       "0.769238901363972 + 0.638961276313635*I]"},
      {"evalf(exp(Complex(1, 2)), 20)", "-1.1312043837568136384 + 2.4717266720048189276*I"},
      {"evalf(sin(sqrt(-2)))", "0.0 + 1.93506682217436*I"},
      {"evalf(exp(I*Pi))", "-1.0 + 0.0*I"},
      {"[arcsin(Complex(2.0, 0.0)), arcsin(Complex(2.0, -0.0))]",  // either side of the cut
       "[1.5707963267949 + 1.31695789692482*I, 1.5707963267949 - 1.31695789692482*I]"},
      {"[tan(Complex(1.0, 1e30)), tanh(Complex(-1e7, 1.0))]",  // far from the axis
       "[0.0 + 1.0*I, -1.0 + 4.18476352065845e-8685890*I]"},
      {"[arctan(Complex(2.5, -infinity)), sqrt(Complex(1.0, infinity))]",
       "[1.5707963267949 - 0.0*I, Float(infinity) + Float(infinity)*I]"},
      {"exp(I*Pi)", "exp(I*Pi)"},
      {"[(-2.0)^(1/2), evalf((-2)^(3/2)), 2.0^(1/2)]",
       "[1.4142135623731*I, 0.0 - 2.82842712474619*I, 1.4142135623731]"},
      {"(1.0 + 1e-10*I)^(10^10)", "0.540302305895155 + 0.84147098484997*I"},
      // an exact 0 stays one, so that parts of all kinds read back
      {"[1.5*I, infinity*I, (2.0*I)^2, I/2.0]", "[1.5*I, Float(infinity)*I, -4.0, 0.5*I]"},
      {"istrue(1 + Float(infinity)*I = Complex(1, infinity))", "true"},
      {"-0.0 - 2*I", "-0.0 - 2*I"},
      {"evalf(sqrt(2)*sqrt(3) - sqrt(6))", "0.0"},
      {"evalf(Array([1/3, x]), 3)", "Array(1..2, [0.333, x])"},
      {"evalf(x < 1/3, 3)", "x < 0.333"},
      {"[sin(1e400), cos(1e400)]", "[-0.998538231983098, -0.0540499701023906]"},
      // near a zero, where all of a long argument counts
      {"evalf(ln(1 + 1/10^200), 5)", "1e-200"},
      {"evalf(arccosh(1 + 1/10^200), 5)", "1.4142e-100"},
      {"evalf(gamma(1/10^200 - 1), 5)", "-1e+200"},
      {"log10(1 - 10.0^(-12))", "-4.34294481903469e-13"},
      {"t := evalf(Pi, 300): sin(t)", "3.72458700660632e-300"},
      {"t := evalf(1 + 1/10^100, 120): t^(10^100 + 1/2)", "2.71828182845905"},
      // symbolic
      {"x + y - x", "y"},
      {"x*x/x^3", "x^(-1)"},
      {"b := a + 1: a := 2: b", "3"},
      {"diff(sin(x)*exp(2*x), x)", "cos(x)*exp(2*x) + 2*exp(2*x)*sin(x)"},
      // logic
      {"if(1 = 1.0, \"same\", \"other\")", "\"same\""},
      {"undefined = undefined", "Float(undefined) = Float(undefined)"},
      // structures
      {"T := table([1 = 2]): T[3] := 4: T[1] + T[3]", "6"},
      {"part(1 .. 5, 2)", "5"},
      {"typeof(1/2)", "\"rational\""},
      // procedures
      {"u := unapply(diff(x^2, x), x): u(3)", "6"},
  };
  for (const auto& [script, expected] : kCases) {
    SCOPED_TRACE(script);
    vexel::Kernel fresh;
    EXPECT_EQ(fresh.eval(script).source(), expected);
  }
}

TEST_F(LanguageTest, RefusesWhatHasNoValue) {
  static constexpr Case kCases[] = {
      {"1/0", "division by zero"},
      {"sin(1e100000000)", "too large an angle"},
      {"1e999999999999", "exponent of a float out of range"},
      {"Digits := 10^7", "number of digits out of range"},
      {"Digits := 1.5", "number of digits out of range, received 1.5"},
      {"evalf(Pi, 10^9)", "number of digits out of range"},
      {"[1, 2][3]", "index out of range: 3"},
      {"error(\"%1 is not %2\", 1, [2])", "1 is not [2]"},
      {"evalhf(foo)", "foo"},
      {"Array(1..2, [\"a\"], datatype = float[8])", "a"},
      {"2^(10^30)", "large"},
      {"evalf(gamma(1/3), 20000)", "too many digits for gamma"},  // would take minutes
      {"sin(1e4000000)", "too large an angle"},
      {"(x -> x)(1, 2)", "expects 1 argument"},
      {"2(x + 1)", "unable to call the number 2"},
      {"r := x -> r(x): r(1)", "too many levels of recursion"},
  };
  for (const auto& [script, expected] : kCases) {
    const std::string text = source(script);
    EXPECT_NE(text.find("Error"), std::string::npos) << script;
    EXPECT_NE(text.find(expected), std::string::npos) << script << ": " << text;
  }
  EXPECT_EQ(source("1 + 1"), "2");  // still usable
}

// Expressions share their parts, here 2^60 leaves when written out, and sums grow in loops: walking
// all of it anew each time would not end.
TEST_F(LanguageTest, SharedPartsAreWalkedOnce) {
  kernel.stress(false);
  EXPECT_EQ(source("e := x: for i from 1 to 60 do e := sin(e) + cos(e) end: d := diff(e, x): "
                   "evalf(e): x := 1.0: evalf(e - 1.25872877449268) < 1e-3, d < 1e-6"),
            "true, true");
  EXPECT_EQ(source("s := 0: for i from 1 to 2000 do s := s + y^i end: count(s), count(s - y)"),
            "2000, 1999");
  EXPECT_EQ(source("clear(x): s := sum(x*z^i, i = 1 .. 50): x := 2: s - 2*sum(z^i, i = 1 .. 50)"),
            "0");
  kernel.stress(false);  // 100000 collections of a growing heap
  EXPECT_EQ(source("t := z: for i from 1 to 100000 do t := sin(t) end: z := 0: t"),
            "Error, too many levels of recursion");
}

// The same walks while every allocation collects, with values that nothing else holds.
TEST_F(LanguageTest, ExpressionsSurviveCollectionWhileTheyAreWalked) {
  kernel.stress(true);
  EXPECT_EQ(
      source("e := a: for i from 1 to 4 do e := sin(e) + i*b*e^2 end: f := diff(e, a): a := 0: "
             "f"),
      "1");
  EXPECT_EQ(
      source("clear(a): s := sum(i*u^i, i = 1 .. 30) - sum(i*u^i, i = 2 .. 30): evalf(s + 1/3)"),
      "u + 0.333333333333333");
  EXPECT_EQ(source("b := 1/2: g := c + b + 1 + d - c + 2*d + a - 3*d + 0.25: a := 1: g"), "2.75");
  EXPECT_EQ(source("clear(b): max([seq(evalf(sqrt(i)), i = 1 .. 9)])"), "3.0");
  kernel.stress(false);
}

}  // namespace
