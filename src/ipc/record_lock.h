// The lock on a whole file that excludes other processes. It belongs to the process: threads share
// it, a child does not inherit it, and closing any descriptor of the file gives it back.
#pragma once

#include <fcntl.h>

#include <cstdint>

#include "kqsupt/frame.h"

namespace kqsupt::ipc {

// `type` is F_RDLCK or F_WRLCK; -1 waits without limit, 0 tries once. SM_STATUS_TIMEOUT while
// another process holds it, 0xFFFFFFFF when the system refuses: errno says why.
[[nodiscard]] SMStatus lock_file(int fd, int16_t type, int32_t timeout_ms);
void unlock_file(int fd);

}  // namespace kqsupt::ipc
