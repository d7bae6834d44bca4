// Entries of the reference pages.  In a page an entry is one or more consecutive heading lines
// "## name(arguments)" and the text below, up to the next heading.

#include "reference.hpp"

#include <algorithm>
#include <cctype>
#include <sstream>
#include <string_view>

// Made of docs/reference/*.md by CMake.
extern const char* const kReferencePages[];
extern const int kReferencePageCount;

namespace {

std::vector<ReferenceEntry> readPage(const char* page) {
  std::vector<ReferenceEntry> entries;
  bool inEntry = false;
  bool inHeadings = false;
  std::istringstream in(page);
  for (std::string line; std::getline(in, line);) {
    if (line.starts_with("## ")) {
      if (!inHeadings) {
        entries.emplace_back();
      }
      entries.back().headings.push_back(line.substr(3));
      inEntry = inHeadings = true;
    } else if (line.starts_with("#")) {
      inEntry = inHeadings = false;
    } else if (inEntry) {
      inHeadings = false;
      entries.back().text += line + '\n';
    }
  }
  return entries;
}

const std::vector<ReferenceEntry>& allEntries() {
  static const std::vector<ReferenceEntry> entries = [] {
    std::vector<ReferenceEntry> all;
    for (int i = 0; i < kReferencePageCount; ++i) {
      for (ReferenceEntry& entry : readPage(kReferencePages[i])) {
        all.push_back(std::move(entry));
      }
    }
    return all;
  }();
  return entries;
}

// "STATS_VexelMean_HW(data, ...)" and "VexelMean" to "mean".
std::string plainName(std::string_view heading) {
  std::string_view name = heading.substr(0, heading.find('('));
  for (const std::string_view prefix : {"STATS_", "Vexel"}) {
    if (name.starts_with(prefix)) {
      name.remove_prefix(prefix.size());
    }
  }
  if (name.ends_with("_HW")) {
    name.remove_suffix(3);
  }
  std::string lower(name);
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return lower;
}

template <typename Matches>
std::vector<ReferenceEntry> entriesWhere(Matches matches) {
  std::vector<ReferenceEntry> found;
  for (const ReferenceEntry& entry : allEntries()) {
    if (std::any_of(entry.headings.begin(), entry.headings.end(),
                    [&](const std::string& heading) { return matches(plainName(heading)); })) {
      found.push_back(entry);
    }
  }
  return found;
}

}  // namespace

std::vector<ReferenceEntry> findReference(const std::string& name) {
  const std::string wanted = plainName(name);
  std::vector<ReferenceEntry> found =
      entriesWhere([&](const std::string& entry) { return entry == wanted; });
  if (found.empty()) {
    found = entriesWhere(
        [&](const std::string& entry) { return entry.find(wanted) != std::string::npos; });
  }
  return found;
}
