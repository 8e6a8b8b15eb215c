// The programs that a test starts, on hosts that are emulated as on others.

#include "gtest/gtest.h"
#include "support/program.h"

namespace {

using kqsupt::tests::built_program;
using kqsupt::tests::Command;
using kqsupt::tests::Outcome;
using kqsupt::tests::run_native;
using kqsupt::tests::with_runner;

// A program that needs the sine.
Outcome run_digests(const std::string& directory) {
  Command command{"sh", "-c", "cd \"$0\" && exec \"$@\"", directory};
  for (const std::string& word :
       with_runner({built_program("test-containers"), "--gtest_filter=MessageDigest.*:Sine.*"})) {
    command.push_back(word);
  }
  return run_native(command);
}

TEST(Runner, FurtherProgramsComputeDigestsInAnyDirectory) {
  for (const char* directory : {".", "/"}) {
    const Outcome outcome = run_digests(directory);
    EXPECT_EQ(outcome.exit_status, 0) << outcome.out << outcome.err;
    EXPECT_NE(outcome.out.find("[  PASSED  ]"), std::string::npos) << outcome.out;
  }
}

TEST(Runner, NativeProgramsAreNotPreloadedInto) {
  const Outcome outcome = run_native({"sh", "-c", "echo \"$LD_PRELOAD\""});
  EXPECT_EQ(outcome.out, "\n");
  EXPECT_EQ(outcome.err, "");
}

}  // namespace
