// What forking does to locks: a child has the parent's memory and descriptors, but no record lock.
#pragma once

#include <atomic>
#include <cstdint>

#include "ipc/local_mutex.h"

namespace kqsupt::ipc {

// The number of forks that this process is away from the one that loaded the library; they count
// from the first hold_over_forks().
[[nodiscard]] uint32_t fork_count();

// Calls `renew` in every child before it goes on. There is one such call.
void renew_in_children(void (*renew)());

// Notes in which process a lock was last used.
class ForkMark {
 public:
  [[nodiscard]] bool is_of_this_process() const {
    return forks_.load(std::memory_order_acquire) == fork_count();
  }

  // Calls `renew` when this is not the noted process: in a child nobody holds what the parent held
  // when it forked. True when it was called.
  template <class Renew>
  bool renew_after_fork(Renew renew) {
    const LocalMutexGuard guard(renewing());
    const bool is_old = !is_of_this_process();
    if (is_old) {
      renew();
      forks_.store(fork_count(), std::memory_order_release);
    }
    return is_old;
  }

 private:
  static LocalMutex& renewing();

  std::atomic<uint32_t> forks_{fork_count()};
};

}  // namespace kqsupt::ipc
