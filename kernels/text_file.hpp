// Why a file cannot be read as text, in words for a message.
#pragma once

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <string_view>
#include <system_error>

namespace vexel::kernels {

// Of a path that could not be opened or read.
inline std::string whyUnreadable(const std::string& path) {
  const int error = errno;
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) {
    return errno == ENOENT || errno == ENOTDIR ? "there is no such file"
                                               : std::generic_category().message(errno);
  }
  if (S_ISDIR(status.st_mode)) {
    return "it is a folder";
  }
  return access(path.c_str(), R_OK) != 0 ? "permission is denied"
         : error != 0                    ? std::generic_category().message(error)
                                         : "it cannot be read";
}

// Of the first bytes of a file; empty for what may be text.
inline std::string_view whyNoText(std::string_view bytes) {
  if (bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF")) {
    return "it is text in UTF-16; save it in UTF-8";
  }
  return bytes.find('\0') != bytes.npos ? "it is no text" : "";
}

}  // namespace vexel::kernels
