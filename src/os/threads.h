// Threads of the caller: started, waited for, killed, named and told apart.
#pragma once

#include <cstdint>

#include "kqsupt/os.h"

namespace kqsupt::os {

[[nodiscard]] SMThread* start_thread(SMThreadRoutine routine, void* argument);
[[nodiscard]] SMStatus start_detached_thread(SMThreadRoutine routine, void* argument);
SMStatus stop_thread(SMThread* thread);
SMStatus kill_thread(SMThread* thread);
int32_t yield_thread();
[[nodiscard]] uint32_t thread_id();
[[nodiscard]] SMStatus set_thread_name(const char* name);

}  // namespace kqsupt::os
