// Reading and changing the text of an INI file, under its lock.
#pragma once

#include <cstdint>

#include "kqsupt/frame.h"

namespace kqsupt::config {

// What a text is read into when there is none: `size` bytes, 0 for no default.
struct IniDefault {
  const void* bytes = nullptr;
  uint32_t size = 0;

  [[nodiscard]] bool is_given() const { return bytes != nullptr && size != 0; }
};

// Reads the value of a key, or the list of sections or keys where `section` or `key` is null, as
// the export does for text.
[[nodiscard]] SMStatus read_ini_text(const char* section, const char* key, char* buffer,
                                     uint32_t* size, const IniDefault& fallback, const char* path,
                                     bool wait);

// Writes `value`, or takes the key out when it is null, or the whole section when `key` is null.
[[nodiscard]] SMStatus write_ini_text(const char* section, const char* key, const char* value,
                                      uint32_t value_size, const char* path, bool wait);

}  // namespace kqsupt::config
