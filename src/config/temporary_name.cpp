// Drawing names.

#include "config/temporary_name.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "frame/heap.h"
#include "frame/status.h"
#include "ipc/local_mutex.h"

namespace kqsupt::config {
namespace {

constexpr char kCharacters[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
constexpr int kTries = 100;

// The generator is the process's own, and the C library has a lock for it that no fork takes: a
// child would find it taken for ever by a thread that was drawing here.
constinit ipc::ForkSafeMutex generator_mutex;
constinit bool seeded = false;

// Processes that begin in the same second draw the same names: the test is what keeps them apart.
void draw(char* name) {
  const ipc::LocalMutexGuard guard(generator_mutex.held_over_forks());
  if (!seeded) {
    std::srand(static_cast<unsigned>(std::time(nullptr)));
    seeded = true;
  }
  for (uint32_t i = 0; i < kTemporaryNameSize - 1; ++i) {
    name[i] = kCharacters[static_cast<unsigned>(std::rand()) % (sizeof kCharacters - 1)];
  }
  name[kTemporaryNameSize - 1] = '\0';
}

}  // namespace

SMStatus make_temporary_name(const char* directory, char* buffer, uint32_t* size) {
  if (directory == nullptr || size == nullptr) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  if (buffer == nullptr || *size < kTemporaryNameSize) {
    *size = kTemporaryNameSize;
    return SM_STATUS_BUFFER_TOO_SMALL;
  }
  const size_t path_size = std::strlen(directory) + 1 + kTemporaryNameSize;
  const frame::HeapPtr<char> path(static_cast<char*>(std::malloc(path_size)));
  if (path == nullptr) {
    return SM_STATUS_NO_MEMORY;
  }
  for (int i = 0; i < kTries; ++i) {
    char name[kTemporaryNameSize];
    draw(name);
    std::snprintf(path.get(), path_size, "%s/%s", directory, name);
    if (access(path.get(), F_OK) != 0) {
      std::memcpy(buffer, name, kTemporaryNameSize);
      *size = kTemporaryNameSize;
      return SM_STATUS_SUCCESS;
    }
  }
  return frame::kFailed;
}

}  // namespace kqsupt::config
