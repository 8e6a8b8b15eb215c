// Formatting from several threads of a process, and in its children.

#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
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
