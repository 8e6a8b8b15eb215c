// Mutexes, private and named.

#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "gtest/gtest.h"
#include "ipc/named.h"
#include "kqsupt/ipc.h"
#include "support/child.h"

namespace {

using kqsupt::tests::give_up_privileges;
using kqsupt::tests::in_child;
using kqsupt::tests::ipc_directory;
using kqsupt::tests::lock_file_of_mutex;
using kqsupt::tests::mode_of;

constexpr SMStatus kFailed = 0xFFFFFFFF;

// Whether another process can take the mutex of that name now.
bool free_for_others(const char* name) {
  return in_child([name] {
           SMMutex* mutex = SMMutexOpen(name);
           return static_cast<int>(SMMutexLock(mutex, 0));
         }) == 0;
}

TEST(Mutex, IsTakenAndGivenBack) {
  for (const char* name : {static_cast<const char*>(nullptr), "taken"}) {
    SMMutex* mutex = SMMutexCreate(name);
    ASSERT_NE(mutex, nullptr);
    EXPECT_EQ(SMMutexLock(mutex, -1), 0U);
    EXPECT_EQ(SMMutexLock(mutex, 0), SM_STATUS_TIMEOUT);
    EXPECT_EQ(SMMutexLock(mutex, 20), SM_STATUS_TIMEOUT);
    EXPECT_EQ(SMMutexUnLock(mutex), 0U);
    EXPECT_EQ(SMMutexLock(mutex, 0), 0U);
    EXPECT_EQ(SMMutexUnLock(mutex), 0U);
    EXPECT_EQ(SMMutexUnLock(mutex), 0U);
    SMMutexDestroy(mutex);
  }
}

TEST(Mutex, ExcludesOtherThreads) {
  for (const char* name : {static_cast<const char*>(nullptr), "threads"}) {
    SMMutex* mutex = SMMutexCreate(name);
    int count = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
      threads.emplace_back([&] {
        for (int n = 0; n < 200; ++n) {
          EXPECT_EQ(SMMutexLock(mutex, -1), 0U);
          ++count;
          EXPECT_EQ(SMMutexUnLock(mutex), 0U);
        }
      });
    }
    for (std::thread& thread : threads) {
      thread.join();
    }
    EXPECT_EQ(count, 800);
    SMMutexDestroy(mutex);
  }
}

TEST(Mutex, OfANameExcludesOtherProcesses) {
  SMMutex* mutex = SMMutexCreate("processes");
  EXPECT_TRUE(free_for_others("processes"));
  EXPECT_EQ(SMMutexLock(mutex, 0), 0U);
  EXPECT_FALSE(free_for_others("processes"));
  EXPECT_EQ(SMMutexUnLock(mutex), 0U);
  EXPECT_TRUE(free_for_others("processes"));
  SMMutexDestroy(mutex);
}

TEST(Mutex, OfADeadProcessIsFree) {
  SMMutex* mutex = SMMutexCreate("dead");
  EXPECT_EQ(in_child([] { return static_cast<int>(SMMutexLock(SMMutexOpen("dead"), -1)); }), 0);
  EXPECT_EQ(SMMutexLock(mutex, 0), 0U);
  SMMutexDestroy(mutex);
}

// Its readers exclude who may write it and no other reader.
TEST(Mutex, OfALockFileThatMayOnlyBeReadIsHeldByManyReadersAndNoWriter) {
  SMMutex* writer = SMMutexCreate("readers");
  ASSERT_NE(writer, nullptr);
  ASSERT_EQ(chmod(lock_file_of_mutex("readers").c_str(), 0444), 0);
  const auto writer_gets = [writer](SMStatus status) {
    return in_child([&] { return SMMutexLock(writer, 0) == status ? 0 : 1; }) == 0;
  };
  const auto reader_gets = [](SMStatus status) {
    return SMMutexLock(SMMutexOpen("readers"), 0) == status;
  };
  EXPECT_EQ(in_child([&] {
              const bool is_reader = give_up_privileges() && reader_gets(SM_STATUS_SUCCESS);
              const bool with_others =
                  in_child([&] { return reader_gets(SM_STATUS_SUCCESS) ? 0 : 1; }) == 0;
              return is_reader && with_others && writer_gets(SM_STATUS_TIMEOUT) ? 0 : 1;
            }),
            0);
  EXPECT_TRUE(writer_gets(SM_STATUS_SUCCESS));
  EXPECT_EQ(SMMutexLock(writer, 0), 0U);
  EXPECT_EQ(
      in_child([&] { return give_up_privileges() && reader_gets(SM_STATUS_TIMEOUT) ? 0 : 1; }), 0);
  SMMutexDestroy(writer);
}

TEST(Mutex, IsTheLockFileOfItsName) {
  const std::string file = lock_file_of_mutex("file");
  umask(077);
  SMMutexDestroy(SMMutexCreate("file"));
  EXPECT_EQ(mode_of(file), 0664U);
  SMMutexDestroy(SMMutexCreate_s("private", 0));
  EXPECT_EQ(mode_of(lock_file_of_mutex("private")), 0600U);
  // The bits of one that exists stay.
  SMMutexDestroy(SMMutexCreate_s("file", 0));
  EXPECT_EQ(mode_of(file), 0664U);
  umask(022);
}

