#include "stream/command.hpp"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <csignal>
#include <filesystem>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>
#include <vexel/names.hpp>

#include "options.hpp"
#include "stream/run.hpp"
#include "usage.hpp"

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

std::string purpose(std::string_view command) {
  return command == "describe"   ? "Count, mean, standard deviation, quartiles, extremes and shape"
         : command == "quantile" ? "Quantiles"
                                 : "Distinct values and their counts";
}

// A check of what an option is given: what it must be, and whether a text is it.
template <typename IsIt>
auto mustBe(const std::string& what, IsIt isIt) {
  return [what, isIt](const std::string& text) {
    return isIt(text) ? "" : "must be " + what + ", got " + text;
  };
}

template <typename E>
auto mustBeName() {
  return mustBe(vexel::namesListed<E>("", " or "),
                [](const std::string& text) { return vexel::valueNamed<E>(text).has_value(); });
}

template <typename T>
bool isBetween(const std::string& text, T low, T high) {
  T value{};
  const char* const last = text.data() + text.size();
  const auto [end, error] = std::from_chars(text.data(), last, value);
  return error == std::errc() && end == last && value >= low && value <= high;
}

// "tab" and "\t" are words for what is hard to type.
char markIn(const std::string& text) {
  return text == "tab" || text == "\\t" ? '\t' : text.size() == 1 ? text[0] : '\0';
}

void addMark(CLI::App& app, const std::string& name, char& to, const char* help) {
  app.add_option_function<std::string>(
         name, [&to](const std::string& text) { to = markIn(text); }, help)
      ->type_name("CHAR")
      ->check(mustBe("a character like , ; or tab", [](const std::string& text) {
        const char mark = markIn(text);
        return mark > '\0' &&
               std::string_view("\"\r\n+-0123456789").find(mark) == std::string::npos;
      }));
}

void addCsvOptions(CLI::App& app, stream::Columns& columns) {
  addMark(app, "--separator", columns.separator,
          "what stands between cells, or tab; a comma otherwise, ; with --decimal ,");
  addMark(app, "--decimal", columns.decimal, "the decimal mark, a point otherwise");
  const auto set = [&columns](bool value) {
    return [&columns, value] {
      if (columns.headings.value_or(value) != value) {
        throw CLI::ExcludesError("--headings", "--no-headings");
      }
      columns.headings = value;
    };
  };
  app.add_flag_callback("--headings", set(true), "row 1 holds headings");
  app.add_flag_callback("--no-headings", set(false),
                        "row 1 holds data; without either it does if it has numbers alone");
  app.add_option("--na", columns.missing, "a further text of missing cells; may be repeated")
      ->type_name("TEXT")
      ->allow_extra_args(false);
}

void addQuantileOptions(CLI::App& app, Given& given) {
  app.add_option("-q", given.q, "probabilities, 0.5 or 0.1,0.9; the quartiles otherwise")
      ->type_name("Q")
      ->delimiter(',')
      ->allow_extra_args(false)
      ->check(mustBe("a number",
                     [](const std::string& text) { return isBetween(text, -HUGE_VAL, HUGE_VAL); }));
  app.add_option("--method", given.method, "definition, as of the function quantile")
      ->type_name("NAME")
      ->check(mustBeName<vexel::QuantileMethod>());
}

void addWorkOptions(CLI::App& app, Request& r) {
  app.add_option("--rows", r.rows, "rows in a piece, 2^20 otherwise")
      ->type_name("N")
      ->check(mustBe("a whole number from 1", [](const std::string& text) {
        return isBetween(text, std::size_t{1}, std::size_t{1} << 40);
      }));
  app.add_option("--state", r.state, "keep the work in this file, and go on from it")
      ->type_name("FILE");
  app.add_option("--stop-after", r.seconds, "end after so many seconds with the work in --state")
      ->type_name("SECONDS")
      ->check(mustBe("a number from 0",
                     [](const std::string& text) { return isBetween(text, 0.0, HUGE_VAL); }));
}

void addOptions(CLI::App& app, std::string_view command, Given& given) {
  Request& r = given.request;
  app.set_help_flag("-h,--help", "print this help and exit");
  app.add_option("FILE", r.files, ".csv or .npy; read one after the other")
      ->required()
      ->type_name("");
  if (command == "quantile") {
    addQuantileOptions(app, given);
  }
  app.add_option("-c,--column", r.columns.column,
                 "a heading or a number from 1; needed where there are several")
      ->type_name("COLUMN");
  app.add_option("-w,--weights", r.columns.weights, "the column of weights")->type_name("COLUMN");
  app.add_option("--missing", given.missing, "omit (the default), propagate or raise")
      ->type_name("POLICY")
      ->check(mustBeName<vexel::Missing>());
  addCsvOptions(app, r.columns);
  addWorkOptions(app, r);
  app.add_flag("--json", given.json, "print one line of JSON");
  app.add_flag("--quiet", r.quiet, "no progress, no word on missing values");
}

// Options that do not go together.
void requireSense(const Request& request) {
  if (request.columns.decimal == request.columns.separatorUsed()) {
    throw CLI::ValidationError("--separator", "must be another character than the decimal mark");
  }
  if (request.seconds >= 0 && request.state.empty()) {
    throw CLI::RequiresError("--stop-after", "--state");
  }
}

std::unique_ptr<stream::Job> jobOf(std::string_view command, const Given& given) {
  const auto missing = *vexel::valueNamed<vexel::Missing>(given.missing);
  if (command == "quantile") {
    return stream::quantileJob(given.q, *vexel::valueNamed<vexel::QuantileMethod>(given.method),
                               missing);
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
  CLI::App app(purpose(command) +
                   " of a column of numbers.  Files may be larger than memory: they are read in "
                   "pieces, and the results are exact.",
               "vexel " + std::string(command));
  app.footer(
      "Exit status: 0 success, 1 the data are not as they should be or the work was stopped,\n"
      "2 bad command line or unreadable file.");
  Given given;
  addOptions(app, command, given);
  try {
    app.parse(argc - 1, argv + 1);
    requireSense(given.request);
  } catch (const CLI::ParseError& e) {
    return reportUsage(app, e);
  }
  return runJob(command, given);
}

std::span<const std::string_view> streamCommands() { return kCommands; }
