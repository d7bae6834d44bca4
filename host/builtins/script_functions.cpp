// Scripts within scripts: read, source_folder.

#include <filesystem>
#include <fstream>

#include "builtins/builtins.hpp"
#include "kernels/text_file.hpp"
#include "language/evaluator.hpp"
#include "language/interpreter.hpp"
#include "language/parser.hpp"
#include "values/errors.hpp"
#include "values/objects.hpp"

namespace vexel {

namespace {

// The folder of the file that is run, so that a script finds what lies beside it.
std::string sourceFolder(State& s) {
  const TextPlace here = s.language->where();
  const std::size_t slash = here.text == nullptr ? std::string::npos : here.text->rfind('/');
  return slash == std::string::npos ? "." : slash == 0 ? "/" : here.text->substr(0, slash);
}

std::string contentsOf(State& s, const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::error_code failed;
  if (!in || std::filesystem::is_directory(path, failed)) {
    raise(s, "unable to read the file %1: " + kernels::whyUnreadable(path), string(s, path));
  }
  constexpr std::size_t kLongest = std::size_t{1} << 28;
  constexpr std::size_t kBlock = std::size_t{1} << 20;
  std::string contents;
  for (std::size_t n = 0; in; contents.resize(n)) {
    lookAtInterrupt();
    n = contents.size();
    contents.resize(n + kBlock);
    in.read(contents.data() + n, kBlock);
    n += static_cast<std::size_t>(in.gcount());
    if (n > kLongest) {
      raise(s, "the script %1 is too long", string(s, path));
    }
  }
  if (const std::string_view fault = kernels::whyNoText(contents); !fault.empty()) {
    raise(s, "unable to read the file %1: " + std::string(fault), string(s, path));
  }
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (contents.starts_with(kByteOrderMark)) {
    contents.erase(0, kByteOrderMark.size());
  }
  return contents;
}

std::shared_ptr<Program> nextStatement(State& s, Parser& parser, const std::string& path) {
  std::string problem;
  try {
    return parser.next();
  } catch (const SyntaxError& e) {
    problem = "syntax error in " + path + ", line " + std::to_string(e.position.line) +
              ", column " + std::to_string(e.position.column) + ": " + e.message;
  }
  raise(s, problem);
}

// Runs the statements of a file, whose name is relative to that of the script that reads it.
ALGEB read(State& s, ALGEB args) {
  const ALGEB name = oneArgument(s, args, "read expects the name of a script, received: %1");
  if (!is(name, Tag::string) || text(name).empty()) {
    raise(s, "read expects the name of a script, received: %1", name);
  }
  const std::string given(text(name));
  const std::string folder = sourceFolder(s);
  const std::string path = given[0] == '/' || folder == "." ? given : folder + "/" + given;
  const std::string contents = contentsOf(s, path);
  Parser parser(s, contents, std::make_shared<const std::string>(path));
  ALGEB result = s.null;
  try {
    while (const std::shared_ptr<Program> statement = nextStatement(s, parser, path)) {
      lookAtInterrupt();
      result = runProgram(s, statement);
      if (interpreter(s).quit) {
        break;
      }
      if (statement->printed && interpreter(s).show) {
        interpreter(s).show(result, isForItsEffect(*statement));
      }
    }
  } catch (const HostErrorToken&) {
    s.error.inProcedure = true;
    s.error.line = 0;  // a place in that file: the caller adds its own
    throw;
  }
  return result;
}

}  // namespace

void defineScriptFunctions(State& state) {
  defineFunction(state, "read", read);
  defineFunction(state, "source_folder", [](State& s, ALGEB args) {
    if (!isNull(args)) {
      raise(s, "source_folder takes no arguments, received: %1", args);
    }
    return string(s, sourceFolder(s));
  });
}

}  // namespace vexel
