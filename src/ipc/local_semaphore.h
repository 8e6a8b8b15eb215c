// The counting semaphore that is private to the process.
#pragma once

#include <semaphore.h>

#include <cstdint>

#include "kqsupt/frame.h"

namespace kqsupt::ipc {

// Set it up before use: it is a plain member of a block that may turn out to need none.
class LocalSemaphore {
 public:
  void start(uint32_t initial) { sem_init(&semaphore_, 0, initial); }

  // Takes 1. -1 waits without limit, 0 tries once. SM_STATUS_TIMEOUT, or 0xFFFFFFFF when the system
  // refuses.
  [[nodiscard]] SMStatus take(int32_t timeout_ms);
  // Adds 1, n times; 0xFFFFFFFF when the value would get too large.
  SMStatus post(int32_t n = 1);
  // Takes all there is.
  void drain();
  [[nodiscard]] uint32_t value();

 private:
  sem_t semaphore_;
};

}  // namespace kqsupt::ipc
