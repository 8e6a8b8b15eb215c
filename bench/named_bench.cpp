// Named objects beside the system calls that they cannot do without, and beside their peers.

#include <fcntl.h>
#include <kqsupt/ipc.h>
#include <pthread.h>
#include <sys/sem.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "measure.h"
#include "named_bench.h"
#include "ratio_table.h"

namespace kqbench {
namespace {

constexpr const char* kFloor = "floor";

struct OurMutex {
  SMMutex* mutex = SMMutexCreate("bench");
  void pair() { require(SMMutexLock(mutex, -1) == 0 && SMMutexUnLock(mutex) == 0); }
};
struct MutexFloor {
  pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
  int file = open((std::string(std::getenv("TMPDIR")) + "/lock").c_str(), O_RDWR | O_CREAT, 0600);
  void pair() {
    struct flock lock {};
    lock.l_type = F_WRLCK;
    pthread_mutex_lock(&mutex);
    require(fcntl(file, F_SETLKW, &lock) == 0);
    lock.l_type = F_UNLCK;
    require(fcntl(file, F_SETLKW, &lock) == 0);
    pthread_mutex_unlock(&mutex);
  }
};

struct OurSemaphore {
  SMSemaphore* semaphore = SMSemaphoreCreate("bench", 1);
  void pair() {
    require(SMSemaphoreAcquireWait(semaphore, -1) == 0 &&
            SMSemaphoreRelease(semaphore, 1, nullptr) == 0);
  }
};
struct SemaphoreFloor {
  int set = [] {
    const int made = semget(IPC_PRIVATE, 1, IPC_CREAT | 0600);
    semctl(made, 0, SETVAL, 1);
    return made;
  }();
  void pair() {
    sembuf take{0, -1, 0};
    require(semop(set, &take, 1) == 0);
    sembuf post{0, 1, IPC_NOWAIT};
    require(semop(set, &post, 1) == 0);
  }
};

const bool kAdded = [] {
  add_family({"named objects",
              {kFloor, "APR", "Boost"},
              {{kNamedMutexRow, "named mutex, lock and unlock", 1.1, kFloor},
               {kContendedMutexRow, "the same, 8 processes at once", 1.2, kFloor},
               {kNamedSemaphoreRow, "named semaphore, take and post", 1.1, kFloor}}});
  add_named_pairs<OurMutex>(kNamedMutexRow, kOurs);
  add_named_pairs<MutexFloor>(kNamedMutexRow, kFloor);
  add_contended_pairs<OurMutex>(kOurs);
  add_contended_pairs<MutexFloor>(kFloor);
  add_named_pairs<OurSemaphore>(kNamedSemaphoreRow, kOurs);
  add_named_pairs<SemaphoreFloor>(kNamedSemaphoreRow, kFloor);
  return true;
}();

}  // namespace
}  // namespace kqbench
