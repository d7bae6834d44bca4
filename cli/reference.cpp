// Entries of the reference pages.  In a page an entry is one or more consecutive heading lines
// "## name(arguments)" and the text below, up to the next heading.

#include "reference.hpp"

#include <algorithm>
#include <cctype>
#include <numeric>
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

// Letters to insert, delete or replace, and neighbours to swap, to make one text of the other.
std::size_t editDistance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> above(b.size() + 1);
  std::vector<std::size_t> row(b.size() + 1);
  std::vector<std::size_t> below(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < a.size(); ++i) {
    below[0] = i + 1;
    for (std::size_t j = 0; j < b.size(); ++j) {
      below[j + 1] = std::min({row[j] + (a[i] == b[j] ? 0 : 1), below[j] + 1, row[j + 1] + 1});
      if (i > 0 && j > 0 && a[i] == b[j - 1] && a[i - 1] == b[j]) {
        below[j + 1] = std::min(below[j + 1], above[j - 1] + 1);
      }
    }
    above.swap(row);
    row.swap(below);
  }
  return row.back();
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

std::string similarName(const std::string& name) {
  const std::string wanted = plainName(name);
  std::string similar;
  std::size_t least = wanted.size() < 4 ? 1 : wanted.size() < 8 ? 2 : 3;  // nearer than this
  for (const ReferenceEntry& entry : allEntries()) {
    for (const std::string& heading : entry.headings) {
      if (const std::size_t d = editDistance(wanted, plainName(heading)); d < least) {
        least = d;
        similar = heading.substr(0, heading.find('('));
      }
    }
  }
  return similar;
}
