// Who may use a new named object: the bits that callers give, as mode bits of the system.
#pragma once

#include <sys/types.h>

#include <cstdint>

namespace kqsupt::ipc {

// What the calls without a permission of their own stand for.
[[nodiscard]] constexpr int32_t default_permission(const char* name) {
  return name != nullptr ? -1 : 0;
}

[[nodiscard]] mode_t mode_of_permission(int32_t permission);

}  // namespace kqsupt::ipc
