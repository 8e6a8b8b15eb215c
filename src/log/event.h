// One event, as callers hand it over for the logs.
#pragma once

#include <cstdint>

namespace kqsupt::log {

// All texts are UTF-8.
struct Event {
  uint16_t type;
  uint16_t category;
  uint32_t id;
  const char* source;
  const char* description;
  const void* data;
  uint32_t data_size;
  const char* user;  // the last two are for the XML log only
  const char* link;
};

enum EventType : uint16_t {
  kNone = 0,
  kError = 1,
  kWarning = 2,
  kInformation = 4,
  kAuditSuccess = 8,
  kAuditFailure = 16,
};

// What the logs themselves have to say.
inline constexpr const char* kBackupMade = "Log backup created";
inline constexpr const char* kCleared = "Log was cleared";

inline constexpr uint32_t kLargestData = 32768;

[[nodiscard]] inline bool has_valid_data(const Event& event) {
  return event.data_size == 0 || (event.data != nullptr && event.data_size <= kLargestData);
}

}  // namespace kqsupt::log
