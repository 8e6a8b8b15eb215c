// Reader-writer locks within a process, with and without a name.

#include "ipc/rw_lock.h"

#include <sched.h>
#include <sys/resource.h>
#include <sys/sem.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "gtest/gtest.h"
#include "ipc/named.h"
#include "kqsupt/ipc.h"
#include "support/program.h"

namespace {

constexpr uint32_t kFailed = 0xFFFFFFFF;

template <class Condition>
void wait_until(Condition condition) {
  while (!condition()) {
    sched_yield();
  }
}

// Long enough for a thread that would get on to do so.
void let_others_run() {
  usleep(50000);
}

using LockPtr = std::unique_ptr<SMRWLock, decltype(&SMRWLDestroy)>;

// A thread that asks for a lock, and gives it back when it is told to.
class Asking {
 public:
  using Get = SMStatus (*)(SMRWLock*, int32_t);
  using Release = void (*)(SMRWLock*);

  Asking(SMRWLock* lock, Get get, Release give_back, int32_t timeout)
      : thread_([=, this] {
          status_ = get(lock, timeout);
          answered_ = true;
          if (status_ == SM_STATUS_SUCCESS) {
            wait_until([this] { return may_release_.load(); });
            give_back(lock);
          }
        }) {}
  ~Asking() { release(); }
  Asking(const Asking&) = delete;
  Asking& operator=(const Asking&) = delete;

  [[nodiscard]] bool answered() const { return answered_; }
  SMStatus status() {
    wait_until([this] { return answered_.load(); });
    return status_;
  }
  void release() {
    may_release_ = true;
    if (thread_.joinable()) {
      thread_.join();
    }
  }

 private:
  std::atomic<bool> answered_ = false;
  std::atomic<bool> may_release_ = false;
  std::atomic<SMStatus> status_ = 0;
  std::thread thread_;
};

struct Reading : Asking {
  explicit Reading(SMRWLock* lock, int32_t timeout = -1)
      : Asking(lock, SMRWLReadLockGet, SMRWLReadLockRelease, timeout) {}
};
struct Writing : Asking {
  explicit Writing(SMRWLock* lock, int32_t timeout = -1)
      : Asking(lock, SMRWLWriteLockGet, SMRWLWriteLockRelease, timeout) {}
};

// Whatever a lock does it does with and without a name.
class RwLock : public testing::TestWithParam<const char*> {
 protected:
  // How many wait is told to nobody outside.
  void wait_for_waiters(int32_t readers, int32_t writers) {
    wait_until([&] {
      SMMutexLock(lock_->guard, -1);
      const bool there = lock_->waiting_readers == readers && lock_->waiting_writers == writers;
      SMMutexUnLock(lock_->guard);
      return there;
    });
  }
  void destroy() { lock_.reset(); }

