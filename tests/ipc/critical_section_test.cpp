// Running routines one call at a time.

#include <sched.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <thread>
#include <vector>

#include "gtest/gtest.h"
#include "kqsupt/ipc.h"

namespace {

template <class Condition>
void wait_until(Condition condition) {
  while (!condition()) {
    sched_yield();
  }
}

// Adds one, in two steps that another thread would be seen between.
void* add_one(void* counter) {
  auto* const number = static_cast<volatile uint32_t*>(counter);
  *number = *number + 1;
  return counter;
}
void* also_add_one(void* counter) {
  return add_one(counter);
}

// The routine's own address, as the answer tells it.
uint32_t address_of(SMCriticalSectionRoutine routine) {
  const auto low = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(routine));
  return low != 0 ? low : 1;
}

TEST(CriticalSection, RunsTheRoutineOnceWithTheArgument) {
  uint32_t counter = 0;
  EXPECT_EQ(SMCriticalSectionExecute(add_one, &counter, -1), SM_STATUS_SUCCESS);
  EXPECT_EQ(counter, 1U);
}

TEST(CriticalSection, MayBeEnteredAgain) {
  uint32_t counter = 0;
  for (uint32_t i = 1; i <= 1000; ++i) {
    EXPECT_EQ(SMCriticalSectionExecute(add_one, &counter, -1), SM_STATUS_SUCCESS);
    EXPECT_EQ(counter, i);
  }
}

TEST(CriticalSection, DiscardsTheResult) {
  EXPECT_EQ(SMCriticalSectionExecute(
                [](void*) -> void* { return reinterpret_cast<void*>(uintptr_t{77}); }, nullptr, -1),
            SM_STATUS_SUCCESS);
}

TEST(CriticalSection, WithoutARoutineAnswersZeroAtAnyTimeout) {
  for (const int32_t timeout : {-1, 0, 1000}) {
    EXPECT_EQ(SMCriticalSectionExecute(nullptr, nullptr, timeout), SM_STATUS_SUCCESS);
  }
}

TEST(CriticalSection, WithATimeoutDoesNotRunAndAnswersTheAddress) {
  uint32_t counter = 0;
  for (const int32_t timeout : {0, 1, 1000, -2, INT32_MAX, INT32_MIN}) {
    EXPECT_EQ(SMCriticalSectionExecute(add_one, &counter, timeout), address_of(add_one));
  }
  EXPECT_EQ(counter, 0U);
}

TEST(CriticalSection, WithATimeoutNeverAnswersZero) {
  if constexpr (sizeof(void*) > sizeof(uint32_t)) {
    const uintptr_t no_low_bits = uintptr_t{1} << (8 * sizeof(uint32_t));
    EXPECT_NE(SMCriticalSectionExecute(reinterpret_cast<SMCriticalSectionRoutine>(no_low_bits),
                                       nullptr, 0),
              SM_STATUS_SUCCESS);
  }
}

TEST(CriticalSection, RunsOneCallOfARoutineAtATime) {
  constexpr uint32_t kThreads = 8;
  constexpr uint32_t kRounds = 2000;
  uint32_t counter = 0;
  std::vector<std::thread> threads;
  for (uint32_t i = 0; i < kThreads; ++i) {
    threads.emplace_back([&counter] {
      for (uint32_t round = 0; round < kRounds; ++round) {
        EXPECT_EQ(SMCriticalSectionExecute(add_one, &counter, -1), SM_STATUS_SUCCESS);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(counter, kThreads * kRounds);
}

TEST(CriticalSection, SerialisesEachOfManyRoutinesAlone) {
  constexpr uint32_t kRounds = 2000;
  uint32_t first = 0;
  uint32_t second = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (uint32_t round = 0; round < kRounds; ++round) {
        SMCriticalSectionExecute(add_one, &first, -1);
        SMCriticalSectionExecute(also_add_one, &second, -1);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(first, 4 * kRounds);
  EXPECT_EQ(second, 4 * kRounds);
}

struct Meeting {
  std::atomic<int> arrived = 0;
};

template <int Which>
void* meet(void* argument) {
  auto* const meeting = static_cast<Meeting*>(argument);
  ++meeting->arrived;
  wait_until([&] { return meeting->arrived == 2; });
  return nullptr;
}

TEST(CriticalSection, RunsDifferentRoutinesAtTheSameTime) {
  Meeting meeting;
  std::thread other([&] { SMCriticalSectionExecute(meet<1>, &meeting, -1); });
  EXPECT_EQ(SMCriticalSectionExecute(meet<2>, &meeting, -1), SM_STATUS_SUCCESS);
  other.join();
}

TEST(CriticalSection, MayRunAnotherRoutineFromInside) {
  uint32_t counter = 0;
  EXPECT_EQ(SMCriticalSectionExecute(
                [](void* argument) -> void* {
                  EXPECT_EQ(SMCriticalSectionExecute(add_one, argument, -1), SM_STATUS_SUCCESS);
                  return nullptr;
                },
                &counter, -1),
            SM_STATUS_SUCCESS);
  EXPECT_EQ(counter, 1U);
}

struct Visit {
  std::atomic<int> inside = 0;
  std::atomic<bool> may_leave = false;
};

void* visit(void* argument) {
  auto* const place = static_cast<Visit*>(argument);
  ++place->inside;
  wait_until([&] { return place->may_leave.load(); });
  --place->inside;
  return nullptr;
}

TEST(CriticalSection, KeepsASecondThreadOutUntilTheFirstIsDone) {
  Visit place;
  std::vector<std::thread> threads;
  for (int i = 0; i < 2; ++i) {
    threads.emplace_back([&] { SMCriticalSectionExecute(visit, &place, -1); });
  }
  wait_until([&] { return place.inside > 0; });
  usleep(50000);
  EXPECT_EQ(place.inside, 1);
  place.may_leave = true;
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(place.inside, 0);
}

}  // namespace
