// Help at the prompt, from the reference pages.

#include "help.hpp"

#include <algorithm>
#include <iostream>
#include <iterator>
#include <sstream>
#include <string_view>
#include <utility>

#include "reference.hpp"

namespace {

void printHeadings(const std::vector<ReferenceEntry>& entries) {
  for (const ReferenceEntry& entry : entries) {
    for (const std::string& heading : entry.headings) {
      std::cout << "  " << heading << '\n';
    }
  }
}

// The pages with what they hold, from the table "| [page](page.md) | what |" of the first one.
void printOverview() {
  for (const ReferencePage& page : referencePages()) {
    std::istringstream in(page.introduction);
    for (std::string row; page.name == "README" && std::getline(in, row);) {
      const std::size_t name = row.find("](");
      const std::size_t nameEnd = row.find(".md) | ");
      const std::size_t what = row.find(") | ");
      if (row.starts_with("| [") && nameEnd != std::string::npos) {
        std::string key = "  ?" + row.substr(name + 2, nameEnd - name - 2);
        key.resize(18, ' ');
        std::cout << key << row.substr(what + 4, row.rfind(" |") - what - 4) << '\n';
      }
    }
  }
  std::cout << "  ?name           one function; STATS_Vexel and _HW may be left out\n"
               "  ?word           what mentions it\n";
}

bool isKeyword(std::string_view word) {
  constexpr std::string_view kKeywords[] = {"and", "do",   "elif", "else",  "end",
                                            "for", "from", "if",   "local", "not",
                                            "or",  "proc", "then", "to",    "while"};
  return std::find(std::begin(kKeywords), std::end(kKeywords), word) != std::end(kKeywords);
}

bool printPage(const std::string& name) {
  for (const ReferencePage& page : referencePages()) {
    if (page.name == name) {
      std::cout << page.introduction.substr(page.introduction.find('\n') + 1);
      printHeadings(page.entries);
      return true;
    }
  }
  return false;
}

// What users of other systems ask for, and the words of these pages; ? for the overview.
constexpr std::pair<std::string_view, std::string_view> kWords[] = {
    {"sd", "std"},
    {"stdev", "std"},
    {"stddev", "std"},
    {"variance", "var"},
    {"avg", "mean"},
    {"average", "mean"},
    {"mad", "median_absolute_deviation"},
    {"percentile", "quantile"},
    {"prctile", "quantile"},
    {"summary", "describe"},
    {"len", "count"},
    {"size", "count"},
    {"cor", "corr"},
    {"correlation", "corr"},
    {"linear regression", "regression line"},
    {"regression", "regression line"},
    {"lm", "regression line"},
    {"ttest", "t_test"},
    {"t test", "t_test"},
    {"t-test", "t_test"},
    {"kstest", "ks_test"},
    {"chisq", "chi_square_test"},
    {"rolling", "moving"},
    {"dataframe", "frame"},
    {"data frame", "frame"},
    {"aggregate", "group"},
    {"groupby", "group"},
    {"subset", "filter"},
    {"lookup", "join"},
    {"source", "read"},
    {"include", "read"},
    {"strlen", "length"},
    {"toupper", "upper"},
    {"gsub", "replace"},
    {"read_csv", "ReadCSV"},
    {"rollmean", "moving"},
    {"cumsum", "cumulative"},
    {"cumprod", "cumulative"},
    {"acf", "autocorrelation"},
    {"hist", "histogram"},
    {"bincount", "tally"},
    {"value_counts", "tally"},
    {"boxplot", "five_number"},
    {"chart", "plot"},
    {"graph", "plot"},
    {"figure", "plot"},
    {"scatter", "plot"},
    {"scatterplot", "plot"},
    {"lines", "plot"},
    {"errorbar", "plot"},
    {"svg", "plot"},
    {"png", "plot"},
    {"gnuplot", "plot"},
    {"subplot", "picture"},
    {"dnorm", "pdf"},
    {"pnorm", "cdf"},
    {"qnorm", "ppf"},
    {"rnorm", "normal"},
    {"runif", "uniform"},
    {"gaussian", "Normal"},
    {"rand", "uniform"},
    {"seed", "randomize"},
    {"set.seed", "randomize"},
    {"fsolve", "find_root"},
    {"uniroot", "find_root"},
    {"solve", "find_root"},
    {"derivative", "diff"},
    {"quad", "integrate"},
    {"integral", "integrate"},
    {"sprintf", "format"},
    {"paste", "cat"},
    {"strcat", "cat"},
    {"read", "ReadCSV"},
    {"load", "ReadCSV"},
    {"import", "ReadCSV"},
    {"write", "WriteCSV"},
    {"export", "WriteCSV"},
    {"save", "WriteCSV"},
    {"function", "proc"},
    {"def", "proc"},
    {"lambda", "proc"},
    {"help", "?"},
    {"exit", "quit"}};

// A topic in words of these pages.
std::string_view inOwnWords(std::string_view topic) {
  for (const auto& [foreign, own] : kWords) {
    if (foreign == topic) {
      return own;
    }
  }
  return topic;
}

void printEntry(const ReferenceEntry& entry) {
  for (const std::string& heading : entry.headings) {
    std::cout << heading << '\n';
  }
  std::cout << entry.text;
}

// For a topic that is no name: what mentions it, or a word of it, or a name that is spelled alike.
void printNearest(const std::string& topic) {
  std::cout << "no name contains " << topic;
  const std::string own(inOwnWords(topic));
  auto entries = findReference(own);
  if (entries.empty()) {
    entries = entriesThatMention(own);
  }
  std::istringstream words(own);
  for (std::string word; entries.empty() && words >> word;) {
    if (word.size() > 3) {
      entries = findReference(word);
      entries = entries.empty() ? entriesThatMention(word) : entries;
    }
  }
  const std::string similar = entries.empty() ? similarName(topic) : "";
  std::cout << (!entries.empty()   ? "; nearest are\n"
                : !similar.empty() ? "; ?" + similar + " is spelled alike\n"
                                   : "\n");
  printHeadings(entries);
}

}  // namespace

std::string meantName(const std::string& name) {
  const std::string own(inOwnWords(name));
  return own != name && own.find(' ') == std::string::npos ? own : similarName(name);
}

std::string helpTopic(const std::string& line) {
  constexpr std::string_view kOuter = " \t\n;:?";
  std::string topic = line.substr(0, line.find('('));
  topic.erase(topic.find_last_not_of(kOuter) + 1);
  topic.erase(0, topic.find_first_not_of(kOuter));
  return topic;
}

bool printHelp(const std::string& topic, const std::vector<std::string>& sessionNames) {
  bool known = true;
  if (topic.empty() || inOwnWords(topic) == "?") {
    printOverview();
  } else if (printPage(isKeyword(inOwnWords(topic)) ? "language" : topic)) {
    // done
  } else if (const auto own = findReference(std::string(inOwnWords(topic)));
             inOwnWords(topic) != topic && own.size() == 1) {
    std::cout << topic << " is " << inOwnWords(topic) << " here\n\n";
    printEntry(own.front());
  } else if (const auto named = findReference(topic); named.size() == 1) {
    printEntry(named.front());
  } else if (!named.empty()) {
    printHeadings(named);
  } else if (!sessionNames.empty()) {
    for (const std::string& name : sessionNames) {
      std::cout << "  " << name << '\n';
    }
  } else {
    printNearest(topic);
    known = false;
  }
  std::cout.flush();
  return known;
}
