// The reference pages: every exported entry point has one entry, every entry names an exported
// symbol, and every example runs and gives the value that its comment states.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <vector>
#include <vexel/kernel.hpp>
#include <vexel/session.hpp>

namespace {

struct Page {
  std::string name;
  std::multiset<std::string> symbols;      // of the headings "## STATS_...(...)"
  std::multiset<std::string> builtIns;     // of the other headings
  std::string examples;                    // the indented statements, on their lines of the page
  std::map<int, std::string> valueOnLine;  // "statement;   # value"
};

Page readPage(const std::filesystem::path& path) {
  Page page{path.filename().string(), {}, {}, {}, {}};
  std::ifstream in(path);
  std::string line;
  for (int number = 1; std::getline(in, line); ++number) {
    if (line.starts_with("## ")) {
      const std::string symbol = line.substr(3, line.find('(') - 3);
      const bool exported = symbol.starts_with("STATS_") || symbol == "VexelTallySorted";
      (exported ? page.symbols : page.builtIns).insert(symbol);
    }
    if (line.starts_with("    ")) {
      page.examples += line;
      if (const auto comment = line.rfind(";   # "); comment != std::string::npos) {
        page.valueOnLine[number] = line.substr(comment + 6);
      }
    }
    page.examples += '\n';
  }
  return page;
}

const std::vector<Page>& pages() {
  static const std::vector<Page> all = [] {
    std::vector<Page> read;
    for (const auto& file : std::filesystem::directory_iterator(SOURCE_DIR "/docs/reference")) {
      read.push_back(readPage(file.path()));
    }
    return read;
  }();
  return all;
}

TEST(ReferenceTest, HasOneEntryForEachExportedSymbol) {
  vexel::Kernel kernel;
  kernel.loadLibrary(STATS_LIBRARY_PATH);
  std::map<std::string, std::string> pageOf;
  for (const Page& page : pages()) {
    for (const std::string& symbol : page.symbols) {
      EXPECT_TRUE(pageOf.emplace(symbol, page.name).second)
          << symbol << " in " << page.name << " and in " << pageOf[symbol];
    }
  }
  const auto exported = kernel.entryPoints();
  for (const std::string& symbol : exported) {
    EXPECT_EQ(pageOf.erase(symbol), 1) << symbol << " has no entry";
  }
  for (const auto& [symbol, page] : pageOf) {
    ADD_FAILURE() << page << " describes " << symbol << ", which is not exported";
  }
}

TEST(ReferenceTest, HasAnEntryForEachBuiltInFunction) {
  vexel::Kernel kernel;
  std::set<std::string> described;
  for (const Page& page : pages()) {
    described.insert(page.builtIns.begin(), page.builtIns.end());
  }
  for (const std::string& name : vexel::knownNames(kernel)) {
    EXPECT_EQ(described.count(name), 1) << name;
  }
}

TEST(ReferenceTest, ExamplesRunAndGiveTheStatedValues) {
  std::filesystem::current_path(SOURCE_DIR);  // examples read examples/data
  for (const Page& page : pages()) {
    vexel::Kernel kernel;
    kernel.loadLibrary(STATS_LIBRARY_PATH);
    kernel.eval("none := Array(1..0, datatype = float[8]):");
    kernel.seed(1);
    vexel::Script script(kernel, page.examples);
    vexel::Outcome outcome;
    std::map<int, std::string> printed;  // by the line where the statement starts
    while (script.next(outcome)) {
      ASSERT_EQ(outcome.kind, vexel::Outcome::Kind::value)
          << page.name << ":" << outcome.line << ": " << outcome.error << "\n"
          << outcome.source;
      printed[outcome.line] = outcome.value.source();
    }
    for (const auto& [line, value] : page.valueOnLine) {
      const auto statement = printed.upper_bound(line);
      ASSERT_NE(statement, printed.begin()) << page.name << ":" << line;
      EXPECT_EQ(std::prev(statement)->second, value) << page.name << ":" << line;
    }
  }
}

}  // namespace
