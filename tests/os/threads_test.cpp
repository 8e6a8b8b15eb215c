// Starting, waiting for, naming and telling apart threads.

#include <pthread.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "gtest/gtest.h"
#include "kqsupt/os.h"
#include "support/child.h"
#include "support/emulated.h"
#include "support/guarded.h"
#include "support/program.h"

namespace {

using kqsupt::tests::Guarded;

void* count_up(void* counter) {
  ++*static_cast<std::atomic<int>*>(counter);
  return counter;  // which nobody sees
}

template <class Condition>
void wait_until(Condition condition) {
  while (!condition()) {
    sched_yield();
  }
}

size_t stack_size() {
  pthread_attr_t attributes;
  size_t size = 0;
  if (pthread_getattr_np(pthread_self(), &attributes) == 0) {
    pthread_attr_getstacksize(&attributes, &size);
    pthread_attr_destroy(&attributes);
  }
  return size;
}

bool is_detached() {
  pthread_attr_t attributes;
  int state = -1;
  if (pthread_getattr_np(pthread_self(), &attributes) == 0) {
    pthread_attr_getdetachstate(&attributes, &state);
    pthread_attr_destroy(&attributes);
  }
  return state == PTHREAD_CREATE_DETACHED;
}

// What a thread finds out about itself.
struct Seen {
  std::atomic<bool> done = false;
  size_t stack = 0;
  bool detached = false;
  uint32_t id = 0;
  SMStatus status = 0;
  std::string name;
};

void* look(void* argument) {
  auto* const seen = static_cast<Seen*>(argument);
  seen->stack = stack_size();
  seen->detached = is_detached();
  seen->id = SMThreadGetID();
  seen->done = true;
  return nullptr;
}

TEST(Threads, RunTheRoutineOnceWithTheArgument) {
  std::atomic<int> counter = 0;
  SMThread* thread = SMThreadStart(count_up, &counter);
  ASSERT_NE(thread, nullptr);
  EXPECT_EQ(SMThreadStop(thread), SM_STATUS_SUCCESS);
  EXPECT_EQ(counter, 1);
}

TEST(Threads, PassNullOnToo) {
  SMThread* thread = SMThreadStart(
      [](void* argument) -> void* {
        EXPECT_EQ(argument, nullptr);
        return nullptr;
      },
      nullptr);
  EXPECT_EQ(SMThreadStop(thread), SM_STATUS_SUCCESS);
}

// A sanitizer adds what it needs itself.
void expect_stack_of_128_kib(size_t size) {
#ifdef KQSUPT_SANITIZED
  EXPECT_GE(size, 0x20000U);
#else
  EXPECT_EQ(size, 0x20000U);
#endif
}

TEST(Threads, HaveAStackOf128KiB) {
  Seen seen;
  SMThread* thread = SMThreadStart(look, &seen);
  ASSERT_EQ(SMThreadStop(thread), SM_STATUS_SUCCESS);
  expect_stack_of_128_kib(seen.stack);
  EXPECT_FALSE(seen.detached);
}

TEST(Threads, DoNotStartWithoutARoutine) {
  EXPECT_EQ(SMThreadStart(nullptr, nullptr), nullptr);
  EXPECT_EQ(SMThreadStartAndRelease(nullptr, nullptr), SM_STATUS_INVALID_PARAMETER);
}

TEST(Threads, StopWaitsForTheEnd) {
  static std::atomic<bool> may_end = false;
  static std::atomic<bool> ended = false;
  may_end = ended = false;
  SMThread* sleeper = SMThreadStart(
      [](void*) -> void* {
        wait_until([] { return may_end.load(); });
        usleep(20000);
        ended = true;
        return nullptr;
      },
      nullptr);
  ASSERT_NE(sleeper, nullptr);
  may_end = true;
  EXPECT_EQ(SMThreadStop(sleeper), SM_STATUS_SUCCESS);
  EXPECT_TRUE(ended);
}

TEST(Threads, StopOfOneThatHasEndedReturns) {
  Seen seen;
  SMThread* thread = SMThreadStart(look, &seen);
  wait_until([&] { return seen.done.load(); });
  usleep(20000);
  EXPECT_EQ(SMThreadStop(thread), SM_STATUS_SUCCESS);
}

TEST(Threads, StopAndKillNeedAThread) {
  EXPECT_EQ(SMThreadStop(nullptr), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMThreadKill(nullptr), SM_STATUS_INVALID_PARAMETER);
}

// A second program, since it is the whole process that ends.
TEST(Threads, KillEndsTheProcessWithSignal9) {
  const kqsupt::tests::Outcome outcome =
      kqsupt::tests::run({kqsupt::tests::built_program("thread-killer")});
  EXPECT_EQ(outcome.signal, SIGKILL) << outcome.exit_status << outcome.err;
  EXPECT_EQ(outcome.out, "running\n");
}

#ifndef KQSUPT_SANITIZED  // which would find a thread that nobody waited for
TEST(Threads, KillOfOneThatHasEndedAnswersZero) {
  static std::atomic<pid_t> task = 0;
  SMThread* thread = SMThreadStart(
      [](void*) -> void* {
        task = gettid();
        return nullptr;
      },
      nullptr);
  ASSERT_NE(thread, nullptr);
  wait_until([] {
    return task != 0 && access(("/proc/self/task/" + std::to_string(task)).c_str(), F_OK) != 0;
  });
  EXPECT_EQ(SMThreadKill(thread), SM_STATUS_SUCCESS);
}

// In a process of its own: nothing of it can be given back.
TEST(Threads, DoNotStartWithoutRoomForTheirStack) {
  if (kqsupt::tests::is_emulated()) {
    GTEST_SKIP() << "the emulator needs room itself";
  }
  const auto wait_for_ever = [](void*) -> void* {
    for (;;) {
      pause();
    }
  };
  EXPECT_EQ(kqsupt::tests::in_child([&] {
              const rlimit nothing_more = {1, 1};
              if (setrlimit(RLIMIT_AS, &nothing_more) != 0) {
                return 2;
              }
              // Stacks of threads that have ended are used again.
              for (int i = 0; SMThreadStartAndRelease(wait_for_ever, nullptr) == 0; ++i) {
                if (i == 1000) {
                  return 3;
                }
              }
              return SMThreadStart(wait_for_ever, nullptr) == nullptr &&
                             SMThreadStartAndRelease(wait_for_ever, nullptr) == 0xFFFFFFFF
                         ? 0
                         : 1;
            }),
            0);
}
#endif

TEST(Threads, DetachedOnesRunOnTheSameStackSize) {
  static Seen seen;
  ASSERT_EQ(SMThreadStartAndRelease(look, &seen), SM_STATUS_SUCCESS);
  wait_until([] { return seen.done.load(); });
  expect_stack_of_128_kib(seen.stack);
  EXPECT_TRUE(seen.detached);
}

TEST(Threads, ManyDetachedOnesLeaveRoomForMore) {
  std::atomic<int> counter = 0;
  for (int i = 0; i < 2000; ++i) {
    ASSERT_EQ(SMThreadStartAndRelease(count_up, &counter), SM_STATUS_SUCCESS) << i;
    wait_until([&] { return counter == i + 1; });
  }
}

TEST(Threads, YieldAnswersZero) {
  EXPECT_EQ(SMThreadYield(), 0);
}

TEST(ThreadId, StaysTheSame) {
  EXPECT_EQ(SMThreadGetID(), SMThreadGetID());
  EXPECT_NE(SMThreadGetID(), 0U);
}

TEST(ThreadId, IsThatOfPosixWhereItHas32Bits) {
  if constexpr (sizeof(pthread_t) == sizeof(uint32_t)) {
    EXPECT_EQ(SMThreadGetID(), static_cast<uint32_t>(pthread_self()));
  } else {
    EXPECT_EQ(SMThreadGetID(), static_cast<uint32_t>(gettid()));
  }
}

TEST(ThreadId, IsDifferentInAllThreadsThatLive) {
  constexpr size_t kThreads = 40;
  static std::atomic<bool> may_end = false;
  std::vector<Seen> seen(kThreads);
  std::vector<SMThread*> threads;
  for (Seen& one : seen) {
    threads.push_back(SMThreadStart(
        [](void* argument) -> void* {
          look(argument);
          wait_until([] { return may_end.load(); });
          return nullptr;
        },
        &one));
    ASSERT_NE(threads.back(), nullptr);
  }
  std::set<uint32_t> ids{SMThreadGetID()};
  for (Seen& one : seen) {
    wait_until([&] { return one.done.load(); });
    ids.insert(one.id);
  }
  may_end = true;
  for (SMThread* thread : threads) {
    SMThreadStop(thread);
  }
  EXPECT_EQ(ids.size(), kThreads + 1);
}

void* rename_itself(void* argument) {
  auto* const seen = static_cast<Seen*>(argument);
  seen->status = SMThreadSetName(seen->name.c_str());
  char now[17] = "";
  prctl(PR_GET_NAME, now);
  seen->name = now;
  return nullptr;
}

std::string named(const std::string& name) {
  Seen seen;
  seen.name = name;
  SMThreadStop(SMThreadStart(rename_itself, &seen));
  EXPECT_EQ(seen.status, SM_STATUS_SUCCESS);
  return seen.name;
}

TEST(ThreadName, KeepsItsFirst15Bytes) {
  EXPECT_EQ(named("collector"), "collector");
  EXPECT_EQ(named(""), "");
  EXPECT_EQ(named("123456789012345"), "123456789012345");
  EXPECT_EQ(named("1234567890123456"), "123456789012345");
  EXPECT_EQ(named(std::string(1000, 'x')), std::string(15, 'x'));
  EXPECT_EQ(named("K\xC3\xA4lte"), "K\xC3\xA4lte");
}

TEST(ThreadName, IsThatOfTheCallingThreadAlone) {
  char before[17] = "";
  prctl(PR_GET_NAME, before);
  named("another");
  char after[17] = "";
  prctl(PR_GET_NAME, after);
  EXPECT_STREQ(after, before);
}

TEST(ThreadName, IsNeeded) {
  EXPECT_EQ(SMThreadSetName(nullptr), SM_STATUS_INVALID_PARAMETER);
}

#ifndef KQSUPT_SANITIZED  // whose own reading of the name would end the test
TEST(ThreadName, ThatCannotBeReadIsRefused) {
  const Guarded<char> nothing("", 0);
  EXPECT_EQ(SMThreadSetName(nothing.data()), 0xFFFFFFFFU);
}
#endif

}  // namespace
