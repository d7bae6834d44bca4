// The vexel command as its users meet it: output, errors, exit status.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "command_fixture.hpp"

namespace {

using testing::AllOf;
using testing::AnyOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Lt;
using testing::SizeIs;
using testing::StartsWith;

TEST_F(CommandTest, RunsFilesTextsAndStandardInputInOrder) {
  const std::string script = file("a.vx", "x := 1/3:\nx;\n");
  const Outcome all = run(script + " -e 'x + 1' -e '\"last\";' -", "");
  EXPECT_EQ(all.out, "1/3\n4/3\n\"last\"\n");
  EXPECT_EQ(all.status, 0);
  EXPECT_EQ(run("", "2^70;").out, "1180591620717411303424\n");
  EXPECT_EQ(run("-e '-7;'").out, "-7\n");
}

TEST_F(CommandTest, AnErrorNamesFileAndLineAndEndsTheRun) {
  const std::string script = file("b.vx", "1;\n\nerror(\"no %1\", 7);\n2;\n");
  const Outcome stopped = run(script + " -e '3;'");
  EXPECT_EQ(stopped.out, "1\n");
  EXPECT_THAT(stopped.errors, HasSubstr("Error, no 7\n"));
  EXPECT_THAT(stopped.errors, HasSubstr("b.vx, line 3, column 1\n"));
  EXPECT_EQ(stopped.status, 1);

  // In a loop the statement inside it; in a procedure that and the statement that called it.
  const std::string deep = file("c.vx",
                                "f := proc(x)\n  error(\"deep\")\nend:\n"
                                "for i from 1 to 2 do\n  y := i:\n  f(y)\nend:\n");
  EXPECT_EQ(run(deep).errors, "Error, deep\n  at " + deep + ", line 2, column 3\n  called from " +
                                  deep + ", line 6, column 3\n");
  EXPECT_THAT(run("-k " + deep + " -e '1; 2 + f(1);'").errors,
              HasSubstr(deep + ", line 2, column 3\n  called from -e, line 1, column 4\n"));
  EXPECT_THAT(run("-e '[1, gamma(0)];'").errors, HasSubstr("at -e, line 1, column 5\n"));
  EXPECT_THAT(run("-e '1 + * 2;'").errors, HasSubstr("-e, line 1, column 5\n1 + * 2;\n    ^\n"));

  // A name that is none is a call without a value, not an error; but a likely slip is told.
  const Outcome slip = run("-e 'm := STATS_VexelMeen_HW(1): f(1): 2;'");
  EXPECT_EQ(slip.errors,
            "Warning, STATS_VexelMeen_HW is not defined; STATS_VexelMean_HW is\n"
            "  at -e, line 1, column 1\n");
  EXPECT_EQ(slip.status, 0);
  EXPECT_EQ(run("--quiet -e 'STATS_VexelMeen_HW(1):'").errors, "");

  const Outcome kept = run("-k " + script + " -e '3;'");
  EXPECT_EQ(kept.out, "1\n2\n3\n");
  EXPECT_EQ(kept.status, 1);
}

TEST_F(CommandTest, JsonHasOneLineForEveryValueAndError) {
  const Outcome json = run("--json -e 'error(\"no %1\", 7): 2.0; undefined; [1, \"b\"]: 1/3;'");
  EXPECT_EQ(json.out,
            "{\"error\": \"no 7\", \"message\": \"no %1\", \"args\": [7]}\n"
            "2.0\n{\"float\": \"undefined\"}\n{\"expr\": \"1/3\"}\n");
  EXPECT_EQ(json.errors, "");
  EXPECT_EQ(json.status, 1);
  // A message shows a few elements of an argument and how many there are; JSON has the whole
  // argument up to 10^4 elements.
  const auto failing = [](const std::string& argument) {
    return "-e 'error(\"wide: %1 end\", " + argument + ")'";
  };
  const struct {
    std::string argument;
    std::string text;
    std::string json;
  } wide[] = {
      {"Array(1..300, datatype = integer[4])",
       "Array(1..300, [0, 0, 0, 0, 0, 0, 0, 0, ...], datatype = integer[4])",
       "0, 0, 0], \"bounds\""},
      {"Array(0..10000, datatype = float[4])",
       "Array(0..10000, [0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, ...], datatype = float[4])",
       R"({"array": "omitted", "bounds": [[0, 10000]])"},
      {"[seq(i, i = 1 .. 10001)]", "[1, 2, 3, 4, 5, 6, 7, 8, ... (10001 elements)]",
       R"({"list": "omitted", "count": 10001})"},
      {"table([seq(i = i, i = 1 .. 10001)])", ", ... (10001 elements)])",
       R"({"table": "omitted", "count": 10001})"},
      {"cat(seq(\"long\", i = 1 .. 10^5))", "long...\"", "longlong\""},
  };
  for (const auto& c : wide) {
    const Outcome inJson = run("--json " + failing(c.argument));
    EXPECT_THAT(inJson.out, AllOf(HasSubstr(c.json), HasSubstr("end\"")));
    const Outcome inText = run(failing(c.argument));
    EXPECT_THAT(inText.errors, AllOf(HasSubstr(c.text + " end\n"), SizeIs(Lt(2200U))));
  }
  EXPECT_LT(run("--json -e 'A := Array(1..2): A[1] := A: A[2] := A: error(\"%1\", A)'").out.size(),
            10000U);
  // The numerical library's failures are raised like the others that have nothing to fill in.
  EXPECT_NE(
      run("--json -e 'STATS_VexelChiSquareProbability_HW(1, -1)'").out.find("\"args\": [null]"),
      std::string::npos);
}

TEST_F(CommandTest, ThePromptExplainsNamesAndTakesStatementsOfSeveralLines) {
  const Outcome prompt = run("-i --quiet",
                             "?VexelMean\n?movingme\n?\n?smoothing\n?standard deviation\n?Fisher "
                             "and Yates\nf := proc(x)\n  x^2\nend:\nf(3);\n?nothing_like_it\n");
  EXPECT_THAT(prompt.out, HasSubstr("STATS_VexelMean_HW(data, weights, ignore, kind)\n\nThe mean"));
  EXPECT_THAT(prompt.out, HasSubstr("  STATS_VexelMovingMedian_HW("));
  EXPECT_THAT(prompt.out, HasSubstr("\n  ?smoothing      filters and moving statistics\n"));
  EXPECT_THAT(prompt.out,
              HasSubstr("Long calls can be interrupted.\n\n  STATS_VexelLinearFilter_HW("));
  EXPECT_THAT(prompt.out, HasSubstr("Variance, standard deviation, skewness, kurtosis\n\n"));
  EXPECT_THAT(prompt.out, HasSubstr("nearest are\n  STATS_VexelShuffle_HW(data)\n"));
  EXPECT_THAT(prompt.out, HasSubstr("\n9\n"));
  EXPECT_THAT(prompt.out, HasSubstr("no name contains nothing_like_it"));
}

TEST_F(CommandTest, ScriptsReadScriptsBesideThem) {
  std::filesystem::create_directory(folder() / "lib");
  file("lib/square.vexel", "square := x -> x^2: 1/3; read(\"../data.vexel\"):\n");
  file("lib/bad.vexel", "2;\nsquare(1)/0;\n3;\n");
  file("data.vexel", "t := frame(a = [1, 2]); t");
  const std::string main =
      file("main.vexel", "read(\"lib/square.vexel\"):\nsquare(3);\nread(\"lib/bad.vexel\");\n");
  const Outcome plain = run(main);
  EXPECT_EQ(plain.out, "1/3\na\n1\n2\na\n1\n2\n9\n2\n");
  EXPECT_EQ(plain.errors, "Error, division by zero\n  at " + folder().string() +
                              "/lib/bad.vexel, line 2, column 1\n  called from " + main +
                              ", line 3, column 1\n");
  EXPECT_THAT(run("--json " + main).out, HasSubstr("{\"expr\": \"1/3\"}\n{\"table\": [[\"a\", "));
}

TEST_F(CommandTest, WhatIsRunForItsEffectPrintsNoNull) {
  const std::string script =
      "'printf(\"a\\n\"); print(2); for i from 1 to 0 do i end; for i from 1 to 2 do i end; NULL;'";
  EXPECT_EQ(run("-e " + script).out, "a\n2\n2\nNULL\n");
  EXPECT_EQ(run("--json -e " + script).out, "a\nnull\n2\nnull\nnull\n2\nnull\n");
  const std::string picture = (folder() / "picture.svg").string();
  EXPECT_EQ(run("-e 'plot([1, 2], file = \"" + picture + "\");'").out, "");
  file("inner.vexel", "printf(\"a\\n\"); NULL; for i from 1 to 0 do i end;\n");
  const std::string outer = file("outer.vexel", "read(\"inner.vexel\");\n");
  EXPECT_EQ(run(outer).out, "a\nNULL\n");
  EXPECT_EQ(run("--json " + outer).out, "a\nnull\nnull\nnull\nnull\n");
}

TEST_F(CommandTest, LongArgumentsOfErrorsAreShortened) {
  EXPECT_THAT(
      run("--json -e 's := \"0123456789\": for i from 1 to 17 do s := cat(s, s): end: "
          "error(\"%1\", s);'")
          .out,
      AllOf(HasSubstr(R"("args": [{"string": "omitted", "count": 1310720}]})"), SizeIs(Lt(5000U))));
  EXPECT_THAT(run("-e 'error(\"%1\", sum(x^i, i = 1 .. 3000));'").errors, SizeIs(Lt(2300U)));
}

TEST_F(CommandTest, ExitEndsTheRunWithItsStatus) {
  const Outcome left = run("-e '1; exit(); 2;' -e '3;'");
  EXPECT_EQ(left.out, "1\n");
  EXPECT_EQ(left.status, 0);
  EXPECT_EQ(run("-e '1; exit; 2;' -e '3;'").out, "1\n");
  EXPECT_EQ(run("-e 'exit := 4: exit;'").out, "4\n");
  EXPECT_EQ(run("-k -e 'error(\"no\"); exit();'").status, 1);
  EXPECT_EQ(run("-k -e 'error(\"no\"); exit(3); 2;'").status, 3);
  EXPECT_EQ(run("-e 'exit();' -i", "").status, 0);
  EXPECT_THAT(run("-e 'exit(256);'").errors, HasSubstr("exit expects a status from 0 to 255"));
}

TEST_F(CommandTest, QuitEndsTheRunWithSuccess) {
  const Outcome quit = run("-e '1; quit; 2;' -e '3;'");
  EXPECT_EQ(quit.out, "1\n");
  EXPECT_EQ(quit.status, 0);
  EXPECT_EQ(run("-e 'f := proc() if true then quit end; print(1) end: f(); 2;'").out, "");
}

TEST_F(CommandTest, BadUsageIsStatusTwo) {
  EXPECT_EQ(run("--no-such-option").status, 2);
  EXPECT_EQ(run("--seed many").status, 2);
  EXPECT_EQ(run("--seed 18446744073709551616 -e 1").status, 2);
  EXPECT_EQ(run("/").errors, "vexel: cannot read /: it is a folder\n");
  EXPECT_EQ(run(file("marked.vexel",
                     "\xef\xbb\xbf"
                     "1 + 1;"))
                .out,
            "2\n");
  EXPECT_EQ(run("/no/such/file").status, 2);
  EXPECT_EQ(run("/tmp").status, 2);
  EXPECT_EQ(run("--library /no/such/library.so -e 1").status, 2);
  EXPECT_EQ(run("--help").status, 0);
  EXPECT_THAT(run("--version").out, HasSubstr("vexel "));
}

TEST_F(CommandTest, SlipsAreToldWhatToWrite) {
  const struct {
    std::string arguments;
    int status;
    const char* errors;
  } rows[] = {
      {"-e 'sd([1, 2, 3])'", 0, "Warning, sd is not defined; std is\n  at -e, line 1, column 1\n"},
      {"-e 's := sd([1, 2, 3]):'", 0, "Warning, sd is not defined; std is"},
      {"-e 'maen([1, 2])'", 0, "Warning, maen is not defined; mean is"},
      {"-e 'help(mean)'", 0, "Warning, help is not defined; vexel --explain name explains a name"},
      {"--quiet -e 'sd([1, 2, 3])'", 0, ""},
      {"-e 'f(1), g(x)' -e 'y := maen(x):'", 0, ""},  // symbols
      {"-e '?mean'", 0, ""},
      {"-e '?zzzzz'", 1, ""},
      {"-e '1; ?mean'", 1, "Error, unexpected character '?'; ?name stands alone"},
      {"-e 'x := 3\ny := 4;'", 1,
       "Error, expected ';' or ':' after the statement, found 'y'; line 1 ends without ;"},
      {"mean " + file("x.csv", "x\n1\n"), 2,
       "vexel: cannot read mean: there is no such file\nmean is a function: vexel -e "
       "'mean(ReadCSV("},
      {"desribe x.csv", 2,
       "vexel: cannot read desribe: there is no such file\nvexel describe FILE ... is a command\n"},
      {"--quiet describe x.csv", 2,
       "vexel: cannot read describe: there is no such file\nthe command comes first: vexel "
       "describe"},
      {file("b.vexel", std::string("1;\0", 3)), 2, "vexel: cannot read "},
      {"--sead 3", 2, "vexel: --sead is no option; --seed is\n`vexel --help` lists the options\n"},
      {"--seed", 2, "vexel: --seed is given without its N\n"},
      {"--write", 2, "vexel: --write goes only with --format\n"},
  };
  for (const auto& row : rows) {
    const Outcome outcome = run(row.arguments);
    EXPECT_EQ(outcome.status, row.status) << row.arguments;
    EXPECT_THAT(outcome.errors, StartsWith(row.errors)) << row.arguments;
    EXPECT_EQ(outcome.errors.empty(), *row.errors == '\0') << row.arguments << outcome.errors;
  }
  EXPECT_THAT(run("-e '?mean' -e 2").out, AllOf(StartsWith("mean(x; weights"), EndsWith("\n2\n")));
  EXPECT_EQ(run("-e 'maen([1]); maen([2]);'").errors,  // told once
            "Warning, maen is not defined; mean is\n  at -e, line 1, column 1\n");
  EXPECT_EQ(run("-e ?").out, run("-e '?help'").out);
  EXPECT_THAT(run(file("y.csv", "x\n1\n")).errors, HasSubstr("gives the statistics of data\n"));
}

TEST_F(CommandTest, TheSeedDecidesTheDraws) {
  // xoshiro256++ from SplitMix64 of seed 0 starts with 0x53175d61490b23df.
  EXPECT_EQ(run("-e 'RandomInt32();'").out, "1394040161\n");
  EXPECT_EQ(run("--seed 0 -e 'RandomInt32();'").out, "1394040161\n");
  EXPECT_NE(run("--seed 1 -e 'RandomInt32();'").out, "1394040161\n");
}

TEST_F(CommandTest, AnInterruptEndsTheStatementWithAnError) {
  for (const char* text : {
           "while true do 1 end;\n",
#ifndef __SANITIZE_ADDRESS__  // its stack frames are too large for this depth
           "x := a: for i from 1 to 10^4 do x := sin(x) + 1 end: diff(x, a):\n",
#endif
           "STATS_VexelNewtonRaphson_HW(0, x -> x^2 + 1, x -> 2*x, 1.5, false, 0, false, 0, 10, "
           "2147483647):\n",
           "seq(evalf(exp(1/i), 10^6), i = 3 .. 100):\n",
       }) {
    const std::string script = file("loop.vx", text);
    const Outcome ended = run(script, "", "timeout --preserve-status -k 20 -s INT 1 ");
    EXPECT_THAT(ended.errors, HasSubstr("Error, interrupted")) << text;
    EXPECT_EQ(ended.status, 1) << text;
  }
}

// PNG is another program's work, which may be missing, fail, or take for ever; it gets texts as
// they are, and nothing of a picture that failed is left.
TEST_F(CommandTest, PngPicturesNeedAWorkingGnuplot) {
  const std::string picture = (folder() / "a.png").string();
  const std::string call = "-e 'plot([1, 2], title = \"a`touch " + (folder() / "b").string() +
                           "`\\ $(id) \\n\", \"x\" = layer([2, 1], style = area), file = \"" +
                           picture + "\"):'";
  const auto with = [&](const std::string& program, const std::string& prefix = "") {
    const std::filesystem::path programs = folder() / "programs";
    std::filesystem::remove_all(programs);
    std::filesystem::create_directory(programs);
    if (!program.empty()) {
      std::ofstream(programs / "gnuplot") << "#!/bin/sh\n" << program << '\n';
      std::filesystem::permissions(programs / "gnuplot", std::filesystem::perms::owner_all);
    }
    const Outcome outcome = run(call, "", prefix + "PATH=" + programs.string() + ":/none ");
    EXPECT_FALSE(std::filesystem::exists(picture)) << program;
    return outcome.errors;
  };
  EXPECT_THAT(with(""), HasSubstr("gnuplot, which is not installed; .svg needs nothing"));
  EXPECT_THAT(with("exit 3"), HasSubstr("gnuplot could not draw the picture"));
  EXPECT_THAT(with("echo no picture"), HasSubstr("gnuplot could not draw the picture"));
  EXPECT_THAT(with("exec /bin/sleep 60", "timeout -k 20 -s INT 1 env "),
              HasSubstr("Error, interrupted"));
  if (std::system("gnuplot --version > /dev/null 2>&1") == 0) {
    EXPECT_EQ(run(call).errors, "");
    EXPECT_THAT(contents(picture), testing::StartsWith("\x89PNG"));
  }
  EXPECT_FALSE(std::filesystem::exists(folder() / "b"));
}

TEST_F(CommandTest, ExplainsNamesSynonymsAndMisspellings) {
  EXPECT_THAT(run("--explain quantile").out, testing::StartsWith("quantile(x, q;"));
  EXPECT_THAT(run("--explain sd").out, testing::StartsWith("sd is std here\n\nstd(x;"));
  const Outcome misspelled = run("--explain mead");
  EXPECT_THAT(misspelled.out, HasSubstr("?mean is spelled alike"));
  EXPECT_EQ(misspelled.status, 1);
  // What foreign words lead to has a name, too.
  for (const char* word : {"graph", "percentile", "rolling", "lambda", "uniroot", "hist", "exit"}) {
    EXPECT_EQ(run(std::string("--explain ") + word).status, 0) << word;
  }
}

TEST_F(CommandTest, ExamplesRunFromAnywhere) {
  EXPECT_THAT(run("--example").out, HasSubstr("  quantiles  "));
  const Outcome script = run("--example quantiles");
  EXPECT_THAT(run("-", script.out).out, HasSubstr("Annual precipitation"));
  EXPECT_EQ(run("--example no_such").status, 2);
}

TEST_F(CommandTest, FormatsScripts) {
  EXPECT_EQ(run("--format", "x:=1;  # one\n").out, "x := 1;  # one\n");
  const std::string script = file("a.vexel", "if x>1 then\ny:=2\nend;");
  EXPECT_EQ(run("--format --write " + script).out, "");
  EXPECT_EQ(contents(script), "if x > 1 then\n  y := 2\nend;\n");
  EXPECT_EQ(run("--format", "a ~ b").status, 1);
  EXPECT_EQ(run("--format /no/such/file").status, 2);
  EXPECT_EQ(run("--write " + script).status, 2);
}

// Memory that runs out is the statement's error, and the next statement has it again.
TEST_F(CommandTest, MemoryThatRunsOutEndsTheStatementAlone) {
#if !defined(__SANITIZE_ADDRESS__)
  for (const std::string statement :
       {"STATS_VexelSort_HW(Array(1..2^40, storage = sparse, datatype = float[8]), NULL, 1);",
        "STATS_VexelOrder_HW(Array(1..2^40, storage = sparse), 1);",
        "L := [seq(1/i, i = 1 .. 10^8)]:", "T := table(): for i from 1 to 10^8 do T[i] := [i] end:",
        "z := [seq(2^(10^7 + i), i = 1 .. 500)]:", "s := cat(seq(\"text\", i = 1 .. 10^8)):"}) {
    SCOPED_TRACE(statement);
    const Outcome limited =
        run("-k -e '" + statement + "' -e 'clear(L, T, z): count([seq(i, i = 1 .. 10^6)]);'", "",
            "ulimit -v 500000; ");
    EXPECT_EQ(limited.status, 1);
    EXPECT_THAT(limited.errors, AnyOf(HasSubstr("not enough memory"), HasSubstr("received")));
    EXPECT_EQ(limited.out, "1000000\n");
  }
#endif
  // What is shared is evaluated once.
  EXPECT_EQ(run("-e 'L := [1/3]: for i from 1 to 60 do L := [L, L = L] end: count(evalf(L));'").out,
            "2\n");
}

}  // namespace
