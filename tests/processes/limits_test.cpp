// The system's own limits: a disk that is full, one that is mounted for reading, a system without a
// semaphore left. Nothing is lost, and what failed works when there is room again.

#include <dlfcn.h>
#include <sys/types.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "gtest/gtest.h"
#include "kqsupt/config.h"
#include "kqsupt/ipc.h"
#include "support/mounted.h"

namespace {

using kqsupt::tests::content_of;
using kqsupt::tests::FullDisk;
using kqsupt::tests::put;
using kqsupt::tests::ReadOnly;

constexpr const char* kNoFile = "(no file)";

SMStatus write_ini(const std::string& path, const char* section, const char* key,
                   const char* value) {
  const uint32_t size = value != nullptr ? static_cast<uint32_t>(std::strlen(value) + 1) : 0;
  return SMWriteINIPathFileValue(section, key, SMINI_TYPE_UTF8, value, size, path.c_str(), 1);
}

SMStatus write_property(const std::string& path, const char* key, const char* value) {
  return SMPropertyFileWriteValue(key, SMXLT_TYPE_UTF8, value,
                                  static_cast<uint32_t>(std::strlen(value) + 1), path.c_str(), 1);
}

// Some pages of comment, so that a change fails in the midst of a write.
const std::string kLong = [] {
  std::string text;
  while (text.size() < 10000) {
    text += "; a line of the file\n";
  }
  return text + "[A]\nK=old\n";
}();

TEST_F(FullDisk, LeavesAnIniFileAsItIs) {
  const std::string path = scratch_.file("a.ini");
  put(path, kLong);
  std::string after = kLong;
  after.replace(after.size() - 4, 4, "new\n");
  for (const int left : {0, 1, 2}) {
    fill(left);
    EXPECT_EQ(write_ini(path, "A", "K", "new"), SMStatus{SM_STATUS_OUT_OF_SPACE}) << left;
    EXPECT_EQ(content_of(path), kLong);
    EXPECT_EQ(names(), std::vector<std::string>{"a.ini"});
    make_room();
  }
  fill(3);
  EXPECT_EQ(write_ini(path, "A", "K", "new"), SMStatus{SM_STATUS_SUCCESS});
  EXPECT_EQ(content_of(path), after);
}

TEST_F(FullDisk, TakesBackThePartOfANewSectionThatFitted) {
  const std::string path = scratch_.file("a.ini");
  // The room that is left ends with the page that the file ends in.
  const std::string value(8000, 'v');
  put(path, kLong);
  for (const int left : {0, 1}) {
    fill(left);
    EXPECT_EQ(write_ini(path, "B", "K", value.c_str()), SMStatus{SM_STATUS_OUT_OF_SPACE}) << left;
    EXPECT_EQ(content_of(path), kLong);
    make_room();
  }
  EXPECT_EQ(write_ini(path, "B", "K", value.c_str()), SMStatus{SM_STATUS_SUCCESS});
  EXPECT_EQ(content_of(path), kLong + "\n[B]\nK=" + value + "\n");
}

TEST_F(FullDisk, HasNoPartOfANewFile) {
  const std::string path = scratch_.file("a.ini");
  fill(0);
  EXPECT_EQ(write_ini(path, "B", "K", "1"), SMStatus{SM_STATUS_OUT_OF_SPACE});
  EXPECT_EQ(content_of(path), kNoFile);
  make_room();
  EXPECT_EQ(write_ini(path, "B", "K", "1"), SMStatus{SM_STATUS_SUCCESS});
}

TEST_F(FullDisk, LeavesAPropertyFileAsItIs) {
  const std::string path = scratch_.file("a.ini");
  put(path, "a=1\nb=2\n");
  fill(0);
  EXPECT_EQ(write_property(path, "b", "new"), SMStatus{SM_STATUS_OUT_OF_SPACE});
  EXPECT_EQ(content_of(path), "a=1\nb=2\n");
  EXPECT_EQ(names(), std::vector<std::string>{"a.ini"});
  make_room();
  EXPECT_EQ(write_property(path, "b", "new"), SMStatus{SM_STATUS_SUCCESS});
  EXPECT_EQ(content_of(path), "a=1\nb=new\n");
}

TEST_F(ReadOnly, CanBeReadAndNotChanged) {
  const std::string ini = "[A]\nK=old\n";
  const std::string path = scratch_.file("a.ini");
  put(path, ini);
  put(scratch_.file("p"), "a=1\n");
  close_for_writing();
  const std::vector<std::string> names = scratch_.names();
  EXPECT_EQ(write_ini(path, "A", "K", "new"), SMStatus{SM_STATUS_FILE_NOT_FOUND});
  EXPECT_EQ(write_ini(path, "A", "L", "new"), SMStatus{SM_STATUS_FILE_NOT_FOUND});
  EXPECT_EQ(write_ini(path, "B", "K", "new"), SMStatus{SM_STATUS_FILE_NOT_FOUND});
  EXPECT_EQ(write_ini(path, "A", "K", nullptr), SMStatus{SM_STATUS_FILE_NOT_FOUND});
  EXPECT_EQ(write_ini(path, "A", nullptr, nullptr), SMStatus{SM_STATUS_FILE_NOT_FOUND});
  EXPECT_EQ(content_of(path), ini);
  EXPECT_EQ(write_ini(scratch_.file("new.ini"), "A", "K", "1"), SMStatus{SM_STATUS_FILE_NOT_FOUND});
  EXPECT_EQ(write_ini(scratch_.file("directory/new.ini"), "A", "K", "1"), 0xFFFFFFFFU);
  EXPECT_EQ(write_property(scratch_.file("p"), "a", "2"), SMStatus{SM_STATUS_FILE_NOT_FOUND});
  char value[16];
  uint32_t size = sizeof value;
  EXPECT_EQ(
      SMReadINIPathFileValue("A", "K", SMINI_TYPE_UTF8, value, &size, nullptr, 0, path.c_str(), 0),
      SMStatus{SM_STATUS_SUCCESS});
  EXPECT_STREQ(value, "old");
  EXPECT_EQ(scratch_.names(), names);
}

// ---- The system's semaphores ----

// What came to the system's log, one element a line with its identity and priority before it.
std::vector<std::string>& logged() {
  static std::vector<std::string> lines;
  return lines;
}
std::string log_identity;

void log_line(int priority, const char* format, va_list arguments) {
  char line[4096];
  // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized)
  std::vsnprintf(line, sizeof line, format, arguments);
  logged().push_back(log_identity + ": " + std::to_string(priority) + " " + line);
}

// The error that the system answers when a set of semaphores is asked for; 0 to ask it.
int semget_error = 0;

}  // namespace

