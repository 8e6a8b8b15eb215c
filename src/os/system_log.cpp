// Composing a line and handing it over.

#include "os/system_log.h"

#include <syslog.h>

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstring>

#include "frame/heap.h"
#include "frame/status.h"
#include "ipc/local_mutex.h"

namespace kqsupt::os {
namespace {

constexpr const char* kSourceNames[] = {"Talmere", "Drosset", "Pellum",
                                        "Zarnith", "Quistel", "Vardeen"};
constexpr size_t kLineSize = 2048;

// The identity is the process's: no other event may set its own before this one is out.
constinit ipc::ForkSafeMutex log_mutex;

int priority_of(uint32_t type) {
  switch (type) {
    case 1:
      return LOG_ERR;
    case 2:
      return LOG_WARNING;
    default:
      return LOG_INFO;
  }
}

}  // namespace

const char* event_source_name(uint32_t number) {
  return number >= 1 && number <= std::size(kSourceNames) ? kSourceNames[number - 1] : nullptr;
}

SMStatus append_to_system_log(const SystemEvent& event) {
  const auto line = frame::heap_array<char>(kLineSize);
  const char* source = event_source_name(event.source);
  if (line == nullptr || source == nullptr || event.message == nullptr) {
    return frame::kFailed;
  }
  char* const text = line.get();
  std::snprintf(text, kLineSize, "%s EventID: %" PRIu32 "  %s", source, event.id, event.message);
  std::replace(text, text + std::strlen(text), '\r', ' ');
  // Without a hold over forks a child might wait for ever, but only for a line that is being written.
  const ipc::LocalMutexGuard guard(log_mutex.held_over_forks());
  openlog(event.identity, LOG_NDELAY, LOG_DAEMON);
  syslog(priority_of(event.type), "%s", text);
  closelog();
  return SM_STATUS_SUCCESS;
}

}  // namespace kqsupt::os
