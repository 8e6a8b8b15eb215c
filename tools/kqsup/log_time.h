// Times as logs have them: of the writer's calendar, without a zone.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kqsup {

// Seconds since the beginning of 1970 by the same calendar: they order times, and are nothing else.
using CalendarSeconds = int64_t;

// "Sat Nov 21 12:48:33 2026", as logs have it. None for any other text.
[[nodiscard]] std::optional<CalendarSeconds> parse_calendar(std::string_view text);

// What a person gives: "2026-11-21", the same with "12:48" or "12:48:33" behind a blank or a "T",
// or how long before `now`: "90s", "15m", "2h", "7d". None for any other text.
[[nodiscard]] std::optional<CalendarSeconds> parse_moment(std::string_view text,
                                                          CalendarSeconds now);

// What this host's calendar says.
[[nodiscard]] CalendarSeconds calendar_now();

// "2026-11-21 12:48:33", with `between` between date and time.
[[nodiscard]] std::string calendar_text(CalendarSeconds seconds, char between);

}  // namespace kqsup
