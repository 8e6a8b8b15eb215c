// Admitting readers and writers.
//
// Whoever has to wait counts itself as waiting, sleeps at its gate and looks again when it is woken: a
// wake-up is a hint, so that one too many does no harm. One that another waiter swallowed must do none
// either, which can happen to named locks alone, whose gates are one set: there nobody sleeps for long
// without looking.

#include "ipc/rw_lock.h"

#include <algorithm>
#include <limits>
#include <optional>

#include "frame/status.h"
#include "frame/stopping.h"
#include "ipc/poll.h"

namespace kqsupt::ipc {
namespace {

constexpr int32_t kMostWaiting = std::numeric_limits<int32_t>::max();

// The guard, for a scope. Where its file cannot be locked the threads of this process are kept out
// all the same: the counts are theirs alone and can be put right.
class Hold {
 public:
  explicit Hold(const SMRWLock& lock) : guard_(*lock.guard) {
    if (guard_.header.name == nullptr || lock_mutex(&guard_, kForever) != SM_STATUS_SUCCESS) {
      guard_.local.lock();
      local_ = true;
    }
  }
  ~Hold() {
    if (local_) {
      guard_.local.unlock();
    } else {
      unlock_mutex(&guard_);
    }
  }
  Hold(const Hold&) = delete;
  Hold& operator=(const Hold&) = delete;

  // False when other processes are not kept out of what they share.
  [[nodiscard]] bool is_whole() const { return !local_ || guard_.header.name == nullptr; }

