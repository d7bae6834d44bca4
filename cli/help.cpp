// Help at the prompt, from the reference pages.

#include "help.hpp"

#include <algorithm>
#include <iostream>
#include <iterator>
#include <sstream>
#include <string_view>

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
      const std::size_t name = row.find("| [");
      const std::size_t nameEnd = row.find("](");
      const std::size_t what = row.find(") | ");
      if (name == 0 && what != std::string::npos) {
        std::string key = "  ?" + row.substr(3, nameEnd - 3);
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

}  // namespace

std::string helpTopic(const std::string& line) {
  constexpr std::string_view kOuter = " \t\n;:?";
  std::string topic = line.substr(0, line.find('('));
  topic.erase(topic.find_last_not_of(kOuter) + 1);
  topic.erase(0, topic.find_first_not_of(kOuter));
  return topic;
}

void printHelp(const std::string& topic, const std::vector<std::string>& sessionNames) {
  if (topic.empty()) {
    printOverview();
  } else if (printPage(isKeyword(topic) ? "language" : topic)) {
    // done
  } else if (const auto named = findReference(topic); named.size() == 1) {
    for (const std::string& heading : named.front().headings) {
      std::cout << heading << '\n';
    }
    std::cout << named.front().text;
  } else if (!named.empty()) {
    printHeadings(named);
  } else if (!sessionNames.empty()) {
    for (const std::string& name : sessionNames) {
      std::cout << "  " << name << '\n';
    }
  } else {
    std::cout << "no name contains " << topic;
    const auto mentioned = entriesThatMention(topic);
    std::cout << (mentioned.empty() ? "\n" : "; it is mentioned in\n");
    printHeadings(mentioned);
  }
  std::cout.flush();
}
