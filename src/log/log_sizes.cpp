// A tree of sizes by path.

#include "log/log_sizes.h"

#include <cstdlib>
#include <cstring>

#include "containers/red_black_tree.h"
#include "frame/heap.h"
#include "ipc/local_mutex.h"
#include "os/host.h"

namespace kqsupt::log {
namespace {

struct LogSize {
  char path[256];
  uint32_t max_size;
};

constexpr uint32_t kSmallestOnSmallDisks = 131072;
constexpr uint32_t kLargest = 4194304;

// They are there from the first instruction of the process to the last, and so is what they guard.
constinit ipc::LocalMutex sizes_mutex;
constinit containers::Node* sizes = nullptr;
constinit uint32_t smallest = 1048576;

bool is_known_length(const char* path) {
  return path != nullptr && *path != '\0' && std::strlen(path) < sizeof(LogSize::path);
}

// The record of a path, made with the default when there is none. Null when memory is short. Called
// with the mutex held.
LogSize* size_of(const char* path) {
  const containers::Place place = containers::locate(sizes, [path](const void* data) {
    return std::strcmp(path, static_cast<const LogSize*>(data)->path);
  });
  if (place.match != nullptr) {
    return static_cast<LogSize*>(place.match->data);
  }
  frame::HeapPtr<LogSize> size(static_cast<LogSize*>(std::malloc(sizeof(LogSize))));
  if (size == nullptr) {
    return nullptr;
  }
  std::strcpy(size->path, path);
  size->max_size = smallest;
  return containers::insert_at(&sizes, place, size.get()) ? size.release() : nullptr;
}

}  // namespace

bool start_log_sizes() {
  if (!ipc::hold_over_forks(sizes_mutex)) {
    return false;
  }
  const ipc::LocalMutexGuard guard(sizes_mutex);
  if (os::host_type() == os::kVmKernel) {
    smallest = kSmallestOnSmallDisks;
  }
  return true;
}

void stop_log_sizes() {
  const ipc::LocalMutexGuard guard(sizes_mutex);
  containers::erase_all(&sizes, frame::release);
}

uint32_t default_max_size() {
  return smallest;
}

uint32_t max_size_of(const char* path) {
  uint32_t size = smallest;
  (void)get_log_max_size(path, &size);
  return size;
}

SMStatus set_log_max_size(const char* path, uint32_t max_size) {
  if (!is_known_length(path) || max_size < smallest || max_size > kLargest) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  const ipc::LocalMutexGuard guard(sizes_mutex);
  LogSize* size = size_of(path);
  if (size == nullptr) {
    return SM_STATUS_NO_MEMORY;
  }
  size->max_size = max_size;
  return SM_STATUS_SUCCESS;
}

SMStatus get_log_max_size(const char* path, uint32_t* max_size) {
  if (!is_known_length(path) || max_size == nullptr) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  const ipc::LocalMutexGuard guard(sizes_mutex);
  const LogSize* size = size_of(path);
  if (size == nullptr) {
    return SM_STATUS_NO_MEMORY;
  }
  *max_size = size->max_size;
  return SM_STATUS_SUCCESS;
}

}  // namespace kqsupt::log
