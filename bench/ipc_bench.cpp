// Locks without a name, beside those of the system that they are made of.

#include <kqsupt/ipc.h>
#include <pthread.h>

#include <cstddef>
#include <string>

#include "measure.h"
#include "ratio_table.h"

namespace kqbench {
namespace {

constexpr size_t kPairs = 10000;
constexpr const char* kSystem = "pthread";

// One object serves a whole measurement: what an iteration takes it gives back.
template <class Object>
Object& shared() {
  static Object object;
  return object;
}

struct OurMutex {
  SMMutex* mutex = SMMutexCreate(nullptr);
  void pair() {
    SMMutexLock(mutex, -1);
    SMMutexUnLock(mutex);
  }
};
struct SystemMutex {
  pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
  void pair() {
    pthread_mutex_lock(&mutex);
    pthread_mutex_unlock(&mutex);
  }
};

struct OurReadLock {
  SMRWLock* lock = SMRWLCreate(nullptr);
  void pair() {
    SMRWLReadLockGet(lock, -1);
    SMRWLReadLockRelease(lock);
  }
};
struct SystemReadLock {
  pthread_rwlock_t lock = PTHREAD_RWLOCK_INITIALIZER;
  void pair() {
    pthread_rwlock_rdlock(&lock);
    pthread_rwlock_unlock(&lock);
  }
};

struct OurWriteLock {
  SMRWLock* lock = SMRWLCreate(nullptr);
  void pair() {
    SMRWLWriteLockGet(lock, -1);
    SMRWLWriteLockRelease(lock);
  }
};
struct SystemWriteLock {
  pthread_rwlock_t lock = PTHREAD_RWLOCK_INITIALIZER;
  void pair() {
    pthread_rwlock_wrlock(&lock);
    pthread_rwlock_unlock(&lock);
  }
};

template <class Object>
void add_pairs(const std::string& operation, const char* contestant) {
  add_measurement(
      operation, contestant, kPairs, [] { return &shared<Object>(); },
      [](Object* object) {
        for (size_t i = 0; i < kPairs; ++i) {
          object->pair();
        }
      });
}

const bool kAdded = [] {
  add_family({"locks without a name",
              {kSystem},
              {{"ipc/mutex", "mutex, lock and unlock", 1.3, kSystem},
               {"ipc/read", "reader lock, get and release", 3.0, kSystem},
               {"ipc/write", "writer lock, get and release", 3.0, kSystem}}});
  add_pairs<OurMutex>("ipc/mutex", kOurs);
  add_pairs<SystemMutex>("ipc/mutex", kSystem);
  add_pairs<OurReadLock>("ipc/read", kOurs);
  add_pairs<SystemReadLock>("ipc/read", kSystem);
  add_pairs<OurWriteLock>("ipc/write", kOurs);
  add_pairs<SystemWriteLock>("ipc/write", kSystem);
  return true;
}();

}  // namespace
}  // namespace kqbench
