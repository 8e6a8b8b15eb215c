// Waiting for a mutex of the process.

#include "ipc/local_mutex.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

namespace kqsupt::ipc {
namespace {

// The kernel's view of the word, which is nobody's outside this process. Whoever waits looks at the word
// again whatever the call says, and callers keep the errno of what they did before.
void ask_kernel(std::atomic<uint32_t>* word, int operation, uint32_t value) {
  static_assert(sizeof *word == sizeof(uint32_t) && std::atomic<uint32_t>::is_always_lock_free);
  const int errno_before = errno;
  syscall(SYS_futex, word, operation | FUTEX_PRIVATE_FLAG, value, nullptr, nullptr, 0);
  errno = errno_before;
}

}  // namespace

// Who comes from here does not know whether others sleep, and leaves word that they may.
void LocalMutex::wait() {
  while (state_.exchange(kWaitedFor, std::memory_order_acquire) != kFree) {
    ask_kernel(&state_, FUTEX_WAIT, kWaitedFor);
  }
}

// The address may be somebody else's by now, whom a wake-up too many does no harm.
void LocalMutex::wake_one() {
  ask_kernel(&state_, FUTEX_WAKE, 1);
}

SMStatus LocalMutex::try_within(int32_t timeout_ms) {
  Poll poll(timeout_ms);
  while (!try_lock()) {
    if (!poll.sleep()) {
      return SM_STATUS_TIMEOUT;
    }
  }
  return SM_STATUS_SUCCESS;
}

}  // namespace kqsupt::ipc
