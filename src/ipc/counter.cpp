// Finding and making counts.

#include "ipc/counter.h"

#include "ipc/registry.h"

namespace kqsupt::ipc {

bool Counter::create(const char* name, int32_t semaphores, uint32_t initial, mode_t mode) {
  if (name == nullptr) {
    local_.start(initial);
    return true;
  }
  const uint32_t key = key_of_name(name);
  set_ = key != 0 ? create_set(key, semaphores, initial, mode, &is_new_) : kNoSet;
  return set_ != kNoSet;
}

bool Counter::open(const char* name) {
  const uint32_t key = key_of_name(name);
  set_ = key != 0 ? open_set(key) : kNoSet;
  return set_ != kNoSet;
}

void Counter::remove() {
  if (set_ != kNoSet) {
    remove_set(set_);
  }
}

SMStatus Counter::reset() {
  if (set_ != kNoSet) {
    return reset_set(set_);
  }
  local_.drain();
  return SM_STATUS_SUCCESS;
}

}  // namespace kqsupt::ipc
