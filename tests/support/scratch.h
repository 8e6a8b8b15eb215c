// A directory of a test's own, in the sandbox's scratch tree.
#pragma once

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace kqsupt::tests {

class Scratch {
 public:
  Scratch() {
    std::string name = std::string(std::getenv("TMPDIR")) + "/scratch-XXXXXX";
    path_ = mkdtemp(name.data());
  }
  ~Scratch() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;

  [[nodiscard]] std::string file(const std::string& name) const { return path_ + "/" + name; }

  // The names in it, in order.
  [[nodiscard]] std::vector<std::string> names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path_)) {
      names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
  }

 private:
  std::string path_;
};

inline void put(const std::string& path, const std::string& content) {
  std::ofstream(path, std::ios::binary) << content;
}

inline std::string content_of(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream content;
  content << file.rdbuf();
  return file.is_open() ? content.str() : "(no file)";
}

inline unsigned mode_of(const std::string& path) {
  struct stat about {};
  return stat(path.c_str(), &about) == 0 ? about.st_mode & 07777U : 0xFFFFU;
}

}  // namespace kqsupt::tests
