// kqsup ipc reap: what it takes away, and all that it leaves.
#include <sys/sem.h>
#include <sys/shm.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <set>

#include "ipc_host.h"
#include "name_registry.h"

namespace {

using namespace kqsup;
using namespace kqsup::tests;

// The identifiers that it shows.
std::set<int> shown(const Answer& answer) {
  std::set<int> ids;
  for (const ordered_json& row : answer.rows) {
    ids.insert(row["id"].get<int>());
  }
  return ids;
}

bool is_segment(int id) {
  shmid_ds about{};
  return shmctl(id, IPC_STAT, &about) == 0;
}

int ask(int set, int command, int value = 0) {
  union {
    int value;
    void* pointer;
  } argument{value};
  return semctl(set, 0, command, argument);
}

// Every test begins on a host where nothing is left over.
class KqsupIpcReap : public testing::Test {
 protected:
  KqsupIpcReap() {
    EXPECT_EQ(agent({"names", "1", "1"}), 0);  // whose start sweeps
    EXPECT_EQ(run_tool({"ipc", "reap", "--yes"}).exit_status, 0);
    const Answer rest = run_tool({"ipc", "reap"});
    EXPECT_EQ(rest.exit_status, 0) << rest.rows.dump();
    EXPECT_EQ(rest.rows, ordered_json::array());
  }

