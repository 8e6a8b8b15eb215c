// Formatting from several threads of a process, and in its children.

#include <sched.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstring>
#include <ctime>
#include <string>
#include <thread>
#include <vector>

#include "text/formatted.h"

namespace {

TEST(FormatThreads, EachGetsItsOwnOutput) {
  std::vector<std::thread> threads;
  std::atomic<uint32_t> wrong = 0;
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([thread, &wrong] {
      for (int i = 0; i < 2000; ++i) {
        char text[64];
        SMsnprintf(text, sizeof text, "%d %s %.3f", thread, "text", i / 8.0);
        char same[64];
        std::snprintf(same, sizeof same, "%d %s %.3f", thread, "text", i / 8.0);
        if (std::string(text) != same) {
          ++wrong;
        }
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(wrong, 0U);
}

// The runtime of the sanitizers keeps the signal for its own reports.
#ifndef KQSUPT_SANITIZED

// A text that is not there until the first read of it is answered: whoever formats it stays in the
// midst of its call for a while. Another thread that gets through meanwhile is seen.
struct Fault {
  char* page = nullptr;
  std::atomic<bool> inside = false;
  std::atomic<bool> other_calls = false;
  std::atomic<bool> other_returned = false;
  std::atomic<bool> other_got_through = false;
};
Fault fault;
constexpr size_t kPageSize = 65536;  // of any host

void answer_read(int, siginfo_t* about, void*) {
  const auto offset =
      reinterpret_cast<uintptr_t>(about->si_addr) - reinterpret_cast<uintptr_t>(fault.page);
  if (offset >= kPageSize) {
    std::signal(SIGSEGV, SIG_DFL);  // another fault is the end of the test
    return;
  }
  fault.inside = true;
  while (!fault.other_calls) {
    sched_yield();
  }
  const timespec enough{0, 200000000};  // for a call that nothing holds up
  nanosleep(&enough, nullptr);
  fault.other_got_through = fault.other_returned.load();
  mprotect(fault.page, kPageSize, PROT_READ);
}

TEST(FormatThreads, OneWaitsUntilTheOtherHasReturned) {
  void* page = mmap(nullptr, kPageSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  ASSERT_NE(page, MAP_FAILED);
  fault.page = static_cast<char*>(page);
  std::strcpy(fault.page, "text");
  ASSERT_EQ(mprotect(page, kPageSize, PROT_NONE), 0);
  struct sigaction action {};
  struct sigaction before {};
  action.sa_sigaction = answer_read;
  action.sa_flags = SA_SIGINFO;
  ASSERT_EQ(sigaction(SIGSEGV, &action, &before), 0);
  std::thread other([] {
    while (!fault.inside) {
      sched_yield();
    }
    char text[8];
    fault.other_calls = true;
    SMsnprintf(text, sizeof text, "%d", 42);
    fault.other_returned = true;
  });
  char text[8];
  EXPECT_EQ(SMsnprintf(text, sizeof text, "%s", fault.page), 4);
  fault.inside = true;  // ends the other thread if the text was never read
  other.join();
  sigaction(SIGSEGV, &before, nullptr);
  EXPECT_TRUE(fault.other_calls);
  EXPECT_TRUE(fault.other_returned);
  EXPECT_FALSE(fault.other_got_through);
  EXPECT_STREQ(text, "text");
  munmap(page, kPageSize);
}

#endif

// A child that is forked while another thread formats must not find the formatter taken for ever.
TEST(FormatThreads, ChildOfAProcessThatFormatsCanFormat) {
  std::atomic<bool> stop = false;
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 2; ++thread) {
    threads.emplace_back([&stop] {
      char text[2048];
      while (!stop) {
        SMsnprintf(text, sizeof text, "%.1074f", 5e-324);
      }
    });
  }
  for (int i = 0; i < 50; ++i) {
    const pid_t child = fork();
    if (child == 0) {
      alarm(60);  // ends a child that waits for ever
      char text[8];
      const int32_t stored = SMsnprintf(text, sizeof text, "%d", 42);
      _exit(stored == 2 ? 0 : 1);
    }
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    if (HasFailure()) {
      break;
    }
  }
  stop = true;
  for (std::thread& thread : threads) {
    thread.join();
  }
}

}  // namespace
