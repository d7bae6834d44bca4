// Formatted scripts mean what they meant, and formatting them again changes nothing.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>
#include <vexel/session.hpp>

#include "language/lexer.hpp"

namespace vexel {
namespace {

std::vector<std::string> tokensOf(const std::string& text) {
  std::vector<std::string> all;
  for (const Token& t : tokenize(text)) {
    all.emplace_back(t.text);
  }
  return all;
}

// All but white space, comments included.
std::string inkOf(const std::string& text) {
  std::string ink;
  for (const char c : text) {
    if (c != ' ' && c != '\t' && c != '\n' && c != '\r' && c != '\f' && c != '\v') {
      ink += c;
    }
  }
  return ink;
}

TEST(FormatterTest, KeepsTokensAndCommentsAndSettlesAtOnce) {
  int seen = 0;
  for (const char* folder : {"/examples", "/tests/language", "/fuzz/corpus/language"}) {
    for (const auto& file : std::filesystem::directory_iterator(std::string(SOURCE_DIR) + folder)) {
      if (!file.is_regular_file()) {
        continue;
      }
      SCOPED_TRACE(file.path());
      std::ifstream in(file.path(), std::ios::binary);
      const std::string text{std::istreambuf_iterator<char>(in), {}};
      const auto once = formatted(text);
      if (!once) {
        continue;  // characters that are none of the language's
      }
      ++seen;
      ASSERT_EQ(tokensOf(*once), tokensOf(text));
      ASSERT_EQ(inkOf(*once), inkOf(text));
      ASSERT_EQ(formatted(*once), once);
      if (std::string(folder) == "/examples") {
        ASSERT_EQ(*once, text);
      }
    }
  }
  EXPECT_GT(seen, 50);
}

TEST(FormatterTest, IndentsBlocksBracketsAndWhatGoesOn) {
  const char* untidy =
      "\n\nx:=3;y   :=  -x+2;\n\n\n\n# a\nf:=proc( x , n:=10 )\nlocal a,b;\n   # inside\nif x>2 "
      "then return -x\n"
      "elif  x<-2 then\na:=[1,2,\n3];\nelse\nb := foo( x ,\n -1)   \n# last\nend;\nfor i from 1 to "
      "3 do\n"
      "if i=2 then next end;\nprint( i )end;\ntry\nread_it(x)\ncatch e "
      ":\nprint(e);\nfinally\nclose()\nend;\nx\n"
      "end:\ng := x->if(x>2 and not(x<>7),x,-x):# tail\nh := (x,y)->x^2 -y*3 /4;\nA[1 .. "
      "3,1..3];2. .. 3;\"a\n  b\" ; "
      "[ ];\nz :=\n1+\n2;\nfoo(\n1,\n2\n);";
  const char* tidy =
      "x := 3; y := -x + 2;\n\n# a\nf := proc(x, n := 10)\n  local a, b;\n  # inside\n"
      "  if x > 2 then return -x\n  elif x < -2 then\n    a := [1, 2,\n          3];\n  else\n    "
      "b := foo(x,\n"
      "             -1)\n    # last\n  end;\n  for i from 1 to 3 do\n    if i = 2 then next end;\n "
      "   print(i) end;\n"
      "  try\n    read_it(x)\n  catch e:\n    print(e);\n  finally\n    close()\n  end;\n  "
      "x\nend:\n"
      "g := x -> if(x > 2 and not (x <> 7), x, -x):  # tail\nh := (x, y) -> x^2 - y*3 / 4;\n"
      "A[1 .. 3, 1..3]; 2. .. 3; \"a\n  b\"; [];\nz :=\n  1 +\n  2;\nfoo(\n  1,\n  2\n);\n";
  EXPECT_EQ(formatted(untidy), tidy);
  EXPECT_EQ(formatted("a ~ b"), std::nullopt);
  EXPECT_EQ(formatted(""), "");
}

}  // namespace
}  // namespace vexel
