// Counting semaphores.

#include "ipc/semaphore.h"

#include "ipc/permission.h"

namespace kqsupt::ipc {
namespace {

constexpr uint32_t kHighestValue = 32767;

}  // namespace

SMSemaphore* create_semaphore(const char* name, uint32_t initial, int32_t permission) {
  if (initial > kHighestValue) {
    return nullptr;
  }
  ObjectPtr<SMSemaphore> semaphore = make_object<SMSemaphore>(name);
  if (semaphore == nullptr || !semaphore->count.create(semaphore->header.name, 1, initial,
                                                       mode_of_permission(permission))) {
    return nullptr;
  }
  semaphore->is_creator = true;
  return semaphore.release();
}

SMSemaphore* open_semaphore(const char* name) {
  if (name == nullptr) {
    return nullptr;
  }
  ObjectPtr<SMSemaphore> semaphore = make_object<SMSemaphore>(name);
  const bool opened = semaphore != nullptr && semaphore->count.open(semaphore->header.name);
  return opened ? semaphore.release() : nullptr;
}

SMStatus acquire_semaphore(SMSemaphore* semaphore, int32_t timeout_ms) {
  const SMStatus status = check_object(semaphore);
  return status == SM_STATUS_SUCCESS ? semaphore->count.take(timeout_ms) : status;
}

SMStatus release_semaphore(SMSemaphore* semaphore, int32_t count, uint32_t* previous) {
  if (const SMStatus status = check_object(semaphore); status != SM_STATUS_SUCCESS) {
    return status;
  }
  if (count < 1 || count > static_cast<int32_t>(kHighestValue)) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  if (previous != nullptr) {
    *previous = semaphore->count.value();
  }
  return semaphore->count.post(count);
}

void destroy_semaphore(SMSemaphore* semaphore) {
  const ObjectPtr<SMSemaphore> taken = take_object(semaphore);
  if (taken != nullptr && taken->is_creator) {
    taken->count.remove();
  }
}

}  // namespace kqsupt::ipc
