// The host's kind and what depends on it, the console, and what does nothing on this system.

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <optional>
#include <string>

#include "gtest/gtest.h"
#include "kqsupt/os.h"
#include "support/guarded.h"
#include "support/program.h"

namespace {

using kqsupt::tests::built_program;
using kqsupt::tests::Command;
using kqsupt::tests::Guarded;
using kqsupt::tests::Outcome;
using kqsupt::tests::run_native;
using kqsupt::tests::with_runner;

// What the library says of itself in a process whose system calls itself `name`; with none the
// system does not say.
std::string on_host(const std::optional<std::string>& name) {
  Command command = with_runner({built_program("named-host")});
  if (name) {
    command.insert(command.begin(), {"env", "KQSUPT_HOST_NAME=" + *name});
  }
  const Outcome outcome = run_native(command);
  EXPECT_EQ(outcome.exit_status, 0) << outcome.err;
  return outcome.out;
}

constexpr char kOrdinary[] =
    "type 3, default 1048576, "
    "131071 no, 131072 no, 1048575 no, 1048576 yes, 4194304 yes, 4194305 no; of 128 KiB: not "
    "full\n";
constexpr char kSmallDisks[] =
    "type 4, default 131072, "
    "131071 no, 131072 yes, 1048575 yes, 1048576 yes, 4194304 yes, 4194305 no; of 128 KiB: full\n";

TEST(Host, IsOfType3) {
  EXPECT_EQ(SMOSTypeGet(), 3U);
  EXPECT_EQ(on_host("Linux"), kOrdinary);
}

TEST(Host, IsOfType4WithSmallerLogsWhereTheKernelIsNamedSo) {
  EXPECT_EQ(on_host("VMkernel"), kSmallDisks);
}

TEST(Host, IsOfType4WhateverTheCaseOfTheKernelsName) {
  EXPECT_EQ(on_host("vmkernel"), kSmallDisks);
  EXPECT_EQ(on_host("VMKERNEL"), kSmallDisks);
}

TEST(Host, IsOfType3WhereTheKernelsNameIsMoreOrLessThanThat) {
  EXPECT_EQ(on_host("VMkernel2"), kOrdinary);
  EXPECT_EQ(on_host("VMkerne"), kOrdinary);
  EXPECT_EQ(on_host(""), kOrdinary);
}

TEST(Host, IsOfType3WhereTheSystemDoesNotSay) {
  EXPECT_EQ(on_host(std::nullopt), kOrdinary);
}

// A pipe in the place of standard input, until it goes.
class PipedInput {
 public:
  PipedInput() : before_(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3)) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) == 0) {
      dup2(ends[0], STDIN_FILENO);
      close(ends[0]);
      end_ = ends[1];
    }
  }
  PipedInput(const PipedInput&) = delete;
  PipedInput& operator=(const PipedInput&) = delete;
  ~PipedInput() {
    close_end();
    dup2(before_, STDIN_FILENO);
    close(before_);
  }

  void type(char key) const { EXPECT_EQ(write(end_, &key, 1), 1); }
  static char read_key() {
    char key = '\0';
    EXPECT_EQ(read(STDIN_FILENO, &key, 1), 1);
    return key;
  }
  void close_end() {
    if (end_ >= 0) {
      close(end_);
      end_ = -1;
    }
  }

 private:
  int before_;
  int end_ = -1;
};

TEST(Keyboard, IsSilentUntilThereIsInput) {
  const PipedInput input;
  EXPECT_EQ(SMkbhit(), 0);
  input.type('k');
  EXPECT_EQ(SMkbhit(), 1);
}

TEST(Keyboard, KeepsWhatWasTyped) {
  const PipedInput input;
  input.type('k');
  EXPECT_EQ(SMkbhit(), 1);
  EXPECT_EQ(SMkbhit(), 1);
  EXPECT_EQ(PipedInput::read_key(), 'k');
  EXPECT_EQ(SMkbhit(), 0);
}

TEST(Keyboard, IsReadyAtTheEndOfTheInput) {
  PipedInput input;
  input.close_end();
  EXPECT_EQ(SMkbhit(), 1);
}

TEST(Keyboard, IsSilentWithoutStandardInput) {
  const PipedInput input;
  close(STDIN_FILENO);
  EXPECT_EQ(SMkbhit(), 0);
}

TEST(Host, IsNotShutDown) {
  EXPECT_EQ(SMOSShutdown(), SM_STATUS_SUCCESS);
}

TEST(Host, HasLongFileNamesAlways) {
  EXPECT_EQ(SMLongFileNamesDisable(), SM_STATUS_SUCCESS);
  EXPECT_EQ(SMLongFileNamesEnable(), SM_STATUS_SUCCESS);
}

TEST(ExportContext, IsNumber0) {
  const Guarded<uint32_t> context(1);
  SMGetExportContext(context.data());
  EXPECT_EQ(*context.data(), 0U);
}

TEST(ExportContext, CannotBeChanged) {
  const Guarded<uint32_t> context(1);
  SMSetExportContext(7);
  SMGetExportContext(context.data());
  EXPECT_EQ(*context.data(), 0U);
  SMResetExportContext();
  *context.data() = 7;
  SMGetExportContext(context.data());
  EXPECT_EQ(*context.data(), 0U);
}

TEST(ExportContext, IsNotWrittenToNowhere) {
  SMGetExportContext(nullptr);
}

}  // namespace
