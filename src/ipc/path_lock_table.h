// The process's table of path locks, of which there is one for every path that was ever locked.
#pragma once

namespace kqsupt::ipc {

[[nodiscard]] bool start_path_locks();
void stop_path_locks();

}  // namespace kqsupt::ipc
