// INI files, read as the library reads them but for its lock and its mending: both change the disk.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "looked_at.h"

namespace kqsup {

// Where an interrupted change of the file left the content that counts: the library puts it back
// before it reads or writes.
[[nodiscard]] std::string ini_backup(const std::string& path);

// The largest text that is read as one: its keys and values are kept line by line.
inline constexpr size_t kLargestIni = 4U << 20U;

// Nor has it more lines than this.
inline constexpr size_t kMostIniLines = 200000;

// A file as it was at one moment, also while somebody replaces it.
struct IniFile {
  LookedAt file;
  bool is_interrupted = false;  // a change was: this is its backup, which counts
};

[[nodiscard]] IniFile look_at_ini(const std::string& path);

struct IniLine {
  size_t line = 0;                             // from 1; a header's for a section without keys
  std::shared_ptr<const std::string> section;  // one for all lines of it
  std::optional<std::string> key;
  std::string value;
  // Whether somebody who asks for section and key gets this value: only the first section of a name
  // counts, and in it the first line of a key.
  bool is_found = false;
};

struct IniContent {
  std::vector<IniLine> lines;
  size_t broken_header = 0;  // the line of the first header without its "]"; 0 for none

  // Sections behind a broken header are not found.
  [[nodiscard]] bool has_section(std::string_view section) const;
  [[nodiscard]] const IniLine* find(std::string_view section, std::string_view key) const;
};

[[nodiscard]] IniContent read_ini(std::string_view text);

}  // namespace kqsup
