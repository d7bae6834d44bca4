// The language: agreement of software and hardware evaluation, places of errors, texts that try to
// break the host.  What statements give is in tests/language.

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>
#include <vexel/kernel.hpp>
#include <vexel/session.hpp>

namespace {

using vexel::Outcome;

struct LanguageScripts : testing::Test {
  // The outcome of the last statement of a text; earlier ones may fail.
  Outcome last(const std::string& text) {
    vexel::Script script(kernel, text);
    Outcome outcome;
    Outcome result;
    while (script.next(outcome)) {
      result = outcome;
    }
    return result;
  }
  std::string printed(const std::string& text) {
    const Outcome o = last(text);
    return o.kind == Outcome::Kind::value ? o.value.source() : "Error, " + o.error;
  }
  vexel::Kernel kernel;
};

struct Row {
  const char* text;
  const char* result;
};

TEST_F(LanguageScripts, HardwareEvaluationAgreesWithSoftware) {
  kernel.eval(
      "poly := x -> x^3 - 2*x - 5: choose := x -> if(x > 2 and x < 5 or not (x <> 7), x, -x):"
      "halve := proc(x) local t; t := x; while t > 1 do t := t/2 end; t end:"
      "total := proc(n) local s, i; s := 0; for i from 1 to n do s := s + poly(i) end; s end:"
      "fib := n -> if(n < 2, n, fib(n - 1) + fib(n - 2)): c := 3: scaled := x -> c*sin(x):"
      "steps := proc(x) if x < 0 then -1 elif x = 0 then 0 else 1 end end:"
      "reuse := proc(x) local a, b; a := x; b := a; a := b - a*b - b; a := if(a < b, a - b, b)*a; "
      "a end: nested := x -> sin(cos(x) + max(x, 1/3, x^2))*beta(x, exp(x)):"
      "bell := x -> sin(x)*exp(-x^2/2)/(1 + x^2): clamped := x -> if(x > 1, sqrt(x), -x) - min(x, "
      "2):"
      "either := x -> if(x < 0 or x > 2 and not x = 3, x + 1, x*2):"
      "shadow := proc(a, b) local i; for i from a to b do a := a + i; i := 100 end; a - i end:");
  for (const char* call :
       {"poly(5/2)",    "choose(3)",   "choose(6)", "choose(7)",    "halve(11)",
        "total(20)",    "fib(15)",     "scaled(2)", "reuse(3)",     "nested(2)",
        "shadow(1, 3)", "steps(-3)",   "steps(0)",  "2^0.5",        "bell(-3/2)",
        "either(-1)",   "either(5/2)", "either(3)", "clamped(1/4)", "gamma(5) + beta(2, 3)",
        "min(3, 1, 2)", "floor(-2.5)"}) {
    SCOPED_TRACE(call);
    const double software = kernel.eval(std::string("evalf(") + call + ", 20)").number();
    const double hardware = kernel.eval(std::string("evalhf(") + call + ")").number();
    EXPECT_NEAR(hardware, software, 1e-14 * std::fabs(software));
  }
  // A global is looked up when the procedure runs.
  EXPECT_EQ(kernel.eval("c := 0: evalhf(scaled(2))").number(), 0.0);
  EXPECT_EQ(kernel.eval("evalhf(2^0.5)").number(), std::sqrt(2.0));
}

TEST_F(LanguageScripts, HardwareEvaluationRefusesWhatHasNoHardwareValue) {
  for (const char* e : {"q", "[1]", "\"a\"", "true", "NULL", "1.5e400", "x -> x", "I", "f(2)",
                        "1 < 2", "1 < 2 and 2 < 3", "q + 1", "sin(q)"}) {
    SCOPED_TRACE(e);
    EXPECT_EQ(last(std::string("evalhf(") + e + ")").kind, Outcome::Kind::error);
  }
}

TEST_F(LanguageScripts, SyntaxErrorsSayWhereAndTheRunGoesOn) {
  static constexpr struct {
    const char* text;
    int line;
    int column;
  } kRows[] = {
      {"1;\n  x := (1 + ;", 2, 13}, {"5 @ 6;", 1, 3},     {"for i 3 do i end;", 1, 7},
      {"1 < 2 < 3;", 1, 7},         {"f(x) := 3;", 1, 6}, {"a b;", 1, 3},
  };
  for (const auto& [text, line, column] : kRows) {
    SCOPED_TRACE(text);
    vexel::Script script(kernel, std::string(text) + " 6*7;");
    Outcome o;
    while (script.next(o) && o.kind == Outcome::Kind::value) {
    }
    EXPECT_EQ(o.kind, Outcome::Kind::syntax);
    EXPECT_EQ(o.line, line);
    EXPECT_EQ(o.column, column);
    EXPECT_EQ(o.source.substr(o.source.find('\n') + 1),
              std::string(static_cast<std::size_t>(column - 1), ' ') + "^");
    ASSERT_TRUE(script.next(o));
    EXPECT_EQ(o.value.integer(), 42);
  }
}

TEST_F(LanguageScripts, UnfinishedTextsAreRecognised) {
  for (const char* text : {"f(1,", "if x then", "proc() 3;", "[1, 2", "\"abc", "1 +", "x :="}) {
    EXPECT_TRUE(vexel::isIncomplete(kernel, text)) << text;
  }
  for (const char* text : {"1", "1;", "x := 3:", "f(1))", "", "# comment"}) {
    EXPECT_FALSE(vexel::isIncomplete(kernel, text)) << text;
  }
}

std::string repeated(const std::string& part, int n) {
  std::string all;
  for (int i = 0; i < n; ++i) {
    all += part;
  }
  return all;
}

TEST_F(LanguageScripts, NothingBreaksTheHost) {
  constexpr int kMany = 1000000;
  const std::string texts[] = {
      repeated("(", kMany) + "1" + repeated(")", kMany),
      repeated("[", kMany),
      "1" + repeated("+1", kMany),
      "1" + repeated("^1", kMany),
      repeated("-", kMany) + "1",
      repeated("not ", kMany) + "true",
      repeated("f(", kMany) + repeated(")", kMany),
      "a" + repeated("[1]", kMany),
      repeated("proc() ", kMany),
      repeated("x->", kMany) + "1",
      "f" + repeated("(1)", kMany),
      repeated("if 1<2 then ", kMany),
      repeated("seq(", 100000),
      repeated("if(", 100000),
      "f := x -> f(x + 1): f(1)",
      "f := x -> f(x + 1): evalhf(f(1))",
      "L := 1: for i from 1 to 200000 do L := [L] end: L",
      "L := q: for i from 1 to 20000 do L := sin(L) end: evalf(L)",
      "L := [1]: L[1] := L: evalf(L)",
      "T := table(): T[1] := T: T",
      "g := q: for i from 1 to 60 do g := sin(g) end: evalf(diff(g, q))",
      "2^(10^10)",
      "10^(10^30)",
      "1e999999999999",
      "evalf(Pi, 10^9)",
      "Digits := 0",
      "Digits := 10^12",
      "Array(1..10^18)",
      "Array(1..10^9, 1..10^9, 1..10^9)",
      "Array(-4611686018427387904 .. 4611686018427387903)",
      "error(\"%1%2%9\", 1)",
      "A := Array(1..2): A[1] := A: A[2] := A: A + 1",  // the error names what has no end
      "error(cat(seq(\"%1\", i = 1 .. 1000)), cat(seq(\"0123456789\", i = 1 .. 100000)))",
      "ReadCSV(\"/nowhere\")",
      "[1][2^70]",
      "part([1], 0)",
      "map(NULL, [1])",
  };
  for (const std::string& text : texts) {
    SCOPED_TRACE(text.substr(0, 60));
    const Outcome o = last(text);
    try {
      if (o.kind == Outcome::Kind::value) {
        (void)o.value.json();
      }
    } catch (const vexel::Error&) {  // a value may be nested beyond printing
    }
    EXPECT_EQ(kernel.eval("clear(f): clear(g): 1 + 1").integer(), 2);
  }
}

TEST_F(LanguageScripts, ColumnsGoToAFileAndBack) {
  const std::string write = "F := \"" + testing::TempDir() +
                            "/language_scripts.csv\": A := Array([1.5, " +
                            "undefined]): B := Array([\"p,\\\"q\\\"\", 1/3]): WriteCSV(F, ";
  const Row rows[] = {
      {"\"x y\" = A, z = B): ReadCSV(F)",
       "table([\"x y\" = Array(1..2, [1.5, Float(undefined)], datatype = float[8]), "
       "\"z\" = Array(1..2, [\"p,\\\"q\\\"\", \"0.3333333333333333\"])])"},
      {"table([\"\" = A, \"a\" = A])): ReadCSV(F, \"a\")",
       "Array(1..2, [1.5, Float(undefined)], datatype = float[8])"},
      {"Array(1..2, 1..2, [[1, 2], [3, 4]])): ReadCSV(F, \"2\", header = true)",
       "Array(1..1, [4.0], datatype = float[8])"},
      {"Array(1..2, 1..2, [[1, 2], [3, 4]])): ReadCSV(F, 2)",
       "Array(1..2, [2.0, 4.0], datatype = float[8])"},
      {"Array([\"h\", 1, NULL]), Array([\"g\", 3, 4])): ReadCSV(F, \"h\")",
       "Array(1..2, [1.0, Float(undefined)], datatype = float[8])"},
      {"A): WriteText(F, \"\xEF\xBB\xBFx\\n1,\\n\"): ReadCSV(F, \"x\")",
       "Array(1..1, [1.0], datatype = float[8])"},
      {"A): WriteText(F, \"x\\n1\\n2,3\\n\"): ReadCSV(F)",
       "Error, row 3, column 2: more cells than there are headings"},
      {"A): WriteText(F, \"x\\n1\\n2,,\\n\"): ReadCSV(F, 1)",
       "Array(1..2, [1.0, 2.0], datatype = float[8])"},
      {"A): WriteText(F, \"x,y\\n1,\\\"a\\n2,b\\n\"): ReadCSV(F, 1)",
       "Error, row 2, column 2 of the CSV file opens a quote that the file never closes"},
      {"A): WriteText(F, \"x,y\\n1,a\\\"b\\n\"): ReadCSV(F, 1)",
       "Error, row 2, column 2 of the CSV file has a quote inside a cell without quotes or text "
       "behind "
       "the closing quote"},
      {"A): WriteText(F, \"x, y,x\\n1,2,3\\n\"): ReadCSV(F)",
       "Error, columns 1 and 3 have the same heading, \"x\""},
      {"A): WriteText(F, \"x, y,x\\n1,2,3\\n\"): ReadCSV(F, x)",
       "Error, the file has several columns x; name one by its number"},
      {"A): WriteText(F, \"x\\nna\\nN/A\\n.\\nNULL\\n NaN\\n\\\"\\\"\\n\"): count(ReadCSV(F, 1))",
       "6"},
      {"A): WriteText(F, \"x\\n1\\n..\\n\"): ReadCSV(F, 1)",
       "Error, row 3, column 1: expected a number, received: \"..\""},
      {"A, x = A)", "Error, expected a heading for every column or for none"},
      {"A, Array([1]))", "Error, expected arrays of one size, received: Array(1..1, [1])"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(printed(write + row.text), row.result) << row.text;
  }
}

}  // namespace
