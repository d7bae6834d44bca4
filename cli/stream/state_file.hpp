// The file of interrupted work: what work it is, how far it came, and its states.
//
//   vexel stream 2
//   describe omit                          what work: lines that have to be the same again
//   ...
//   pass 2
//   piece 17                               pieces of this pass that are taken in
//   states 221 61 9000                     sizes in bytes
//   check 0123456789abcdef                 FNV-1a of all lines before
//   and the bytes of the states, which have checksums of their own
//
// The Python package reads and writes the same.
#pragma once

#include <optional>
#include <string>

#include "stream/job.hpp"

namespace stream {

struct Progress {
  int pass = 1;
  std::size_t pieces = 0;  // of this pass
  std::vector<Bytes> states;
};

// Replaces the file at once: a crash leaves the old one or the new one.
void saveProgress(const std::string& path, const std::string& task, const Progress& progress);
// Complains, at once and not after hours, of a path where no state can be written.
void requireStateFile(const std::string& path);
// Nothing where there is no such file; std::invalid_argument where it is damaged or of other work.
std::optional<Progress> loadProgress(const std::string& path, const std::string& task);

}  // namespace stream
