// The command line, with CLI11.  Files and -e texts run in the order in which they were given, so
// both are collected from the parser's record of that order.

#include "options.hpp"

#include <CLI/CLI.hpp>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <string_view>

#include "usage.hpp"

namespace {

// Files and texts back in the order of the command line.
std::vector<Input> inOrder(const CLI::App& app, const CLI::Option* filesOption,
                           const CLI::Option* textsOption) {
  std::vector<Input> inputs;
  std::size_t nextFile = 0;
  std::size_t nextText = 0;
  for (const CLI::Option* option : app.parse_order()) {
    if (option == filesOption) {
      inputs.push_back({Input::Kind::file, filesOption->results().at(nextFile++)});
    } else if (option == textsOption) {
      inputs.push_back({Input::Kind::text, textsOption->results().at(nextText++)});
    }
  }
  return inputs;
}

// A seed, signed or not, as the 64 bits that it has.
std::optional<std::uint64_t> seedFromText(std::string_view text) {
  const auto read = [&](auto value) -> std::optional<std::uint64_t> {
    const char* last = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), last, value);
    return error == std::errc() && end == last ? std::optional(static_cast<std::uint64_t>(value))
                                               : std::nullopt;
  };
  return text.starts_with('-') ? read(std::int64_t{}) : read(std::uint64_t{});
}

}  // namespace

std::optional<int> readCommandLine(int argc, char** argv, Options& options) {
  CLI::App app("Runs scripts of the Vexel language with the statistics library loaded.", "vexel");
  app.footer(
      "Without a FILE or -e: standard input, or a prompt on a terminal.\n"
      "Large files: vexel describe, vexel quantile, vexel tally; each has its --help.\n"
      "Exit status: 0 success, 1 a statement failed, 2 bad command line or unreadable file.");
  app.set_help_flag("-h,--help", "print this help and exit");
  app.set_version_flag("--version", "vexel " VEXEL_VERSION, "print the version and exit");

  std::vector<std::string> files;
  std::vector<std::string> texts;
  std::string seed;
  const CLI::Option* filesOption =
      app.add_option("FILE", files, "script files, run in order; - is standard input")
          ->type_name("");
  const CLI::Option* textsOption = app.add_option("-e", texts, "run the statements TEXT")
                                       ->type_name("TEXT")
                                       ->allow_extra_args(false);
  app.add_flag("-i", options.prompt, "go to the prompt after the files and texts");
  app.add_flag("--json", options.json, "print values and errors as JSON, one line each");
  app.add_flag("-k,--keep-going", options.keepGoing,
               "after an error go on with the next statement");
  const CLI::Option* seedOption =
      app.add_option("--seed", seed, "seed the random stream first")->type_name("N");
  app.add_flag("--strict", options.strict, "calling a name that is not defined is an error");
  app.add_flag("--quiet", options.quiet, "no banner, no hints");
  app.add_option("--library", options.library, "load this statistics library")->type_name("PATH");

  app.add_option("--explain", options.explain, "explain NAME, as ?NAME does at the prompt")
      ->type_name("NAME");
  std::string example;
  const CLI::Option* exampleOption =
      app.add_option("--example", example, "show the example NAME; without NAME list them")
          ->type_name("[NAME]")
          ->expected(0, 1);
  app.add_flag("--format", options.format, "print the files indented and spaced; run nothing");
  app.add_flag("--write", options.write, "with --format: write the files instead");

  try {
    app.parse(argc, argv);
    if (options.write && !options.format) {
      throw CLI::RequiresError("--write", "--format");
    }
  } catch (const CLI::ParseError& e) {
    return reportUsage(app, e);
  }
  options.inputs = inOrder(app, filesOption, textsOption);
  if (exampleOption->count() > 0) {
    options.example = example;
  }
  if (seedOption->count() > 0) {
    options.seed = seedFromText(seed);
    if (!options.seed) {
      std::cerr << "vexel: --seed takes an integer of 64 bits, received: " << seed << '\n';
      return kBadUsage;
    }
  }
  return std::nullopt;
}
