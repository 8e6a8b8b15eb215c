// Shared memory: a segment, and a semaphore set with the same key that its creator holds. When the
// creator dies the kernel gives the set back, and the next one to create the segment takes it over
// with its content.

#include "ipc/shared_memory.h"

#include <sys/shm.h>

#include <cerrno>

#include "ipc/permission.h"
#include "ipc/poll.h"
#include "ipc/registry.h"

namespace kqsupt::ipc {
namespace {

void remove_segment(int32_t segment) {
  shmctl(segment, IPC_RMID, nullptr);
}

// Whether nobody holds the guard: its creator has died.
bool is_abandoned(SemaphoreSet guard) {
  if (take_from_set(guard, kOnce) != SM_STATUS_SUCCESS) {
    return false;
  }
  post_to_set(guard);
  return true;
}

int32_t open_segment(uint32_t key) {
  return shmget(static_cast<key_t>(key), 0, 0600);
}

// False, with no segment left, when this process has no room for it.
bool attach(SMSharedMem& memory) {
  memory.address = shmat(memory.segment, nullptr, 0);
  if (memory.address == reinterpret_cast<void*>(-1)) {
    remove_segment(memory.segment);
    return false;
  }
  return true;
}

bool create_segment(SMSharedMem& memory, uint32_t key, uint32_t size, mode_t mode) {
  const int flags = static_cast<int>(mode) | IPC_CREAT | IPC_EXCL;
  memory.segment = shmget(static_cast<key_t>(key), size, flags);
  memory.is_owner = memory.segment >= 0;
  if (memory.segment < 0 && errno == EEXIST && memory.guard != kNoSet) {
    memory.segment = open_segment(key);
  }
  return memory.segment >= 0 && attach(memory);
}

}  // namespace

SMSharedMem* create_shared_memory(const char* name, uint32_t size, int32_t permission) {
  if (name == nullptr) {
    return nullptr;
  }
  ObjectPtr<SMSharedMem> memory = make_object<SMSharedMem>(name);
  const uint32_t key = memory != nullptr ? key_of_name(memory->header.name) : 0;
  if (key == 0) {
    return nullptr;
  }
  memory->guard = open_set(key);
  if ((memory->guard != kNoSet && !is_abandoned(memory->guard)) ||
      !create_segment(*memory, key, size, mode_of_permission(permission))) {
    return nullptr;
  }
  if (memory->guard == kNoSet) {
    memory->guard = create_set(key, 1, 1, mode_of_permission(0));
    if (memory->guard == kNoSet) {
      shmdt(memory->address);
      remove_segment(memory->segment);
      return nullptr;
    }
  }
  (void)take_from_set(memory->guard, kForever, Undo::kWhenProcessEnds);
  return memory.release();
}

SMSharedMem* open_shared_memory(const char* name) {
  if (name == nullptr) {
    return nullptr;
  }
  ObjectPtr<SMSharedMem> memory = make_object<SMSharedMem>(name);
  const uint32_t key = memory != nullptr ? key_of_name(memory->header.name) : 0;
  if (key == 0) {
    return nullptr;
  }
  memory->guard = open_set(key);
  if (memory->guard != kNoSet && is_abandoned(memory->guard)) {
    return nullptr;
  }
  memory->segment = open_segment(key);
  return memory->segment >= 0 && attach(*memory) ? memory.release() : nullptr;
}

void* address_of(const SMSharedMem* memory) {
  return is_object(memory) ? memory->address : nullptr;
}

void free_shared_memory(SMSharedMem* memory) {
  const ObjectPtr<SMSharedMem> taken = take_object(memory);
  if (taken == nullptr) {
    return;
  }
  shmdt(taken->address);
  if (taken->is_owner) {
    remove_segment(taken->segment);
    post_to_set(taken->guard);
    remove_set(taken->guard);
  }
}

}  // namespace kqsupt::ipc