  // What an agent makes that dies then; its set without a key.
  static int left_set() {
    const kqsupt::tests::Outcome outcome =
        kqsupt::tests::run({built_program("ipc-maker"), "set", "own"});
    EXPECT_EQ(outcome.exit_status, 0);
    return std::stoi(outcome.out);
  }
  static int left_segment(const std::string& name) {
    EXPECT_EQ(agent({"memory", name, "100"}), 0);
    return row_of("shared memory", name)["id"];
  }
};

TEST_F(KqsupIpcReap, ShowsAnAbandonedSegmentAndRemovesNothing) {
  const int segment = left_segment("to show");
  const std::string before = state_of_host();
  const Answer answer = run_tool({"ipc", "reap"});
  EXPECT_EQ(answer.exit_status, 1);
  ASSERT_EQ(answer.rows.size(), 1U);
  EXPECT_EQ(answer.rows[0]["kind"], "segment");
  EXPECT_EQ(answer.rows[0]["id"], segment);
  EXPECT_EQ(answer.rows[0]["name"], decorated_name(kSharedMemoryPrefix, "to show"));
  EXPECT_EQ(answer.rows[0]["size"], 100);
  EXPECT_EQ(answer.rows[0]["result"], "would be removed");
  EXPECT_EQ(state_of_host(), before);
}

TEST_F(KqsupIpcReap, RemovesAnAbandonedSegmentAndKeepsItsNameAndGuard) {
  const int segment = left_segment("to remove");
  const ordered_json before = row_of("shared memory", "to remove");
  const std::string registered = content_of(registry());
  const Answer answer = run_tool({"ipc", "reap", "--yes"});
  EXPECT_EQ(answer.exit_status, 0);
  ASSERT_EQ(answer.rows.size(), 1U);
  EXPECT_EQ(answer.rows[0]["result"], "removed");
  EXPECT_FALSE(is_segment(segment));
  EXPECT_EQ(content_of(registry()), registered);
  const ordered_json after = row_of("shared memory", "to remove");
  EXPECT_EQ(after["state"], "gone");
  EXPECT_EQ(after["key"], before["key"]);
  EXPECT_EQ(after["value"], 1);
  EXPECT_EQ(run_tool({"ipc", "reap"}).exit_status, 0);
}

TEST_F(KqsupIpcReap, TheNextCreatorFindsTheGuardAndMakesTheSegmentAnew) {
  left_segment("made anew");
  EXPECT_EQ(run_tool({"ipc", "reap", "--yes"}).exit_status, 0);
  const Background creator = living_agent({"memory", "made anew", "200", "stay"});
  const ordered_json row = row_of("shared memory", "made anew");
  EXPECT_EQ(row["state"], "in use");
  EXPECT_EQ(row["size"], 200);
}

TEST_F(KqsupIpcReap, LeavesTheSegmentOfALivingCreator) {
  const Background creator = living_agent({"memory", "alive", "100", "stay"});
  EXPECT_EQ(run_tool({"ipc", "reap"}).rows, ordered_json::array());
}

TEST_F(KqsupIpcReap, LeavesASegmentThatSomebodyIsAttachedTo) {
  Background creator = living_agent({"memory", "attached to", "100", "stay"});
  const Background user = living_agent({"attach", "attached to", "stay"});
  creator.kill();
  creator.wait();
  EXPECT_EQ(row_of("shared memory", "attached to")["state"], "abandoned");
  EXPECT_EQ(run_tool({"ipc", "reap"}).rows, ordered_json::array());
}

TEST_F(KqsupIpcReap, LeavesASegmentWhoseGuardIsHeldByWhoTookItOver) {
  left_segment("inherited");
  const Background heir = living_agent({"rewrite", "inherited", "stay"});
  const ordered_json row = row_of("shared memory", "inherited");
  EXPECT_EQ(row["attached"], 0);
  EXPECT_EQ(row["alive"], false);
  EXPECT_EQ(row["value"], 0);
  EXPECT_EQ(run_tool({"ipc", "reap"}).rows, ordered_json::array());
}

TEST_F(KqsupIpcReap, LeavesASegmentWhoseGuardSomebodyWaitsFor) {
  left_segment("queue");
  const int guard = semget(row_of("shared memory", "queue")["key"].get<key_t>(), 0, 0600);
  ASSERT_GE(guard, 0);
  const pid_t waiter = fork();
  if (waiter == 0) {
    sembuf all{0, -100, 0};
    semop(guard, &all, 1);
    _exit(0);
  }
  while (ask(guard, GETNCNT) != 1) {
  }
  EXPECT_EQ(run_tool({"ipc", "reap"}).rows, ordered_json::array());
  kill(waiter, SIGKILL);
  waitpid(waiter, nullptr, 0);
}

TEST_F(KqsupIpcReap, LeavesASegmentWithoutAGuardWhichAnybodyMayHaveMade) {
  const int segment = left_segment("no guard");
  const int guard = semget(row_of("shared memory", "no guard")["key"].get<key_t>(), 0, 0600);
  ASSERT_EQ(ask(guard, IPC_RMID), 0);
  EXPECT_EQ(row_of("shared memory", "no guard")["state"], "abandoned");
  EXPECT_EQ(run_tool({"ipc", "reap"}).rows, ordered_json::array());
  EXPECT_EQ(shmctl(segment, IPC_RMID, nullptr), 0);
}

TEST_F(KqsupIpcReap, LeavesASegmentWhoseKeyTheRegistryHasOneWayOnly) {
  const int segment = left_segment("one way");
  const std::string registered = content_of(registry());
  put(registry(), registered.substr(0, registered.find("[Unique Numeric")));
  EXPECT_EQ(run_tool({"ipc", "reap"}).rows, ordered_json::array());
  put(registry(), registered);
  EXPECT_EQ(shown(run_tool({"ipc", "reap"})), std::set<int>{segment});
}

TEST_F(KqsupIpcReap, LeavesASegmentWithoutANameOfSharedMemory) {
  ASSERT_EQ(agent({"event", "an event's key", "0", "0"}), 0);
  const auto key = row_of("event", "an event's key")["key"].get<key_t>();
  int segment = -1;
  const pid_t creator = fork();
  if (creator == 0) {
    _exit(shmget(key, 10, IPC_CREAT | IPC_EXCL | 0600) >= 0 ? 0 : 1);
  }
  waitpid(creator, nullptr, 0);
  segment = shmget(key, 0, 0600);
  ASSERT_GE(segment, 0);
  EXPECT_EQ(run_tool({"ipc", "reap"}).rows, ordered_json::array());
  shmctl(segment, IPC_RMID, nullptr);
}

TEST_F(KqsupIpcReap, LeavesSemaphoresAndEventsThatNobodyUses) {
  ASSERT_EQ(agent({"semaphore", "stays", "1", "event", "stays", "1", "1", "rwl", "stays"}), 0);
  EXPECT_EQ(run_tool({"ipc", "reap"}).rows, ordered_json::array());
}

TEST_F(KqsupIpcReap, RemovesAListedSetWhoseMakerIsDead) {
  const int set = left_set();
  EXPECT_EQ(shown(run_tool({"ipc", "reap"})), std::set<int>{set});
  const std::string registered = content_of(registry());
  const Answer answer = run_tool({"ipc", "reap", "--yes"});
  EXPECT_EQ(answer.exit_status, 0);
  ASSERT_EQ(answer.rows.size(), 1U);
  EXPECT_EQ(answer.rows[0]["kind"], "private set");
  EXPECT_EQ(answer.rows[0]["result"], "removed");
  EXPECT_EQ(ask(set, GETVAL), -1);
  EXPECT_EQ(content_of(registry()), registered);
}

TEST_F(KqsupIpcReap, LeavesAListedSetOfALivingMaker) {
  std::string set;
  const Background maker = living_agent({"set", "own", "stay"}, &set);
  EXPECT_EQ(run_tool({"ipc", "reap"}).rows, ordered_json::array());
}

TEST_F(KqsupIpcReap, LeavesAListedSetThatSomebodyElseUsed) {
  const int set = left_set();
  ASSERT_EQ(ask(set, SETVAL, 1), 0);
  EXPECT_EQ(run_tool({"ipc", "reap"}).rows, ordered_json::array());
}

TEST_F(KqsupIpcReap, LeavesAListedSetThatSomebodyWaitsFor) {
  const int set = left_set();
  const pid_t waiter = fork();
  if (waiter == 0) {
    sembuf all{0, -100, 0};
    semop(set, &all, 1);
    _exit(0);
  }
  while (ask(set, GETNCNT) != 1) {
  }
  EXPECT_EQ(run_tool({"ipc", "reap"}).rows, ordered_json::array());
  kill(waiter, SIGKILL);
  waitpid(waiter, nullptr, 0);
  EXPECT_EQ(shown(run_tool({"ipc", "reap"})), std::set<int>{set});
}

TEST_F(KqsupIpcReap, LeavesSetsThatAreNotListed) {
  const pid_t maker = fork();
  if (maker == 0) {
    const int set = semget(IPC_PRIVATE, 1, IPC_CREAT | 0600);
    _exit(set >= 0 && ask(set, SETVAL, 1) == 0 ? 0 : 1);
  }
  int status = 1;
  waitpid(maker, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(run_tool({"ipc", "reap"}).rows, ordered_json::array());
}

TEST_F(KqsupIpcReap, LeavesAListedSetThatHasAKey) {
  ASSERT_EQ(agent({"semaphore", "has a key", "1"}), 0);
  const int set = row_of("semaphore", "has a key")["id"];
  const std::string registered = content_of(registry());
  put(registry(), registered + "\n[Semaphore List]\n" + std::to_string(set) + "=" +
                      std::to_string(ask(set, GETPID)) + "\n");
  EXPECT_EQ(run_tool({"ipc", "reap"}).rows, ordered_json::array());
  put(registry(), registered);
}

TEST_F(KqsupIpcReap, ADamagedRegistryProvesNothing) {
  const int segment = left_segment("damaged");
  const std::string registered = content_of(registry());
  put(registry(), registered + "[no end\n");
  EXPECT_EQ(run_tool({"ipc", "reap", "--yes"}).exit_status, 2);
  put(registry(), registered);
  EXPECT_TRUE(is_segment(segment));
}

TEST_F(KqsupIpcReap, ARegistryThatIsBeingChangedProvesNothing) {
  const int segment = left_segment("changing");
  put(ipc_directory() + "/.bak", "");
  EXPECT_EQ(run_tool({"ipc", "reap", "--yes"}).exit_status, 2);
  std::filesystem::remove(ipc_directory() + "/.bak");
  EXPECT_TRUE(is_segment(segment));
}

}  // namespace
