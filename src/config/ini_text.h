// The INI format: sections of keys with values, in lines.
//
//   ; a comment, as is a line that begins with "#"
//   [section]          what follows the bracket is not read
//   key=value          neither is trimmed, but blanks before the key are not part of it
//
// Nothing here knows of files: it reads lines and tells what is to be done with them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "config/line_reader.h"
#include "kqsupt/frame.h"

namespace kqsupt::config {

// The value of a key. SM_STATUS_SECTION_NOT_FOUND, SM_STATUS_KEY_NOT_FOUND, or
// SM_STATUS_END_OF_FILE at a header without its "]" before the section. `*value` is valid until the
// next line is read.
[[nodiscard]] SMStatus find_ini_value(LineReader& lines, std::string_view section,
                                      std::string_view key, std::string_view* value);

// A list of names, each terminated, with an empty one at its end.
class NameList {
 public:
  // With the capacity 0 it only counts.
  NameList(char* buffer, uint32_t capacity) : buffer_(buffer), capacity_(capacity) {}

  // Names are left out from the first one on that does not fit.
  void add(std::string_view name);
  [[nodiscard]] bool is_empty() const { return needed_ == 1; }

  // Ends the list: SM_STATUS_BUFFER_TOO_SMALL when names were left out. `*size` receives the size
  // of the list of all names.
  [[nodiscard]] SMStatus finish(uint32_t* size);

 private:
  char* buffer_;
  uint32_t capacity_;
  uint32_t needed_ = 1;
  uint32_t used_ = 0;
};

// The names of all sections, and of all keys of a section. The statuses of find_ini_value, without
// the status of the list itself.
[[nodiscard]] SMStatus list_ini_sections(LineReader& lines, NameList* names);
[[nodiscard]] SMStatus list_ini_keys(LineReader& lines, std::string_view section, NameList* names);

// A change of a file: what lies between the two parts of it that stay is replaced.
struct IniEdit {
  size_t kept_before;  // the first bytes of the content
  size_t kept_from;    // from here on
};

// Where a key of a section gets another value or is taken out. A new key goes behind the last one
// of its section, before the blank lines and comments that lead to the next one. Those that end the
// file go when it is the last section: whoever writes such files has always done so. The statuses
// of find_ini_value but for SM_STATUS_KEY_NOT_FOUND.
[[nodiscard]] SMStatus edit_ini_key(std::string_view content, std::string_view section,
                                    std::string_view key, IniEdit* edit);

// Where a section is taken out: its header, and all lines up to one with "[" or "#" in its first
// column. A comment with "#" there is taken for the one that leads to the next section.
[[nodiscard]] SMStatus edit_ini_section(std::string_view content, std::string_view section,
                                        IniEdit* edit);

}  // namespace kqsupt::config
