// Times as the people of this host read them. The C library's calendar has a lock that no child of a
// fork gets back: here is the only place that asks it, and no fork comes meanwhile.
#pragma once

#include <ctime>

namespace kqsupt::text {

using CalendarText = char[32];

// The local time as ctime writes it, without its line end: "Sat Nov 21 12:17:18 2026". Empty for a
// year that it has no text for.
void write_calendar(time_t seconds, CalendarText& text);

// The local time. False when its year does not fit.
[[nodiscard]] bool local_time(time_t seconds, tm* local);

}  // namespace kqsupt::text
