// All kinds of objects in the hands of many threads at once.

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "gtest/gtest.h"
#include "kqsupt/ipc.h"
#include "kqsupt/text.h"

namespace {

constexpr uint32_t kThreads = 6;
constexpr uint32_t kRounds = 300;

void in_threads(const std::function<void(uint32_t)>& work) {
  std::vector<std::thread> threads;
  for (uint32_t thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([&work, thread] {
      for (uint32_t round = 0; round < kRounds; ++round) {
        work(thread * kRounds + round);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

// Counts in two steps, so that a second thread between them is seen. What is guarded by the system's own
// semaphores must be atomic for tools that do not see these.
class Count {
 public:
  void add_one() {
    const uint32_t before = value_.load(std::memory_order_relaxed);
    if (before % 16 == 0) {
      std::this_thread::yield();
    }
    value_.store(before + 1, std::memory_order_relaxed);
  }
  [[nodiscard]] uint32_t value() const { return value_.load(); }

 private:
  std::atomic<uint32_t> value_ = 0;
};

class ManyThreads : public testing::TestWithParam<const char*> {};

INSTANTIATE_TEST_SUITE_P(Of, ManyThreads, testing::Values(nullptr, "many threads"),
                         [](const testing::TestParamInfo<const char*>& name) {
                           return name.param == nullptr ? "NoName" : "Name";
                         });

TEST_P(ManyThreads, ShareAMutex) {
  SMMutex* mutex = SMMutexCreate(GetParam());
  ASSERT_NE(mutex, nullptr);
  uint32_t count = 0;
  in_threads([&](uint32_t i) {
    if (i % 3 == 0) {
      while (SMMutexLock(mutex, 0) == SM_STATUS_TIMEOUT) {
        std::this_thread::yield();
      }
    } else {
      EXPECT_EQ(SMMutexLock(mutex, -1), SM_STATUS_SUCCESS);
    }
    ++count;
    EXPECT_EQ(SMMutexUnLock(mutex), SM_STATUS_SUCCESS);
  });
  EXPECT_EQ(count, kThreads * kRounds);
  SMMutexDestroy(mutex);
}

TEST_P(ManyThreads, ShareASemaphore) {
  SMSemaphore* semaphore = SMSemaphoreCreate(GetParam(), 1);
  ASSERT_NE(semaphore, nullptr);
  Count count;
  in_threads([&](uint32_t i) {
    const int32_t timeout = i % 2 == 0 ? -1 : 60000;
    EXPECT_EQ(SMSemaphoreAcquireWait(semaphore, timeout), SM_STATUS_SUCCESS);
    count.add_one();
    uint32_t previous = 7;
    EXPECT_EQ(SMSemaphoreRelease(semaphore, 1, &previous), SM_STATUS_SUCCESS);
    EXPECT_EQ(previous, 0U);
  });
  EXPECT_EQ(count.value(), kThreads * kRounds);
  SMSemaphoreDestroy(semaphore);
}

// An event that lets one through and is then reset is a semaphore of one.
TEST_P(ManyThreads, ShareAnEvent) {
  SMEvent* event = SMEventCreate(GetParam(), 0, 1);
  ASSERT_NE(event, nullptr);
  Count count;
  in_threads([&](uint32_t i) {
    const int32_t timeout = i % 2 == 0 ? -1 : 60000;
    EXPECT_EQ(SMEventWait(event, timeout), SM_STATUS_SUCCESS);
    count.add_one();
    EXPECT_EQ(SMEventSet(event), SM_STATUS_SUCCESS);
  });
  EXPECT_EQ(count.value(), kThreads * kRounds);
  SMEventDestroy(event);
}

TEST_P(ManyThreads, WaitForOneManualEvent) {
  SMEvent* event = SMEventCreate(GetParam(), 1, 0);
  ASSERT_NE(event, nullptr);
  std::atomic<bool> set = false;
  std::vector<std::thread> threads;
  for (uint32_t thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([&] {
      EXPECT_EQ(SMEventWait(event, -1), SM_STATUS_SUCCESS);
      EXPECT_TRUE(set);
    });
  }
  set = true;
  EXPECT_EQ(SMEventSet(event), SM_STATUS_SUCCESS);
  for (std::thread& thread : threads) {
    thread.join();
  }
  SMEventDestroy(event);
}

TEST_P(ManyThreads, ShareAReaderWriterLock) {
  SMRWLock* lock = SMRWLCreate(GetParam());
  ASSERT_NE(lock, nullptr);
  uint32_t halves[2] = {0, 0};
  in_threads([&](uint32_t i) {
    if (i % 4 == 0) {
      EXPECT_EQ(SMRWLWriteLockGet(lock, -1), SM_STATUS_SUCCESS);
      ++halves[0];
      ++halves[1];
      SMRWLWriteLockRelease(lock);
    } else {
      EXPECT_EQ(SMRWLReadLockGet(lock, -1), SM_STATUS_SUCCESS);
      EXPECT_EQ(halves[0], halves[1]);
      SMRWLReadLockRelease(lock);
    }
  });
  EXPECT_EQ(halves[0], kThreads * kRounds / 4);
  SMRWLDestroy(lock);
}

// Names are registered one at a time, whoever asks.
TEST(ManyThreadsAtOnce, CreateAndDestroyObjectsOfTheirOwn) {
  constexpr uint32_t kObjects = 10;
  std::vector<std::thread> threads;
  for (uint32_t thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([thread] {
      for (uint32_t i = 0; i < kObjects; ++i) {
        const std::string name = "own " + std::to_string(thread) + ' ' + std::to_string(i);
        SMMutex* mutex = SMMutexCreate(name.c_str());
        SMSemaphore* semaphore = SMSemaphoreCreate(name.c_str(), 1);
        SMEvent* event = SMEventCreate(name.c_str(), 1, 1);
        SMSharedMem* memory = SMSharedMemCreate(name.c_str(), 100);
        EXPECT_EQ(SMMutexLock(mutex, 0), SM_STATUS_SUCCESS);
        EXPECT_EQ(SMSemaphoreAcquireWait(semaphore, 0), SM_STATUS_SUCCESS);
        EXPECT_EQ(SMEventWait(event, 0), SM_STATUS_SUCCESS);
        EXPECT_NE(SMSharedMemGetAddressPtr(memory), nullptr);
        SMSharedMemFree(memory);
        SMEventDestroy(event);
        SMSemaphoreDestroy(semaphore);
        SMMutexUnLock(mutex);
        SMMutexDestroy(mutex);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

TEST(ManyThreadsAtOnce, FormatUnderOneMutex) {
  static uint32_t inside = 0;
  in_threads([](uint32_t i) {
    char text[32];
    const int32_t stored = SMsnprintf(text, sizeof text, "%u %s", i, "text");
    EXPECT_EQ(std::string(text), std::to_string(i) + " text");
    EXPECT_EQ(stored, static_cast<int32_t>(std::string(text).size()));
    SMCriticalSectionExecute(
        [](void*) -> void* {
          ++inside;
          return nullptr;
        },
        nullptr, -1);
  });
}

}  // namespace
