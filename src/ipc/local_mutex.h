// The mutex that guards state of the process, and the guard that takes it for a scope.
#pragma once

#include <pthread.h>

#include <cstdint>

#include "kqsupt/frame.h"

namespace kqsupt::ipc {

// Ready before any constructor has run and for as long as the process lives: declare it constinit.
// Nothing is released when it goes. It is not recursive.
class LocalMutex {
 public:
  constexpr LocalMutex() = default;
  LocalMutex(const LocalMutex&) = delete;
  LocalMutex& operator=(const LocalMutex&) = delete;

  // Waits without limit. Neither call can fail on a mutex of this kind.
  void lock() { pthread_mutex_lock(&mutex_); }
  void unlock() { pthread_mutex_unlock(&mutex_); }

  // -1 waits without limit, 0 tries once. SM_STATUS_TIMEOUT, or 0xFFFFFFFF when the system refuses.
  [[nodiscard]] SMStatus lock_within(int32_t timeout_ms);

  // Forgets who holds it: for a child process, whose only thread cannot be the one that did.
  void renew() { mutex_ = PTHREAD_MUTEX_INITIALIZER; }

 private:
  pthread_mutex_t mutex_ = PTHREAD_MUTEX_INITIALIZER;
};

// Has every fork take the mutex, so that no child finds it taken by a thread that it does not have.
// To be called once for a mutex, before it is used; forks take them in the order of these calls.
// False when memory is short or there are too many.
[[nodiscard]] bool hold_over_forks(LocalMutex& mutex);

// Holds the mutex for a scope; waits for it without limit.
class LocalMutexGuard {
 public:
  explicit LocalMutexGuard(LocalMutex& mutex) : mutex_(mutex) { mutex_.lock(); }
  ~LocalMutexGuard() { mutex_.unlock(); }
  LocalMutexGuard(const LocalMutexGuard&) = delete;
  LocalMutexGuard& operator=(const LocalMutexGuard&) = delete;

 private:
  LocalMutex& mutex_;
};

}  // namespace kqsupt::ipc
