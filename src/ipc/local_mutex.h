// The mutex that guards state of the process, and the guard that takes it for a scope.
#pragma once

#include <atomic>
#include <cstdint>

#include "ipc/poll.h"
#include "kqsupt/frame.h"

namespace kqsupt::ipc {

// Ready before any constructor has run and for as long as the process lives: declare it constinit.
// Nothing is released when it goes. It is not recursive.
//
// A word that the kernel is asked about only when somebody has to wait. Behind a function of ours a
// mutex of POSIX threads takes half as long again as one that is called directly; this one, which is
// in place where it is used, takes less.
class LocalMutex {
 public:
  constexpr LocalMutex() = default;
  LocalMutex(const LocalMutex&) = delete;
  LocalMutex& operator=(const LocalMutex&) = delete;

  // Waits without limit.
  void lock() {
    if (!try_lock()) [[unlikely]] {
      wait();
    }
  }
  // When it is free again for others nothing of it is touched any more: who gets it may free it.
  void unlock() {
    if (state_.exchange(kFree, std::memory_order_release) == kWaitedFor) [[unlikely]] {
      wake_one();
    }
  }

  // -1 waits without limit, 0 tries once. SM_STATUS_TIMEOUT, and no other failure.
  [[nodiscard]] SMStatus lock_within(int32_t timeout_ms) {
    if (timeout_ms != kForever) [[unlikely]] {
      return try_within(timeout_ms);
    }
    lock();
    return SM_STATUS_SUCCESS;
  }

  // Forgets who holds it: for a child process, whose only thread cannot be the one that did.
  void renew() { state_.store(kFree, std::memory_order_relaxed); }

 private:
  static constexpr uint32_t kFree = 0;
  static constexpr uint32_t kHeld = 1;
  static constexpr uint32_t kWaitedFor = 2;  // held, and somebody may be asleep

  [[nodiscard]] bool try_lock() {
    uint32_t expected = kFree;
    return state_.compare_exchange_strong(expected, kHeld, std::memory_order_acquire,
                                          std::memory_order_relaxed);
  }
  SMStatus try_within(int32_t timeout_ms);
  void wait();
  void wake_one();

  std::atomic<uint32_t> state_{kFree};
};

// Has every fork take the mutex, so that no child finds it taken by a thread that it does not have.
// To be called before the mutex is used, and by nobody who holds such a mutex: a fork that comes
// meanwhile waits for that one. Again it does nothing. Forks take mutexes in the order of these calls,
// which is the only one in which one may be taken within another; a ForkSafeMutex is taken alone.
// False when there are too many, or memory was short at the first call of all.
[[nodiscard]] bool hold_over_forks(LocalMutex& mutex);

// A mutex that forks take from its first use on: for what is used also where nothing was started.
class ForkSafeMutex {
 public:
  constexpr ForkSafeMutex() = default;

  // False when forks cannot take it; it excludes threads all the same.
  bool hold_over_forks() {
    // Whoever comes here meanwhile does the same again, also in a child of a fork in the midst of it.
    if (!is_held_.load(std::memory_order_acquire)) [[unlikely]] {
      is_held_.store(ipc::hold_over_forks(mutex_), std::memory_order_release);
    }
    return is_held_.load(std::memory_order_relaxed);
  }

  // The mutex itself, for a guard.
  [[nodiscard]] LocalMutex& held_over_forks() {
    (void)hold_over_forks();
    return mutex_;
  }

 private:
  LocalMutex mutex_;
  std::atomic<bool> is_held_{false};
};

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
