// The language as scripts beside what they give: printed forms, JSON lines, errors with their
// places, agreement of software and hardware evaluation, and texts that try to break the host.

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
  std::string json(const std::string& text) {
    const Outcome o = last(text);
    return o.kind == Outcome::Kind::value ? o.value.json() : o.json;
  }

  vexel::Kernel kernel;
};

struct Row {
  const char* text;
  const char* result;
};

TEST_F(LanguageScripts, ValuesPrintSoThatTheyReadBack) {
  static constexpr Row kRows[] = {
      {"123456789012345678901234567890 + 1", "123456789012345678901234567891"},
      {"2/4 + 1/3", "5/6"},
      {"-2^2", "-4"},
      {"2^3^2", "512"},
      {"2^(-2)", "1/4"},
      {"8 - 3 - 2", "3"},
      {"12/3/2", "2"},
      {"[2., .5, 1e-3, 1.5e400, 1e20]", "[2.0, 0.5, 0.001, 1.5e+400, 1e+20]"},
      {"0.12345678901234567890123", "0.12345678901234567890123"},
      {"[undefined, infinity, -infinity]", "[Float(undefined), Float(infinity), -Float(infinity)]"},
      {"\"a\\\"b\\\\\\n\\t\"", "\"a\\\"b\\\\\\n\\t\""},
      {"I*I", "-1"},
      {"(1 + I)^2", "2*I"},
      {"1/(1 + I)", "1/2 - 1/2*I"},
      {"sqrt(2)", "sqrt(2)"},
      {"sqrt(2)^2 + sqrt(9/4)", "7/2"},
      {"sqrt(-4)", "2*I"},
      {"x - x", "0"},
      {"x*x", "x^2"},
      {"2*x + 3*x - 1", "5*x - 1"},
      {"sin(0) + cos(0)", "1"},
      {"sin(Pi), sin(1)", "0, sin(1)"},
      {"a = b", "a = b"},
      {"1.0 .. 2", "1.0 .. 2"},
      {"1, NULL, [2, NULL]", "1, NULL, [2, NULL]"},
      {"()", "NULL"},
      {"table([2 = 3, a = 1])", "table([2 = 3, a = 1])"},
      {"Array([3, 1, 2])", "Array(1..3, [3, 1, 2])"},
      {"Array(0..2, datatype = float[4])", "Array(0..2, [0.0, 0.0, 0.0], datatype = float[4])"},
      {"[x -> x, 3]", "[(x -> x), 3]"},
      {"proc(n) local t; t := n; t^2 end", "proc(n) local t; t := n; t^2 end"},
  };
  for (const auto& [text, result] : kRows) {
    SCOPED_TRACE(text);
    EXPECT_EQ(printed(text), result);
    EXPECT_EQ(printed(result), result);
  }
}

