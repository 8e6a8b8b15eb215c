// The process's table of path locks, of which there is one for every path that was ever locked.
#pragma once

namespace kqsupt::ipc {

[[nodiscard]] bool start_path_locks();
void stop_path_locks();

// What a fork needs: nobody adds a lock while it is held, and in a child none of them is locked.
void hold_path_locks();
void release_path_locks();
void renew_path_locks();

}  // namespace kqsupt::ipc
