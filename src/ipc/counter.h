// The count that semaphores and events are made of: a set of the system that unrelated processes
// find by its name, or without a name a semaphore of the process.
#pragma once

#include <sys/types.h>

#include <cstdint>

#include "ipc/local_semaphore.h"
#include "ipc/semaphore_set.h"

namespace kqsupt::ipc {

class Counter {
 public:
  // `name` is the decorated one, or null. A set that exists is opened as it is, with its value.
  // False when there is no key for the name or the system refuses.
  [[nodiscard]] bool create(const char* name, int32_t semaphores, uint32_t initial, mode_t mode);
  [[nodiscard]] bool open(const char* name);
  // Whether create() made the set that there is now.
  [[nodiscard]] bool is_new() const { return is_new_; }
  // For everybody: whoever else uses the set is refused from then on.
  void remove();

  [[nodiscard]] SMStatus take(int32_t timeout_ms) {
    return set_ != kNoSet ? take_from_set(set_, timeout_ms) : local_.take(timeout_ms);
  }
  SMStatus post(int32_t n = 1) { return set_ != kNoSet ? post_to_set(set_, n) : local_.post(n); }
  SMStatus reset();
  [[nodiscard]] uint32_t value() { return set_ != kNoSet ? value_of_set(set_) : local_.value(); }
  // How many semaphores the set has.
  [[nodiscard]] uint32_t semaphores() const { return count_of_set(set_); }

 private:
  SemaphoreSet set_ = kNoSet;
  bool is_new_ = false;
  LocalSemaphore local_;
};

}  // namespace kqsupt::ipc
