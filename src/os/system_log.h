// Events for the system's own log.
#pragma once

#include <cstdint>

#include "kqsupt/frame.h"

namespace kqsupt::os {

// The part of the family that an event comes from, which is also its category. Null for a number
// that is none of theirs.
[[nodiscard]] const char* event_source_name(uint32_t number);

struct SystemEvent {
  uint32_t type;
  uint32_t source;
  uint32_t id;
  const char* identity;  // the program's name when null
  const char* message;
};

// 0xFFFFFFFF, and nothing logged, for an unknown source or no message, or when memory is short.
SMStatus append_to_system_log(const SystemEvent& event);

}  // namespace kqsupt::os
