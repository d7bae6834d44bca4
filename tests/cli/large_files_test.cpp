// vexel describe, quantile and tally: what is read of files, and what is refused.

#include <gmock/gmock.h>

#include "command_fixture.hpp"

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

using LargeFiles = CommandTest;

// tests/python/stream_test.py compares the numbers and the states.
TEST_F(LargeFiles, AreReadInPieces) {
  const std::string csv =
      file("d.csv",
           "\xEF\xBB\xBFx, \"w, eight\" ,name\r\n2,1,a\n\n+1e0,3,\"b\"\"c\"\nNA,1,d\n 5 ,?,e\n7\n");
  EXPECT_EQ(run("quantile -q 0.5,1 -q 0 --json -c x " + csv).out,
            R"({"q": [0.5, 1.0, 0.0], "quantiles": [3.5, 7.0, 1.0], "missing": 1})"
            "\n");
  const Outcome tally = run("tally - -c 1 -w 'w, eight' --na '?' --rows 1", contents(csv));
  EXPECT_EQ(tally.out, "values  counts\n     1       3\n     2       1\n");
  EXPECT_EQ(tally.errors, "3 missing values were left out\n");
  EXPECT_EQ(run("quantile --missing propagate --json -q .5 -c 1 " + csv).out,
            R"({"q": [0.5], "quantiles": [{"float": "undefined"}], "missing": 1})"
            "\n");
  EXPECT_THAT(run("describe -c x " + csv).out,
              AllOf(HasSubstr("count            4\nmissing          1\nmean          3.75\n"),
                    HasSubstr("max              7\n")));
  // A script of that name runs, as every file does.
  EXPECT_EQ(
      run("tally", "",
          "cd " + std::filesystem::path(file("tally", "6*7;\n")).parent_path().string() + " && ")
          .out,
      "42\n");
}

TEST_F(LargeFiles, NoRowIsLostForHeadingsAndMarksAreAsAsked) {
  file("n.csv", "1,2\n3,4\n");
  file("m.csv", "Bern,1.5\nParis,2\n");
  file("de.csv",
       "Gr\xf6\xdf"
       "e;Preis\n1,5;2,25\n2,5;\"-3,5\"\n;1\n");
  file("tab.csv", "a\tb\n1\t2\n");
  const struct {
    const char* arguments;
    const char* out;
    const char* errors;  // how they begin
  } rows[] = {
      {"n.csv -c 1", "1.0, 3.0",
       "n.csv: row 1 has numbers alone and is read as data: 1 | 2 (--head"},
      {"n.csv -c 2 --rows 1", "2.0, 4.0", "n.csv: row 1 has numbers alone"},
      {"n.csv -c 1 --no-headings", "1.0, 3.0", ""},
      {"n.csv -c 1 --headings", "3.0", ""},
      {"m.csv -c 2", "2.0",
       "m.csv: row 1 is read as headings, though some are numbers: Bern | 1.5"},
      {"m.csv -c 2 --no-headings", "1.5, 2.0", ""},
      {"de.csv -c Preis --decimal ,", "-3.5, 1.0, 2.25", ""},
      {"de.csv -c 1 --decimal , --separator ';'", "1.5, 2.5", ""},
      {"tab.csv -c b --separator tab", "2.0", ""},
      {"de.csv", "", "Error, de.csv: row 1 has semicolons in its cells; --separator ';' separates"},
      {"n.csv -c x", "",
       "Error, n.csv has no column x, it has columns 1 to 2\nn.csv: row 1 has num"},
      {"n.csv --separator ab", "",
       "vexel: --separator must be a character like , ; or tab, got ab"},
      {"n.csv --decimal ';' --separator ';'", "",
       "vexel: --separator must be another character than the decimal"},
      {"n.csv --headings --no-headings", "", "vexel: --headings does not go with --no-headings"},
  };
  for (const auto& row : rows) {
    const Outcome outcome =
        run(std::string("tally --json ") + row.arguments, "", "cd " + folder().string() + " && ");
    EXPECT_THAT(outcome.out,
                StartsWith(*row.out == '\0' ? "" : std::string("{\"values\": [") + row.out + "]"))
        << row.arguments;
    EXPECT_EQ(outcome.errors.substr(0, std::string(row.errors).size()), row.errors)
        << row.arguments;
    EXPECT_EQ(outcome.errors.empty(), *row.errors == '\0') << outcome.errors;
  }
  EXPECT_EQ(run("tally --quiet - -c 2", "1,2\n1,3\n").out,
            "values  counts\n     2       1\n     3       1\n");
}

