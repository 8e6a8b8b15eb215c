// The example agent that is written with the C++ layer, as processes.

#include <unistd.h>

#include <string>

#include "gtest/gtest.h"
#include "kqsupt.h"
#include "log/event_logs.h"
#include "support/program.h"
#include "support/scratch.h"

namespace {

using kqsupt::tests::built_program;
using kqsupt::tests::content_of;
using kqsupt::tests::Outcome;
using kqsupt::tests::own_log;
using kqsupt::tests::parse_text_log;
using kqsupt::tests::put;
using kqsupt::tests::run;
using kqsupt::tests::run_native;
using kqsupt::tests::Scratch;
using kqsupt::tests::with_runner;

std::string command_line(const std::string& arguments) {
  std::string line;
  for (const std::string& word : with_runner({built_program("agent")})) {
    line += word + " ";
  }
  return line + arguments;
}

// Runs both sides at once; what the taking one printed, and both exit statuses together.
Outcome hand_over(const std::string& ini) {
  const Scratch scratch;
  put(scratch.file("sensor.ini"), ini);
  return run_native({"sh", "-c",
                     command_line("offer " + scratch.file("sensor.ini")) + " & " +
                         command_line("take") + "; status=$?; wait $! && exit $status"});
}

TEST(Agent, HandsASensorToAnotherProcess) {
  const Outcome outcome = hand_over("[sensor]\nname=inlet\ncelsius=-3\nlimit=40\n");
  EXPECT_EQ(outcome.exit_status, 0) << outcome.err;
  EXPECT_EQ(outcome.out, "inlet: -3 degrees\n");
}

TEST(Agent, LogsOnlyASensorThatIsTooHot) {
  unlink(own_log(SM_LOG_TEXT).c_str());
  ASSERT_EQ(hand_over("[sensor]\nname=inlet\ncelsius=40\nlimit=40\n").exit_status, 0);
  EXPECT_EQ(content_of(own_log(SM_LOG_TEXT)), "(no file)");
  ASSERT_EQ(hand_over("[sensor]\nname=outlet\ncelsius=41\nlimit=40\n").exit_status, 0);
  const auto records = parse_text_log(content_of(own_log(SM_LOG_TEXT)));
  ASSERT_TRUE(records.has_value());
  ASSERT_EQ(records->size(), 1U);
  EXPECT_EQ(records->at(0).id, 2001U);
  EXPECT_EQ(records->at(0).description, "outlet has 41 degrees");
}

TEST(Agent, LeavesNoSystemVObjects) {
  ASSERT_EQ(hand_over("[sensor]\nname=inlet\ncelsius=20\n").exit_status, 0);
  EXPECT_EQ(run_native({"sh", "-c", "tail -qn +2 /proc/sysvipc/shm /proc/sysvipc/sem"}).out, "");
}

TEST(Agent, TellsWhyItCannotOffer) {
  const Scratch scratch;
  const Outcome missing = run({built_program("agent"), "offer", scratch.file("no.ini")});
  EXPECT_EQ(missing.exit_status, 1);
  EXPECT_EQ(missing.err, "agent: the file cannot be opened\n");
  put(scratch.file("a.ini"), "[sensor]\nname=inlet\n");
  const Outcome partial = run({built_program("agent"), "offer", scratch.file("a.ini")});
  EXPECT_EQ(partial.exit_status, 1);
  EXPECT_EQ(partial.err, "agent: there is no such key\n");
}

TEST(Agent, WithoutATaskSaysHowItIsUsed) {
  const Outcome outcome = run({built_program("agent")});
  EXPECT_EQ(outcome.exit_status, 2);
  EXPECT_EQ(outcome.err, "usage: agent offer FILE | agent take\n");
}

}  // namespace
