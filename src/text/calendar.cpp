// Asking the C library, and remembering what it said last.

#include "text/calendar.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "ipc/local_mutex.h"
#include "kqbounded.h"

namespace kqsupt::text {
namespace {

// Events come many in a second, and asking what zone this is takes as long as the rest of composing
// one.
struct Answer {
  time_t seconds;
  bool has_zone;  // whether the environment named a zone: one without a name is UTC
  char zone[64];
  CalendarText text;  // empty for none
};

// Nobody takes another lock while holding this one.
constinit ipc::ForkSafeMutex calendar_mutex;
constinit Answer last{};

// A process may move to another zone from one call to the next.
bool is_last(time_t seconds, const char* zone) {
  return last.text[0] != '\0' && last.seconds == seconds && last.has_zone == (zone != nullptr) &&
         (zone == nullptr || std::strcmp(last.zone, zone) == 0);
}

}  // namespace

void write_calendar(time_t seconds, CalendarText& text) {
  const ipc::LocalMutexGuard guard(calendar_mutex.held_over_forks());
  const char* zone = std::getenv("TZ");
  if (!is_last(seconds, zone)) {
    if (ctime_s(text, sizeof text, &seconds) != 0) {
      text[0] = '\0';
    }
    text[std::strcspn(text, "\n")] = '\0';
    if (zone != nullptr && std::strlen(zone) >= sizeof last.zone) {
      last.text[0] = '\0';
      return;
    }
    last.seconds = seconds;
    last.has_zone = zone != nullptr;
    std::strcpy(last.zone, zone != nullptr ? zone : "");
    std::copy_n(text, sizeof text, last.text);
  }
  std::copy_n(last.text, sizeof text, text);
}

LocalTime write_local_time(time_t seconds, const char* format, char* text, size_t size) {
  const ipc::LocalMutexGuard guard(calendar_mutex.held_over_forks());
  tm local{};
  if (localtime_s(&local, &seconds) != 0) {
    return LocalTime::kNoTime;
  }
  return std::strftime(text, size, format, &local) != 0 ? LocalTime::kWritten : LocalTime::kNoRoom;
}

}  // namespace kqsupt::text
