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

// Runs a script in a sandbox of its own, where $agent starts the agent and the INI files describe
// two sensors. until_true waits for what another process does.
Outcome in_sandbox(const std::string& script) {
  const std::string prelude = R"sh(
agent=$1
locks=$KQSUPT_SANDBOX/install/wexlib/var/.ipc
until_true() {
  for turn in $(seq 3000); do
    if "$@"; then return 0; fi
    sleep 0.01
  done
  echo "$* is not so" >&2
  exit 99
}
is_offered() { [ "$(tail -n +2 /proc/sysvipc/sem | wc -l)" -ge 2 ]; }
is_waited_for() { [ -n "$(find "$locks" -type f)" ]; }
describe() { printf '[sensor]\nname=%s\ncelsius=20\n' "$1" >"$TMPDIR/$1.ini"; }
describe inlet
describe outlet
)sh";
  return run_native(
      {KQSUPT_SOURCE_DIR "/tools/sandbox", "sh", "-uc", prelude + script, "sh", command_line("")});
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

TEST(Agent, EscapesTheNameInTheXmlLog) {
  unlink(own_log(SM_LOG_TEXT).c_str());
  unlink(own_log(SM_LOG_XML).c_str());
  ASSERT_EQ(hand_over("[sensor]\nname=<a&b>\ncelsius=41\nlimit=40\n").exit_status, 0);
  const auto records = parse_text_log(content_of(own_log(SM_LOG_TEXT)));
  ASSERT_TRUE(records.has_value());
  ASSERT_EQ(records->size(), 1U);
  EXPECT_EQ(records->at(0).description, "<a&b> has 41 degrees");
  const std::string xml = content_of(own_log(SM_LOG_XML));
  EXPECT_NE(xml.find("&lt;a&amp;b&gt; has 41 degrees"), std::string::npos) << xml;
  EXPECT_EQ(xml.find("<a&b>"), std::string::npos) << xml;
}

TEST(Agent, EitherMayBeStartedFirst) {
  const Outcome offered_first = in_sandbox(R"sh(
$agent offer "$TMPDIR/inlet.ini" &
until_true is_offered
$agent take && wait $!
)sh");
  EXPECT_EQ(offered_first.exit_status, 0) << offered_first.err;
  EXPECT_EQ(offered_first.out, "inlet: 20 degrees\n");
  const Outcome taken_first = in_sandbox(R"sh(
$agent take &
until_true is_waited_for
$agent offer "$TMPDIR/inlet.ini" && wait $!
)sh");
  EXPECT_EQ(taken_first.exit_status, 0) << taken_first.err;
  EXPECT_EQ(taken_first.out, "inlet: 20 degrees\n");
}

TEST(Agent, ThatOffersInVainLeavesTheOtherOneAlone) {
  const Outcome outcome = in_sandbox(R"sh(
$agent offer "$TMPDIR/inlet.ini" &
until_true is_offered
$agent offer "$TMPDIR/outlet.ini"
echo "exit status $?"
$agent take && wait $!
)sh");
  EXPECT_EQ(outcome.exit_status, 0) << outcome.err;
  EXPECT_EQ(outcome.out, "exit status 1\ninlet: 20 degrees\n");
  EXPECT_EQ(outcome.err, "agent: the operation was refused\n");
}

TEST(Agent, AKilledOffererDoesNotHinderTheNext) {
  const Outcome outcome = in_sandbox(R"sh(
$agent offer "$TMPDIR/inlet.ini" &
until_true is_offered
kill -9 $!
wait $! 2>"$TMPDIR/killed"
$agent offer "$TMPDIR/outlet.ini" &
$agent take && wait $!
)sh");
  EXPECT_EQ(outcome.exit_status, 0) << outcome.err;
  EXPECT_EQ(outcome.out, "outlet: 20 degrees\n");
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
  put(scratch.file("b.ini"), "[sensor]\nname=" + std::string(1024, 'x') + "\ncelsius=20\n");
  const Outcome large = run({built_program("agent"), "offer", scratch.file("b.ini")});
  EXPECT_EQ(large.exit_status, 1);
  EXPECT_EQ(large.err, "agent: there is no room left\n");
}

TEST(Agent, WithoutATaskSaysHowItIsUsed) {
  const Outcome outcome = run({built_program("agent")});
  EXPECT_EQ(outcome.exit_status, 2);
  EXPECT_EQ(outcome.err, "usage: agent offer FILE | agent take\n");
}

}  // namespace
