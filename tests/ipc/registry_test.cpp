// The names of objects and their keys, and what a start removes.

#include <sys/sem.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>

#include "gtest/gtest.h"
#include "ipc/named.h"
#include "kqsupt/ipc.h"
#include "support/child.h"
#include "support/program.h"
#include "support/scratch.h"

namespace {

using namespace std::string_literals;
using kqsupt::tests::about_set;
using kqsupt::tests::content_of;
using kqsupt::tests::decorated;
using kqsupt::tests::give_up_privileges;
using kqsupt::tests::in_child;
using kqsupt::tests::ipc_directory;
using kqsupt::tests::lock_file_of_path;
using kqsupt::tests::put;
using kqsupt::tests::registered_key;
using kqsupt::tests::registry;
using kqsupt::tests::Scratch;

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

// Nobody takes a key for it that another name may have, and nobody asks again.
TEST_F(Registry, ABrokenListOfKeysNotesTheNameAsOneWithout) {
  const std::string broken = "[Unique String Name Key Section]\nx=1\n";
  put(registry(), broken + "[broken\n");
  EXPECT_EQ(SMSemaphoreCreate("a", 0), nullptr);
  const std::string noted = broken + decorated("kqsupsmp", "a") + "=0\n[broken\n";
  EXPECT_EQ(content_of(registry()), noted);
  EXPECT_EQ(SMSemaphoreCreate("a", 0), nullptr);
  EXPECT_EQ(content_of(registry()), noted);
}

TEST_F(Registry, IsReadByWhoMayNotWriteItsLockFile) {
  SMSemaphore* semaphore = SMSemaphoreCreate("a", 0);
  ASSERT_NE(semaphore, nullptr);
  const std::string before = content_of(registry());
  const std::string lock_file = lock_file_of_path(registry() + "Sem");
  const std::string of_registry = lock_file_of_path(registry());
  for (const std::string& file : {lock_file, of_registry, registry()}) {
    EXPECT_EQ(chmod(file.c_str(), 0444), 0) << file;
  }
  EXPECT_EQ(in_child([] {
              return give_up_privileges() && SMSemaphoreOpen("a") != nullptr &&
                             SMSemaphoreCreate("b", 0) == nullptr
                         ? 0
                         : 1;
            }),
            0);
  EXPECT_EQ(content_of(registry()), before);
  for (const std::string& file : {lock_file, of_registry, registry()}) {
    chmod(file.c_str(), 0644);
  }
  SMSemaphoreDestroy(semaphore);
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

// ---- Where it lies ----

TEST_F(Registry, MakesNoDirectory) {
  const std::string aside = ipc_directory() + ".aside";
  std::filesystem::rename(ipc_directory(), aside);
  EXPECT_EQ(SMMutexCreate("a"), nullptr);
  EXPECT_EQ(SMSemaphoreCreate("a", 0), nullptr);
  EXPECT_EQ(SMEventCreate("a", 0, 0), nullptr);
  EXPECT_EQ(SMSharedMemCreate("a", 10), nullptr);
  EXPECT_EQ(SMRWLCreate("a"), nullptr);
  EXPECT_FALSE(std::filesystem::exists(ipc_directory()));
  std::filesystem::rename(aside, ipc_directory());
}

// For programs that are started while the install registry is another one.
class PlaceOfRegistry : public testing::Test {
 protected:
  ~PlaceOfRegistry() override { put(kInstallRegistry, before_); }

  // "0" when the program could make and lock a mutex.
  static std::string answer() {
    return kqsupt::tests::run({kqsupt::tests::built_program("ini-worker"), "mutex", "place"}).out;
  }
  // Whether that was here.
  [[nodiscard]] bool has_mutex(const std::string& directory) const {
    const std::string name = "/.ipc/." + decorated("kqsupmtx", "place");
    return std::filesystem::exists(scratch_.file(directory) + name);
  }
  void make(const std::string& directory) const {
    std::filesystem::create_directories(scratch_.file(directory) + "/.ipc");
  }
  [[nodiscard]] std::string line(const std::string& product) const {
    return product + ".vardatapath=" + scratch_.file(product) + "\n";
  }

  static constexpr char kInstallRegistry[] = "/etc/ybreg.cfg";
  const std::string before_ = content_of(kInstallRegistry);
  const Scratch scratch_;
};

TEST_F(PlaceOfRegistry, IsThatOfWexlib) {
  make("wexlib");
  make("nurb");
  put(kInstallRegistry, line("nurb") + line("wexlib"));
  EXPECT_EQ(answer(), "0\n");
  EXPECT_TRUE(has_mutex("wexlib"));
  EXPECT_FALSE(has_mutex("nurb"));
}

TEST_F(PlaceOfRegistry, IsThatOfNurbWithoutWexlib) {
  make("wexlib");
  make("nurb");
  put(kInstallRegistry, line("nurb"));
  EXPECT_EQ(answer(), "0\n");
  EXPECT_TRUE(has_mutex("nurb"));
}

// Those that come when it is there again would have another registry.
TEST_F(PlaceOfRegistry, IsNotThatOfNurbWhileThatOfWexlibIsMissing) {
  make("nurb");
  put(kInstallRegistry, line("nurb") + line("wexlib"));
  EXPECT_NE(answer(), "0\n");
  EXPECT_FALSE(has_mutex("nurb"));
  EXPECT_FALSE(std::filesystem::exists(scratch_.file("wexlib")));
}

// ---- What a start removes ----

int exit_status_of_a_start() {
  return kqsupt::tests::run({kqsupt::tests::built_program("first-agent")}).exit_status;
}

bool exists(int set) {
  return about_set(set).has_value();
}

pid_t dead_process() {
  const pid_t child = fork();
  if (child == 0) {
    _exit(0);
  }
  waitpid(child, nullptr, 0);
  return child;
}

TEST_F(Registry, AStartRemovesTheSetsOfDeadProcesses) {
  const pid_t child = dead_process();
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

TEST_F(Registry, AStartRemovesAnEntryByTheNameThatItHas) {
  semget(IPC_PRIVATE, 1, IPC_CREAT | 0600);  // which may be the one of the identifier 0
  const int set = semget(IPC_PRIVATE, 1, IPC_CREAT | 0600);
  ASSERT_GT(set, 0);
  const std::string dead = "=" + std::to_string(dead_process()) + "\n";
  const std::string alive = std::to_string(set) + "=" + std::to_string(getpid()) + "\n";
  put(registry(), "[Semaphore List]\n" + alive + "00" + std::to_string(set) + dead);
  ASSERT_EQ(exit_status_of_a_start(), 0);
  EXPECT_FALSE(exists(set));
  EXPECT_EQ(content_of(registry()), "[Semaphore List]\n" + alive);
}

TEST_F(Registry, AStartLeavesASetWhoseMakerIsNoProcess) {
  semget(IPC_PRIVATE, 1, IPC_CREAT | 0600);
  const int set = semget(IPC_PRIVATE, 1, IPC_CREAT | 0600);
  ASSERT_GT(set, 0);
  for (const char* maker : {"nobody", "0", ""}) {
    const std::string list = "[Semaphore List]\n" + std::to_string(set) + "=" + maker + "\n";
    put(registry(), list);
    ASSERT_EQ(exit_status_of_a_start(), 0);
    EXPECT_TRUE(exists(set)) << maker;
    EXPECT_EQ(content_of(registry()), list);
  }
  semctl(set, 0, IPC_RMID);
}

TEST_F(Registry, AStartWithoutARegistryFileOfNamesMakesNone) {
  ASSERT_EQ(exit_status_of_a_start(), 0);
  EXPECT_EQ(content_of(registry()), "(no file)");
}

}  // namespace
