// kqsup ipc list, and that looking changes nothing.
#include <fcntl.h>
#include <sys/sem.h>
#include <sys/shm.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

#include "ipc_host.h"
#include "name_registry.h"

namespace {

using namespace kqsup;
using namespace kqsup::tests;

TEST(KqsupIpcList, TellsTheCountOfASemaphore) {
  ASSERT_EQ(agent({"semaphore", "count of 7", "7"}), 0);
  const ordered_json row = row_of("semaphore", "count of 7");
  EXPECT_EQ(row["name"], decorated_name(kSemaphorePrefix, "count of 7"));
  EXPECT_GE(row["key"], 300001);
  EXPECT_EQ(row["state"], "there");
  EXPECT_EQ(row["value"], 7);
  EXPECT_EQ(row["waiters"], 0);
}

TEST(KqsupIpcList, TellsWhoWaitForASemaphore) {
  ASSERT_EQ(agent({"semaphore", "waited for", "0"}), 0);
  const Background first = living_agent({"acquire", "waited for"});
  const Background second = living_agent({"acquire", "waited for"});
  while (row_of("semaphore", "waited for")["waiters"] != 2) {
  }
  EXPECT_EQ(row_of("semaphore", "waited for")["value"], 0);
}

TEST(KqsupIpcList, TellsStateAndResetModeOfEvents) {
  ASSERT_EQ(agent({"event", "manual", "1", "1", "event", "automatic", "0", "0"}), 0);
  const ordered_json manual = row_of("event", "manual");
  EXPECT_EQ(manual["state"], "signalled");
  EXPECT_EQ(manual["reset"], "manual");
  const ordered_json automatic = row_of("event", "automatic");
  EXPECT_EQ(automatic["state"], "unsignalled");
  EXPECT_EQ(automatic["reset"], "automatic");
  EXPECT_EQ(automatic["waiters"], 0);
}

TEST(KqsupIpcList, TellsSizeUsersAndCreatorOfSharedMemory) {
  const Background creator = living_agent({"memory", "in use", "5000", "stay"});
  const Background user = living_agent({"attach", "in use", "stay"});
  const ordered_json row = row_of("shared memory", "in use");
  EXPECT_EQ(row["state"], "in use");
  EXPECT_EQ(row["size"], 5000);
  EXPECT_EQ(row["attached"], 2);
  EXPECT_EQ(row["alive"], true);
  EXPECT_EQ(row["value"], 0);  // the creator holds the guard
}

TEST(KqsupIpcList, TellsThatTheCreatorOfSharedMemoryIsDead) {
  ASSERT_EQ(agent({"memory", "left", "100"}), 0);
  const ordered_json row = row_of("shared memory", "left");
  EXPECT_EQ(row["state"], "abandoned");
  EXPECT_EQ(row["attached"], 0);
  EXPECT_EQ(row["alive"], false);
  EXPECT_EQ(row["value"], 1);
}

TEST(KqsupIpcList, MemoryThatALaterProcessTookOverIsInUse) {
  ASSERT_EQ(agent({"memory", "taken over", "100"}), 0);
  const Background heir = living_agent({"memory", "taken over", "100", "stay"});
  const ordered_json row = row_of("shared memory", "taken over");
  EXPECT_EQ(row["state"], "in use");
  EXPECT_EQ(row["alive"], false);
  EXPECT_EQ(row["attached"], 1);
}

TEST(KqsupIpcList, TellsTheProcessThatHoldsAMutex) {
  ASSERT_EQ(agent({"mutex", "guarded"}), 0);
  EXPECT_EQ(row_of("mutex", "guarded")["state"], "free");
  EXPECT_TRUE(row_of("mutex", "guarded")["process"].is_null());
  const Background holder = living_agent({"lock", "guarded", "memory", "same", "1", "stay"});
  const ordered_json row = row_of("mutex", "guarded");
  EXPECT_EQ(row["state"], "held");
  EXPECT_EQ(row["process"], row_of("shared memory", "same")["process"]);
  EXPECT_TRUE(row["key"].is_null());
}

TEST(KqsupIpcList, AMutexOfADeadProcessIsFree) {
  ASSERT_EQ(agent({"lock", "died with it"}), 0);
  EXPECT_EQ(row_of("mutex", "died with it")["state"], "free");
}

TEST(KqsupIpcList, TellsThePathLockOfAFile) {
  const std::string path = registry();
  ASSERT_EQ(agent({"names", "1", "1"}), 0);
  const std::string lock_file = ipc_directory() + "/." + decorated_name(kPathLockPrefix, path);
  EXPECT_EQ(row_of("path lock", path)["state"], "free");
  {
    const Background reader = living_agent({"read", lock_file, "stay"});
    EXPECT_EQ(row_of("path lock", path)["state"], "shared");
    EXPECT_TRUE(row_of("path lock", path)["process"].is_number());
  }
  {
    const Background writer = living_agent({"write", lock_file, "stay"});
    EXPECT_EQ(row_of("path lock", path)["state"], "held");
  }
}

TEST(KqsupIpcList, FindsThePartsOfAReaderWriterLock) {
  ASSERT_EQ(agent({"rwl", "many readers"}), 0);
  EXPECT_EQ(row_of("rw lock guard", "many readers")["state"], "free");
  EXPECT_EQ(row_of("rw lock gate", "many readers")["value"], 0);
}

TEST(KqsupIpcList, FindsAllKindsOfOneName) {
  ASSERT_EQ(agent({"semaphore", "shared name", "1", "event", "shared name", "1", "0", "memory",
                   "shared name", "10", "mutex", "shared name"}),
            0);
  const Answer answer = run_tool({"ipc", "list", "--name", "shared name"});
  EXPECT_EQ(answer.exit_status, 0);
  ASSERT_EQ(answer.rows.size(), 4U);
  for (const ordered_json& row : answer.rows) {
    EXPECT_EQ(row["called"], "shared name");
  }
}

TEST(KqsupIpcList, ANameThatNobodyHasGivesOne) {
  ASSERT_EQ(agent({"names", "1", "1"}), 0);
  const Answer answer = run_tool({"ipc", "list", "--name", "nobody has it"});
  EXPECT_EQ(answer.exit_status, 1);
  EXPECT_EQ(answer.rows, ordered_json::array());
  EXPECT_NE(answer.err.find("nobody has it"), std::string::npos);
  EXPECT_EQ(run_tool({"ipc", "list", "--name", ""}).exit_status, 2);
}

TEST(KqsupIpcList, ANameWithoutItsObjectIsShownAsGone) {
  ASSERT_EQ(agent({"semaphore", "to go", "3"}), 0);
  const int set = row_of("semaphore", "to go")["id"];
  ASSERT_EQ(semctl(set, 0, IPC_RMID), 0);
  const ordered_json row = row_of("semaphore", "to go");
  EXPECT_EQ(row["state"], "gone");
  EXPECT_GE(row["key"], 300001);
  EXPECT_TRUE(row["value"].is_null());
}

TEST(KqsupIpcList, ShowsWhatHasAKeyOfTheRegistryAndNoName) {
  ASSERT_EQ(agent({"memory", "has a key", "1", "event", "has one too", "0", "0"}), 0);
  const uint32_t key = row_of("event", "has one too")["key"];
  const int segment = shmget(static_cast<key_t>(key), 77, IPC_CREAT | IPC_EXCL | 0600);
  ASSERT_GE(segment, 0);
  bool shown = false;
  for (const ordered_json& row : run_tool({"ipc", "list"}).rows) {
    shown = shown || (row["kind"] == "segment" && row["name"].is_null() && row["key"] == key &&
                      row["size"] == 77);
  }
  EXPECT_TRUE(shown);
  shmctl(segment, IPC_RMID, nullptr);
}

TEST(KqsupIpcList, ShowsTheListedSetsWithoutAKey) {
  std::string set;
  const Background maker = living_agent({"set", "own", "stay"}, &set);
  bool shown = false;
  for (const ordered_json& row : run_tool({"ipc", "list"}).rows) {
    shown = shown || (row["kind"] == "private set" && row["id"] == std::stoi(set) &&
                      row["alive"] == true && row["value"] == 1 && row["key"].is_null());
  }
  EXPECT_TRUE(shown);
}

TEST(KqsupIpcList, LookingChangesNothing) {
  ASSERT_EQ(agent({"semaphore", "s", "1", "event", "e", "1", "1", "memory", "m", "10", "mutex", "x",
                   "rwl", "r", "set", "1"}),
            0);
  const Background holder = living_agent({"lock", "x", "memory", "alive", "10", "stay"});
  const std::string before = state_of_host();
  EXPECT_EQ(run_tool({"ipc", "list"}).exit_status, 0);
  run_tool({"ipc", "list", "--name", "never heard of"});
  EXPECT_EQ(run_tool({"ipc", "reap"}).exit_status, 1);
  EXPECT_EQ(state_of_host(), before);
}

TEST(KqsupIpcList, LooksWithoutTheLibrary) {
  ASSERT_EQ(agent({"names", "1", "1"}), 0);
  const Answer answer = run_tool({"ipc", "list"});
  EXPECT_EQ(answer.exit_status, 0);
  // Its start would make the lock file of its registry again.
  const std::string lock_file =
      ipc_directory() + "/." + decorated_name(kPathLockPrefix, registry());
  std::filesystem::remove(lock_file);
  run_tool({"ipc", "list"});
  EXPECT_FALSE(std::filesystem::exists(lock_file));
}

TEST(KqsupIpcList, SeesWholeRegistriesWhileNamesAreAdded) {
  ASSERT_EQ(agent({"names", "1", "1"}), 0);
  constexpr int kNames = 60;
  Background writer(Command{built_program("ipc-maker"), "names", "1000", std::to_string(kNames)});
  const std::string last = decorated_name(kSemaphorePrefix, "name " + std::to_string(999 + kNames));
  size_t seen = 0;
  for (bool has_last = false; !has_last;) {
    const Answer answer = run_tool({"ipc", "list"});
    ASSERT_EQ(answer.exit_status, 0) << answer.err;
    size_t names = 0;
    for (const ordered_json& row : answer.rows) {
      names += row["kind"] == "semaphore" ? 1 : 0;
      has_last = has_last || row["name"] == last;
    }
    EXPECT_GE(names, seen);
    seen = names;
  }
  EXPECT_EQ(writer.wait(), 0);
}

// ---- Files that are not as they should be ----

// Puts the registry back.
class KqsupIpcFiles : public testing::Test {
 protected:
  KqsupIpcFiles() {
    EXPECT_EQ(agent({"semaphore", "kept", "1"}), 0);
    content_ = content_of(registry());
  }
  ~KqsupIpcFiles() override {
    std::filesystem::remove_all(registry());
    std::filesystem::remove_all(ipc_directory() + "/.bak");
    put(registry(), content_);
  }

