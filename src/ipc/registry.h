// The registry of named objects: every name has one System V key, for ever.
#pragma once

#include <cstdint>

namespace kqsupt::ipc {

// Finds the files and removes what dead processes left behind; false without an entry of theirs in
// the install registry, or without the directory that it names.
[[nodiscard]] bool start_registry();
void stop_registry();

// The key of a decorated name, which is registered when it is new; 0 on failure.
[[nodiscard]] uint32_t key_of_name(const char* decorated);

}  // namespace kqsupt::ipc
