// A file that holds what a target reads, in the scratch tree.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "exact_input.h"

namespace kqsupt::fuzz {

// The path of the target's file.
inline const std::string& scratch_file(const char* name) {
  static const std::string path = [name] {
    const char* directory = std::getenv("TMPDIR");
    return std::string(directory != nullptr ? directory : "/tmp") + "/" + name;
  }();
  return path;
}

inline void put_bytes(const std::string& path, const void* bytes, size_t size) {
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
  require(file >= 0 && write(file, bytes, size) == static_cast<ssize_t>(size));
  close(file);
}

}  // namespace kqsupt::fuzz
