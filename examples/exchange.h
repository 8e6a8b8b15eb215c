// How a record's block gets from one agent to another that it knows nothing of but the name: in
// shared memory, with an event that says it is there, another one that says it was taken, and a
// mutex around it. Either agent may be started first.
#pragma once

#include <kqsupt.h>

#include <chrono>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <thread>

#include "hand_over.h"

namespace exchange {

inline constexpr const char* kMemory = "example machine record";
inline constexpr const char* kMutex = "example machine record";
inline constexpr const char* kThere = "example machine record is there";
inline constexpr const char* kTaken = "example machine record was taken";
inline constexpr int32_t kPatience = 30000;  // milliseconds
inline constexpr uint32_t kMostBytes = 65535;

template <class Handle, void (*kRelease)(Handle*)>
struct Release {
  void operator()(Handle* handle) const { kRelease(handle); }
};
using Mutex = std::unique_ptr<SMMutex, Release<SMMutex, SMMutexDestroy>>;
using Event = std::unique_ptr<SMEvent, Release<SMEvent, SMEventDestroy>>;
using Memory = std::unique_ptr<SMSharedMem, Release<SMSharedMem, SMSharedMemFree>>;

inline void require(bool done, const char* what) {
  if (!done) {
    throw std::runtime_error(what);
  }
}

// Holds the mutex for a scope.
class Locked {
 public:
  explicit Locked(const Mutex& mutex) : mutex_(mutex.get()) {
    require(SMMutexLock(mutex_, kPatience) == SM_STATUS_SUCCESS, "the record stays locked");
  }
  ~Locked() { SMMutexUnLock(mutex_); }
  Locked(const Locked&) = delete;
  Locked& operator=(const Locked&) = delete;

 private:
  SMMutex* mutex_;
};

// Puts the block where others find it, and waits until one of them has taken it.
inline void offer(const Block& block) {
  const Mutex mutex(SMMutexCreate(kMutex));
  const Event there(SMEventCreate(kThere, 1, 0));
  const Event taken(SMEventCreate(kTaken, 1, 0));
  const Memory memory(SMSharedMemCreate(kMemory, kMostBytes));
  require(mutex != nullptr && there != nullptr && taken != nullptr && memory != nullptr,
          "the record cannot be shared: is another collector waiting?");
  SMEventReset(there.get());  // what a collector that was killed left behind
  SMEventReset(taken.get());
  {
    const Locked locked(mutex);
    std::memcpy(SMSharedMemGetAddressPtr(memory.get()), block.data(), block.size());
  }
  SMEventSet(there.get());
  require(SMEventWait(taken.get(), kPatience) == SM_STATUS_SUCCESS, "nobody took the record");
}

// Waits for a block that somebody offers, and takes a copy of it.
inline Block take() {
  using Clock = std::chrono::steady_clock;
  const auto end = Clock::now() + std::chrono::milliseconds(kPatience);
  while (Clock::now() < end) {
    const Event there(SMEventOpen(kThere));
    if (there != nullptr && SMEventWait(there.get(), 100) == SM_STATUS_SUCCESS) {
      const Memory memory(SMSharedMemOpen(kMemory));
      const Mutex mutex(SMMutexOpen(kMutex));
      const Event taken(SMEventOpen(kTaken));
      if (memory != nullptr && mutex != nullptr && taken != nullptr) {
        Block block;
        {
          const Locked locked(mutex);
          const auto* bytes = static_cast<const uint8_t*>(SMSharedMemGetAddressPtr(memory.get()));
          block.assign(bytes, bytes + SMSDOBinaryGetSize(bytes, nullptr));
        }
        require(!block.empty(), "what was offered has not the signature of a record of this host");
        SMEventSet(taken.get());
        return block;
      }
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  throw std::runtime_error("nobody offered a record");
}

}  // namespace exchange
