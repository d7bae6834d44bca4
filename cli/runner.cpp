// Running texts statement by statement and reporting values and errors.

#include "runner.hpp"

#include <cstddef>
#include <exception>
#include <iostream>
#include <optional>

#include "statements.hpp"

namespace {

// At the prompt a value longer than this is cut in the middle.
constexpr std::size_t kLongestShown = 1000;

std::string shortened(std::string text) {
  if (text.size() > kLongestShown) {
    constexpr std::size_t kHead = kLongestShown * 3 / 4;
    constexpr std::size_t kTail = kLongestShown / 4;
    text = text.substr(0, kHead) + " ... " + text.substr(text.size() - kTail);
  }
  return text;
}

bool isQuit(std::string_view text) {
  const std::size_t last = text.find_last_not_of(" \t\r\n");
  text = text.substr(0, last == std::string_view::npos ? 0 : last + 1);
  return text == "quit" || text == "quit()";
}

}  // namespace

void Runner::printValue(const vexel::Value& value) const {
  if (options_.json) {
    std::cout << value.json() << std::endl;
  } else {
    const std::string text = value.source();
    std::cout << (shorten_ ? shortened(text) : text) << std::endl;
  }
}

void Runner::reportError(const std::string& filled, const std::string& message,
                         std::span<const vexel::Value> arguments, const std::string& source,
                         int line) {
  failed_ = true;
  if (options_.json) {
    std::cout << "{\"error\": " << kernel_.string(filled).json()
              << ", \"message\": " << kernel_.string(message).json() << ", \"args\": [";
    for (std::size_t i = 0; i < arguments.size(); ++i) {
      std::cout << (i > 0 ? ", " : "") << arguments[i].json();
    }
    std::cout << "]}" << std::endl;
    return;
  }
  std::cout.flush();
  std::cerr << "Error, " << filled << '\n';
  if (!source.empty()) {
    std::cerr << "  at " << source << ", line " << line << '\n';
  }
}

void Runner::run(std::string_view text, const std::string& source) {
  StatementReader reader(text);
  const bool goesOn = options_.json || options_.keepGoing;
  while (const std::optional<Statement> statement = reader.next()) {
    if (isQuit(statement->text)) {
      finished_ = true;
      return;
    }
    bool ok = false;
    try {
      const vexel::Value value = kernel_.eval(statement->text);
      if (statement->printed) {
        printValue(value);
      }
      ok = true;
    } catch (const vexel::Error& e) {
      reportError(e.what(), e.message(), e.arguments(), source, statement->line);
    } catch (const std::exception& e) {
      reportError(e.what(), e.what(), {}, source, statement->line);
    }
    if (!ok && !goesOn) {
      finished_ = !source.empty();  // the prompt goes on
      return;
    }
  }
}
