// System V semaphore sets, of which the first semaphore is the one that counts. They outlive the
// processes that use them.
#pragma once

#include <sys/types.h>

#include <cstdint>

#include "kqsupt/frame.h"

namespace kqsupt::ipc {

// An identifier; 0 is none. The system hands out 0 too, which is taken out of circulation.
using SemaphoreSet = int32_t;
inline constexpr SemaphoreSet kNoSet = 0;

enum class Undo : bool { kNo, kWhenProcessEnds };

// Opens a set that exists with this key as it is. `*is_new`, when given, receives whether it was
// made here.
[[nodiscard]] SemaphoreSet create_set(uint32_t key, int32_t count, uint32_t initial, mode_t mode,
                                      bool* is_new = nullptr);
[[nodiscard]] SemaphoreSet open_set(uint32_t key);

// Takes 1. -1 waits without limit, 0 tries once. SM_STATUS_TIMEOUT, or 0xFFFFFFFF when the system
// refuses: the set may be gone.
[[nodiscard]] SMStatus take_from_set(SemaphoreSet set, int32_t timeout_ms, Undo undo = Undo::kNo);

// Adds 1, n times; 0xFFFFFFFF when the system refuses one.
SMStatus post_to_set(SemaphoreSet set, int32_t n = 1);

// Makes the value 0. 0xFFFFFFFF for no set.
SMStatus reset_set(SemaphoreSet set);

[[nodiscard]] uint32_t value_of_set(SemaphoreSet set);
[[nodiscard]] uint32_t count_of_set(SemaphoreSet set);

// Also takes it off the list of sets that have no key.
SMStatus remove_set(SemaphoreSet set);

}  // namespace kqsupt::ipc
