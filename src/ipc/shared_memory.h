// Shared memory segments, which outlive the process that made them.
#pragma once

#include <cstdint>

#include "ipc/object.h"
#include "ipc/semaphore_set.h"
#include "kqsupt/ipc.h"

struct SMSharedMem {
  static constexpr auto kType = kqsupt::ipc::ObjectType::kSharedMemory;
  kqsupt::ipc::ObjectHeader header;
  void* address;
  kqsupt::ipc::SemaphoreSet guard;  // tells whether the creator lives, who holds it
  int32_t segment;
  bool is_owner;  // this handle made the segment
};

namespace kqsupt::ipc {

[[nodiscard]] SMSharedMem* create_shared_memory(const char* name, uint32_t size,
                                                int32_t permission);
[[nodiscard]] SMSharedMem* open_shared_memory(const char* name);
[[nodiscard]] void* address_of(const SMSharedMem* memory);
void free_shared_memory(SMSharedMem* memory);

}  // namespace kqsupt::ipc
