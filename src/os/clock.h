// A clock in milliseconds, and time that has passed by it.
#pragma once

#include <cstdint>

namespace kqsupt::os {

// What is read when the time cannot be, and the limit that is none.
inline constexpr uint64_t kNoTicks = UINT64_MAX;

// Milliseconds since the Unix epoch.
[[nodiscard]] uint64_t ticks_now();

// The exported operation. Outputs may be null.
void check_elapsed(uint64_t start, uint64_t current, uint64_t limit, uint64_t* elapsed,
                   uint16_t* first, uint16_t* second);

}  // namespace kqsupt::os