 private:
  SMMutex& guard_;
  bool local_ = false;
};

// Being inside a lock that may be destroyed meanwhile. A stay ends when the guard is not held.
void begin_stay(SMRWLock& lock) {
  lock.stays.fetch_add(1, std::memory_order_relaxed);
}
void end_stay(SMRWLock& lock) {
  if (lock.stays.fetch_sub(1, std::memory_order_acq_rel) == 1) {
    const ObjectPtr<SMRWLock> last(&lock);
  }
}

struct Reader {
  static int32_t& waiting(SMRWLock& lock) { return lock.waiting_readers; }
  static SMSemaphore* gate(SMRWLock& lock) { return lock.reader_gate; }
  static bool may_enter(const SMRWLock& lock) {
    return lock.writer_active == 0 && lock.waiting_writers < 1;
  }
  static void enter(SMRWLock& lock) { ++lock.active_readers; }
  static void leave(SMRWLock& lock) { --lock.active_readers; }
};

struct Writer {
  static int32_t& waiting(SMRWLock& lock) { return lock.waiting_writers; }
  static SMSemaphore* gate(SMRWLock& lock) { return lock.writer_gate; }
  static bool may_enter(const SMRWLock& lock) {
    return lock.active_readers < 1 && lock.writer_active == 0;
  }
  static void enter(SMRWLock& lock) { lock.writer_active = 1; }
  static void leave(SMRWLock& lock) { lock.writer_active = 0; }
};

// Two more than wait now: who comes in between looks once more.
int32_t posts_for(int32_t waiting) {
  return std::min(waiting, kMostWaiting - 2) + 2;
}

// Who is to look again when somebody has left: one writer, or else all readers.
struct WakeUp {
  SMSemaphore* gate = nullptr;
  int32_t posts = 0;
};

WakeUp next_wake_up(const SMRWLock& lock) {
  if (lock.waiting_writers >= 1) {
    return {lock.writer_gate, 1};
  }
  if (lock.waiting_readers >= 1) {
    return {lock.reader_gate, posts_for(lock.waiting_readers)};
  }
  return {};
}

// The timeout bounds one sleep and not the whole wait. A timeout of 0 sleeps a little, and so does who
// finds the set of a named lock gone because another process destroyed its own lock of that name:
// looking without a pause would take a processor away from whoever is to leave.
void wait_at_gate(const SMRWLock& lock, SMSemaphore* gate, int32_t timeout_ms) {
  constexpr uint32_t kShortest = 1;
  constexpr uint32_t kLongestNamed = 100;
  constexpr auto kLongest = static_cast<uint32_t>(kForever);
  const uint32_t longest = lock.header.name != nullptr ? kLongestNamed : kLongest;
  const uint32_t sleep_ms = std::clamp(static_cast<uint32_t>(timeout_ms), kShortest, longest);
  if (gate->count.take(static_cast<int32_t>(sleep_ms)) == frame::kFailed) {
    (void)Poll(kShortest).sleep();
  }
}

// One look of a thread that is counted as waiting, with the guard held; none when it has to go on
// waiting.
template <class Side>
std::optional<SMStatus> look_again(SMRWLock& lock, bool is_whole) {
  if (lock.destroyed || frame::is_stopping() || !is_whole) {
    --Side::waiting(lock);
    // Others may wait for nobody but this one.
    if (const WakeUp next = next_wake_up(lock); next.gate != nullptr) {
      next.gate->count.post(next.posts);
    }
    return frame::kFailed;
  }
  if (Side::may_enter(lock)) {
    --Side::waiting(lock);
    Side::enter(lock);
    return SM_STATUS_SUCCESS;
  }
  return std::nullopt;
}

// For a thread that is counted as waiting.
template <class Side>
[[gnu::noinline]] SMStatus wait_to_enter(SMRWLock& lock, int32_t timeout_ms) {
  std::optional<SMStatus> answer;
  while (!answer.has_value()) {
    wait_at_gate(lock, Side::gate(lock), timeout_ms);
    const Hold hold(lock);
    answer = look_again<Side>(lock, hold.is_whole());
  }
  return *answer;
}

// For a thread that stays until the answer.
template <class Side>
SMStatus enter_or_wait(SMRWLock& lock, int32_t timeout_ms) {
  {
    const Hold hold(lock);
    if (!hold.is_whole() || lock.destroyed) [[unlikely]] {
      return frame::kFailed;
    }
    if (Side::waiting(lock) == kMostWaiting) [[unlikely]] {
      return SM_STATUS_OUT_OF_SPACE;
    }
    if (Side::may_enter(lock)) [[likely]] {
      Side::enter(lock);
      return SM_STATUS_SUCCESS;
    }
    ++Side::waiting(lock);
  }
  return wait_to_enter<Side>(lock, timeout_ms);
}

template <class Side>
SMStatus get_lock(SMRWLock* lock, int32_t timeout_ms) {
  if (!is_object(lock)) [[unlikely]] {
    return check_object(lock);
  }
  begin_stay(*lock);
  const SMStatus status = enter_or_wait<Side>(*lock, timeout_ms);
  end_stay(*lock);
  return status;
}

[[gnu::noinline]] void post_and_end_stay(SMRWLock& lock, const WakeUp& next) {
  next.gate->count.post(next.posts);
  end_stay(lock);
}

template <class Side>
void release_lock(SMRWLock* lock) {
  if (!is_object(lock)) [[unlikely]] {
    return;
  }
  WakeUp next;
  {
    const Hold hold(*lock);
    Side::leave(*lock);
    next = next_wake_up(*lock);
    if (next.gate == nullptr) [[likely]] {
      return;
    }
    begin_stay(*lock);  // whom the lock is free for may destroy it before the post
  }
  post_and_end_stay(*lock, next);
}

// The set behind a gate stays: it may be another process's too.
void free_gate(SMSemaphore* gate) {
  if (gate != nullptr) {
    gate->is_creator = false;
    destroy_semaphore(gate);
  }
}

}  // namespace

SMRWLock* create_rw_lock(const char* name) {
  constexpr int32_t kOwnerOnly = 0;
  ObjectPtr<SMRWLock> lock = make_object<SMRWLock>(name);
  if (lock == nullptr) {
    return nullptr;
  }
  lock->stays.store(1, std::memory_order_relaxed);
  const char* const own_name = lock->header.name;
  lock->guard = create_mutex(own_name, kOwnerOnly);
  lock->reader_gate = lock->guard != nullptr ? create_semaphore(own_name, 0, kOwnerOnly) : nullptr;
  lock->writer_gate =
      lock->reader_gate != nullptr ? create_semaphore(own_name, 0, kOwnerOnly) : nullptr;
  if (lock->writer_gate == nullptr) {
    if (lock->reader_gate != nullptr && lock->reader_gate->count.is_new()) {
      lock->reader_gate->count.remove();  // nobody else would
    }
    return nullptr;
  }
  return lock.release();
}

// Whoever waits is woken and finds the lock destroyed. The last one to leave frees it.
void destroy_rw_lock(SMRWLock* lock) {
  if (!is_object(lock)) {
    return;
  }
  int32_t writers = 0;
  int32_t readers = 0;
  {
    const Hold hold(*lock);
    lock->destroyed = true;
    writers = lock->waiting_writers;
    readers = lock->waiting_readers;
  }
  if (writers > 0) {
    lock->writer_gate->count.post(posts_for(writers));
  }
  if (readers > 0) {
    lock->reader_gate->count.post(posts_for(readers));
  }
  // At once and not when the last waiter leaves: the name may be in use again by then.
  lock->writer_gate->count.remove();
  lock->reader_gate->count.remove();
  end_stay(*lock);  // the owner's
}

SMStatus get_read_lock(SMRWLock* lock, int32_t timeout_ms) {
  return get_lock<Reader>(lock, timeout_ms);
}
SMStatus get_write_lock(SMRWLock* lock, int32_t timeout_ms) {
  return get_lock<Writer>(lock, timeout_ms);
}
void release_read_lock(SMRWLock* lock) {
  release_lock<Reader>(lock);
}
void release_write_lock(SMRWLock* lock) {
  release_lock<Writer>(lock);
}

}  // namespace kqsupt::ipc

SMRWLock::~SMRWLock() {
  kqsupt::ipc::free_gate(writer_gate);
  kqsupt::ipc::free_gate(reader_gate);
  kqsupt::ipc::destroy_mutex(guard);
}