// In place of the system's functions of these names, which the library calls.
extern "C" {

void openlog(const char* identity, int, int) {
  log_identity = identity;
}
void closelog() {
  log_identity = "closed";
}
[[gnu::format(printf, 2, 3)]] void syslog(int priority, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  log_line(priority, format, arguments);
  va_end(arguments);
}
[[gnu::format(printf, 3, 4)]] void __syslog_chk(int priority, int, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  log_line(priority, format, arguments);
  va_end(arguments);
}

int semget(key_t key, int count, int flags) noexcept {
  if (semget_error != 0) {
    errno = semget_error;
    return -1;
  }
  static const auto system_semget =
      reinterpret_cast<int (*)(key_t, int, int)>(dlsym(RTLD_NEXT, "semget"));
  return system_semget(key, count, flags);
}

}  // extern "C"

namespace {

constexpr char kBegin[] = "Corvane (Shared Library): 6 Talmere EventID: 0  ";
const std::string kNoRoom =
    std::string(kBegin) +
    "A semaphore set has to be created but the system limit for the maximum number of semaphore "
    "sets has been exceeded\n";
const std::string kNoMemory =
    std::string(kBegin) +
    "A semaphore set could not be created because the system has not enough memory for the new "
    "data structure\n";

TEST(SemaphoreLimit, IsToldToTheSystemLogForWantOfRoomAndOfMemoryAlone) {
  // The guard of shared memory is looked for before it is made: this is told once.
  for (const int error : {ENOSPC, ENOMEM, EACCES, EINVAL, EPERM}) {
    logged().clear();
    semget_error = error;
    EXPECT_EQ(SMSemaphoreCreate("told", 3), nullptr);
    EXPECT_EQ(SMEventCreate("told", 0, 0), nullptr);
    EXPECT_EQ(SMSharedMemCreate("told", 10), nullptr);
    EXPECT_EQ(SMSemaphoreOpen("told"), nullptr);
    semget_error = 0;
    const std::vector<std::string> none;
    const std::vector<std::string> room(3, kNoRoom);
    const std::vector<std::string> memory(3, kNoMemory);
    EXPECT_EQ(logged(), error == ENOSPC ? room : error == ENOMEM ? memory : none) << error;
  }
}

TEST(SemaphoreLimit, GivesNoneAndThenOneWhenThereIsRoomAgain) {
  const std::string limits = "/proc/sys/kernel/sem";
  const std::string before = content_of(limits);
  const auto limit_sets = [&limits](const std::string& text) {
    std::ofstream file(limits);
    return static_cast<bool>((file << text).flush());
  };
  if (!limit_sets("250 32000 32 0")) {
    GTEST_SKIP() << "the system lets nobody set the limit here";
  }
  logged().clear();
  EXPECT_EQ(SMSemaphoreCreate("beyond", 3), nullptr);
  EXPECT_EQ(SMEventCreate("beyond", 0, 0), nullptr);
  EXPECT_EQ(SMSharedMemCreate("beyond", 10), nullptr);
  EXPECT_EQ(logged(), std::vector<std::string>(3, kNoRoom));
  EXPECT_TRUE(limit_sets(before));
  SMSemaphore* semaphore = SMSemaphoreCreate("beyond", 3);
  ASSERT_NE(semaphore, nullptr);
  uint32_t count = 0;
  EXPECT_EQ(SMSemaphoreRelease(semaphore, 1, &count), SMStatus{SM_STATUS_SUCCESS});
  EXPECT_EQ(count, 3U);
  SMSemaphoreDestroy(semaphore);
  SMSharedMem* memory = SMSharedMemCreate("beyond", 10);
  EXPECT_NE(memory, nullptr);
  SMSharedMemFree(memory);
}

}  // namespace
