// The reference pages, compiled in: what ?name prints.
#pragma once

#include <string>
#include <vector>

// The entries for a name: those of that very name (with or without STATS_Vexel and _HW), else all
// whose names contain it, letter case aside.
struct ReferenceEntry {
  std::vector<std::string> headings;  // "STATS_VexelMean_HW(data, weights, ignore, kind)"
  std::string text;
};
std::vector<ReferenceEntry> findReference(const std::string& name);
