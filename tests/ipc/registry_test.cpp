// The names of objects and their keys, and what a start removes.

#include <sys/sem.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <set>
#include <string>

#include "gtest/gtest.h"
#include "ipc/named.h"
#include "kqsupt/ipc.h"
#include "support/program.h"

namespace {

using namespace std::string_literals;
using kqsupt::tests::about_set;
using kqsupt::tests::content_of;
using kqsupt::tests::decorated;
using kqsupt::tests::lock_file_of_path;
using kqsupt::tests::put;
using kqsupt::tests::registered_key;
using kqsupt::tests::registry;

// The registry of the other tests is put aside.
class Registry : public testing::Test {
 protected:
  Registry() { unlink(registry().c_str()); }
  ~Registry() override {
    unlink(registry().c_str());
    put(registry(), before_);
  }

  // Registers the name of a semaphore; its key.
  static uint32_t key_of(const std::string& name) {
    SMSemaphoreDestroy(SMSemaphoreCreate(name.c_str(), 0));
    return registered_key(decorated("kqsupsmp", name));
  }

  const std::string before_ = content_of(registry());
};

TEST_F(Registry, KeysCountFrom300001) {
  EXPECT_EQ(key_of("first"), 300001U);
  EXPECT_EQ(key_of("second"), 300002U);
  EXPECT_EQ(key_of("first"), 300001U);
  EXPECT_EQ(key_of("third"), 300003U);
}

TEST_F(Registry, HoldsNamesAndKeysBothWays) {
  key_of("a");
  SMEventDestroy(SMEventCreate("a", 0, 0));
  const std::string semaphore = decorated("kqsupsmp", "a");
  const std::string event = decorated("kqsupevt", "a");
  EXPECT_EQ(content_of(registry()),
            "[Unique String Name Key Section]\n" + semaphore + "=300001\n" + event +
                "=300002\n\n[Unique Numeric Value Key Section]\n300001=" + semaphore +
                "\n300002=" + event + "\n");
}

TEST_F(Registry, AnObjectThatIsOpenedAgainWritesNothing) {
  key_of("a");
  const std::string before = content_of(registry());
  SMSemaphore* semaphore = SMSemaphoreCreate("a", 0);
  SMSemaphoreDestroy(SMSemaphoreOpen("a"));
  SMSemaphoreDestroy(semaphore);
  EXPECT_EQ(content_of(registry()), before);
}

TEST_F(Registry, TheKeyAfterAnEmptyListIs300002) {
  put(registry(), "[Unique Numeric Value Key Section]\nx=1\n");
  EXPECT_EQ(key_of("a"), 300002U);
}

TEST_F(Registry, TheNextKeyFollowsTheHighest) {
  put(registry(),
      "[Unique Numeric Value Key Section]\n300007=x\n12=y\n400000=z\n300008=w\n400001x=v\n");
  EXPECT_EQ(key_of("a"), 400001U);
}

TEST_F(Registry, AfterTheHighestKeyOfAllThereIsNone) {
  const std::string full = "[Unique Numeric Value Key Section]\n4294967295=x\n";
  put(registry(), full);
  EXPECT_EQ(SMSemaphoreCreate("a", 0), nullptr);
  EXPECT_EQ(content_of(registry()), full);
}

TEST_F(Registry, ARegistryThatIsNoIniFileGivesNoKey) {
  put(registry(), "[Unique\n");
  EXPECT_EQ(SMSemaphoreCreate("a", 0), nullptr);
  EXPECT_EQ(SMEventCreate("a", 0, 0), nullptr);
  EXPECT_EQ(SMSharedMemCreate("a", 10), nullptr);
  EXPECT_EQ(content_of(registry()), "[Unique\n");
}

TEST_F(Registry, NamesThatDifferOrHaveAnotherKindHaveOtherKeys) {
  std::set<uint32_t> keys;
  for (const char* name : {"a", "b", "ab", "aB", "ä"}) {
    keys.insert(key_of(name));
    SMEventDestroy(SMEventCreate(name, 0, 0));
    keys.insert(registered_key(decorated("kqsupevt", name)));
    SMSharedMemFree(SMSharedMemCreate(name, 10));
    keys.insert(registered_key(decorated("kqsupshm", name)));
  }
  EXPECT_EQ(keys.size(), 15U);
  EXPECT_EQ(keys.count(0), 0U);
}

TEST_F(Registry, IsLockedByTheLockFileOfItsLock) {
  key_of("a");
  EXPECT_EQ(access(lock_file_of_path(registry() + "Sem").c_str(), F_OK), 0);
  EXPECT_NE(access((registry() + "Sem").c_str(), F_OK), 0);
}

TEST_F(Registry, NoSetHasTheIdentifier0) {
  // The first one of a fresh system has it, also here unless something took it out of the way.
  for (int i = 0; i < 10; ++i) {
    const std::string name = "zero" + std::to_string(i);
    SMSemaphore* semaphore = SMSemaphoreCreate(name.c_str(), 3);
    ASSERT_NE(semaphore, nullptr);
    EXPECT_GT(semget(static_cast<key_t>(registered_key(decorated("kqsupsmp", name))), 0, 0), 0);
    SMSemaphoreDestroy(semaphore);
  }
}

// ---- What a start removes ----

int exit_status_of_a_start() {
  return kqsupt::tests::run({kqsupt::tests::built_program("first-agent")}).exit_status;
}

bool exists(int set) {
  return about_set(set).has_value();
}

TEST_F(Registry, AStartRemovesTheSetsOfDeadProcesses) {
  const pid_t child = fork();
  if (child == 0) {
    _exit(0);
  }
  waitpid(child, nullptr, 0);
  semget(IPC_PRIVATE, 1, IPC_CREAT | 0600);  // which may be the one of the identifier 0
  const int dead = semget(IPC_PRIVATE, 1, IPC_CREAT | 0600);
  const int alive = semget(IPC_PRIVATE, 1, IPC_CREAT | 0600);
  ASSERT_GT(dead, 0);
  const std::string header = "[Semaphore List]\n";
  const std::string of_living = std::to_string(alive) + "=" + std::to_string(getpid()) + "\n";
  put(registry(), header + std::to_string(dead) + "=" + std::to_string(child) + "\n" + of_living +
                      "0=" + std::to_string(child) + "\nx=" + std::to_string(child) + "\n");
  ASSERT_EQ(exit_status_of_a_start(), 0);
  EXPECT_FALSE(exists(dead));
  EXPECT_TRUE(exists(alive));
  EXPECT_EQ(content_of(registry()), header + of_living + "0=" + std::to_string(child) +
                                        "\nx=" + std::to_string(child) + "\n");
}

TEST_F(Registry, AStartWithoutARegistryFileOfNamesMakesNone) {
  ASSERT_EQ(exit_status_of_a_start(), 0);
  EXPECT_EQ(content_of(registry()), "(no file)");
}

}  // namespace
