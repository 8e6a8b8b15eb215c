// The heap functions of the C library, with a count and a fault in front of them.

#include "support/failing_heap.h"

#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <cstddef>

// The C library's own heap, below what it lets programs replace.
extern "C" void* __libc_malloc(size_t size);
extern "C" void* __libc_calloc(size_t count, size_t size);
extern "C" void* __libc_realloc(void* block, size_t size);
extern "C" void __libc_free(void* block);

namespace {

using kqsupt::tests::Fault;

std::atomic<long> live = 0;  // no wider than every host can count atomically
std::atomic<bool> armed = false;
pthread_t armed_thread;
uint64_t asked = 0;
uint64_t failing = 0;
Fault fault_kind = Fault::kOnce;

bool fails() {
  if (!armed || pthread_equal(armed_thread, pthread_self()) == 0) {
    return false;
  }
  ++asked;
  const bool failed =
      failing != 0 && (fault_kind == Fault::kOnce ? asked == failing : asked >= failing);
  if (failed) {
    errno = ENOMEM;
  }
  return failed;
}

void* counted(void* block) {
  live += block != nullptr ? 1 : 0;
  return block;
}

}  // namespace

extern "C" {

void* malloc(size_t size) {
  return fails() ? nullptr : counted(__libc_malloc(size));
}

void* calloc(size_t count, size_t size) {
  return fails() ? nullptr : counted(__libc_calloc(count, size));
}

void* realloc(void* block, size_t size) {
  if (fails()) {
    return nullptr;
  }
  void* moved = __libc_realloc(block, size);
  live +=
      (moved != nullptr ? 1 : 0) - (block != nullptr && (moved != nullptr || size == 0) ? 1 : 0);
  return moved;
}

void free(void* block) {
  live -= block != nullptr ? 1 : 0;
  __libc_free(block);
}

}  // extern "C"

namespace kqsupt::tests {

void fail_allocation(uint64_t n, Fault fault) {
  armed_thread = pthread_self();
  asked = 0;
  failing = n;
  fault_kind = fault;
  armed = true;
}

uint64_t stop_failing() {
  armed = false;
  return asked;
}

int64_t live_blocks() {
  return live;
}

}  // namespace kqsupt::tests
