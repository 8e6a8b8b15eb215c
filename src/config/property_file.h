// Property files: lines of a key and a typed value, without sections.
#pragma once

#include <cstdint>

#include "kqsupt/config.h"

namespace kqsupt::config {

// `type` is a SMXLT_TYPE_ code with its notation.
[[nodiscard]] SMStatus read_property(const char* key, uint32_t type, void* buffer, uint32_t* size,
                                     const void* default_value, uint32_t default_size,
                                     const char* path, bool wait);
[[nodiscard]] SMStatus write_property(const char* key, uint32_t type, const void* value,
                                      uint32_t value_size, const char* path, bool wait);

}  // namespace kqsupt::config
