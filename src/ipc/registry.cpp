// Looking keys up and allocating them, in the INI file that all processes share.

#include "ipc/registry.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <optional>

#include "config/ini_file.h"
#include "frame/heap.h"
#include "ipc/ipc_files.h"
#include "ipc/path_lock.h"
#include "ipc/semaphore_list.h"
#include "text/parse_number.h"

namespace kqsupt::ipc {
namespace {

constexpr char kKeysByName[] = "Unique String Name Key Section";
constexpr char kNamesByKey[] = "Unique Numeric Value Key Section";
constexpr uint32_t kFirstKey = 300001;
constexpr uint32_t kNoKey = 0;

// The registry as a whole, while a key is looked up and allocated. Who may not write its lock file
// can still look keys up.
class RegistryLock {
 public:
  RegistryLock() : lock_(path_lock_of(registry_lock_path())) {
    for (const PathLockMode mode : {PathLockMode::kExclusive, PathLockMode::kShared}) {
      held_ = held_ || lock_path(lock_, mode, true) == SM_STATUS_SUCCESS;
    }
  }
  ~RegistryLock() {
    if (held_) {
      unlock_path(lock_);
    }
  }
  RegistryLock(const RegistryLock&) = delete;
  RegistryLock& operator=(const RegistryLock&) = delete;

  [[nodiscard]] bool held() const { return held_; }

 private:
  PathLock* lock_;
  bool held_ = false;
};

// The names of all keys, as a list of terminated names that ends with an empty one.
struct KeyList {
  frame::HeapPtr<char[]> names;
  SMStatus status;
};

KeyList read_keys() {
  KeyList list;
  // Mostly too small: it is what tells how much is needed.
  for (uint32_t size = 4, tries = 0; tries < 2; ++tries) {
    list.names = frame::heap_array<char>(size);
    if (list.names == nullptr) {
      return {nullptr, SM_STATUS_NO_MEMORY};
    }
    list.status = config::read_ini_value(kNamesByKey, nullptr, SMINI_TYPE_UTF8, list.names.get(),
                                         &size, nullptr, 0, registry_path(), true);
    if (list.status != SM_STATUS_BUFFER_TOO_SMALL) {
      break;
    }
  }
  return list;
}

// One more than the highest key. Names that are no numbers do not count.
std::optional<uint32_t> next_key(const char* names) {
  uint32_t highest = kFirstKey;
  for (const char* name = names; *name != '\0'; name += std::strlen(name) + 1) {
    uint32_t key = 0;
    if (text::parse_u32(name, SMXLT_FMT_DECIMAL, &key) == SM_STATUS_SUCCESS) {
      highest = std::max(highest, key);
    }
  }
  const uint32_t key = highest + 1;
  return key >= kFirstKey ? std::optional(key) : std::nullopt;
}

// None when there is none left, and when it cannot be told for now. A section that is there but empty
// counts as one that lost its first key. A registry that is broken has no key to give: the name is
// noted as one without, so that nobody takes a key for it that another name has.
std::optional<uint32_t> free_key() {
  const KeyList list = read_keys();
  switch (list.status) {
    case SM_STATUS_SUCCESS:
      return next_key(list.names.get());
    case SM_STATUS_SECTION_NOT_FOUND:
    case SM_STATUS_KEY_NOT_FOUND:
      return kFirstKey;
    case SM_STATUS_END_OF_FILE:
      return kNoKey;
    default:
      return std::nullopt;
  }
}

// Both ways with one change: a process that is killed between two would leave a name whose key the
// next one takes for free.
uint32_t register_key(const char* decorated, uint32_t key) {
  char text[16];
  std::snprintf(text, sizeof text, "%" PRIu32, key);
  return config::write_ini_pair({kKeysByName, decorated, text}, {kNamesByKey, text, decorated},
                                registry_path()) == SM_STATUS_SUCCESS
             ? key
             : kNoKey;
}

}  // namespace

uint32_t key_of_name(const char* decorated) {
  if (registry_path() == nullptr) {
    return kNoKey;
  }
  const RegistryLock lock;
  if (!lock.held()) {
    return kNoKey;
  }
  uint32_t key = kNoKey;
  uint32_t size = sizeof key;
  std::optional<uint32_t> free;
  switch (config::read_ini_value(kKeysByName, decorated, SMINI_TYPE_U32, &key, &size, nullptr, 0,
                                 registry_path(), true)) {
    case SM_STATUS_SUCCESS:
      return key;
    case SM_STATUS_FILE_NOT_FOUND:
    case SM_STATUS_FILE_OPEN_FAILED:
      // A registry that is there and cannot be opened may hold any key.
      if (access(registry_path(), F_OK) != 0 && errno == ENOENT) {
        free = kFirstKey;
      }
      break;
    case SM_STATUS_SECTION_NOT_FOUND:
    case SM_STATUS_KEY_NOT_FOUND:
    case SM_STATUS_END_OF_FILE:
      free = free_key();
      break;
    default:
      break;  // the name may have a key
  }
  return free.has_value() ? register_key(decorated, *free) : kNoKey;
}

bool start_registry() {
  if (!find_ipc_files()) {
    return false;
  }
  sweep_stale_sets();
  return true;
}

void stop_registry() {
  forget_ipc_files();
}

}  // namespace kqsupt::ipc
