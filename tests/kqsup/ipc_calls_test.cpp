// What looking costs: how often the system is asked.
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <vector>

#include "gtest/gtest.h"
#include "ipc_host.h"
#include "support/emulated.h"

namespace {

using kqsupt::tests::is_emulated;
using namespace kqsup::tests;

// Counts the system calls of a program that prints to nobody, from its start to its end. -1 when it
// does not end with 0.
long calls_of(const Command& command) {
  std::vector<char*> words;
  for (const std::string& word : command) {
    words.push_back(const_cast<char*>(word.c_str()));
  }
  words.push_back(nullptr);
  const pid_t program = fork();
  if (program == 0) {
    ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
#ifdef __SANITIZE_ADDRESS__
    setenv("ASAN_OPTIONS", "detect_leaks=0", 1);  // which cannot be looked for here
#endif
    if (std::freopen("/dev/null", "w", stdout) != nullptr) {
      execv(words[0], words.data());
    }
    _exit(127);
  }
  long stops = 0;
  int status = 0;
  for (waitpid(program, &status, 0); WIFSTOPPED(status); waitpid(program, &status, 0)) {
    stops += WSTOPSIG(status) == (SIGTRAP | 0x80) ? 1 : 0;
    ptrace(PTRACE_SETOPTIONS, program, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
    ptrace(PTRACE_SYSCALL, program, nullptr, nullptr);
  }
  return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? stops / 2 : -1;  // entry and exit
}

TEST(KqsupIpcCalls, AreFiveAnObjectAtTheMost) {
  if (is_emulated()) {
    GTEST_SKIP() << "what would be counted is the emulator";
  }
  constexpr long kObjects = 1000;
  Command steps;
  for (long i = 0; i < kObjects / 4; ++i) {
    const std::string name = "counted " + std::to_string(i);
    for (const Command& step : {Command{"semaphore", name, "3"}, Command{"event", name, "1", "0"},
                                Command{"memory", name, "100"}, Command{"mutex", name}}) {
      steps.insert(steps.end(), step.begin(), step.end());
    }
  }
  steps.emplace_back("stay");
  const Background maker = living_agent(steps);
  const long calls = calls_of({built_program("kqsup"), "ipc", "list"});
  EXPECT_GT(calls, 0);
  EXPECT_LE(calls, 5 * kObjects);
}

TEST(KqsupIpcCalls, AreFiveAnObjectOfEachKind) {
  if (is_emulated()) {
    GTEST_SKIP() << "what would be counted is the emulator";
  }
  constexpr long kEach = 50;
  constexpr long kLongerFiles = 16;  // the registry and the kernel's tables are read in pieces
  for (const Command& end : {Command{"semaphore", "3"}, Command{"event", "1", "0"},
                             Command{"memory", "100"}, Command{"mutex"}}) {
    const long before = calls_of({built_program("kqsup"), "ipc", "list"});
    for (long i = 0; i < kEach; ++i) {  // each has a maker of its own
      Command steps{end[0], "each " + end[0] + std::to_string(i)};
      steps.insert(steps.end(), end.begin() + 1, end.end());
      ASSERT_EQ(agent(steps), 0);
    }
    const long after = calls_of({built_program("kqsup"), "ipc", "list"});
    EXPECT_GT(before, 0);
    EXPECT_GT(after, before) << end[0];
    EXPECT_LE(after - before, 5 * kEach + kLongerFiles) << end[0];
  }
}

}  // namespace
