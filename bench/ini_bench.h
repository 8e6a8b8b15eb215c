// The files that the measurements of INI files use, in memory.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "measure.h"

namespace kqbench {

inline constexpr size_t kReads = 200;  // operations of an iteration, each on a key of its own
inline constexpr const char* kReadRow = "ini/read 100";
inline constexpr const char* kReadLargeRow = "ini/read 5000";
inline constexpr const char* kRewriteRow = "ini/rewrite 100";
inline constexpr const char* kPathRow = "path";

// A file of so many keys in one section, some 47 bytes a line.
struct IniFile {
  explicit IniFile(uint32_t number)
      : keys(number),
        path(std::string(std::getenv("TMPDIR")) + "/" + std::to_string(number) + ".ini") {
    std::ofstream file(path);
    file << "[section]\n";
    for (uint32_t i = 0; i < keys; ++i) {
      file << key(i) << "=value of some length, number " << i + 100000 << "\n";
    }
  }
  [[nodiscard]] static std::string key(uint32_t i) {
    return "some.key." + std::to_string(10000 + i);
  }
  [[nodiscard]] std::string any_key() const { return key(fresh().between(0, keys - 1)); }

  uint32_t keys;
  std::string path;
};

template <uint32_t kKeys>
const IniFile& ini_file() {
  static const IniFile file(kKeys);
  return file;
}

// Enters a contestant: `operate(file, key)` is one operation.
template <uint32_t kKeys, class Operate>
void add_ini_measurement(const char* row, const char* contestant, Operate operate) {
  add_measurement(
      row, contestant, kReads,
      [] {
        std::vector<std::string> keys;
        for (size_t i = 0; i < kReads; ++i) {
          keys.push_back(ini_file<kKeys>().any_key());
        }
        return keys;
      },
      [=](const std::vector<std::string>& keys) {
        for (const std::string& key : keys) {
          operate(ini_file<kKeys>(), key);
        }
      });
}

}  // namespace kqbench
