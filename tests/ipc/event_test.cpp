// Events, private and named, of both ways to be reset.

#include <sys/sem.h>

#include <atomic>
#include <optional>
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
constexpr const char* kNames[] = {nullptr, "event"};

TEST(Event, OfManualResetStaysSignalled) {
  for (const char* name : kNames) {
    SMEvent* event = SMEventCreate(name, 1, 0);
    ASSERT_NE(event, nullptr);
    EXPECT_EQ(SMEventWait(event, 0), SM_STATUS_TIMEOUT);
    EXPECT_EQ(SMEventWait(event, 20), SM_STATUS_TIMEOUT);
    EXPECT_EQ(SMEventSet(event), 0U);
    for (const int32_t timeout : {0, 20, -1}) {
      EXPECT_EQ(SMEventWait(event, timeout), 0U);
    }
    EXPECT_EQ(SMEventReset(event), 0U);
    EXPECT_EQ(SMEventWait(event, 0), SM_STATUS_TIMEOUT);
    SMEventDestroy(event);
  }
}

TEST(Event, OfAutomaticResetLetsOneThrough) {
  for (const char* name : kNames) {
    SMEvent* event = SMEventCreate(name, 0, 0);
    for (int i = 0; i < 3; ++i) {
      EXPECT_EQ(SMEventSet(event), 0U);
    }
    EXPECT_EQ(SMEventWait(event, 0), 0U);
    EXPECT_EQ(SMEventWait(event, 0), SM_STATUS_TIMEOUT);
    SMEventDestroy(event);
  }
}

TEST(Event, ResetTakesEverySignal) {
  for (const char* name : kNames) {
    SMEvent* event = SMEventCreate(name, 1, 1);
    SMEventSet(event);
    SMEventSet(event);
    EXPECT_EQ(SMEventReset(event), 0U);
    EXPECT_EQ(SMEventWait(event, 0), SM_STATUS_TIMEOUT);
    SMEventDestroy(event);
  }
}

TEST(Event, IsSignalledFromTheStartForExactlyOne) {
  for (const char* name : kNames) {
    for (const uint32_t signalled : {0U, 1U, 2U}) {
      SMEvent* event = SMEventCreate(name, 0, signalled);
      EXPECT_EQ(SMEventWait(event, 0), signalled == 1 ? SM_STATUS_SUCCESS : SM_STATUS_TIMEOUT);
      SMEventDestroy(event);
    }
  }
}

TEST(Event, IsResetByHandForExactlyOne) {
  for (const int32_t manual : {0, 1, 2, -1}) {
    SMEvent* event = SMEventCreate(nullptr, manual, 1);
    EXPECT_EQ(SMEventWait(event, 0), 0U);
    EXPECT_EQ(SMEventWait(event, 0), manual == 1 ? SM_STATUS_SUCCESS : SM_STATUS_TIMEOUT);
    SMEventDestroy(event);
  }
}

TEST(Event, OpenersLearnHowItIsReset) {
  for (const int32_t manual : {0, 1}) {
    const std::string name = "reset" + std::to_string(manual);
    SMEvent* creator = SMEventCreate(name.c_str(), manual, 1);
    SMEvent* opener = SMEventOpen(name.c_str());
    ASSERT_NE(opener, nullptr);
    EXPECT_EQ(SMEventWait(opener, 0), 0U);
    EXPECT_EQ(SMEventWait(opener, 0), manual == 1 ? SM_STATUS_SUCCESS : SM_STATUS_TIMEOUT);
    const int set = semget(static_cast<key_t>(registered_key(decorated("kqsupevt", name))), 0, 0);
    const auto about = about_set(set);
    ASSERT_TRUE(about.has_value());
    EXPECT_EQ(about->sem_nsems, manual == 1 ? 2U : 1U);
    SMEventDestroy(opener);
    EXPECT_EQ(SMEventSet(creator), 0U);
    SMEventDestroy(creator);
    EXPECT_EQ(SMEventOpen(name.c_str()), nullptr);
  }
}

TEST(Event, WithoutWaitersAPulseLeavesItUnsignalled) {
  for (const char* name : kNames) {
    for (const int32_t manual : {0, 1}) {
      for (const uint32_t signalled : {0U, 1U}) {
        SMEvent* event = SMEventCreate(name, manual, signalled);
        EXPECT_EQ(SMEventPulse(event), 0U);
        EXPECT_EQ(SMEventWait(event, 0), SM_STATUS_TIMEOUT);
        SMEventDestroy(event);
      }
    }
  }
}

