// Reader-writer locks that prefer writers: a mutex around the counts, and two semaphores for those
// who wait.
#pragma once

#include <atomic>
#include <cstdint>

#include "ipc/mutex.h"
#include "ipc/object.h"
#include "ipc/semaphore.h"
#include "kqsupt/ipc.h"

struct SMRWLock {
  static constexpr auto kType = kqsupt::ipc::ObjectType::kReaderWriterLock;
  kqsupt::ipc::ObjectHeader header;
  // These have the lock's own decorated name as their name, so that both gates of a named lock are one
  // set of semaphores, which also wakes waiters of the other kind and of other processes.
  SMMutex* guard;
  SMSemaphore* reader_gate;
  SMSemaphore* writer_gate;
  // Of this process alone, also with a name.
  int32_t active_readers;
  int32_t waiting_writers;
  int32_t waiting_readers;
  uint16_t writer_active;
  bool destroyed;
  // The owner until the lock is destroyed, every thread that asks for the lock until it is answered, and every one
  // that still has to wake others. Whoever leaves last frees the lock.
  std::atomic<uint32_t> stays;

  ~SMRWLock();
};

namespace kqsupt::ipc {

[[nodiscard]] SMRWLock* create_rw_lock(const char* name);
void destroy_rw_lock(SMRWLock* lock);
SMStatus get_read_lock(SMRWLock* lock, int32_t timeout_ms);
SMStatus get_write_lock(SMRWLock* lock, int32_t timeout_ms);
void release_read_lock(SMRWLock* lock);
void release_write_lock(SMRWLock* lock);

}  // namespace kqsupt::ipc
