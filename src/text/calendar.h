// Times as the people of this host read them. The C library's calendar has a lock that no child of a
// fork gets back: it is asked here and in the system's log, and no fork comes meanwhile.
#pragma once

#include <cstddef>
#include <ctime>

namespace kqsupt::text {

using CalendarText = char[32];

// The local time as ctime writes it, without its line end: "Sat Nov 21 12:17:18 2026". Empty for a
// year that it has no text for.
void write_calendar(time_t seconds, CalendarText& text);

// Writes the local time by a format of strftime, which asks the calendar too.
enum class LocalTime { kWritten, kNoTime, kNoRoom };
[[nodiscard]] LocalTime write_local_time(time_t seconds, const char* format, char* text,
                                         size_t size);

}  // namespace kqsupt::text
