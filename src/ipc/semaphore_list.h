// The list of semaphore sets that have no key, each with the process that made it, so that a later
// start can remove those of processes that died.
#pragma once

#include <cstdint>

namespace kqsupt::ipc {

void list_set(int32_t set);
void unlist_set(int32_t set);

// Removes every listed set whose maker has ended, and takes it off the list.
void sweep_stale_sets();

}  // namespace kqsupt::ipc