TEST(Mutex, PermissionsAreMappedToBits) {
  const std::pair<int32_t, unsigned> kPermissions[] = {
      {-1, 0664},
      {0, 0600},
      {SM_PERMISSION_OWNER_ALL, 0700},
      {SM_PERMISSION_OWNER_ALL | SM_PERMISSION_OWNER_READ, 0700},
      {SM_PERMISSION_OWNER_READ | SM_PERMISSION_OWNER_WRITE, 0600},
      {SM_PERMISSION_OWNER_WRITE, 0200},
      {SM_PERMISSION_OWNER_WRITE | SM_PERMISSION_OWNER_EXECUTE, 0300},
      {SM_PERMISSION_OWNER_READ | SM_PERMISSION_OWNER_WRITE | SM_PERMISSION_OWNER_EXECUTE, 0700},
      {SM_PERMISSION_OWNER_ALL | SM_PERMISSION_GROUP_ALL | SM_PERMISSION_OTHER_ALL, 0777},
      {SM_PERMISSION_GROUP_READ | SM_PERMISSION_OTHER_READ, 0044},
      {SM_PERMISSION_GROUP_WRITE | SM_PERMISSION_OTHER_WRITE, 0022},
      {SM_PERMISSION_GROUP_EXECUTE | SM_PERMISSION_OTHER_EXECUTE, 0011},
      {SM_PERMISSION_GROUP_ALL | SM_PERMISSION_GROUP_EXECUTE, 0070},
      {1, 0},
  };
  int number = 0;
  for (const auto& [permission, mode] : kPermissions) {
    const std::string name = "permission" + std::to_string(number++);
    SMMutex* mutex = SMMutexCreate_s(name.c_str(), permission);
    EXPECT_EQ(mode_of(lock_file_of_mutex(name)), mode) << permission;
    SMMutexDestroy(mutex);
  }
}

TEST(Mutex, IsOpenedOnlyWhenItWasCreated) {
  EXPECT_EQ(SMMutexOpen("never created"), nullptr);
  EXPECT_EQ(SMMutexOpen(nullptr), nullptr);
  SMMutex* creator = SMMutexCreate("created");
  SMMutex* opener = SMMutexOpen("created");
  EXPECT_NE(opener, nullptr);
  SMMutexDestroy(opener);
  SMMutexDestroy(creator);
  opener = SMMutexOpen("created");
  EXPECT_NE(opener, nullptr);
  SMMutexDestroy(opener);
}

TEST(Mutex, HasNoEmptyName) {
  EXPECT_EQ(SMMutexCreate(""), nullptr);
  EXPECT_EQ(SMMutexOpen(""), nullptr);
}

TEST(Mutex, IsNotMadeThroughALinkThatSomebodyPutThere) {
  const std::string victim = ipc_directory() + "/victim";
  kqsupt::tests::put(victim, "");
  ASSERT_EQ(symlink(victim.c_str(), lock_file_of_mutex("link").c_str()), 0);
  EXPECT_EQ(SMMutexCreate("link"), nullptr);
  EXPECT_EQ(SMMutexOpen("link"), nullptr);
}

TEST(Mutex, OverAPipeDoesNotBlock) {
  ASSERT_EQ(mkfifo(lock_file_of_mutex("pipe").c_str(), 0600), 0);
  SMMutexDestroy(SMMutexCreate("pipe"));
}

TEST(Mutex, ADestroyedOneLeavesItsFile) {
  SMMutex* mutex = SMMutexCreate("stays");
  SMMutexDestroy(mutex);
  EXPECT_EQ(access(lock_file_of_mutex("stays").c_str(), F_OK), 0);
}

TEST(Mutex, DestroyingGivesTheLockBack) {
  SMMutex* mutex = SMMutexCreate("given back");
  EXPECT_EQ(SMMutexLock(mutex, 0), 0U);
  SMMutexDestroy(mutex);
  EXPECT_TRUE(free_for_others("given back"));
}

TEST(Mutex, ALostDescriptorIsOpenedAgain) {
  SMMutex* mutex = SMMutexCreate("lost");
  const int next = dup(0);
  close(next);
  // The highest descriptor is the lock file's: it was opened last.
  close(next - 1);
  EXPECT_EQ(SMMutexLock(mutex, 0), 0U);
  EXPECT_FALSE(free_for_others("lost"));
  SMMutexUnLock(mutex);
  SMMutexDestroy(mutex);
}

TEST(Mutex, HandlesOfOtherKindsAreRefused) {
  SMSemaphore* semaphore = SMSemaphoreCreate(nullptr, 0);
  auto* other = reinterpret_cast<SMMutex*>(semaphore);
  EXPECT_EQ(SMMutexLock(other, 0), SM_STATUS_OPERATION_FAILED);
  EXPECT_EQ(SMMutexUnLock(other), SM_STATUS_OPERATION_FAILED);
  SMMutexDestroy(other);
  EXPECT_EQ(SMSemaphoreRelease(semaphore, 1, nullptr), 0U);
  SMSemaphoreDestroy(semaphore);
  EXPECT_EQ(SMMutexLock(nullptr, 0), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMMutexUnLock(nullptr), SM_STATUS_INVALID_PARAMETER);
  SMMutexDestroy(nullptr);
}

}  // namespace
