// Following forks.

#include "ipc/forks.h"

#include <pthread.h>

#include <algorithm>
#include <array>

namespace kqsupt::ipc {
namespace {

constinit std::atomic<uint32_t> forks{0};
using Renew = void (*)();
constinit Renew renew_in_child = nullptr;

// What is held while the process forks, in the order in which it is taken.
constinit LocalMutex renewing_mutex;
constinit LocalMutex held_mutex;
constinit std::array<LocalMutex*, 16> held{};
constinit size_t held_count = 0;

void before_fork() {
  held_mutex.lock();
  for (size_t i = 0; i < held_count; ++i) {
    held[i]->lock();
  }
  renewing_mutex.lock();
}

void after_fork() {
  renewing_mutex.unlock();
  for (size_t i = held_count; i-- > 0;) {
    held[i]->unlock();
  }
  held_mutex.unlock();
}

void after_fork_in_child() {
  forks.fetch_add(1, std::memory_order_relaxed);
  if (renew_in_child != nullptr) {
    renew_in_child();
  }
  after_fork();
}

// The handlers go when the library is unloaded.
constinit pthread_once_t watched_once = PTHREAD_ONCE_INIT;
constinit bool watched = false;

}  // namespace

bool hold_over_forks(LocalMutex& mutex) {
  pthread_once(&watched_once,
               [] { watched = pthread_atfork(before_fork, after_fork, after_fork_in_child) == 0; });
  if (!watched) {
    return false;
  }
  const LocalMutexGuard guard(held_mutex);
  if (std::find(held.begin(), held.end(), &mutex) != held.end()) {
    return true;  // of an earlier start
  }
  if (held_count == held.size()) {
    return false;
  }
  held[held_count++] = &mutex;
  return true;
}

void renew_in_children(void (*renew)()) {
  renew_in_child = renew;
}

uint32_t fork_count() {
  return forks.load(std::memory_order_relaxed);
}

LocalMutex& ForkMark::renewing() {
  return renewing_mutex;
}

}  // namespace kqsupt::ipc
