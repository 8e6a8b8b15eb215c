// The programs of the guides print what the guides say that they print.

#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "gtest/gtest.h"
#include "support/program.h"
#include "support/scratch.h"

namespace {

using kqsupt::tests::built_program;
using kqsupt::tests::Command;
using kqsupt::tests::content_of;
using kqsupt::tests::Outcome;
using kqsupt::tests::run;
using kqsupt::tests::run_native;
using kqsupt::tests::with_runner;

const std::string kGuides = KQSUPT_SOURCE_DIR "/docs/guides/";

// The only block of a guide that shows an output.
std::string shown_output(const std::string& guide) {
  const std::string fence = "```output\n";
  const std::string text = content_of(kGuides + guide + ".md");
  const size_t start = text.find(fence);
  EXPECT_NE(start, std::string::npos) << guide;
  EXPECT_EQ(start, text.rfind(fence)) << guide;
  const size_t from = start + fence.size();
  return start == std::string::npos ? "" : text.substr(from, text.find("```", from) - from);
}

class Guide : public testing::TestWithParam<std::string> {};

TEST_P(Guide, PrintsWhatItShows) {
  const Outcome outcome = run({built_program("guide-" + GetParam())});
  EXPECT_EQ(outcome.exit_status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out, shown_output(GetParam()));
}

// What an earlier run left behind does not matter to the next one.
TEST_P(Guide, PrintsTheSameAgain) {
  const Outcome first = run({built_program("guide-" + GetParam())});
  const Outcome second = run({built_program("guide-" + GetParam())});
  EXPECT_EQ(second.exit_status, 0);
  EXPECT_EQ(second.out, first.out);
}

const std::vector<std::string> kNames = {
    "first-agent", "records", "named-objects", "ini-and-property-files", "event-log", "host-setup"};
INSTANTIATE_TEST_SUITE_P(All, Guide, testing::ValuesIn(kNames), [](const auto& guide) {
  std::string name;
  for (const char letter : guide.param) {
    name += letter == '-' ? '_' : letter;
  }
  return name;
});

TEST(Guides, AreAllRunHereAndListedInTheReadme) {
  std::set<std::string> files;
  for (const auto& file : std::filesystem::directory_iterator(kGuides)) {
    files.insert(file.path().stem());
  }
  EXPECT_EQ(files, std::set<std::string>(kNames.begin(), kNames.end()));
  const std::string readme = content_of(KQSUPT_SOURCE_DIR "/README.md");
  for (const std::string& name : kNames) {
    EXPECT_NE(readme.find("(docs/guides/" + name + ".md)"), std::string::npos) << name;
  }
}

// A segment that was taken over has nobody who would take it away, and its guard neither.
TEST(Guides, LeaveNoSystemVObjectsButTheSegmentThatWasTakenOver) {
  for (const std::string& name : kNames) {
    (void)run({built_program("guide-" + name)});
  }
  EXPECT_EQ(run_native({"sh", "-c", "tail -qn +2 /proc/sysvipc/shm | wc -l"}).out, "1\n");
  EXPECT_EQ(run_native({"sh", "-c", "tail -qn +2 /proc/sysvipc/sem | wc -l"}).out, "1\n");
}

// Runs the check of a host in a sandbox of its own that `script` was run in.
Outcome check_host_after(const std::string& script) {
  Command command{KQSUPT_SOURCE_DIR "/tools/sandbox", "sh", "-euc", script + "; exec \"$@\"", "sh"};
  for (const std::string& word : with_runner({built_program("guide-host-setup")})) {
    command.push_back(word);
  }
  return run_native(command);
}

TEST(HostCheck, MissesTheRegistry) {
  const Outcome outcome = check_host_after("rm /etc/ybreg.cfg");
  EXPECT_EQ(outcome.exit_status, 1);
  EXPECT_EQ(outcome.out.substr(0, outcome.out.find('\n')),
            "start: the registry or the variable-data directory is missing");
  EXPECT_NE(outcome.out.find("agents cannot work here\n"), std::string::npos);
}

TEST(HostCheck, MissesTheDirectoryOfNamedObjects) {
  const Outcome outcome = check_host_after("rmdir \"$KQSUPT_SANDBOX/install/wexlib/var/.ipc\"");
  EXPECT_EQ(outcome.exit_status, 1);
  EXPECT_NE(outcome.out.find("named mutex: is .ipc there, and writable?\n"), std::string::npos)
      << outcome.out;
}

TEST(HostCheck, SaysWhatMayNotBeWrittenTo) {
  const Outcome outcome = check_host_after(
      "cd \"$KQSUPT_SANDBOX/install/Quillance\"; for name in ini log; do "
      "mount --bind $name $name && mount -o remount,bind,ro $name; done");
  EXPECT_EQ(outcome.exit_status, 1) << outcome.err;
  EXPECT_NE(outcome.out.find("directory of INI files: this user may not write there\n"),
            std::string::npos)
      << outcome.out;
  EXPECT_NE(outcome.out.find("directory of logs: this user may not write there\n"),
            std::string::npos)
      << outcome.out;
}

TEST(HostCheck, MissesTheDirectoryOfLogs) {
  const Outcome outcome = check_host_after("rm -r \"$KQSUPT_SANDBOX/install/Quillance/log\"");
  EXPECT_EQ(outcome.exit_status, 1);
  EXPECT_NE(outcome.out.find("directory of logs: the registry has none that exists\n"),
            std::string::npos)
      << outcome.out;
}

}  // namespace
