// How many descriptors the process has open: what a failed call must not add to.
#pragma once

#include <dirent.h>

namespace kqsupt::tests {

inline int open_descriptors() {
  int count = 0;
  DIR* directory = opendir("/proc/self/fd");
  while (directory != nullptr && readdir(directory) != nullptr) {
    ++count;
  }
  closedir(directory);
  return count;
}

}  // namespace kqsupt::tests