TEST_F(LargeFiles, ThatAreNotAsTheyShouldBe) {
  const std::string csv = file("d.csv", "x,y\n1,2\n3,four\n");
  const std::string npy = file("d.npy", "\x93NUMPY\x01\x00\x10\x00{'descr': '<f8'}");
  const struct {
    std::string arguments;
    int status;
    const char* message;
  } rows[] = {
      {"describe", 2, "vexel: FILE is missing\n`vexel describe --help` lists"},
      {"describe " + csv + " --method hazen", 2, "vexel: --method is no option"},
      {"describe - -c 1", 2, "standard input cannot be read 4 times"},
      {"tally none.csv", 2, "cannot read none.csv: there is no such file"},
      {"tally " + file("d.txt", ""), 2, "files must be .csv or .npy, got"},
      {"tally " + npy, 2, "is no .npy file"},
      {"tally " + file("n.csv", std::string("x\0y\n1", 5)), 2, "n.csv: it is no text"},
      {"tally " + file("u.csv", "\xFF\xFEx"), 2, "u.csv: it is text in UTF-16; save it in UTF-8"},
      {"tally --colum x " + csv, 2, "--colum is no option; --column is"},
      {"tally --rows 0 " + csv, 2, "--rows must be a whole number from 1, got 0"},
      {"tally --stop-after 1 " + csv, 2, "--stop-after goes only with --state"},
      {"quantile -q 0.5,x " + csv, 2, "-q must be a number, got x"},
      {"quantile -q", 2, "-q is given without its Q"},
      {"quantile --method mode " + csv, 2,
       "--method must be linear, inverted_cdf, averaged_inverted_cdf"},
      {"tally " + file("e.csv", ""), 1, "is empty"},
      {"tally " + csv, 1, "one has to be chosen"},
      {"tally -c z " + csv, 1, "has no column z, it has x, y"},
      {"tally -c 2 " + csv, 1, "row 3, column 2: cells must be numbers, got \"four\""},
      {"tally " + file("f.csv", "x\n1\n2,3\n"), 1,
       "row 3, column 2: more cells than there are headings"},
      {"tally " + file("g.csv", "x\n\"1\n"), 1, "never closes"},
      {"tally -c 1 -w 2 " + file("h.csv", "x,y\n1,-1\n"), 1,
       "h.csv, row 2, column 2: weights must be finite and not negative, got -1"},
      {"describe -c 1 -w 2 --rows 1 " + file("j.csv", "x,y\n1,1\n2,inf\n"), 1,
       "j.csv, row 3, column 2: weights must be"},
      {"describe -c 1 --state /tmp " + csv, 2, "--state: /tmp is a folder"},
      {"describe -c 1 --state /no/such/folder/s " + csv, 2,
       "--state: cannot write to /no/such/folder/s"},
      {"describe -c 1 -w 2 " + file("i.csv", "x,y\n1,0\n"), 1, "total must be positive"},
      {"quantile -q 2 -c 1 " + csv, 1, "probabilities from 0 to 1"},
  };
  for (const auto& row : rows) {
    const Outcome outcome = run(row.arguments);
    EXPECT_EQ(outcome.status, row.status) << row.arguments;
    EXPECT_THAT(outcome.errors, HasSubstr(row.message)) << row.arguments;
    EXPECT_EQ(outcome.out, "") << row.arguments;
  }
}

}  // namespace