TEST_F(LanguageScripts, StatementsAndFunctionsGiveTheirValues) {
  static constexpr Row kRows[] = {
      {"x := 3; clear(x); x", "x"},
      {"1 < 2 and not (2 <= 1) or 1/0 = 1", "true"},
      {"istrue(1 = 1.0), istrue(a = b), istrue(undefined = undefined)", "true, false, false"},
      {"1/3 < 0.3333333333333333333333333333333333, Pi > 3, sqrt(2) < 3/2", "false, true, true"},
      {"if 2 < 1 then 1 elif 1 = 1 then 2 else 3 end", "2"},
      {"if (2 < 1) then 1 end", "NULL"},
      {"if(1 < 2, 5, 1/0)", "5"},
      {"s := 0: for i from 1 to 10 do s := s + i end: s", "55"},
      {"n := 27: k := 0: while n <> 1 do n := if(floor(n/2) = n/2, n/2, 3*n + 1); k := k + 1 end: "
       "k",
       "111"},
      {"f := (a, b) -> a - b: f(5, 3)", "2"},
      {"(() -> 7)()", "7"},
      {"f := x -> [x]: f(NULL), f(), map(f, [NULL, 1])", "[NULL], [NULL], [[NULL], [1]]"},
      {"add := a -> (b -> a + b): add(2)(3)", "5"},
      {"g := proc(n) if n < 2 then 1 else n*g(n - 1) end end: g(20)", "2432902008176640000"},
      {"A := Array(1..2): p := proc(W) W[1] := 9; NULL end: p(A): A[1]", "9"},
      {"T := table(): T[1, 2] := 3: T[1, 2]", "3"},
      {"B := Array(1..2, 0..1, [[1, 2], [3, 4]]): B[2, 0]", "3"},
      {"A := Array(1..1): A[1] := NULL: A[1]", "NULL"},
      {"count((1, NULL, 3)), count([]), count(NULL), count(a + b + c)", "3, 0, 0, 3"},
      {"part([4, 5, 6], 2), map(x -> x^2, [1, 2, 3])", "5, [1, 4, 9]"},
      {"seq(i^2, i = 1 .. 4)", "1, 4, 9, 16"},
      {"seq(i, i = 1 .. 0)", "NULL"},
      {"sum(1/i, i = 1 .. 10)", "7381/2520"},
      {"sum([1/2, 1/3, 1/7, 2, 0.5, 1/7, x, 1/9, 2, x, 1/3])", "2*x + 6.06349206349206"},
      {"s := 0: for i from 1 to 300 do s := s + 1/i end: istrue(s = sum(1/i, i = 1 .. 300))",
       "true"},
      {"tolist(Array([1, 2]))", "[1, 2]"},
      {"diff(x^3 - 2*x, x), diff(sin(x^2), x)", "3*x^2 - 2, 2*x*cos(x^2)"},
      {"[floor(-1/2), ceil(2.1), round(5/2), trunc(-2.7)]", "[-1, 3, 3, -2]"},
      {"[min(3, 1, 2), max(1, 5/2), abs(3 + 4*I), gamma(5)]", "[1, 5/2, 5, 24]"},
      {"max(Array([1, 5, 2])), min([3, 1/2]), max([1, undefined])", "5, 1/2, Float(undefined)"},
      {"min()", "Error, expected numbers, received: NULL"},
      {"log10(1000), log10(1/100), log10(1), log10(99)", "3, -2, 0, log10(99)"},
      {"beta(2, 3), arctan(0, 1), arctan(-1.0, 0)", "1/12, arctan(0, 1), -1.5707963267949"},
      {"diff(asinh(x), x), diff(acos(x), x)", "(x^2 + 1)^(-1/2), -(-x^2 + 1)^(-1/2)"},
      {"1.0/0", "Error, division by zero"},
      {"[1/0.0, -1/0.0, 0/0.0, 0.0^(-1), infinity - infinity]",
       "[Float(infinity), -Float(infinity), Float(undefined), Float(infinity), Float(undefined)]"},
      {"[ln(0.0), gamma(-1.0), sin(infinity)]",
       "[-Float(infinity), Float(undefined), Float(undefined)]"},
      {"5 ! 3", "Error, unexpected character '!'"},
      {"error(\"bad %1 of %2\", 3, x); last_error()", "\"bad 3 of x\""},
      {"Digits := 30: r := 1.0/3: Digits := 15: r", "0.333333333333333333333333333333"},
  };
  for (const auto& [text, result] : kRows) {
    SCOPED_TRACE(text);
    EXPECT_EQ(printed(text), result);
  }
}

