// A tree of files, for tests: made from paths and contents, and compared with how it was.
#pragma once

#include <sys/stat.h>

#include <filesystem>
#include <map>
#include <string>

#include "support/scratch.h"

namespace kqsupt::tests {

// A directory that stands for the root of a host.
class Tree {
 public:
  [[nodiscard]] std::string root() const { return scratch_.file(""); }
  [[nodiscard]] std::string at(const std::string& path) const { return scratch_.file(path); }

  void make(const std::string& directory) const {
    std::filesystem::create_directories(at(directory));
  }
  void write(const std::string& path, const std::string& content) const {
    std::filesystem::create_directories(std::filesystem::path(at(path)).parent_path());
    put(at(path), content);
  }

  // All that is in it: modes, times of change and bytes, by path.
  [[nodiscard]] std::map<std::string, std::string> state() const { return state_of(root()); }

  static std::map<std::string, std::string> state_of(const std::string& directory) {
    std::map<std::string, std::string> all;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(directory)) {
      struct stat about {};
      (void)lstat(entry.path().c_str(), &about);
      all[entry.path()] = std::to_string(about.st_mode) + " " + std::to_string(about.st_ino) + " " +
                          std::to_string(about.st_mtim.tv_sec) + "." +
                          std::to_string(about.st_mtim.tv_nsec) + " " +
                          (S_ISREG(about.st_mode) ? content_of(entry.path()) : std::string());
    }
    return all;
  }

 private:
  Scratch scratch_;
};

}  // namespace kqsupt::tests
