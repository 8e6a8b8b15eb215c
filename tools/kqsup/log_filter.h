// Which events of a log are wanted.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "log_event.h"

namespace kqsup {

// What is left empty does not matter; of several values of a kind an event has one.
struct LogFilter {
  std::vector<uint16_t> types;
  std::vector<std::string> categories;
  std::vector<std::string> sources;
  std::vector<std::pair<uint32_t, uint32_t>> ids;  // from the first to the second
  std::optional<CalendarSeconds> since;            // then, or later
  std::optional<CalendarSeconds> until;            // then, or earlier

  // An event without a time is of no time that is asked for.
  [[nodiscard]] bool wants(const LogEvent& event) const;

  // Each takes a value as a person gives it. False when there is no such one.
  [[nodiscard]] bool add_type(const std::string& text);      // a name, or a number
  [[nodiscard]] bool add_category(const std::string& text);  // a name, or 1 to 6
  [[nodiscard]] bool add_id(const std::string& text);        // a number, or "FIRST-LAST"
};

}  // namespace kqsup
