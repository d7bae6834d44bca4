// Where the statistics library and the examples are, from where the command is.

#include "library_path.hpp"

#include <filesystem>
#include <system_error>

std::string findStatisticsLibrary() {
  namespace fs = std::filesystem;
  constexpr const char* kName = "libstats_hw.so";
  std::error_code error;
  const fs::path command = fs::read_symlink("/proc/self/exe", error);
  if (!error) {
    const fs::path directory = command.parent_path();
    for (const fs::path& candidate :
         {directory / ".." / "lib" / kName, directory / ".." / VEXEL_LIBRARY_DIRECTORY / kName,
          directory / kName}) {
      if (fs::exists(candidate, error)) {
        return candidate.lexically_normal().string();
      }
    }
  }
  return kName;
}

std::string findExamples() {
  namespace fs = std::filesystem;
  std::error_code error;
  const fs::path directory = fs::read_symlink("/proc/self/exe", error).parent_path();
  for (const fs::path& candidate :
       {directory / ".." / VEXEL_DATA_DIRECTORY / "vexel" / "examples", fs::path(VEXEL_EXAMPLES)}) {
    if (fs::exists(candidate / "quantiles.vexel", error)) {
      return candidate.lexically_normal().string();
    }
  }
  return "";
}
