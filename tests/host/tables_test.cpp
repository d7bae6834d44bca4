// Tables of columns: what is written is read back, in every format; rows are chosen, grouped and
// joined as plain loops over them say; what is no table is refused.

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>
#include <vector>
#include <vexel/kernel.hpp>
#include <vexel/session.hpp>

namespace {

using vexel::Outcome;

struct TablesTest : testing::Test {
  TablesTest() {
    kernel.onUserInfo([this](int, const std::string& channel, const std::string& text) {
      told += channel + ": " + text + "\n";
    });
    kernel.eval("F := \"" + testing::TempDir() + "/tables_test.csv\":");
  }
  std::string printed(const std::string& text) {
    vexel::Script script(kernel, text);
    Outcome outcome;
    Outcome last;
    while (script.next(outcome)) {
      last = outcome;
    }
    return last.kind == Outcome::Kind::value ? vexel::displayed(last.value, false)
                                             : "Error, " + last.error;
  }
  bool holds(const std::string& text) { return printed(text) == "true"; }

  vexel::Kernel kernel;
  std::string told;
};

struct Row {
  const char* text;
  const char* result;
};

// A cell of a random column, as the language writes it; texts are hard to write as CSV.
std::string randomCell(std::mt19937& random, int kind) {
  static const char* const kTexts[] = {"\"\"",      "\"NA\"",     "NULL",           "\" a \"",
                                       "\"1\"",     "\"a,b\"",    "\"x;y\"",        "\"q\\\"\\\"\"",
                                       "\"l\\nm\"", "\"Zürich\"", "\"2024-01-01\"", "\"\\t\"",
                                       "\".\"",     "\"null\""};
  switch (kind) {
    case 0:
      return random() % 5 == 0 ? "undefined"
                               : std::to_string(static_cast<int>(random() % 2001) - 1000) + "." +
                                     std::to_string(random() % 100000);
    case 1:
      return random() % 7 == 0 ? "NULL" : "date(" + std::to_string(random() % 40000) + ")";
    default:
      return kTexts[random() % std::size(kTexts)];
  }
}

TEST_F(TablesTest, WhatIsWrittenIsReadBack) {
  std::mt19937 random(5);
  for (int round = 0; round < 40; ++round) {
    const std::size_t rows = round == 0 ? 0 : random() % 400;
    std::string columns[3];
    for (int kind = 0; kind < 3; ++kind) {
      for (std::size_t i = 0; i < rows; ++i) {
        columns[kind] += (i > 0 ? ", " : "") + randomCell(random, kind);
      }
    }
    kernel.eval("t := frame(text = [" + columns[2] + "], number = Array([" + columns[0] +
                "], datatype = float[8]), day = [" + columns[1] + "]):");
    for (const char* format :
         {"", ", separator = \";\", decimal = \",\"", ", separator = \"\t\""}) {
      EXPECT_EQ(printed("WriteCSV(F, t" + std::string(format) + "): r := ReadCSV(F" + format +
                        ", types = [text = text, day = date]): [r[text], r[number], r[day]]"),
                printed("[Array(tolist(t[text])), t[number], Array(tolist(t[day]))]"))
          << columns[2];
    }
  }
  EXPECT_EQ(told, "");
}

// The texts of all rows, whenever a column turns out to be one of texts, and in whatever block.
TEST_F(TablesTest, ColumnsThatTurnOutToBeTextsKeepEveryCell) {
  const std::string write =
      "write := proc(n, at) local s; s := [seq(cat(if(k = at, \"x\", if(k/7 = floor(k/7), \"\", "
      "cat(\"00\", k))), \",1\"), "
      "k = 1 .. n)]: WriteText(F, cat(\"id,one\\n\", join(s, \"\\n\"), \"\\n\")) end:";
  kernel.eval(write);
  for (const char* at : {"1", "2", "700", "30000", "60000"}) {
    const std::string n = std::string("write(60000, ") + at + "): id := ReadCSV(F)[\"id\"]: ";
    EXPECT_TRUE(holds(n + "id[" + at + "] = \"x\" and count(id) = 60000 and id[59999] = " +
                      (std::string(at) == "59999" ? "\"x\"" : "\"0059999\"") +
                      " and id[3] = \"003\" and id[14] = NULL"))
        << at;
  }
}

TEST_F(TablesTest, FilesAreUnderstoodAsAsked) {
  const Row rows[] = {
      {"\"# note\\n# two\\na|b\\n1|-\\n2|-999\\n\"): t := ReadCSV(F, separator = \"|\", skip = 2, "
       "na = [\"-\", -999]): t[b]",
       "Array(1..2, [Float(undefined), Float(undefined)], datatype = float[8])"},
      {"\"1,x\\n2,y\\n\"): t := ReadCSV(F, header = false): headings(t), t[1], t[2, 2]",
       "[1, 2], Array(1..2, [1.0, 2.0], datatype = float[8]), \"y\""},
      {"\"1,x\\n2,y\\n\"): ReadCSV(F, header = [n, \"c d\"], columns = [\"c d\"])", "c d\nx\ny"},
      {"\"1,x\\n2,y\\n\"): ReadCSV(F, header = [n])",
       "Error, the file has 2 columns, header names 1"},
      {"\"a;b\\n1.234;0,5\\n\"): t := ReadCSV(F, decimal = \",\"): t[a], t[b]",
       "Array(1..1, [\"1.234\"]), Array(1..1, [0.5], datatype = float[8])"},
      {"\"a\\n1e400\\n-0.0\\n0.1\\n123456789012345678901234567890\\n+5\\n1e-5\\n\"): ReadCSV(F, 1)",
       "Array(1..6, [Float(infinity), -0.0, 0.1, 1.2345678901234568e+29, 5.0, 1e-05], datatype = "
       "float[8])"},
      {"\"a\\nN/A\\nx\\nNA\\n\\\"NA\\\"\\n\"): ReadCSV(F, types = text)[a]",
       "Array(1..4, [\"N/A\", \"x\", NULL, \"NA\"])"},
      {"\"d\\n2024-02-29\\n2023-02-29\\n\"): ReadCSV(F, types = date)[d]",
       "Array(1..2, [date(\"2024-02-29\"), NULL])"},
      {"\"a\\n\"): row_count(ReadCSV(F)), ReadCSV(F, a)",
       "0, Array(1..0, [], datatype = float[8])"},
      {"\"\"): ReadCSV(F)", "Error, the file "},
      {"\"a\r\n1\r\n\r\n2\r\n\"): ReadCSV(F, 1)", "Array(1..2, [1.0, 2.0], datatype = float[8])"},
      {"\"a\\n1\\n\"): ReadCSV(F, sep = 3)",
       "Error, ReadCSV has no parameter sep; it is called as ReadCSV(file, column = none; "
       "separator, "
       "decimal, na, header, skip = 0, columns, types)"},
      {"\"a\\n1\\n\"): ReadCSV(F, separator = \"::\")", "Error, ReadCSV expects a character like "},
      {"\"a\\n1\\n\"): ReadCSV(F, types = [b = number])", "Error, the file has no column b"},
      {"\"a\\n1\\n\"): ReadCSV(F, types = whole)",
       "Error, a column is one of number, text, date, auto, received: whole"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(
        printed(std::string("WriteText(F, ") + row.text).substr(0, std::string(row.result).size()),
        row.result)
        << row.text;
  }
}

// A first row of numbers is data, and nothing of it is lost on the way to a file and back.
TEST_F(TablesTest, TheFirstRowHoldsHeadingsUnlessItHoldsNumbersAlone) {
  const struct {
    const char* text;
    const char* options;
    const char* headings;
    int rows;
    const char* told;  // how it begins
  } rows[] = {
      {"1,2\n3,4\n", "", "[1, 2]", 2, "row 1 has numbers alone and is read as data: 1 | 2 (header"},
      {"-1e3,NA\n,.5\n", "", "[1, 2]", 2, "row 1 has numbers alone"},
      {"2019\n1\n", ", header = true", "[\"2019\"]", 1, ""},
      {"1;2,5\n3;4\n", ", decimal = \",\"", "[1, 2]", 2, "row 1 has numbers alone"},
      {"1;2\n3;4\n", "", "[\"1;2\"]", 1, "row 1 has semicolons"},
      {"-,1\n2,3\n", ", na = \"-\"", "[1, 2]", 2, "row 1 has numbers alone"},
      {"Bern,1.5\nParis,2\n", "", "[\"Bern\", \"1.5\"]", 1,
       "row 1 is read as headings, though some are numbers: Bern | 1.5 (header = false"},
      {"Bern,1.5\nParis,2\n", ", header = false", "[1, 2]", 2, ""},
      {"x,y\n1,2\n", "", "[\"x\", \"y\"]", 1, ""},
  };
  for (const auto& row : rows) {
    told.clear();
    std::string written = row.text;
    for (std::size_t at = 0; (at = written.find('\n', at)) != std::string::npos; at += 2) {
      written.replace(at, 1, "\\n");
    }
    EXPECT_EQ(printed("WriteText(F, \"" + written + "\"): t := ReadCSV(F" + row.options +
                      "): headings(t), row_count(t)"),
              std::string(row.headings) + ", " + std::to_string(row.rows))
        << row.text;
    EXPECT_EQ(told.substr(0, std::string("ReadCSV: ").size() + std::string(row.told).size()),
              *row.told == '\0' ? "" : std::string("ReadCSV: ") + row.told)
        << row.text;
    const std::string again = std::string("WriteCSV(F, t): u := ReadCSV(F, header = ") +
                              (row.headings[1] == '1' ? "false" : "true");
    const std::string read = printed("t");
    EXPECT_EQ(printed(again + "): u"), read) << row.text;
  }
  EXPECT_EQ(printed("WriteText(F, \"1,2\\n3,4\\n\"): WriteCSV(F, ReadCSV(F)): ReadCSV(F)"),
            "1  2\n1  2\n3  4");
  told.clear();
  EXPECT_EQ(printed("WriteText(F, \"c,2019\\na,7\\n\"): ReadCSV(F, \"2019\")"),
            "Array(1..1, [7.0], datatype = float[8])");
  EXPECT_EQ(told, "");  // who names a heading knows of it
  EXPECT_EQ(printed("WriteText(F, \"1,2\\n\"): ReadCSV(F, x)"),
            "Error, the file has no column x; its first row has numbers alone and is read as data, "
            "unless header = true is given");
}

TEST_F(TablesTest, WhatIsNotReadAsItStandsIsTold) {
  kernel.eval("WriteText(F, \"a,b\\n1,2\\n3\\n4,five\\n6,7\\n8,9\\n\"): t := ReadCSV(F):");
  EXPECT_EQ(told,
            "ReadCSV: 1 row has fewer cells than there are columns, the first is row 3; the others "
            "are missing values\n"
            "ReadCSV: column b is read as texts because of row 4: five (types = [\"b\" = number] "
            "reads the numbers)\n");
  told.clear();
  EXPECT_EQ(
      printed("ReadCSV(F, types = number)[b]"),
      "Array(1..5, [2.0, Float(undefined), Float(undefined), 7.0, 9.0], datatype = float[8])");
  EXPECT_NE(told.find("column b: 1 cell not read, the first in row 4: five"), std::string::npos);
  EXPECT_EQ(
      printed("csv_report()"),
      "row  column  cell  problem\n  3  NA      NA    1 of 2 cells\n  4  b       five  not read");
  told.clear();
  kernel.eval("info_level(\"ReadCSV\", 0): ReadCSV(F):");
  EXPECT_EQ(told, "");
}

// Against loops over the rows.
TEST_F(TablesTest, GroupsAndJoinsAreThoseOfTheirRows) {
  kernel.eval(
      "pick := (L, n) -> [seq(L[1 + floor(RandomDouble01()*count(L))], i = 1 .. n)]:"
      "same := (x, y) -> istrue(x = y) or typeof(x) = \"float\" and typeof(y) = \"float\" and x <> "
      "x and y <> y:"
      "t := frame(k = pick([\"b\", \"a\", NULL, \"ä\"], 200), m = Array(pick([3.0, 1.0, "
      "undefined], 200), datatype = float[8]),"
      "  v = [seq(i, i = 1 .. 200)]):"
      "u := frame(k = pick([\"a\", \"b\", \"z\", NULL], 20), w = [seq(100 + i, i = 1 .. 20)]):"
      "g := group(t, [k, m], n = row_count, first = (s -> s[1, v]), total = (s -> sum(s[v]))):"
      "within := r -> filter(t, q -> same(q[k], r[k]) and same(q[m], r[m])):");
  EXPECT_TRUE(holds("sum(g[n]) = 200 and sum(g[total]) = sum(t[v]) and row_count(g) = 12"));
  EXPECT_TRUE(
      holds("ok := true: for r in rows(g) do if not (sum(within(r)[v]) = r[total]) or not "
            "(within(r)[1, v] = r[first]) then ok := false end end: ok"));
  EXPECT_EQ(printed("g[k][[1, 4, 7, 10]], g[m][1 .. 3]"),
            "Array(1..4, [\"a\", \"b\", \"ä\", NULL]), Array(1..3, [1.0, 3.0, Float(undefined)], "
            "datatype = float[8])");
  kernel.eval(
      "pairs := 0: last := 0: "
      "for q in rows(t) do for r in rows(u) do if q[k] <> NULL and q[k] = r[k] then pairs := pairs "
      "+ 1; last := [q[v], r[w]] end end end:"
      "j := join(t, u): l := join(t, u, k, kind = left): f := join(t, u, k, kind = full):");
  EXPECT_TRUE(holds("row_count(j) = pairs and j[-1, v] = last[1] and j[-1, w] = last[2]"));
  EXPECT_TRUE(
      holds("istrue(row_count(l) = pairs + count(filter(tolist(t[k]), x -> x <> \"a\" and x <> "
            "\"b\")))"));
  EXPECT_TRUE(
      holds("istrue(row_count(f) = row_count(l) + count(filter(tolist(u[k]), x -> x <> \"a\" and x "
            "<> \"b\")))"));
  EXPECT_TRUE(
      holds("s := sort_by(t, [k, v], descending = [true, false]): s[1, k] = \"ä\" and s[-1, k] = "
            "NULL and sum(s[v]) = sum(t[v])"));
}

TEST_F(TablesTest, LongAndWideTablesAreShortened) {
  EXPECT_EQ(
      printed("frame(n = [seq(i, i = 1 .. 21)])"),
      " n\n 1\n 2\n 3\n 4\n 5\n 6\n 7\n 8\n 9\n10\n...\n17\n18\n19\n20\n21\n(21 rows, 1 column)");
  EXPECT_EQ(
      printed("frame(a = [1.5, undefined, 1e300], b = [\"x\\ny\", NULL, \"ä\"], d = [date(0), 1/3, "
              "true])"),
      "     a  b     d\n   1.5  x\\ny  1970-01-01\n    NA  NA    1/3\n1e+300  ä     true");
  EXPECT_EQ(printed("frame()"), "\n(0 rows, 0 columns)");
  EXPECT_NE(printed("t := frame(x = 1): for i from 1 to 60 do t[cat(\"column\", i)] := i end: t")
                .find("(1 row, 61 columns; not shown: column"),
            std::string::npos);
  EXPECT_EQ(
      kernel.eval("frame(b = [1], a = [\"x\"])").json(),
      R"({"table": [["a", {"array": ["x"], "bounds": [[1, 1]], "datatype": "anything", "order": "column", "storage": "rectangular"}], )"
      R"(["b", {"array": [1], "bounds": [[1, 1]], "datatype": "integer[8]", "order": "column", "storage": "rectangular"}]]})");
}

}  // namespace