  LockPtr lock_{SMRWLCreate(GetParam()), SMRWLDestroy};
};

INSTANTIATE_TEST_SUITE_P(Of, RwLock, testing::Values(nullptr, "a lock"),
                         [](const testing::TestParamInfo<const char*>& name) {
                           return name.param == nullptr ? "NoName" : "Name";
                         });

TEST_P(RwLock, IsTakenAndGivenBack) {
  for (int i = 0; i < 100; ++i) {
    EXPECT_EQ(SMRWLReadLockGet(lock_.get(), -1), SM_STATUS_SUCCESS);
    SMRWLReadLockRelease(lock_.get());
    EXPECT_EQ(SMRWLWriteLockGet(lock_.get(), -1), SM_STATUS_SUCCESS);
    SMRWLWriteLockRelease(lock_.get());
  }
}

TEST_P(RwLock, AdmitsManyReaders) {
  for (int i = 0; i < 100; ++i) {
    EXPECT_EQ(SMRWLReadLockGet(lock_.get(), 0), SM_STATUS_SUCCESS);
  }
  for (int i = 0; i < 100; ++i) {
    SMRWLReadLockRelease(lock_.get());
  }
  EXPECT_EQ(SMRWLWriteLockGet(lock_.get(), 0), SM_STATUS_SUCCESS);
  SMRWLWriteLockRelease(lock_.get());
}

TEST_P(RwLock, WriterWaitsForTheLastReader) {
  SMRWLReadLockGet(lock_.get(), -1);
  SMRWLReadLockGet(lock_.get(), -1);
  Writing writer(lock_.get());
  wait_for_waiters(0, 1);
  SMRWLReadLockRelease(lock_.get());
  let_others_run();
  EXPECT_FALSE(writer.answered());
  SMRWLReadLockRelease(lock_.get());
  EXPECT_EQ(writer.status(), SM_STATUS_SUCCESS);
}

TEST_P(RwLock, ReadersWaitForTheWriter) {
  SMRWLWriteLockGet(lock_.get(), -1);
  Reading first(lock_.get());
  Reading second(lock_.get());
  wait_for_waiters(2, 0);
  let_others_run();
  EXPECT_FALSE(first.answered() || second.answered());
  SMRWLWriteLockRelease(lock_.get());
  EXPECT_EQ(first.status(), SM_STATUS_SUCCESS);
  EXPECT_EQ(second.status(), SM_STATUS_SUCCESS);
}

TEST_P(RwLock, WritersWaitForTheWriter) {
  SMRWLWriteLockGet(lock_.get(), -1);
  Writing next(lock_.get());
  wait_for_waiters(0, 1);
  let_others_run();
  EXPECT_FALSE(next.answered());
  SMRWLWriteLockRelease(lock_.get());
  EXPECT_EQ(next.status(), SM_STATUS_SUCCESS);
}

TEST_P(RwLock, WaitingWriterKeepsNewReadersOut) {
  SMRWLReadLockGet(lock_.get(), -1);
  Writing writer(lock_.get());
  wait_for_waiters(0, 1);
  Reading reader(lock_.get());
  wait_for_waiters(1, 1);
  let_others_run();
  EXPECT_FALSE(writer.answered() || reader.answered());
  SMRWLReadLockRelease(lock_.get());
  EXPECT_EQ(writer.status(), SM_STATUS_SUCCESS);
  let_others_run();
  EXPECT_FALSE(reader.answered());
  writer.release();
  EXPECT_EQ(reader.status(), SM_STATUS_SUCCESS);
}

TEST_P(RwLock, WritersGoBeforeReadersThatWaitedLonger) {
  SMRWLWriteLockGet(lock_.get(), -1);
  Reading reader(lock_.get());
  wait_for_waiters(1, 0);
  Writing writer(lock_.get());
  wait_for_waiters(1, 1);
  SMRWLWriteLockRelease(lock_.get());
  EXPECT_EQ(writer.status(), SM_STATUS_SUCCESS);
  let_others_run();
  EXPECT_FALSE(reader.answered());
  writer.release();
  EXPECT_EQ(reader.status(), SM_STATUS_SUCCESS);
}

TEST_P(RwLock, TimeoutsDoNotEndTheWait) {
  SMRWLWriteLockGet(lock_.get(), -1);
  Reading at_once(lock_.get(), 0);
  Reading soon(lock_.get(), 10);
  Reading never(lock_.get(), -7);
  wait_for_waiters(3, 0);
  Writing writer(lock_.get(), 0);
  wait_for_waiters(3, 1);
  let_others_run();
  EXPECT_FALSE(at_once.answered() || soon.answered() || never.answered() || writer.answered());
  SMRWLWriteLockRelease(lock_.get());
  EXPECT_EQ(writer.status(), SM_STATUS_SUCCESS);
  writer.release();
  EXPECT_EQ(at_once.status(), SM_STATUS_SUCCESS);
  EXPECT_EQ(soon.status(), SM_STATUS_SUCCESS);
  EXPECT_EQ(never.status(), SM_STATUS_SUCCESS);
}

// It goes to sleep again and again, where one that only looked would be sent to sleep by nobody.
TEST_P(RwLock, WaitingWithTimeoutZeroLeavesTheProcessorToOthers) {
  const auto times_asleep = [] {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_nvcsw;
  };
  SMRWLWriteLockGet(lock_.get(), -1);
  // Not by Asking, which looks all the time when it has the lock.
  std::thread reader([this] {
    EXPECT_EQ(SMRWLReadLockGet(lock_.get(), 0), SM_STATUS_SUCCESS);
    SMRWLReadLockRelease(lock_.get());
  });
  wait_for_waiters(1, 0);
  const long before = times_asleep();
  usleep(500000);
  EXPECT_GT(times_asleep() - before, 10);
  SMRWLWriteLockRelease(lock_.get());
  reader.join();
}

TEST_P(RwLock, NoMoreThan2147483647Wait) {
  SMMutexLock(lock_->guard, -1);
  lock_->waiting_readers = lock_->waiting_writers = std::numeric_limits<int32_t>::max();
  SMMutexUnLock(lock_->guard);
  EXPECT_EQ(SMRWLReadLockGet(lock_.get(), -1), SM_STATUS_OUT_OF_SPACE);
  EXPECT_EQ(SMRWLWriteLockGet(lock_.get(), -1), SM_STATUS_OUT_OF_SPACE);
  SMMutexLock(lock_->guard, -1);
  lock_->waiting_readers = lock_->waiting_writers = 0;
  SMMutexUnLock(lock_->guard);
}

TEST_P(RwLock, DestroyEndsEveryWait) {
  SMRWLWriteLockGet(lock_.get(), -1);
  std::vector<std::unique_ptr<Asking>> waiters;
  for (const int32_t timeout : {-1, 0, 50, -1, -1}) {
    waiters.push_back(std::make_unique<Reading>(lock_.get(), timeout));
    waiters.push_back(std::make_unique<Writing>(lock_.get(), timeout));
  }
  wait_for_waiters(5, 5);
  destroy();
  for (const auto& waiter : waiters) {
    EXPECT_EQ(waiter->status(), kFailed);
  }
}

// However late a waiter wakes: here they are at every place between asking and sleeping.
TEST_P(RwLock, DestroyMeetsWaitersAnywhere) {
  for (int round = 0; round < 200; ++round) {
    SMRWLock* lock = SMRWLCreate(GetParam());
    ASSERT_NE(lock, nullptr);
    SMRWLWriteLockGet(lock, -1);
    Reading reader(lock, round % 3 - 1);
    Writing writer(lock, round % 2 - 1);
    wait_until([&] {
      SMMutexLock(lock->guard, -1);
      const bool there = lock->waiting_readers == 1 && lock->waiting_writers == 1;
      SMMutexUnLock(lock->guard);
      return there;
    });
    SMRWLDestroy(lock);
    EXPECT_EQ(reader.status(), kFailed);
    EXPECT_EQ(writer.status(), kFailed);
  }
}

// Nor need they have got as far as to wait: these stand before the mutex around the counts.
TEST_P(RwLock, DestroyMeetsThreadsThatHaveJustBegunToAsk) {
  for (int round = 0; round < 20; ++round) {
    SMRWLock* lock = SMRWLCreate(GetParam());
    ASSERT_NE(lock, nullptr);
    SMRWLWriteLockGet(lock, -1);
    SMMutex* guard = lock->guard;
    SMMutexLock(guard, -1);
    Reading reader(lock);
    Writing writer(lock);
    wait_until([&] { return lock->stays == 3; });
    std::thread destroyer([lock] { SMRWLDestroy(lock); });
    sched_yield();
    SMMutexUnLock(guard);
    EXPECT_EQ(reader.status(), kFailed);
    EXPECT_EQ(writer.status(), kFailed);
    destroyer.join();
  }
}

// The last user of a lock destroys it while the one before is still about to wake it.
TEST_P(RwLock, MayBeDestroyedByWhomTheReleaseLetIn) {
  for (int round = 0; round < 200; ++round) {
    SMRWLock* lock = SMRWLCreate(GetParam());
    ASSERT_NE(lock, nullptr);
    SMRWLWriteLockGet(lock, -1);
    std::thread next([lock] {
      EXPECT_EQ(SMRWLWriteLockGet(lock, 0), SM_STATUS_SUCCESS);
      SMRWLWriteLockRelease(lock);
      SMRWLDestroy(lock);
    });
    sched_yield();
    SMRWLWriteLockRelease(lock);
    next.join();
  }
}

// What is kept is written in two steps and checked by all who read it.
TEST_P(RwLock, KeepsReadersAndWritersApartUnderLoad) {
  constexpr uint32_t kRounds = 500;
  constexpr int kOfEach = 3;
  uint32_t halves[2] = {0, 0};
  std::atomic<uint32_t> torn = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < kOfEach; ++i) {
    threads.emplace_back([&, i] {
      for (uint32_t round = 0; round < kRounds; ++round) {
        EXPECT_EQ(SMRWLWriteLockGet(lock_.get(), i - 1), SM_STATUS_SUCCESS);
        ++halves[0];
        if (round % 16 == 0) {
          sched_yield();
        }
        ++halves[1];
        SMRWLWriteLockRelease(lock_.get());
      }
    });
    threads.emplace_back([&, i] {
      for (uint32_t round = 0; round < kRounds; ++round) {
        EXPECT_EQ(SMRWLReadLockGet(lock_.get(), i - 1), SM_STATUS_SUCCESS);
        torn += halves[0] != halves[1] ? 1 : 0;
        SMRWLReadLockRelease(lock_.get());
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(torn, 0U);
  EXPECT_EQ(halves[0], kOfEach * kRounds);
  EXPECT_EQ(halves[1], kOfEach * kRounds);
}

TEST(RwLockWait, EndsWhenTheLibraryIsStopped) {
  const kqsupt::tests::Outcome outcome =
      kqsupt::tests::run({kqsupt::tests::built_program("stopping")});
  EXPECT_EQ(outcome.out, "gave up\n") << outcome.err;
  EXPECT_EQ(outcome.exit_status, 0) << outcome.signal;
}

TEST(RwLockHandle, IsNeeded) {
  EXPECT_EQ(SMRWLReadLockGet(nullptr, -1), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMRWLWriteLockGet(nullptr, -1), SM_STATUS_INVALID_PARAMETER);
  SMRWLReadLockRelease(nullptr);
  SMRWLWriteLockRelease(nullptr);
  SMRWLDestroy(nullptr);
}

TEST(RwLockHandle, OfAnotherKindIsRefused) {
  SMMutex* mutex = SMMutexCreate(nullptr);
  auto* const other = reinterpret_cast<SMRWLock*>(mutex);
  EXPECT_EQ(SMRWLReadLockGet(other, -1), SM_STATUS_OPERATION_FAILED);
  EXPECT_EQ(SMRWLWriteLockGet(other, -1), SM_STATUS_OPERATION_FAILED);
  SMRWLReadLockRelease(other);
  SMRWLWriteLockRelease(other);
  SMRWLDestroy(other);
  EXPECT_EQ(SMMutexLock(mutex, 0), SM_STATUS_SUCCESS);
  SMMutexUnLock(mutex);
  SMMutexDestroy(mutex);
}

TEST(RwLockHandle, OfALockIsRefusedByOtherKinds) {
  const LockPtr lock(SMRWLCreate(nullptr), SMRWLDestroy);
  auto* const mutex = reinterpret_cast<SMMutex*>(lock.get());
  EXPECT_EQ(SMMutexLock(mutex, 0), SM_STATUS_OPERATION_FAILED);
  EXPECT_EQ(SMSemaphoreAcquireWait(reinterpret_cast<SMSemaphore*>(lock.get()), 0),
            SM_STATUS_OPERATION_FAILED);
}

TEST(RwLockName, MustNotBeEmpty) {
  EXPECT_EQ(SMRWLCreate(""), nullptr);
}

TEST(RwLockName, MayHaveAnyLength) {
  for (const size_t length : {1U, 255U, 256U, 100000U}) {
    const LockPtr lock(SMRWLCreate(std::string(length, 'n').c_str()), SMRWLDestroy);
    ASSERT_NE(lock, nullptr) << length;
    EXPECT_EQ(SMRWLWriteLockGet(lock.get(), -1), SM_STATUS_SUCCESS);
    SMRWLWriteLockRelease(lock.get());
  }
}

// "kqsuprwl" and the digest of the name with its terminator; that of the mutex around the counts is
// the digest of this.
TEST(RwLockName, IsTheOneThatItsPartsAreNamedAfter) {
  const LockPtr lock(SMRWLCreate("name"), SMRWLDestroy);
  ASSERT_NE(lock, nullptr);
  const std::string own = lock->header.name;
  EXPECT_EQ(own.size(), 40U);
  EXPECT_EQ(own.substr(0, 8), "kqsuprwl");
  SMMutex* guard = SMMutexOpen(own.c_str());
  ASSERT_NE(guard, nullptr);
  EXPECT_STREQ(guard->header.name, lock->guard->header.name);
  SMMutexDestroy(guard);
  SMSemaphore* gate = SMSemaphoreOpen(own.c_str());
  ASSERT_NE(gate, nullptr);
  EXPECT_EQ(SMSemaphoreRelease(gate, 1, nullptr), SM_STATUS_SUCCESS);
  for (SMSemaphore* one : {lock->reader_gate, lock->writer_gate}) {
    uint32_t value = 0;
    EXPECT_EQ(SMSemaphoreRelease(one, 1, &value), SM_STATUS_SUCCESS);
    EXPECT_EQ(value, one == lock->reader_gate ? 1U : 2U);
  }
  SMSemaphoreDestroy(gate);
}

TEST(RwLockName, IsForItsOwnUserAlone) {
  const LockPtr lock(SMRWLCreate("mine"), SMRWLDestroy);
  ASSERT_NE(lock, nullptr);
  const std::string own = lock->header.name;
  EXPECT_EQ(kqsupt::tests::mode_of(kqsupt::tests::lock_file_of_mutex(own)), 0600U);
  const uint32_t key = kqsupt::tests::registered_key(kqsupt::tests::decorated("kqsupsmp", own));
  ASSERT_NE(key, 0U);
  const auto about = kqsupt::tests::about_set(semget(static_cast<key_t>(key), 0, 0));
  ASSERT_TRUE(about.has_value());
  EXPECT_EQ(about->sem_perm.mode & 0777U, 0600U);
  EXPECT_EQ(about->sem_nsems, 1U);
}

// A wake-up that goes to somebody else: nothing is left of it for those who wait here.
TEST(RwLockName, LosesNoWaiterWhenSomebodyElseTakesTheWakeUp) {
  const LockPtr lock(SMRWLCreate("swallowed"), SMRWLDestroy);
  SMSemaphore* gate = SMSemaphoreOpen(lock->header.name);
  ASSERT_NE(gate, nullptr);
  std::atomic<bool> stop = false;
  std::thread thief([&] {
    while (!stop) {
      (void)SMSemaphoreAcquireWait(gate, 5);
    }
  });
  for (int round = 0; round < 5; ++round) {
    SMRWLWriteLockGet(lock.get(), -1);
    Reading reader(lock.get());
    Writing writer(lock.get());
    let_others_run();
    SMRWLWriteLockRelease(lock.get());
    EXPECT_EQ(writer.status(), SM_STATUS_SUCCESS);
    writer.release();
    EXPECT_EQ(reader.status(), SM_STATUS_SUCCESS);
  }
  stop = true;
  thief.join();
  SMSemaphoreDestroy(gate);
}

// Another process that gets in here takes the semaphores away when it leaves.
TEST(RwLockName, CountsHoldersForEachProcessAlone) {
  const LockPtr lock(SMRWLCreate("visited"), SMRWLDestroy);
  SMRWLWriteLockGet(lock.get(), -1);
  Reading reader(lock.get());
  let_others_run();
  const kqsupt::tests::Outcome visitor =
      kqsupt::tests::run({kqsupt::tests::built_program("rwl-visitor"), "visited"});
  EXPECT_EQ(visitor.out, "got in\n") << visitor.err;
  EXPECT_FALSE(reader.answered());
  SMRWLWriteLockRelease(lock.get());
  EXPECT_EQ(reader.status(), SM_STATUS_SUCCESS);
}

// As when another process destroys its lock of that name.
TEST(RwLockName, GoesOnWithoutItsSemaphores) {
  const LockPtr lock(SMRWLCreate("taken away"), SMRWLDestroy);
  SMRWLWriteLockGet(lock.get(), -1);
  Reading reader(lock.get());
  let_others_run();
  SMRWLDestroy(SMRWLCreate("taken away"));
  let_others_run();
  EXPECT_FALSE(reader.answered());
  SMRWLWriteLockRelease(lock.get());
  EXPECT_EQ(reader.status(), SM_STATUS_SUCCESS);
}

TEST(RwLockName, LeavesNoSemaphoresBehind) {
  for (int round = 0; round < 300; ++round) {
    const LockPtr lock(SMRWLCreate("again and again"), SMRWLDestroy);
    ASSERT_NE(lock, nullptr) << round;
    const std::string own = lock->header.name;
    SMSemaphore* gate = SMSemaphoreOpen(own.c_str());
    EXPECT_NE(gate, nullptr);
    SMSemaphoreDestroy(gate);
  }
  SMRWLock* lock = SMRWLCreate("again and again");
  const std::string own = lock->header.name;
  SMRWLDestroy(lock);
  EXPECT_EQ(SMSemaphoreOpen(own.c_str()), nullptr);
}

}  // namespace
