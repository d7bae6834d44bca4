// The reference pages.  In a page an entry is one or more consecutive heading lines
// "## name(arguments)" and the text below, up to the next of them.

#include "reference.hpp"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <numeric>
#include <sstream>
#include <string_view>

// Made of docs/reference/*.md by CMake: the name and the text of each page in turn.
extern const char* const kReferencePages[];
extern const int kReferencePageCount;

namespace {

ReferencePage readPage(const char* name, const char* text) {
  ReferencePage page{name, "", {}};
  bool inHeadings = false;
  std::string* below = &page.introduction;  // where lines go that are no headings
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) {
    if (line.starts_with("## ")) {
      if (!inHeadings) {
        page.entries.emplace_back();
      }
      page.entries.back().headings.push_back(line.substr(3));
      below = &page.entries.back().text;
      inHeadings = true;
    } else {
      inHeadings = false;
      *below += line + '\n';
    }
  }
  return page;
}

std::string lowerCase(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return lower;
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
  return lowerCase(name);
}

bool isEntryPoint(std::string_view name) {
  return name.starts_with("STATS_") || name.starts_with("Vexel");
}

template <typename Matches>
std::vector<ReferenceEntry> entriesWhere(Matches matches) {
  std::vector<ReferenceEntry> found;
  for (const ReferencePage& page : referencePages()) {
    std::copy_if(page.entries.begin(), page.entries.end(), std::back_inserter(found), matches);
  }
  return found;
}

template <typename Matches>
std::vector<ReferenceEntry> entriesNamed(Matches matches) {
  return entriesWhere([&](const ReferenceEntry& entry) {
    return std::any_of(entry.headings.begin(), entry.headings.end(),
                       [&](const std::string& heading) { return matches(plainName(heading)); });
  });
}

}  // namespace

const std::vector<ReferencePage>& referencePages() {
  static const std::vector<ReferencePage> pages = [] {
    std::vector<ReferencePage> all;
    for (int i = 0; i < kReferencePageCount; ++i) {
      all.push_back(readPage(kReferencePages[2 * i], kReferencePages[2 * i + 1]));
    }
    return all;
  }();
  return pages;
}

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

std::vector<ReferenceEntry> findReference(const std::string& name) {
  const std::string wanted = plainName(name);
  std::vector<ReferenceEntry> found =
      entriesNamed([&](const std::string& entry) { return entry == wanted; });
  // Of a function and an entry point that differ in nothing but prefix and case, the one that is
  // meant.
  for (const ReferenceEntry& entry : found) {
    for (const std::string& heading : entry.headings) {
      const std::string_view called = std::string_view(heading).substr(0, heading.find('('));
      if (called == name || called == "STATS_" + name + "_HW") {
        return {entry};
      }
    }
  }
  if (found.empty()) {
    found = entriesNamed(
        [&](const std::string& entry) { return entry.find(wanted) != std::string::npos; });
  }
  return found;
}

std::vector<ReferenceEntry> entriesThatMention(const std::string& words) {
  std::istringstream in(lowerCase(words));
  const std::vector<std::string> wanted{std::istream_iterator<std::string>(in), {}};
  return entriesWhere([&](const ReferenceEntry& entry) {
    std::string all;
    for (const std::string& heading : entry.headings) {
      all += heading + ' ';
    }
    all = lowerCase(all + entry.text);
    return std::all_of(wanted.begin(), wanted.end(), [&](const std::string& word) {
      return all.find(word) != std::string::npos;
    });
  });
}

std::string similarName(const std::string& name) {
  const std::string wanted = plainName(name);
  std::string similar;
  std::size_t least = wanted.size() < 4 ? 1 : wanted.size() < 8 ? 2 : 3;  // nearer than this
  for (const ReferencePage& page : referencePages()) {
    for (const ReferenceEntry& entry : page.entries) {
      for (const std::string& heading : entry.headings) {
        // Of names equally near the one that is an entry point or none, as the name asked for.
        const std::size_t d = editDistance(wanted, plainName(heading));
        const bool sameKind = isEntryPoint(heading) == isEntryPoint(name);
        if (d < least || (d == least && !similar.empty() && sameKind &&
                          isEntryPoint(similar) != isEntryPoint(name))) {
          least = d;
          similar = heading.substr(0, heading.find('('));
        }
      }
    }
  }
  return similar;
}
