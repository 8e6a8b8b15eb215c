// Counting semaphores.
#pragma once

#include <cstdint>

#include "ipc/counter.h"
#include "ipc/object.h"
#include "kqsupt/ipc.h"

struct SMSemaphore {
  static constexpr auto kType = kqsupt::ipc::ObjectType::kSemaphore;
  kqsupt::ipc::ObjectHeader header;
  kqsupt::ipc::Counter count;
  bool is_creator;  // also of a set that existed
};

namespace kqsupt::ipc {

[[nodiscard]] SMSemaphore* create_semaphore(const char* name, uint32_t initial, int32_t permission);
[[nodiscard]] SMSemaphore* open_semaphore(const char* name);
SMStatus acquire_semaphore(SMSemaphore* semaphore, int32_t timeout_ms);
SMStatus release_semaphore(SMSemaphore* semaphore, int32_t count, uint32_t* previous);
void destroy_semaphore(SMSemaphore* semaphore);

}  // namespace kqsupt::ipc
