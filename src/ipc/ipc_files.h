// The files that named objects are found by.
#pragma once

namespace kqsupt::ipc {

// Below the variable-data directory that the install registry gives. Null before the library's
// start and after its stop, and when the start failed.
[[nodiscard]] const char* ipc_directory();
[[nodiscard]] const char* registry_path();       // an INI file
[[nodiscard]] const char* registry_lock_path();  // what is locked in its place

// False when the install registry has no such directory or memory is short.
[[nodiscard]] bool find_ipc_files();
void forget_ipc_files();

}  // namespace kqsupt::ipc
