// Semaphores, private and named.

#include <sys/sem.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <thread>
#include <vector>

#include "gtest/gtest.h"
#include "ipc/named.h"
#include "kqsupt/ipc.h"

namespace {

using kqsupt::tests::about_set;
using kqsupt::tests::decorated;
using kqsupt::tests::registered_key;

constexpr SMStatus kFailed = 0xFFFFFFFF;
constexpr const char* kNames[] = {nullptr, "semaphore"};

TEST(Semaphore, CountsDownAndUp) {
  for (const char* name : kNames) {
    SMSemaphore* semaphore = SMSemaphoreCreate(name, 2);
    ASSERT_NE(semaphore, nullptr);
    EXPECT_EQ(SMSemaphoreAcquireWait(semaphore, 0), 0U);
    EXPECT_EQ(SMSemaphoreAcquireWait(semaphore, -1), 0U);
    EXPECT_EQ(SMSemaphoreAcquireWait(semaphore, 0), SM_STATUS_TIMEOUT);
    EXPECT_EQ(SMSemaphoreAcquireWait(semaphore, 20), SM_STATUS_TIMEOUT);
    uint32_t previous = 77;
    EXPECT_EQ(SMSemaphoreRelease(semaphore, 3, &previous), 0U);
    EXPECT_EQ(previous, 0U);
    EXPECT_EQ(SMSemaphoreRelease(semaphore, 1, &previous), 0U);
    EXPECT_EQ(previous, 3U);
    for (int i = 0; i < 4; ++i) {
      EXPECT_EQ(SMSemaphoreAcquireWait(semaphore, 20), 0U);
    }
    EXPECT_EQ(SMSemaphoreAcquireWait(semaphore, 0), SM_STATUS_TIMEOUT);
    SMSemaphoreDestroy(semaphore);
  }
}

TEST(Semaphore, StartsBelow32768) {
  for (const char* name : kNames) {
    EXPECT_EQ(SMSemaphoreCreate(name, 32768), nullptr);
    EXPECT_EQ(SMSemaphoreCreate(name, 0xFFFFFFFF), nullptr);
    SMSemaphore* semaphore = SMSemaphoreCreate(name, 32767);
    ASSERT_NE(semaphore, nullptr);
    uint32_t previous = 0;
    SMSemaphoreRelease(semaphore, 1, &previous);
    EXPECT_EQ(previous, 32767U);
    SMSemaphoreDestroy(semaphore);
  }
}

TEST(Semaphore, ReleasesFrom1To32767) {
  for (const char* name : kNames) {
    SMSemaphore* semaphore = SMSemaphoreCreate(name, 0);
    uint32_t previous = 77;
    for (const int32_t count : {0, -1, 32768, INT32_MIN, INT32_MAX}) {
      EXPECT_EQ(SMSemaphoreRelease(semaphore, count, &previous), SM_STATUS_INVALID_PARAMETER);
    }
    EXPECT_EQ(previous, 77U);
    EXPECT_EQ(SMSemaphoreRelease(semaphore, 32767, &previous), 0U);
    EXPECT_EQ(previous, 0U);
    SMSemaphoreRelease(semaphore, 1, &previous);
    EXPECT_EQ(previous, 32767U);
    SMSemaphoreDestroy(semaphore);
  }
}

TEST(Semaphore, OfANameTakesNoMoreThan32767) {
  SMSemaphore* semaphore = SMSemaphoreCreate("full", 32766);
  EXPECT_EQ(SMSemaphoreRelease(semaphore, 3, nullptr), kFailed);
  uint32_t value = 0;
  EXPECT_EQ(SMSemaphoreRelease(semaphore, 1, &value), kFailed);
  EXPECT_EQ(value, 32767U);
  SMSemaphoreDestroy(semaphore);
}

TEST(Semaphore, ASecondCreatorGetsTheSameCount) {
  SMSemaphore* first = SMSemaphoreCreate("twice", 5);
  SMSemaphore* second = SMSemaphoreCreate("twice", 9);
  uint32_t value = 0;
  EXPECT_EQ(SMSemaphoreRelease(second, 1, &value), 0U);
  EXPECT_EQ(value, 5U);
  // Either creator takes it away from both.
  SMSemaphoreDestroy(second);
  EXPECT_EQ(SMSemaphoreAcquireWait(first, 0), kFailed);
  EXPECT_EQ(SMSemaphoreRelease(first, 1, nullptr), kFailed);
  SMSemaphoreDestroy(first);
}

TEST(Semaphore, AnOpenerLeavesItWhenItGoes) {
  SMSemaphore* creator = SMSemaphoreCreate("opened", 1);
  SMSemaphore* opener = SMSemaphoreOpen("opened");
  ASSERT_NE(opener, nullptr);
  EXPECT_EQ(SMSemaphoreAcquireWait(opener, 0), 0U);
  SMSemaphoreDestroy(opener);
  EXPECT_EQ(SMSemaphoreAcquireWait(creator, 0), SM_STATUS_TIMEOUT);
  SMSemaphoreDestroy(creator);
  EXPECT_EQ(SMSemaphoreOpen("opened"), nullptr);
}

TEST(Semaphore, OpeningRegistersTheName) {
  const std::string name = decorated("kqsupsmp", "only opened");
  EXPECT_EQ(registered_key(name), 0U);
  EXPECT_EQ(SMSemaphoreOpen("only opened"), nullptr);
  EXPECT_NE(registered_key(name), 0U);
  EXPECT_EQ(SMSemaphoreOpen(nullptr), nullptr);
  EXPECT_EQ(SMSemaphoreOpen(""), nullptr);
  EXPECT_EQ(SMSemaphoreCreate("", 0), nullptr);
}

TEST(Semaphore, ACountThatADeadProcessTookIsGone) {
  SMSemaphore* semaphore = SMSemaphoreCreate("dead", 1);
  const pid_t child = fork();
  if (child == 0) {
    _exit(SMSemaphoreAcquireWait(SMSemaphoreOpen("dead"), 0) == 0 ? 0 : 1);
  }
  int status = 1;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(SMSemaphoreAcquireWait(semaphore, 0), SM_STATUS_TIMEOUT);
  SMSemaphoreDestroy(semaphore);
}

TEST(Semaphore, WakesWhoWaits) {
  for (const char* name : kNames) {
    SMSemaphore* semaphore = SMSemaphoreCreate(name, 0);
    std::vector<std::thread> waiters;
    for (const int32_t timeout : {-1, -1, 60000, 60000}) {
      waiters.emplace_back([=] { EXPECT_EQ(SMSemaphoreAcquireWait(semaphore, timeout), 0U); });
    }
    EXPECT_EQ(SMSemaphoreRelease(semaphore, 4, nullptr), 0U);
    for (std::thread& waiter : waiters) {
      waiter.join();
    }
    SMSemaphoreDestroy(semaphore);
  }
}

TEST(Semaphore, OfANameHasThePermissionOfItsCreator) {
  const auto mode = [](const char* name) {
    const int set = semget(static_cast<key_t>(registered_key(decorated("kqsupsmp", name))), 0, 0);
    const auto about = about_set(set);
    return about.has_value() ? about->sem_perm.mode & 0777U : 01000U;
  };
  SMSemaphore* shared = SMSemaphoreCreate("shared", 0);
  SMSemaphore* mine = SMSemaphoreCreate_s("mine", 0, 0);
  EXPECT_EQ(mode("shared"), 0664U);
  EXPECT_EQ(mode("mine"), 0600U);
  SMSemaphoreDestroy(shared);
  SMSemaphoreDestroy(mine);
}

TEST(Semaphore, HandlesOfOtherKindsAreRefused) {
  SMMutex* mutex = SMMutexCreate(nullptr);
  auto* other = reinterpret_cast<SMSemaphore*>(mutex);
  EXPECT_EQ(SMSemaphoreAcquireWait(other, 0), SM_STATUS_OPERATION_FAILED);
  EXPECT_EQ(SMSemaphoreRelease(other, 0, nullptr), SM_STATUS_OPERATION_FAILED);
  SMSemaphoreDestroy(other);
  EXPECT_EQ(SMMutexLock(mutex, 0), 0U);
  SMMutexDestroy(mutex);
  EXPECT_EQ(SMSemaphoreAcquireWait(nullptr, 0), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMSemaphoreRelease(nullptr, 0, nullptr), SM_STATUS_INVALID_PARAMETER);
  SMSemaphoreDestroy(nullptr);
}

}  // namespace
