// Copies of one file over another, or behind its end.
#pragma once

#include <cstdint>

#include "kqsupt/os.h"

namespace kqsupt::os {

// Whether the call waits until the result is on the disk.
enum class Sync { kNo, kYes };

[[nodiscard]] SMStatus copy_file(const char* source, const char* destination, uint32_t overwrite,
                                 Sync sync);
[[nodiscard]] SMStatus append_file(const char* source, const char* destination, uint32_t create,
                                   Sync sync);

}  // namespace kqsupt::os
