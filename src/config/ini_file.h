// INI files: typed values, by the file's path or by its name in the family's own directory.
#pragma once

#include <cstdint>

#include "kqsupt/config.h"

namespace kqsupt::config {

// `type` is one of the SMINI_TYPE_ codes. `wait` waits for the lock of the file without limit,
// otherwise a single try is made.
[[nodiscard]] SMStatus read_ini_value(const char* section, const char* key, uint32_t type,
                                      void* buffer, uint32_t* size, const void* default_value,
                                      uint32_t default_size, const char* path, bool wait);
[[nodiscard]] SMStatus write_ini_value(const char* section, const char* key, uint32_t type,
                                       const void* value, uint32_t value_size, const char* path,
                                       bool wait);

// Of the file with this name in the directory for INI files of the product Quillance.
[[nodiscard]] SMStatus read_own_ini_value(const char* section, const char* key, uint32_t type,
                                          void* buffer, uint32_t* size, const void* default_value,
                                          uint32_t default_size, const char* file_name, bool wait);
[[nodiscard]] SMStatus write_own_ini_value(const char* section, const char* key, uint32_t type,
                                           const void* value, uint32_t value_size,
                                           const char* file_name, bool wait);

// One value of a section.
struct IniText {
  const char* section;
  const char* key;
  const char* value;
};

// Writes two values with a single change of the file, waiting for its lock: a process that is killed,
// or a full disk, leaves either both of them or none. The second is left out where a malformed header
// keeps it from its section. Names and values have the lengths that writing each by itself asks for.
[[nodiscard]] SMStatus write_ini_pair(const IniText& first, const IniText& second,
                                      const char* path);

// A text on the heap, which the caller releases; null when there is neither one nor a default.
[[nodiscard]] char* read_ini_copy(const char* section, const char* key, const char* default_value,
                                  uint32_t* size, const char* path, bool wait);

// The value that a table gives for a text.
[[nodiscard]] uint32_t read_ini_enum(const char* section, const char* key, const SMEnums32* table,
                                     uint32_t count, bool is_bit_mask, const char* path, bool wait);

}  // namespace kqsupt::config
