// The sizes that logs may reach, as this process was told.
#pragma once

#include <cstdint>

#include "kqsupt/frame.h"

namespace kqsupt::log {

// Chooses the bounds of sizes for the host, and begins with no log known.
[[nodiscard]] bool start_log_sizes();
void stop_log_sizes();

// What a log has that nobody set a size for; the smallest size that can be set.
[[nodiscard]] uint32_t default_max_size();

// The size for a log of the library's own: the default when it is not known or memory is short.
[[nodiscard]] uint32_t max_size_of(const char* path);

// The exported operations.
[[nodiscard]] SMStatus set_log_max_size(const char* path, uint32_t size);
[[nodiscard]] SMStatus get_log_max_size(const char* path, uint32_t* size);

}  // namespace kqsupt::log
