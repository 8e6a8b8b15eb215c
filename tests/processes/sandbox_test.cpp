// The sandbox that every test runs in, started once more from inside it.

#include <sys/ipc.h>
#include <sys/shm.h>
#include <unistd.h>

#include <string>

#include "gtest/gtest.h"
#include "support/program.h"
#include "support/text_file.h"

namespace {

using kqsupt::tests::Command;
using kqsupt::tests::Outcome;
using kqsupt::tests::run_native;

const std::string kSandbox = KQSUPT_SOURCE_DIR "/tools/sandbox";

Outcome in_sandbox(const std::string& script) {
  return run_native({kSandbox, "sh", "-c", script});
}

TEST(Sandbox, PassesOnTheExitStatus) {
  EXPECT_EQ(in_sandbox("exit 0").exit_status, 0);
  EXPECT_EQ(in_sandbox("exit 42").exit_status, 42);
}

TEST(Sandbox, PassesOnTheSignal) {
  EXPECT_EQ(in_sandbox("kill -TERM $$").signal, SIGTERM);
}

TEST(Sandbox, PassesOnArgumentsAndStreams) {
  const Outcome outcome = run_native(
      {kSandbox, "sh", "-c", "cat; printf '%s|' \"$@\"", "sh", "a b", "", "*"}, "input ");
  EXPECT_EQ(outcome.out, "input a b||*|");
}

TEST(Sandbox, HasItsOwnRegistryFileWhoseDirectoriesAreThere) {
  const Outcome outcome = in_sandbox(
      "sed -n 's/.*path=//p' /etc/ybreg.cfg | xargs ls -d | wc -l; "
      "ls -d $(sed -n s/wexlib.vardatapath=//p /etc/ybreg.cfg)/.ipc");
  const std::string outer = getenv("KQSUPT_SANDBOX");
  EXPECT_EQ(outcome.out.substr(0, 3), "35\n") << outcome.err;
  EXPECT_EQ(outcome.out.find(outer + "/install"), std::string::npos);
}

TEST(Sandbox, LetsTheRegistryFilesBeWrittenAndLeavesNoneBehind) {
  const Outcome outcome = in_sandbox(
      "echo a >/etc/ybreg.cfg && mkdir -p /usr/lib/ext/mavo && echo b >/usr/lib/ext/mavo/ybreg.cfg "
      "&& cat /etc/ybreg.cfg /usr/lib/ext/mavo/ybreg.cfg");
  EXPECT_EQ(outcome.out, "a\nb\n") << outcome.err;
  EXPECT_NE(kqsupt::tests::read_file("/etc/ybreg.cfg"), "a\n");
  EXPECT_NE(access("/usr/lib/ext/mavo", F_OK), 0);
}

TEST(Sandbox, KeepsWhatElseIsInTheDirectoriesItCovers) {
  EXPECT_EQ(in_sandbox("cat /etc/passwd").out, run_native({"cat", "/etc/passwd"}).out);
  EXPECT_EQ(in_sandbox("ls /usr/lib").out, run_native({"ls", "/usr/lib"}).out);
}

TEST(Sandbox, HasADirectoryOfDevicesOfItsOwnWithNobodyAtTheSystemsLog) {
  const Outcome outcome = in_sandbox(
      "ls -d /dev/log 2>/dev/null; echo gone >/dev/null && head -c 3 /dev/zero | wc -c && "
      "touch /dev/log && touch /dev/left-over");
  EXPECT_EQ(outcome.out, "3\n") << outcome.err;
  EXPECT_EQ(outcome.exit_status, 0) << outcome.err;
  EXPECT_NE(access("/dev/log", F_OK), 0);
  EXPECT_NE(access("/dev/left-over", F_OK), 0);
}

TEST(Sandbox, HasAScratchTreeOfItsOwn) {
  const Outcome outcome = in_sandbox("echo $TMPDIR; echo x >$TMPDIR/left-over");
  ASSERT_EQ(outcome.exit_status, 0) << outcome.err;
  const std::string directory = outcome.out.substr(0, outcome.out.size() - 1);
  EXPECT_NE(access((directory + "/left-over").c_str(), F_OK), 0);
}

TEST(Sandbox, HasSystemVIpcOfItsOwn) {
  const int segment = shmget(IPC_PRIVATE, 4096, IPC_CREAT | 0600);
  ASSERT_GE(segment, 0);
  EXPECT_EQ(in_sandbox("tail -n +2 /proc/sysvipc/shm").out, "");
  EXPECT_EQ(shmctl(segment, IPC_RMID, nullptr), 0);
}

TEST(Sandbox, WorksInTheDirectoryItIsStartedIn) {
  EXPECT_EQ(in_sandbox("pwd -P").out, run_native({"pwd", "-P"}).out);
}

TEST(Sandbox, NeedsACommand) {
  const Outcome outcome = run_native({kSandbox});
  EXPECT_EQ(outcome.exit_status, 125);
  EXPECT_EQ(outcome.err, "usage: sandbox CMD...\n");
}

TEST(Sandbox, SaysInALineThatTheKernelRefusesNamespaces) {
  const Outcome outcome = run_native(
      {"unshare", "--user", "--map-root-user", "sh", "-c",
       "for kind in user mnt; do echo 0 >/proc/sys/user/max_${kind}_namespaces; done; exec \"$0\" "
       "true",
       kSandbox});
  EXPECT_EQ(outcome.exit_status, 125);
  EXPECT_EQ(outcome.err.find("sandbox: the kernel refuses the namespaces: "), 0U) << outcome.err;
  EXPECT_EQ(outcome.err.find('\n'), outcome.err.size() - 1) << outcome.err;
}

}  // namespace
