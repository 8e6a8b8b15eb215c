// Keeping and sweeping the list of semaphore sets, a section of the registry file.

#include "ipc/semaphore_list.h"

#include <sys/sem.h>
#include <unistd.h>

#include <cinttypes>
#include <cstdio>
#include <cstring>

#include "config/ini_file.h"
#include "frame/heap.h"
#include "ipc/ipc_files.h"
#include "text/parse_number.h"

namespace kqsupt::ipc {
namespace {

constexpr char kSection[] = "Semaphore List";

struct SetName {
  explicit SetName(int32_t set) { std::snprintf(text, sizeof text, "%" PRId32, set); }
  char text[12];
};

bool is_alive(uint64_t process) {
  char path[32];
  std::snprintf(path, sizeof path, "/proc/%" PRIu64, process);
  return access(path, F_OK) == 0;
}

void forget_entry(const char* name) {
  (void)config::write_ini_value(kSection, name, SMINI_TYPE_UTF8, nullptr, 0, registry_path(), true);
}

// An entry that is not one of ours stays: one that names no set, and one whose maker is no number.
// What goes is the entry as it is written, which need not be how this library writes that number.
void sweep(const char* name) {
  uint64_t maker = 0;
  uint32_t size = sizeof maker;
  int32_t set = 0;
  if (config::read_ini_value(kSection, name, SMINI_TYPE_U64, &maker, &size, nullptr, 0,
                             registry_path(), true) == SM_STATUS_SUCCESS &&
      maker != 0 && !is_alive(maker) &&
      text::parse_s32(name, SMXLT_FMT_DECIMAL, &set) == SM_STATUS_SUCCESS && set != 0 &&
      semctl(set, 0, IPC_RMID) == 0) {
    forget_entry(name);
  }
}

}  // namespace

void list_set(int32_t set) {
  const auto maker = static_cast<uint64_t>(getpid());
  (void)config::write_ini_value(kSection, SetName(set).text, SMINI_TYPE_U64, &maker, sizeof maker,
                                registry_path(), true);
}

void unlist_set(int32_t set) {
  forget_entry(SetName(set).text);
}

// A list that is longer than the room for it is swept as far as it was read; what is left goes at
// a later start.
void sweep_stale_sets() {
  uint32_t size = 8193;
  const auto names = frame::heap_array<char>(size);
  if (names == nullptr) {
    return;
  }
  const SMStatus status = config::read_ini_value(kSection, nullptr, SMINI_TYPE_UTF8, names.get(),
                                                 &size, nullptr, 0, registry_path(), true);
  if (status != SM_STATUS_SUCCESS && status != SM_STATUS_BUFFER_TOO_SMALL) {
    return;
  }
  for (const char* name = names.get(); *name != '\0'; name += std::strlen(name) + 1) {
    sweep(name);
  }
}

}  // namespace kqsupt::ipc