TEST_F(LanguageScripts, JsonFormOfEveryKind) {
  static constexpr Row kRows[] = {
      {"123456789012345678901234567890", "123456789012345678901234567890"},
      {"1/3", R"({"expr": "1/3"})"},
      {"[2.0, 1e20, undefined, -infinity]",
       R"([2.0, 1e+20, {"float": "undefined"}, {"float": "-infinity"}])"},
      {"1 + I/2", R"({"complex": [1, {"expr": "1/2"}]})"},
      {"[1, [Complex(1, 2.5)]]", R"([1, [{"complex": [1, 2.5]}]])"},
      {"true, NULL, \"a\\\"\\n\"", R"({"seq": [true, null, "a\"\n"]})"},
      {"0 .. x", R"({"range": [0, {"expr": "x"}]})"},
      {"x = 1", R"({"eq": [{"expr": "x"}, 1]})"},
      {"Array(1..2, [1, 2], datatype = float[8])",
       R"({"array": [1.0, 2.0], "bounds": [[1, 2]], "datatype": "float[8]", "order": "column", "storage": "rectangular"})"},
      {"Array(1..2, 0..1, [[1, 2], [3, 4]], datatype = integer[4], order = row)",
       R"({"array": [[1, 2], [3, 4]], "bounds": [[1, 2], [0, 1]], "datatype": "integer[4]", "order": "row", "storage": "rectangular"})"},
      {"Array(1..1, [2], datatype = complex[8], storage = sparse)",
       R"({"array": [{"complex": [2.0, 0.0]}], "bounds": [[1, 1]], "datatype": "complex[8]", "order": "column", "storage": "sparse"})"},
      {"Array(3..2)",
       R"({"array": [], "bounds": [[3, 2]], "datatype": "anything", "order": "column", "storage": "rectangular"})"},
      {"table([b = 1, undefined = 2, 10 = 3, 1/2 = 4, a = 5, -infinity = 6])",
       R"({"table": [[{"float": "-infinity"}, 6], [{"expr": "1/2"}, 4], [10, 3], [{"float": "undefined"}, 2], [{"expr": "a"}, 5], [{"expr": "b"}, 1]]})"},
      {"x -> x^2", R"({"procedure": "x -> x^2"})"},
      {"error(\"bad %1\", 1/2)",
       R"({"error": "bad 1/2", "message": "bad %1", "args": [{"expr": "1/2"}]})"},
  };
  for (const auto& [text, result] : kRows) {
    SCOPED_TRACE(text);
    EXPECT_EQ(json(text), result);
  }
}

TEST_F(LanguageScripts, FloatsAreRoundedToTheNearestDecimal) {
  // mpmath 1.3 at 80 digits; the two differences cancel nearly all their digits.
  static constexpr Row kRows[] = {
      {"evalf(Pi, 50)", "3.1415926535897932384626433832795028841971693993751"},
      {"evalf(sqrt(2), 30)", "1.41421356237309504880168872421"},
      {"evalf(exp(1), 40)", "2.718281828459045235360287471352662497757"},
      {"evalf(2/3, 3)", "0.667"},
      {"evalf(sin(10^22), 20)", "-0.85220084976718880177"},
      {"evalf(10^20*(Pi - 314159265358979323846/10^20), 20)", "0.26433832795028841972"},
      {"evalf(sqrt(10^60 + 1) - 10^30, 5)", "5e-31"},
      {"evalf(1/8, 2)", "0.12"},
      {"evalf(x + 1/4)", "x + 0.25"},
      {"evalf([1/4, 1 = 1/2])", "[0.25, 1.0 = 0.5]"},
  };
  for (const auto& [text, result] : kRows) {
    SCOPED_TRACE(text);
    EXPECT_EQ(printed(text), result);
  }
}

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
      {"1;\n  x := (1 + ;", 2, 13}, {"5 @ 6;", 1, 3},     {"for i to 3 do i end;", 1, 7},
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
       "\"z\" = Array(1..2, [\"p,\\\"q\\\"\", \"1/3\"])])"},
      {"table([\"\" = A, \"a\" = A])): ReadCSV(F, \"a\")",
       "Array(1..2, [1.5, Float(undefined)], datatype = float[8])"},
      {"Array(1..2, 1..2, [[1, 2], [3, 4]])): ReadCSV(F, \"2\")",
       "Array(1..1, [4.0], datatype = float[8])"},
      {"Array([\"h\", 1, NULL]), Array([\"g\", 3, 4])): ReadCSV(F, \"h\")",
       "Array(1..2, [1.0, Float(undefined)], datatype = float[8])"},
      {"A): WriteText(F, \"\xEF\xBB\xBFx\\n1,\\n\"): ReadCSV(F, \"x\")",
       "Array(1..1, [1.0], datatype = float[8])"},
      {"A): WriteText(F, \"x\\n1\\n2,3\\n\"): ReadCSV(F)",
       "Error, row 3 has more cells than there are headings"},
      {"A, x = A)", "Error, expected a heading for every column or for none"},
      {"A, Array([1]))", "Error, expected arrays of one size, received: Array(1..1, [1])"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(printed(write + row.text), row.result) << row.text;
  }
}

}  // namespace
