// One event, as it is read from a log.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "log_time.h"

namespace kqsup {

// Texts are UTF-8, but what an XML log holds may be any bytes. They belong to the reader and last
// until it reads on.
struct LogEvent {
  uint64_t offset = 0;  // in bytes, where the file has it
  uint64_t size = 0;
  uint32_t id = 0;
  uint16_t type = 0;
  std::string_view category;
  std::string_view source;
  std::string_view computer;
  std::string_view description;
  std::string_view data;                // bytes
  std::optional<CalendarSeconds> time;  // none when its writer did not know it
  std::optional<int64_t> seconds;       // since 1970; XML only, as are the next
  std::optional<std::string_view> user;
  std::optional<std::string_view> link;
};

// A piece of a log that is no event, or only a part of one.
struct LogDamage {
  uint64_t offset = 0;
  uint64_t size = 0;  // 0 when something is missing there
  const char* reason = "";
};

// What types and categories are called. Empty for a number without a name.
[[nodiscard]] std::string_view type_name(uint16_t type);
[[nodiscard]] std::string_view category_name(uint32_t category);

// The number of a name; none when nothing is called so.
[[nodiscard]] std::optional<uint16_t> type_of(std::string_view name);
[[nodiscard]] bool is_category(std::string_view name);

}  // namespace kqsup
