// Directories, temporary names, sizes and changes of files.

#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <set>
#include <string>
#include <utility>

#include "gtest/gtest.h"
#include "kqsupt.h"
#include "support/guarded.h"
#include "support/scratch.h"

namespace {

using kqsupt::tests::Guarded;
using kqsupt::tests::mode_of;
using kqsupt::tests::put;
using kqsupt::tests::Scratch;

constexpr SMStatus kFailed = 0xFFFFFFFF;

// The generator of the C library, in which a test may fix what is drawn.
struct Generator {
  bool is_fixed = false;
  int fixed = 0;
  int drawn = 0;
  int seeded = 0;
};
Generator generator;

}  // namespace

// These come before the C library's own, also for the library.
extern "C" int rand() noexcept {
  ++generator.drawn;
  return generator.is_fixed ? generator.fixed : static_cast<int>(random());
}
extern "C" void srand(unsigned seed) noexcept {
  ++generator.seeded;
  srandom(seed);
}

namespace {

TEST(Directories, AreMadeOneLevelAtATime) {
  const Scratch scratch;
  const std::string a = scratch.file("a");
  EXPECT_EQ(SMMkDir((a + "/b").c_str()), kFailed);
  umask(022);
  EXPECT_EQ(SMMkDir(a.c_str()), 0U);
  EXPECT_EQ(mode_of(a), 0755U);
  EXPECT_EQ(SMMkDir(a.c_str()), 0U);
  EXPECT_EQ(SMMkDir((a + "/b").c_str()), 0U);
  EXPECT_EQ(SMMkDir((a + "/b/").c_str()), 0U);
  EXPECT_EQ(SMMkDir(""), kFailed);
  EXPECT_EQ(SMMkDir(nullptr), kFailed);
}

TEST(Directories, AreRemovedWhenEmpty) {
  const Scratch scratch;
  const std::string a = scratch.file("a");
  EXPECT_EQ(SMRmDir(a.c_str()), SM_STATUS_DATA_NOT_FOUND);
  SMMkDir(a.c_str());
  put(a + "/f", "x");
  EXPECT_EQ(SMRmDir(a.c_str()), SM_STATUS_OPERATION_FAILED);
  EXPECT_EQ(SMRmDir((a + "/f").c_str()), kFailed);
  EXPECT_EQ(SMDeleteFile((a + "/f").c_str()), 0U);
  EXPECT_EQ(SMDeleteFile((a + "/f").c_str()), kFailed);
  EXPECT_EQ(SMDeleteFile(a.c_str()), kFailed);
  EXPECT_EQ(SMRmDir(a.c_str()), 0U);
  EXPECT_EQ(SMRmDir(nullptr), kFailed);
  EXPECT_EQ(SMDeleteFile(nullptr), kFailed);
}

TEST(SizeOfFile, IsItsNumberOfBytes) {
  const Scratch scratch;
  const std::string path = scratch.file("f");
  uint32_t size = 77;
  EXPECT_EQ(SMGetSizeOfFile(path.c_str(), &size), kFailed);
  EXPECT_EQ(size, 0U);
  put(path, "");
  EXPECT_EQ(SMGetSizeOfFile(path.c_str(), &size), 0U);
  EXPECT_EQ(size, 0U);
  put(path, std::string(12345, 'x'));
  EXPECT_EQ(SMGetSizeOfFile(path.c_str(), &size), 0U);
  EXPECT_EQ(size, 12345U);
  EXPECT_EQ(SMGetSizeOfFile(path.c_str(), nullptr), kFailed);
  EXPECT_EQ(SMGetSizeOfFile(nullptr, &size), kFailed);
  EXPECT_EQ(size, 0U);
}

TEST(SizeOfFile, HasAtMost31Bits) {
  const Scratch scratch;
  const std::string path = scratch.file("f");
  put(path, "");
  uint32_t size = 77;
  ASSERT_EQ(truncate(path.c_str(), 0x7FFFFFFF), 0);
  EXPECT_EQ(SMGetSizeOfFile(path.c_str(), &size), 0U);
  EXPECT_EQ(size, 0x7FFFFFFFU);
  for (const off_t end : {off_t{0x80000000}, off_t{0xFFFFFFFF}, off_t{0x100000005}}) {
    ASSERT_EQ(truncate(path.c_str(), end), 0);
    EXPECT_EQ(SMGetSizeOfFile(path.c_str(), &size), kFailed);
    EXPECT_EQ(size, 0U);
  }
}

TEST(SizeOfFile, OfADirectoryOrPipeIsNone) {
  const Scratch scratch;
  const std::string path = scratch.file("pipe");
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  uint32_t size = 77;
  EXPECT_EQ(SMGetSizeOfFile(path.c_str(), &size), kFailed);
  EXPECT_EQ(SMGetSizeOfFile("/", &size), kFailed);
  EXPECT_EQ(size, 0U);
}

TEST(TemporaryName, HasEightLettersAndDigits) {
  const Scratch scratch;
  const std::string directory = scratch.file(".");
  std::set<std::string> names;
  for (int i = 0; i < 100; ++i) {
    const Guarded<char> name(9);
    uint32_t size = 9;
    ASSERT_EQ(SMGetTmpFile(directory.c_str(), name.data(), &size), 0U);
    EXPECT_EQ(size, 9U);
    EXPECT_EQ(std::strlen(name.data()), 8U);
    EXPECT_EQ(
        std::strspn(name.data(), "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789"),
        8U);
    names.insert(name.data());
  }
  EXPECT_GT(names.size(), 95U);
  EXPECT_EQ(scratch.names().size(), 0U);
}

TEST(TemporaryName, IsDrawnModulo62FromAGeneratorThatIsSeededOnce) {
  const Scratch scratch;
  const std::string directory = scratch.file(".");
  const std::pair<int, const char*> kDrawn[] = {
      {0, "aaaaaaaa"},  {25, "zzzzzzzz"}, {26, "AAAAAAAA"},           {51, "ZZZZZZZZ"},
      {52, "00000000"}, {61, "99999999"}, {62 * 1000 + 1, "bbbbbbbb"}};
  for (const auto& [fixed, expected] : kDrawn) {
    char name[9] = "";
    uint32_t size = sizeof name;
    generator.is_fixed = true;
    generator.fixed = fixed;
    EXPECT_EQ(SMGetTmpFile(directory.c_str(), name, &size), 0U);
    generator.is_fixed = false;
    EXPECT_STREQ(name, expected);
  }
  EXPECT_EQ(generator.seeded, 1);
}

TEST(TemporaryName, IsTriedForAHundredTimes) {
  const Scratch scratch;
  const std::string directory = scratch.file(".");
  put(scratch.file("aaaaaaaa"), "");
  char name[9] = "~";
  uint32_t size = sizeof name;
  generator = {true, 0, 0, generator.seeded};
  EXPECT_EQ(SMGetTmpFile(directory.c_str(), name, &size), kFailed);
  generator.is_fixed = false;
  EXPECT_EQ(generator.drawn, 800);
  EXPECT_STREQ(name, "~");
}

TEST(TemporaryName, IsFreeInADirectoryWithALongName) {
  const Scratch scratch;
  const std::string directory = scratch.file(std::string(255, 'd'));
  ASSERT_EQ(SMMkDir(directory.c_str()), 0U);
  put(directory + "/aaaaaaaa", "");
  char name[9] = "~";
  uint32_t size = sizeof name;
  generator.is_fixed = true;
  EXPECT_EQ(SMGetTmpFile(directory.c_str(), name, &size), kFailed);
  generator.is_fixed = false;
}

TEST(TemporaryName, NeedsNineBytes) {
  char name[9] = "~";
  for (uint32_t capacity = 0; capacity < 9; ++capacity) {
    uint32_t size = capacity;
    EXPECT_EQ(SMGetTmpFile("/tmp", name, &size), SM_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(size, 9U);
  }
  uint32_t size = 9;
  EXPECT_EQ(SMGetTmpFile("/tmp", nullptr, &size), SM_STATUS_BUFFER_TOO_SMALL);
  EXPECT_EQ(SMGetTmpFile(nullptr, name, &size), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMGetTmpFile("/tmp", name, nullptr), SM_STATUS_INVALID_PARAMETER);
  EXPECT_STREQ(name, "~");
}

TEST(FileChange, TellsOnceThatAFileWasModifiedInAnotherSecond) {
  const Scratch scratch;
  const std::string path = scratch.file("f");
  put(path, "x");
  const auto modify_at = [&path](time_t seconds, suseconds_t microseconds) {
    const timeval times[2] = {{seconds, microseconds}, {seconds, microseconds}};
    ASSERT_EQ(utimes(path.c_str(), times), 0);
  };
  modify_at(1000, 0);
  SMFileProp* file = SMFilePropAlloc(path.c_str());
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(SMFilePropIsModified(file), 0U);
  modify_at(1000, 999999);
  EXPECT_EQ(SMFilePropIsModified(file), 0U);
  modify_at(1001, 0);
  EXPECT_EQ(SMFilePropIsModified(file), 1U);
  EXPECT_EQ(SMFilePropIsModified(file), 0U);
  modify_at(999, 0);
  EXPECT_EQ(SMFilePropIsModified(file), 1U);
  unlink(path.c_str());
  EXPECT_EQ(SMFilePropIsModified(file), 0U);
  put(path, "y");
  EXPECT_EQ(SMFilePropIsModified(file), 1U);
  SMFilePropFree(file);
}

TEST(FileChange, SeesTimesBeyond32Bits) {
  const Scratch scratch;
  const std::string path = scratch.file("f");
  put(path, "x");
  const timeval before[2] = {{1000, 0}, {1000, 0}};
  ASSERT_EQ(utimes(path.c_str(), before), 0);
  SMFileProp* file = SMFilePropAlloc(path.c_str());
  const time_t late = static_cast<time_t>((int64_t{1} << 32) + 1000);
  const timeval after[2] = {{late, 0}, {late, 0}};
  struct stat about {};
  if (utimes(path.c_str(), after) == 0 && stat(path.c_str(), &about) == 0 &&
      about.st_mtime == late) {  // not every file system goes so far
    EXPECT_EQ(SMFilePropIsModified(file), 1U);
  }
  SMFilePropFree(file);
}

TEST(FileChange, NeedsAFile) {
  EXPECT_EQ(SMFilePropAlloc(nullptr), nullptr);
  EXPECT_EQ(SMFilePropAlloc("/no/such/file"), nullptr);
  EXPECT_EQ(SMFilePropIsModified(nullptr), 0U);
  SMFilePropFree(nullptr);
}

}  // namespace
