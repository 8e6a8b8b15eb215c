// Following forks.

#include "ipc/forks.h"

#include <pthread.h>

#include "ipc/path_lock_table.h"

namespace kqsupt::ipc {
namespace {

constinit std::atomic<uint32_t> forks{0};
constinit LocalMutex renewing_mutex;
constinit pthread_once_t watched_once = PTHREAD_ONCE_INIT;
constinit bool watched = false;

void before_fork() {
  hold_path_locks();
  renewing_mutex.lock();
}
void after_fork() {
  renewing_mutex.unlock();
  release_path_locks();
}
void after_fork_in_child() {
  forks.fetch_add(1, std::memory_order_relaxed);
  renew_path_locks();
  after_fork();
}

}  // namespace

// The handlers go when the library is unloaded.
bool watch_forks() {
  pthread_once(&watched_once,
               [] { watched = pthread_atfork(before_fork, after_fork, after_fork_in_child) == 0; });
  return watched;
}

uint32_t fork_count() {
  return forks.load(std::memory_order_relaxed);
}

LocalMutex& ForkMark::renewing() {
  return renewing_mutex;
}

}  // namespace kqsupt::ipc
