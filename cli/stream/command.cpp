#include "stream/command.hpp"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <csignal>
#include <filesystem>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>
#include <vexel/names.hpp>

#include "options.hpp"
#include "stream/run.hpp"

namespace {

using stream::Request;

constexpr std::string_view kCommands[] = {"describe", "quantile", "tally"};

struct Given {
  Request request;
  std::vector<double> q{0.25, 0.5, 0.75};
  std::string method = "linear";
  std::string missing = "omit";
  bool json = false;
};

template <typename E>
std::vector<std::string> names() {
  std::vector<std::string> all;
  for (const auto& [name, value] : vexel::namesOf<E>) {
    all.emplace_back(name);
  }
  return all;
}

template <typename E>
E named(std::string_view wanted) {
  const auto& all = vexel::namesOf<E>;
  return std::find_if(all.begin(), all.end(), [&](const auto& n) { return n.name == wanted; })
      ->value;
}

std::string purpose(std::string_view command) {
  return command == "describe"   ? "Count, mean, standard deviation, quartiles, extremes and shape"
         : command == "quantile" ? "Exact quantiles"
                                 : "Distinct values and their counts";
}

// "tab" and "\t" are words for what is hard to type.
CLI::Option* addCharacter(CLI::App& app, const std::string& name, char& to, const char* help) {
  const auto take = [&to, name](const std::string& text) {
    const std::string_view one = text == "tab" || text == "\\t" ? "\t" : std::string_view(text);
    if (one.size() != 1 || std::string_view("\"\r\n+-0123456789").find(one) != one.npos ||
        static_cast<unsigned char>(one[0]) >= 0x80) {
      throw CLI::ValidationError(name,
                                 "a character like , ; or tab is expected, " + text + " came");
    }
    to = one[0];
  };
  return app.add_option_function<std::string>(name, take, help)->type_name("CHAR");
}

void addCsvOptions(CLI::App& app, stream::Columns& columns) {
  addCharacter(app, "--separator", columns.separator,
               "what stands between cells, or tab; a comma otherwise, ; with --decimal ,");
  addCharacter(app, "--decimal", columns.decimal, "the decimal mark, a point otherwise");
  const auto set = [&columns](bool value) {
    return [&columns, value] { columns.headings = value; };
  };
  CLI::Option* with = app.add_flag_callback("--headings", set(true), "row 1 holds headings");
  app.add_flag_callback("--no-headings", set(false),
                        "row 1 holds data; without either it does if it has numbers alone")
      ->excludes(with);
}

void addOptions(CLI::App& app, std::string_view command, Given& given) {
  Request& r = given.request;
  app.set_help_flag("-h,--help", "print this help and exit");
  app.add_option("FILE", r.files, ".csv or .npy; read one after the other")
      ->required()
      ->type_name("");
  if (command == "quantile") {
    app.add_option("-q", given.q, "probabilities, 0.5 or 0.1,0.9; the quartiles otherwise")
        ->type_name("Q")
        ->delimiter(',')
        ->allow_extra_args(false);
    app.add_option("--method", given.method, "definition, as of the function quantile")
        ->type_name("NAME")
        ->check(CLI::IsMember(names<vexel::QuantileMethod>()));
  }
  app.add_option("-c,--column", r.columns.column,
                 "a heading or a number from 1; needed where there are several")
      ->type_name("COLUMN");
  app.add_option("-w,--weights", r.columns.weights, "the column of weights")->type_name("COLUMN");
  app.add_option("--missing", given.missing, "omit (the default), propagate or raise")
      ->type_name("POLICY")
      ->check(CLI::IsMember(names<vexel::Missing>()));
  app.add_option("--na", r.columns.missing, "a further text of missing cells; may be repeated")
      ->type_name("TEXT")
      ->allow_extra_args(false);
  addCsvOptions(app, r.columns);
  app.add_option("--rows", r.rows, "rows in a piece, 2^20 otherwise")
      ->type_name("N")
      ->check(CLI::Range(std::size_t{1}, std::size_t{1} << 40));
  const CLI::Option* state =
      app.add_option("--state", r.state, "keep the work in this file, and go on from it")
          ->type_name("FILE");
  app.add_option("--stop-after", r.seconds, "end after so many seconds with the work in --state")
      ->type_name("SECONDS")
      ->check(CLI::NonNegativeNumber)
      ->needs(const_cast<CLI::Option*>(state));
  app.add_flag("--json", given.json, "print one line of JSON");
  app.add_flag("--quiet", r.quiet, "no progress, no word on missing values");
}

std::unique_ptr<stream::Job> jobOf(std::string_view command, const Given& given) {
  const auto missing = named<vexel::Missing>(given.missing);
  if (command == "quantile") {
    return stream::quantileJob(given.q, named<vexel::QuantileMethod>(given.method), missing);
  }
  return command == "tally" ? stream::tallyJob(missing) : stream::describeJob(missing);
}

void print(const stream::Job& job, const Given& given) {
  const stream::Report report = job.report();
  if (given.json) {
    printJson(std::cout, report);
  } else {
    printText(std::cout, report);
  }
  std::cout.flush();
  if (report.missing > 0 && !given.request.quiet && !given.json &&
      report.layout != stream::Report::Layout::record && given.missing == "omit") {
    std::cerr << report.missing
              << (report.missing == 1 ? " missing value was" : " missing values were")
              << " left out\n";
  }
}

// Standard input can be read once, and not again tomorrow.
void requireFiles(const stream::Job& job, const Request& request) {
  const auto& files = request.files;
  if (std::find(files.begin(), files.end(), "-") != files.end() &&
      (job.passes() > 1 || !request.state.empty() || files.size() > 1)) {
    throw stream::Unreadable(job.passes() > 1
                                 ? "standard input cannot be read " + std::to_string(job.passes()) +
                                       " times; give a file"
                                 : "standard input goes with no other file and no --state");
  }
}

void requireMarks(const stream::Columns& columns) {
  if (columns.decimal == columns.separatorUsed()) {
    throw CLI::ValidationError("--separator",
                               "another character than the decimal mark is expected");
  }
}

int runJob(std::string_view command, Given& given) {
  std::sort(given.request.columns.missing.begin(), given.request.columns.missing.end());
  given.request.title = command;
  try {
    const auto job = jobOf(command, given);
    requireFiles(*job, given.request);
    for (const int signal : {SIGINT, SIGTERM}) {
      std::signal(signal, [](int) { stream::stop(); });
    }
    run(*job, given.request);
    print(*job, given);
    return std::cout ? kSuccess : kBadUsage;
  } catch (const stream::Unreadable& e) {
    std::cerr << "vexel: " << e.what() << '\n';
    return kBadUsage;
  } catch (const std::bad_alloc&) {
    std::cerr << "Error, memory has run out\n";
  } catch (const std::exception& e) {
    std::cerr << "Error, " << e.what() << '\n';
  }
  return kStatementFailed;
}

}  // namespace

std::optional<int> runStreamCommand(int argc, char** argv) {
  const std::string_view command = argc > 1 ? argv[1] : "";
  std::error_code none;
  if (std::find(std::begin(kCommands), std::end(kCommands), command) == std::end(kCommands) ||
      std::filesystem::is_regular_file(command, none)) {
    return std::nullopt;
  }
  CLI::App app(
      purpose(command) + " of a column of files that need not fit in memory: exact, in pieces.",
      "vexel " + std::string(command));
  app.footer(
      "Exit status: 0 success, 1 the data are not as they should be or the work was stopped,\n"
      "2 bad command line or unreadable file.");
  Given given;
  addOptions(app, command, given);
  try {
    app.parse(argc - 1, argv + 1);
    requireMarks(given.request.columns);
  } catch (const CLI::ParseError& e) {
    return app.exit(e) == 0 ? kSuccess : kBadUsage;
  }
  return runJob(command, given);
}
