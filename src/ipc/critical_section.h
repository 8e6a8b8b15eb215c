// Critical sections: of one routine, one call at a time in the whole process.
#pragma once

#include <cstdint>

#include "kqsupt/ipc.h"

namespace kqsupt::ipc {

// Before the start and after the stop nothing runs.
[[nodiscard]] bool start_critical_sections();
void stop_critical_sections();

SMStatus execute_critical_section(SMCriticalSectionRoutine routine, void* argument,
                                  int32_t timeout_ms);

}  // namespace kqsupt::ipc
