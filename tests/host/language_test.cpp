// The files of tests/language, and expressions that share their parts.

#include <filesystem>
#include <fstream>
#include <string>
#include <vexel/session.hpp>

#include "kernel_test.hpp"

namespace {

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

// A line "statements   #> printed value"; #>> for one that reads back, #= for JSON, #! for a part
// of an error's text.  Each line begins with a new kernel.
void checkLine(const std::string& line) {
  const std::size_t at = line.find("   #");
  ASSERT_NE(at, std::string::npos);
  const std::size_t space = line.find(' ', at + 3);
  const std::string mark = line.substr(at + 3, space - at - 3);
  const std::string expected = line.substr(space + 1);
  vexel::Kernel kernel;
  vexel::Script script(kernel, line.substr(0, at));
  vexel::Outcome outcome;
  for (vexel::Outcome next; script.next(next);) {
    outcome = std::move(next);
  }
  const bool value = outcome.kind == vexel::Outcome::Kind::value;
  if (mark == "#!") {
    EXPECT_FALSE(value);
    EXPECT_NE(outcome.error.find(expected), std::string::npos) << outcome.error;
  } else if (mark == "#=") {
    EXPECT_EQ(value ? outcome.value.json() : outcome.json, expected);
  } else {
    ASSERT_TRUE(value) << outcome.error;
    EXPECT_EQ(outcome.value.source(), expected);
    if (mark == "#>>") {
      EXPECT_EQ(kernel.eval(expected).source(), expected);
    }
  }
}

TEST(LanguageFiles, GiveTheirValues) {
  int lines = 0;
  for (const auto& file : std::filesystem::directory_iterator(SOURCE_DIR "/tests/language")) {
    std::ifstream in(file.path());
    int number = 0;
    for (std::string line; std::getline(in, line);) {
      ++number;
      if (!line.empty() && line[0] != '#') {
        SCOPED_TRACE(file.path().filename().string() + ":" + std::to_string(number) + ": " + line);
        checkLine(line);
        ++lines;
      }
    }
  }
  EXPECT_GT(lines, 100);
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
