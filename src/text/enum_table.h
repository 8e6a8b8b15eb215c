// Tables that give names to values, in any case of letters.
#pragma once

#include <cstdint>

#include "kqsupt/text.h"

namespace kqsupt::text {

// What the calls that read such values answer when they cannot.
inline constexpr uint32_t kInvalidEnum = 0x80000000;

// The first entry, "no match", counts by its value alone.
struct EnumTable {
  const SMEnums32* entries;
  uint32_t count;
};

// The value of the entry with this name; that of the first entry when there is none.
[[nodiscard]] uint32_t value_of_name(const EnumTable& table, const char* name);

// The values of all names of a list combined, unknown ones left out. kInvalidEnum when memory is
// short.
[[nodiscard]] uint32_t value_of_names(const EnumTable& table, const char* names, char separator);

}  // namespace kqsupt::text
