// Mutexes: private to the process without a name, shared by all processes that use the same name.
#pragma once

#include <sys/types.h>

#include <cstdint>

#include "ipc/forks.h"
#include "ipc/local_mutex.h"
#include "ipc/object.h"
#include "kqsupt/ipc.h"
#include "os/file_descriptor.h"

struct SMMutex {
  static constexpr auto kType = kqsupt::ipc::ObjectType::kMutex;
  kqsupt::ipc::ObjectHeader header;
  kqsupt::ipc::LocalMutex local;
  // With a name: the lock file, and how it is locked. Who may only read it takes a shared lock,
  // which excludes writers and no other reader.
  kqsupt::os::FileDescriptor file;
  int16_t lock_type;
  kqsupt::ipc::ForkMark used_in;
};

namespace kqsupt::ipc {

[[nodiscard]] SMMutex* create_mutex(const char* name, int32_t permission);
[[nodiscard]] SMMutex* open_mutex(const char* name);
SMStatus lock_mutex(SMMutex* mutex, int32_t timeout_ms);
SMStatus unlock_mutex(SMMutex* mutex);
void destroy_mutex(SMMutex* mutex);

}  // namespace kqsupt::ipc