TEST(Event, PulsesLetWaitersThrough) {
  for (const char* name : kNames) {
    for (const int32_t manual : {0, 1}) {
      SMEvent* event = SMEventCreate(name, manual, 0);
      std::atomic<int> through = 0;
      std::vector<std::thread> waiters;
      for (int i = 0; i < 3; ++i) {
        waiters.emplace_back([&] {
          EXPECT_EQ(SMEventWait(event, -1), 0U);
          ++through;
        });
      }
      // A waiter that is not yet there, or does not run in between, misses a pulse.
      while (through < 3) {
        SMEventPulse(event);
        std::this_thread::yield();
      }
      for (std::thread& waiter : waiters) {
        waiter.join();
      }
      SMEventDestroy(event);
    }
  }
}

std::optional<semid_ds> about_event(const std::string& name) {
  return about_set(semget(static_cast<key_t>(registered_key(decorated("kqsupevt", name))), 0, 0));
}

TEST(Event, OfANameHasThePermissionOfItsCreator) {
  const auto mode = [](const char* name) {
    const auto about = about_event(name);
    return about.has_value() ? about->sem_perm.mode & 0777U : 01000U;
  };
  SMEvent* shared = SMEventCreate("shared", 0, 0);
  SMEvent* mine = SMEventCreate_s("mine", 1, 0, 0);
  SMEvent* chosen = SMEventCreate_s(
      "chosen", 1, 0,
      SM_PERMISSION_OWNER_READ | SM_PERMISSION_OWNER_WRITE | SM_PERMISSION_GROUP_READ);
  EXPECT_EQ(mode("shared"), 0664U);
  EXPECT_EQ(mode("mine"), 0600U);
  EXPECT_EQ(mode("chosen"), 0640U);
  SMEventDestroy(shared);
  SMEventDestroy(mine);
  SMEventDestroy(chosen);
}

TEST(Event, ASecondCreatorGetsItAsItIs) {
  SMEvent* first = SMEventCreate("twice", 1, 1);
  SMEvent* second = SMEventCreate_s("twice", 1, 0, 0);
  ASSERT_NE(second, nullptr);
  EXPECT_EQ(SMEventWait(second, 0), 0U);
  const auto about = about_event("twice");
  ASSERT_TRUE(about.has_value());
  EXPECT_EQ(about->sem_perm.mode & 0777U, 0664U);
  // Either creator takes it away from both.
  SMEventDestroy(second);
  EXPECT_EQ(SMEventWait(first, 0), kFailed);
  EXPECT_EQ(SMEventReset(first), 0U);
  SMEventDestroy(first);
}

// What it says of the reset counts for its own handle alone.
TEST(Event, ASecondCreatorDoesNotChangeHowItIsReset) {
  SMEvent* first = SMEventCreate("twice", 1, 1);
  SMEvent* second = SMEventCreate("twice", 0, 0);
  const auto about = about_event("twice");
  ASSERT_TRUE(about.has_value());
  EXPECT_EQ(about->sem_nsems, 2U);
  EXPECT_EQ(SMEventWait(first, 0), 0U);
  EXPECT_EQ(SMEventWait(second, 0), 0U);
  EXPECT_EQ(SMEventWait(first, 0), SM_STATUS_TIMEOUT);
  SMEventDestroy(second);
  SMEventDestroy(first);
}

TEST(Event, ADestroyedOneRefusesWhoWaits) {
  SMEvent* creator = SMEventCreate("destroyed", 0, 0);
  SMEvent* opener = SMEventOpen("destroyed");
  std::thread waiter([&] { EXPECT_EQ(SMEventWait(opener, -1), kFailed); });
  SMEventDestroy(creator);
  waiter.join();
  EXPECT_EQ(SMEventSet(opener), kFailed);
  SMEventDestroy(opener);
}

TEST(Event, NeedsANameToBeOpened) {
  EXPECT_EQ(SMEventOpen(nullptr), nullptr);
  EXPECT_EQ(SMEventOpen(""), nullptr);
  EXPECT_EQ(SMEventOpen("never created"), nullptr);
  EXPECT_EQ(SMEventCreate("", 0, 0), nullptr);
  EXPECT_EQ(SMEventCreate_s("", 0, 0, 0), nullptr);
}

TEST(Event, HandlesOfOtherKindsAreRefused) {
  SMMutex* mutex = SMMutexCreate(nullptr);
  auto* other = reinterpret_cast<SMEvent*>(mutex);
  SMStatus (*const kCalls[])(SMEvent*) = {SMEventSet, SMEventReset, SMEventPulse};
  for (const auto call : kCalls) {
    EXPECT_EQ(call(other), SM_STATUS_OPERATION_FAILED);
    EXPECT_EQ(call(nullptr), SM_STATUS_INVALID_PARAMETER);
  }
  EXPECT_EQ(SMEventWait(other, 0), SM_STATUS_OPERATION_FAILED);
  EXPECT_EQ(SMEventWait(nullptr, 0), SM_STATUS_INVALID_PARAMETER);
  SMEventDestroy(other);
  SMEventDestroy(nullptr);
  EXPECT_EQ(SMMutexLock(mutex, 0), 0U);
  SMMutexDestroy(mutex);
}

}  // namespace
