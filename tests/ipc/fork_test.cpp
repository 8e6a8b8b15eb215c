// What a child process has of its parent's locks: nothing.

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>

#include "gtest/gtest.h"
#include "ipc/named.h"
#include "kqsupt/config.h"
#include "kqsupt/ipc.h"
#include "support/child.h"
#include "support/emulated.h"
#include "support/program.h"
#include "support/scratch.h"

namespace {

using kqsupt::tests::in_child;
using kqsupt::tests::put;
using kqsupt::tests::Scratch;

TEST(Fork, AChildDoesNotHoldItsParentsMutex) {
  SMMutex* mutex = SMMutexCreate("forked");
  EXPECT_EQ(SMMutexLock(mutex, 0), 0U);
  EXPECT_EQ(in_child([mutex] {
              // The parent holds it: the child waits as any other process does, and giving back what
              // it does not hold gives nothing back.
              const bool refused = SMMutexLock(mutex, 0) == SM_STATUS_TIMEOUT &&
                                   SMMutexUnLock(mutex) == SM_STATUS_SUCCESS &&
                                   SMMutexLock(mutex, 8) == SM_STATUS_TIMEOUT;
              return refused ? 0 : 1;
            }),
            0);
  EXPECT_EQ(in_child([mutex] { return SMMutexUnLock(mutex) == SM_STATUS_SUCCESS ? 0 : 1; }), 0);
  EXPECT_EQ(in_child([] { return SMMutexLock(SMMutexOpen("forked"), 0) == 0 ? 1 : 0; }), 0);
  EXPECT_EQ(SMMutexUnLock(mutex), 0U);
  SMMutexDestroy(mutex);
}

TEST(Fork, AChildTakesAMutexThatItsParentGaveBack) {
  SMMutex* mutex = SMMutexCreate("handed on");
  EXPECT_EQ(SMMutexLock(mutex, 0), 0U);
  int ready[2];
  ASSERT_EQ(pipe(ready), 0);
  const pid_t child = fork();
  if (child == 0) {
    alarm(60);
    char byte;
    const bool told = read(ready[0], &byte, 1) == 1;
    _exit(told && SMMutexLock(mutex, -1) == 0 && SMMutexUnLock(mutex) == 0 ? 0 : 1);
  }
  EXPECT_EQ(SMMutexUnLock(mutex), 0U);
  EXPECT_EQ(write(ready[1], "x", 1), 1);
  int status = 1;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  close(ready[0]);
  close(ready[1]);
  SMMutexDestroy(mutex);
}

TEST(Fork, AChildUsesFilesThatItsParentsThreadsAreWriting) {
  if (!kqsupt::tests::survives_forks()) {
    GTEST_SKIP() << "what runs this does not survive such a fork";
  }
  const Scratch scratch;
  const std::string path = scratch.file("a.ini");
  const std::string of_children = scratch.file("b.ini");
  // Made first: what is changed takes a name for its new content, what is made does not.
  const uint32_t zero = 0;
  SMWriteINIPathFileValue("S", "K", SMINI_TYPE_U32, &zero, sizeof zero, of_children.c_str(), 1);
  // With a base of 0 every look-up of a text reads the range of texts again.
  const std::string ranges =
      std::string(std::getenv("KQSUPT_SANDBOX")) + "/install/Quillance/ini/ini/kqisdy32.ini";
  put(ranges, "[OEM Configuration]\nBaseID=0\n");
  std::atomic<bool> done = false;
  std::thread writer([&] {
    for (uint32_t i = 0; !done; ++i) {
      SMWriteINIPathFileValue("S", "K", SMINI_TYPE_U32, &i, sizeof i, path.c_str(), 1);
    }
  });
  std::thread reader([&] {
    while (!done) {
      SMGetUCS2StrFromID(1, nullptr, nullptr, nullptr);
    }
  });
  for (uint32_t i = 0; i < 50; ++i) {
    EXPECT_EQ(in_child([&] {
                uint32_t value = 0;
                uint32_t size = sizeof value;
                const SMStatus status = SMReadINIPathFileValue("S", "K", SMINI_TYPE_U32, &value,
                                                               &size, nullptr, 0, path.c_str(), 1);
                if (status != SM_STATUS_SUCCESS && status != SM_STATUS_FILE_OPEN_FAILED) {
                  return 1;
                }
                if (SMWriteINIPathFileValue("S", "K", SMINI_TYPE_U32, &i, sizeof i,
                                            of_children.c_str(), 1) != SM_STATUS_SUCCESS) {
                  return 2;
                }
                SMGetUCS2StrFromID(1, nullptr, nullptr, nullptr);
                return 0;
              }),
              0)
        << i;
  }
  done = true;
  writer.join();
  reader.join();
  unlink(ranges.c_str());
}

TEST(Fork, AChildDrawsNamesWhileItsParentsThreadsDo) {
  if (!kqsupt::tests::survives_forks()) {
    GTEST_SKIP() << "what runs this does not survive such a fork";
  }
  const auto draw = [] {
    char name[16];
    uint32_t size = sizeof name;
    return SMGetTmpFile("/tmp", name, &size);
  };
  std::atomic<bool> done = false;
  std::thread drawer([&] {
    while (!done) {
      draw();
    }
  });
  for (int i = 0; i < 100; ++i) {
    EXPECT_EQ(in_child([&] { return draw() == SM_STATUS_SUCCESS ? 0 : 1; }), 0) << i;
  }
  done = true;
  drawer.join();
}

TEST(Fork, DescriptorsDoNotReachOtherPrograms) {
  SMMutex* mutex = SMMutexCreate("descriptor");
  EXPECT_EQ(SMMutexLock(mutex, 0), 0U);
  for (int fd = 3; fd < 100; ++fd) {
    const int flags = fcntl(fd, F_GETFD);
    char target[256] = {};
    const std::string link = "/proc/self/fd/" + std::to_string(fd);
    if (flags >= 0 && readlink(link.c_str(), target, sizeof target - 1) > 0 &&
        std::string(target).find(".ipc/") != std::string::npos) {
      EXPECT_NE(flags & FD_CLOEXEC, 0) << target;
    }
  }
  SMMutexDestroy(mutex);
}

}  // namespace