  std::string content_;
};

TEST_F(KqsupIpcFiles, WithoutARegistryThereAreNoNames) {
  std::filesystem::remove(registry());
  const Answer answer = run_tool({"ipc", "list"});
  EXPECT_EQ(answer.exit_status, 0);
  for (const ordered_json& row : answer.rows) {
    EXPECT_TRUE(row["key"].is_null());
  }
}

TEST_F(KqsupIpcFiles, TheBackupOfAnInterruptedChangeIsRead) {
  std::filesystem::rename(registry(), ipc_directory() + "/.bak");
  EXPECT_EQ(row_of("semaphore", "kept")["value"], 1);
  EXPECT_FALSE(std::filesystem::exists(registry()));
  EXPECT_TRUE(std::filesystem::exists(ipc_directory() + "/.bak"));
}

TEST_F(KqsupIpcFiles, AnEmptyRegistryHasNoNames) {
  put(registry(), "");
  EXPECT_EQ(run_tool({"ipc", "list"}).exit_status, 0);
}

TEST_F(KqsupIpcFiles, ARegistryThatIsNoFileCannotBeLookedAt) {
  std::filesystem::remove(registry());
  std::filesystem::create_directory(registry());
  EXPECT_EQ(run_tool({"ipc", "list"}).exit_status, 2);
  std::filesystem::remove(registry());
  ASSERT_EQ(mkfifo(registry().c_str(), 0600), 0);
  EXPECT_EQ(run_tool({"ipc", "list"}).exit_status, 2);
}

TEST_F(KqsupIpcFiles, ADamagedRegistryIsToldAndGivesOne) {
  put(registry(), content_ + "\n[Semaphore List\n7=8\n");
  const Answer answer = run_tool({"ipc", "list"});
  EXPECT_EQ(answer.exit_status, 1);
  EXPECT_NE(answer.err.find("section header"), std::string::npos) << answer.err;
  EXPECT_FALSE(answer.rows.empty());
}

TEST_F(KqsupIpcFiles, WhatIsInALockFilesPlaceIsNotOpened) {
  const std::string name = decorated_name(kMutexPrefix, "a pipe");
  const std::string path = ipc_directory() + "/." + name;
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  EXPECT_EQ(row_of("mutex", "a pipe")["state"], "no file");
  std::filesystem::remove(path);
  ASSERT_EQ(symlink("/dev/null", path.c_str()), 0);
  EXPECT_EQ(row_of("mutex", "a pipe")["state"], "no file");
  std::filesystem::remove(path);
}

TEST(KqsupIpcHost, WithoutAnInstallRegistryNothingCanBeLookedAt) {
  std::filesystem::rename("/etc/ybreg.cfg", "/etc/ybreg.away");
  for (const char* what : {"list", "reap"}) {
    const Answer answer = run_tool({"ipc", what});
    EXPECT_EQ(answer.exit_status, 2);
    EXPECT_NE(answer.err.find("/etc/ybreg.cfg"), std::string::npos) << answer.err;
  }
  std::filesystem::rename("/etc/ybreg.away", "/etc/ybreg.cfg");
}

TEST(KqsupIpcHost, WithoutTheIpcDirectoryNothingCanBeLookedAt) {
  std::filesystem::rename(ipc_directory(), ipc_directory() + "-away");
  EXPECT_EQ(run_tool({"ipc", "list"}).exit_status, 2);
  EXPECT_EQ(run_tool({"ipc", "reap"}).exit_status, 2);
  std::filesystem::rename(ipc_directory() + "-away", ipc_directory());
}

TEST(KqsupIpcHost, TheTableIsForPeople) {
  ASSERT_EQ(agent({"semaphore", "in the table", "1"}), 0);
  const kqsupt::tests::Outcome outcome =
      kqsupt::tests::run({built_program("kqsup"), "ipc", "list", "--name", "in the table"});
  EXPECT_EQ(outcome.out.rfind("KIND", 0), 0U);
  EXPECT_NE(outcome.out.find("in the table"), std::string::npos);
}

TEST(KqsupIpcHost, NothingThatLooksStartsTheLibrary) {
  const std::string lock_file =
      ipc_directory() + "/." + kqsup::decorated_name(kqsup::kPathLockPrefix, registry());
  std::filesystem::remove(lock_file);
  ASSERT_EQ(agent({"names", "1", "1"}), 0);
  ASSERT_TRUE(std::filesystem::exists(lock_file)) << "which a start makes";
  std::filesystem::remove(lock_file);
  for (const Command& command :
       {Command{"ipc", "list"}, Command{"ipc", "reap"}, Command{"log", "show"}, Command{"paths"},
        Command{"doctor"}, Command{"ini", "list", registry()},
        Command{"ini", "get", registry(), "a", "b"}, Command{"sdo", "dump", registry()}}) {
    run_tool(command);
    EXPECT_FALSE(std::filesystem::exists(lock_file)) << command[0];
  }
}

TEST(KqsupIpcHost, EveryHelpHasAnExample) {
  for (const Command& group :
       {Command{}, Command{"ipc"}, Command{"log"}, Command{"sdo"}, Command{"ini"}}) {
    Command command{built_program("kqsup")};
    command.insert(command.end(), group.begin(), group.end());
    command.emplace_back("--help");
    EXPECT_NE(kqsupt::tests::run(command).out.find("Example"), std::string::npos);
  }
}

TEST(KqsupIpcHost, HelpHasAnExample) {
  for (const char* what : {"list", "reap"}) {
    const kqsupt::tests::Outcome outcome =
        kqsupt::tests::run({built_program("kqsup"), "ipc", what, "--help"});
    EXPECT_EQ(outcome.exit_status, 0);
    EXPECT_NE(outcome.out.find("Example: kqsup ipc"), std::string::npos);
  }
}

TEST_F(KqsupIpcFiles, WhatAnInterruptedChangeHadWrittenDoesNotCount) {
  put(ipc_directory() + "/.bak", content_of(registry()));
  put(registry(), "");
  sleep(2);  // no change takes so long
  const Answer answer = run_tool({"ipc", "list", "--name", "kept"});
  EXPECT_EQ(answer.exit_status, 1);
  EXPECT_EQ(answer.rows.size(), 1U);
  EXPECT_NE(answer.err.find("interrupted"), std::string::npos) << answer.err;
}

TEST(KqsupIpcList, LookingLeavesTheTimeOfTheLastLook) {
  ASSERT_EQ(agent({"names", "1", "1"}), 0);
  const timespec times[] = {{1000000, 0}, {0, UTIME_OMIT}};
  const std::string paths[] = {registry(), ipc_directory(), "/etc/ybreg.cfg"};
  for (const std::string& path : paths) {
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
  }
  EXPECT_EQ(run_tool({"ipc", "list"}).exit_status, 0);
  EXPECT_NE(run_tool({"ipc", "reap"}).exit_status, 2);
  for (const std::string& path : paths) {
    struct stat about {};
    ASSERT_EQ(stat(path.c_str(), &about), 0);
    EXPECT_EQ(about.st_atim.tv_sec, 1000000) << path;
  }
}

TEST(KqsupIpcList, ObjectsMayVanishWhileTheyAreLookedAt) {
  ASSERT_EQ(agent({"semaphore", "comes and goes", "1"}), 0);
  const auto key = static_cast<key_t>(row_of("semaphore", "comes and goes")["key"].get<int>());
  const pid_t other = fork();
  if (other == 0) {
    alarm(60);
    for (;;) {
      semctl(semget(key, 0, 0), 0, IPC_RMID);
      semget(key, 1, IPC_CREAT | 0600);
    }
  }
  for (int i = 0; i < 30; ++i) {
    const Answer answer = run_tool({"ipc", "list"});
    EXPECT_EQ(answer.exit_status, 0) << answer.err;
    EXPECT_TRUE(answer.rows.is_array());
  }
  kill(other, SIGKILL);
  waitpid(other, nullptr, 0);
  semctl(semget(key, 0, 0), 0, IPC_RMID);
}

}  // namespace
