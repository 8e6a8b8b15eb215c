// Plain logs that are rotated by their size: "NAME" with the older "NAME.1", "NAME.2" and so on.
#pragma once

#include <cstdint>

#include "kqsupt/frame.h"

namespace kqsupt::log {

// The exported operations. `count` is the number of generations that are kept.
[[nodiscard]] SMStatus append_to_rotated_log(const char* message, const char* path,
                                             uint32_t max_size, uint32_t count, uint32_t flags);
void rotate_log(const char* path, uint32_t max_size, uint32_t count);
void delete_rotated_log(const char* path, uint32_t delete_generations, uint32_t count);

}  // namespace kqsupt::log
