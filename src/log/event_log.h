// The family's own logs of events, and the fan that an event goes through.
#pragma once

#include <cstdint>

#include "kqsupt/frame.h"
#include "log/event.h"

namespace kqsupt::log {

// The exported operations. `flags` says which logs are meant.
[[nodiscard]] SMStatus append_event(uint32_t flags, const Event& event);
[[nodiscard]] SMStatus clear_logs(uint32_t flags, uint16_t category, const char* source);
[[nodiscard]] SMStatus log_path(uint32_t flags, char* buffer, uint32_t* size);
[[nodiscard]] SMStatus backup_log_path(uint32_t flags, char* buffer, uint32_t* size);
[[nodiscard]] SMStatus backup_path_of(const char* path, char* buffer, uint32_t* size);
SMStatus look_for_log(const char* path);

}  // namespace kqsupt::log
