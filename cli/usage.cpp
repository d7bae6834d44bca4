#include "usage.hpp"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <string_view>

#include "help.hpp"
#include "options.hpp"
#include "reference.hpp"
#include "stream/command.hpp"

namespace {

// The option that is spelled most alike, if any is.
std::string nearestOption(const CLI::App& app, const std::string& wrong) {
  std::string nearest;
  std::size_t least = 3;
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) {
      const std::size_t d = editDistance(wrong, "--" + name);
      if (d < least) {
        least = d;
        nearest = "--" + name;
      }
    }
  }
  return nearest;
}

std::string unknownOption(const CLI::App& app) {
  const std::vector<std::string> left = app.remaining();
  std::string wrong = left.empty() ? "" : left.front();
  wrong = wrong.substr(0, wrong.find('='));
  const std::string nearest = nearestOption(app, wrong);
  return wrong + " is no option" + (nearest.empty() ? "" : "; " + nearest + " is");
}

// "--seed: 1 required N missing" of the parser, in words.
std::string withoutValue(const std::string& text) {
  const std::size_t nameEnd = text.find(": ");
  const std::size_t kind = text.find(" required ");
  const std::size_t kindEnd = text.rfind(" missing");
  if (nameEnd == text.npos || kind == text.npos || kindEnd == text.npos) {
    return text;
  }
  const std::size_t from = kind + std::string_view(" required ").size();
  return text.substr(0, nameEnd) + " is given without its " + text.substr(from, kindEnd - from);
}

// "--write requires --format", "--headings excludes --no-headings".
std::string replaced(std::string text, const std::string& old, const std::string& fresh) {
  const std::size_t at = text.find(old);
  return at == text.npos ? text : text.replace(at, old.size(), fresh);
}

std::string wordsFor(const CLI::App& app, const CLI::ParseError& error) {
  const std::string text = error.what();
  switch (static_cast<CLI::ExitCodes>(error.get_exit_code())) {
    case CLI::ExitCodes::ExtrasError:
      return unknownOption(app);
    case CLI::ExitCodes::ArgumentMismatch:
      return withoutValue(text);
    case CLI::ExitCodes::RequiredError:
      return replaced(text, " is required", " is missing");
    case CLI::ExitCodes::RequiresError:
      return replaced(text, " requires ", " goes only with ");
    case CLI::ExitCodes::ExcludesError:
      return replaced(text, " excludes ", " does not go with ");
    case CLI::ExitCodes::ValidationError:
      return replaced(text, ": must", " must");
    case CLI::ExitCodes::ConversionError:
      return replaced(text, "Could not convert: ", "cannot take ");
    default:
      return text;
  }
}

}  // namespace

int reportUsage(const CLI::App& app, const CLI::ParseError& error) {
  if (error.get_exit_code() == 0) {
    app.exit(error);
    return kSuccess;
  }
  std::cerr << "vexel: " << wordsFor(app, error) << "\n`" << app.get_name()
            << " --help` lists the options\n";
  return kBadUsage;
}

std::string meantByFile(const std::string& file) {
  if (file.find_first_of("./") != file.npos) {
    return "";
  }
  const std::string meant = meantName(file);
  for (const std::string_view command : streamCommands()) {
    if (file == command) {
      return "the command comes first: vexel " + file + " FILE ...";
    }
    if (meant == command || editDistance(file, command) < 3) {
      return "vexel " + std::string(command) + " FILE ... is a command";
    }
  }
  return meant == file ? file + " is a function: vexel -e '" + file +
                             "(ReadCSV(\"FILE\", \"COLUMN\"));', or vexel describe FILE"
         : file == "help" || file == "version" ? "vexel --" + file + " is meant"
                                               : "";
}
