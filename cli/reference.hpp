// The reference pages, compiled in: what ?name prints.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

struct ReferenceEntry {
  std::vector<std::string> headings;  // "STATS_VexelMean_HW(data, weights, ignore, kind)"
  std::string text;
};

struct ReferencePage {
  std::string name;          // "smoothing"
  std::string introduction;  // what stands above the first entry
  std::vector<ReferenceEntry> entries;
};

const std::vector<ReferencePage>& referencePages();

// The entries for a name: those of that very name (with or without STATS_Vexel and _HW), else all
// whose names contain it, letter case aside.
std::vector<ReferenceEntry> findReference(const std::string& name);

// The entries whose headings or texts contain all the words, letter case aside.
std::vector<ReferenceEntry> entriesThatMention(const std::string& words);

// Letters to insert, delete or replace, and neighbours to swap, to make one text of the other.
std::size_t editDistance(std::string_view a, std::string_view b);

// The name of the entry that a user who wrote an unknown name may have meant: the same with
// STATS_Vexel and _HW added, or a letter or two away; empty for none.
std::string similarName(const std::string& name);
