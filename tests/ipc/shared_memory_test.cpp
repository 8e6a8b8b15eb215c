// Shared memory, and who may have it.

#include <sys/sem.h>
#include <sys/shm.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <string>

#include "gtest/gtest.h"
#include "ipc/named.h"
#include "kqsupt/ipc.h"

namespace {

using kqsupt::tests::decorated;
using kqsupt::tests::registered_key;

char* text_in(SMSharedMem* memory) {
  return static_cast<char*>(SMSharedMemGetAddressPtr(memory));
}

key_t key_of(const char* name) {
  return static_cast<key_t>(registered_key(decorated("kqsupshm", name)));
}

// Creates a segment in another process, which ends without freeing it.
void create_and_die(const char* name, const char* text) {
  const pid_t child = fork();
  if (child == 0) {
    SMSharedMem* memory = SMSharedMemCreate(name, 100);
    std::strcpy(text_in(memory), text);
    _exit(0);
  }
  int status = 1;
  waitpid(child, &status, 0);
  ASSERT_EQ(status, 0);
}

TEST(SharedMemory, IsSeenByWhoeverOpensIt) {
  SMSharedMem* creator = SMSharedMemCreate("seen", 5000);
  ASSERT_NE(creator, nullptr);
  for (int i = 0; i < 5000; ++i) {
    ASSERT_EQ(text_in(creator)[i], 0);
  }
  SMSharedMem* opener = SMSharedMemOpen("seen");
  ASSERT_NE(opener, nullptr);
  std::strcpy(text_in(creator) + 4990, "hello");
  EXPECT_STREQ(text_in(opener) + 4990, "hello");
  SMSharedMemFree(opener);
  EXPECT_STREQ(text_in(creator) + 4990, "hello");
  SMSharedMemFree(creator);
}

TEST(SharedMemory, CannotBeCreatedWhileItsCreatorLives) {
  SMSharedMem* creator = SMSharedMemCreate("alive", 100);
  EXPECT_EQ(SMSharedMemCreate("alive", 100), nullptr);
  EXPECT_EQ(SMSharedMemCreate_s("alive", 100, 0), nullptr);
  SMSharedMemFree(creator);
  creator = SMSharedMemCreate("alive", 200);
  EXPECT_NE(creator, nullptr);
  SMSharedMemFree(creator);
}

TEST(SharedMemory, ADeadCreatorsSegmentIsTakenOverWithItsContent) {
  create_and_die("dead", "left behind");
  EXPECT_EQ(SMSharedMemOpen("dead"), nullptr);
  SMSharedMem* next = SMSharedMemCreate("dead", 100);
  ASSERT_NE(next, nullptr);
  EXPECT_STREQ(text_in(next), "left behind");
  SMSharedMem* opener = SMSharedMemOpen("dead");
  EXPECT_STREQ(text_in(opener), "left behind");
  SMSharedMemFree(opener);
  // Who took it over leaves it to the next one.
  SMSharedMemFree(next);
  EXPECT_GE(shmget(key_of("dead"), 0, 0), 0);
}

TEST(SharedMemory, FreeingItRemovesSegmentAndGuard) {
  SMSharedMem* creator = SMSharedMemCreate("removed", 100);
  SMSharedMem* opener = SMSharedMemOpen("removed");
  std::strcpy(text_in(creator), "still there");
  SMSharedMemFree(creator);
  EXPECT_STREQ(text_in(opener), "still there");
  EXPECT_EQ(SMSharedMemOpen("removed"), nullptr);
  EXPECT_LT(shmget(key_of("removed"), 0, 0), 0);
  EXPECT_LT(semget(key_of("removed"), 0, 0), 0);
  SMSharedMemFree(opener);
}

TEST(SharedMemory, HasTheSizeAndPermissionOfItsCreator) {
  const auto about = [](const char* name) {
    shmid_ds segment{};
    shmctl(shmget(key_of(name), 0, 0), IPC_STAT, &segment);
    return segment;
  };
  SMSharedMem* shared = SMSharedMemCreate("shared", 12345);
  EXPECT_EQ(about("shared").shm_segsz, 12345U);
  EXPECT_EQ(about("shared").shm_perm.mode & 0777U, 0664U);
  SMSharedMem* mine = SMSharedMemCreate_s("mine", 1, 0);
  EXPECT_EQ(about("mine").shm_perm.mode & 0777U, 0600U);
  SMSharedMemFree(shared);
  SMSharedMemFree(mine);
}

// What its creator holds and the kernel gives back when that dies.
TEST(SharedMemory, HasAGuardThatItsCreatorHolds) {
  SMSharedMem* creator = SMSharedMemCreate("guarded", 100);
  const int guard = semget(key_of("guarded"), 0, 0);
  const auto about = kqsupt::tests::about_set(guard);
  ASSERT_TRUE(about.has_value());
  EXPECT_EQ(about->sem_nsems, 1U);
  EXPECT_EQ(about->sem_perm.mode & 0777U, 0600U);
  EXPECT_EQ(semctl(guard, 0, GETVAL), 0);
  SMSharedMemFree(SMSharedMemOpen("guarded"));
  EXPECT_EQ(SMSharedMemCreate("guarded", 100), nullptr);
  EXPECT_EQ(semctl(guard, 0, GETVAL), 0);
  SMSharedMemFree(creator);
}

TEST(SharedMemory, TheGuardOfADeadCreatorIsGivenBack) {
  create_and_die("given back", "text");
  const int guard = semget(key_of("given back"), 0, 0);
  EXPECT_EQ(semctl(guard, 0, GETVAL), 1);
  EXPECT_EQ(SMSharedMemOpen("given back"), nullptr);
  EXPECT_EQ(semctl(guard, 0, GETVAL), 1);
  SMSharedMem* next = SMSharedMemCreate("given back", 100);
  EXPECT_EQ(semget(key_of("given back"), 0, 0), guard);
  EXPECT_EQ(semctl(guard, 0, GETVAL), 0);
  SMSharedMemFree(next);
  EXPECT_EQ(semctl(guard, 0, GETVAL), 0);  // until the process ends
}

TEST(SharedMemory, WithoutAGuardIsOpenedAndNotTakenOver) {
  SMSharedMem* creator = SMSharedMemCreate("unguarded", 100);
  ASSERT_EQ(semctl(semget(key_of("unguarded"), 0, 0), 0, IPC_RMID), 0);
  EXPECT_EQ(SMSharedMemCreate("unguarded", 100), nullptr);
  SMSharedMem* opener = SMSharedMemOpen("unguarded");
  ASSERT_NE(opener, nullptr);
  std::strcpy(text_in(creator), "shared");
  EXPECT_STREQ(text_in(opener), "shared");
  SMSharedMemFree(opener);
  SMSharedMemFree(creator);
  EXPECT_LT(shmget(key_of("unguarded"), 0, 0), 0);
}

TEST(SharedMemory, NeedsANameAndASize) {
  EXPECT_EQ(SMSharedMemCreate(nullptr, 100), nullptr);
  EXPECT_EQ(SMSharedMemCreate("", 100), nullptr);
  EXPECT_EQ(SMSharedMemCreate("nothing", 0), nullptr);
  EXPECT_EQ(SMSharedMemOpen(nullptr), nullptr);
  EXPECT_EQ(SMSharedMemOpen(""), nullptr);
  EXPECT_EQ(SMSharedMemOpen("never created"), nullptr);
}

TEST(SharedMemory, HandlesOfOtherKindsAreRefused) {
  SMEvent* event = SMEventCreate(nullptr, 0, 0);
  auto* other = reinterpret_cast<SMSharedMem*>(event);
  EXPECT_EQ(SMSharedMemGetAddressPtr(other), nullptr);
  EXPECT_EQ(SMSharedMemGetAddressPtr(nullptr), nullptr);
  SMSharedMemFree(other);
  SMSharedMemFree(nullptr);
  EXPECT_EQ(SMEventSet(event), 0U);
  SMEventDestroy(event);
}

}  // namespace
