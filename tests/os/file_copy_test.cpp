// Copying a file over another one and appending one to another.

#include <fcntl.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdint>
#include <string>
#include <thread>

#include "gtest/gtest.h"
#include "kqsupt/frame.h"
#include "kqsupt/os.h"
#include "support/mounted.h"
#include "support/scratch.h"

namespace {

using kqsupt::tests::content_of;
using kqsupt::tests::mode_of;
using kqsupt::tests::put;
using kqsupt::tests::Scratch;

constexpr SMStatus kFailed = 0xFFFFFFFF;

// Bytes that are the same nowhere else in the text.
std::string text_of(size_t size) {
  std::string text(size, '\0');
  for (size_t i = 0; i < size; ++i) {
    text[i] = static_cast<char>(i * 2654435761U >> 13);
  }
  return text;
}

using Function = SMStatus (*)(const char*, const char*, uint32_t);

class Files : public testing::Test {
 protected:
  SMStatus call(Function function, uint32_t allowed = 1) const {
    return function(source_.c_str(), destination_.c_str(), allowed);
  }
  void put_both(const std::string& source, const std::string& destination) const {
    put(source_, source);
    put(destination_, destination);
  }

  const Scratch scratch_;
  const std::string source_ = scratch_.file("source");
  const std::string destination_ = scratch_.file("destination");
};

// What holds for all four, and for both of a kind.
class AllFour : public Files, public testing::WithParamInterface<Function> {};
class Copying : public AllFour {};
class Appending : public AllFour {};

INSTANTIATE_TEST_SUITE_P(Function, AllFour,
                         testing::Values(SMFileCopy, SMFileCopyAndSync, SMFileAppend,
                                         SMFileAppendAndSync));
INSTANTIATE_TEST_SUITE_P(Function, Copying, testing::Values(SMFileCopy, SMFileCopyAndSync));
INSTANTIATE_TEST_SUITE_P(Function, Appending, testing::Values(SMFileAppend, SMFileAppendAndSync));

// ---- All four ----

TEST_P(AllFour, RefuseAPathThatIsNull) {
  put(source_, "x");
  EXPECT_EQ(GetParam()(nullptr, destination_.c_str(), 1), SM_STATUS_UNSUCCESSFUL);
  EXPECT_EQ(GetParam()(source_.c_str(), nullptr, 1), SM_STATUS_UNSUCCESSFUL);
  EXPECT_EQ(GetParam()(nullptr, nullptr, 0), SM_STATUS_UNSUCCESSFUL);
  EXPECT_EQ(scratch_.names(), std::vector<std::string>{"source"});
}

TEST_P(AllFour, CreateADestinationWithTheContentOfTheSource) {
  for (const size_t size : {0U, 1U, 8191U, 8192U, 8193U, 16384U, 16385U, 24576U, 100000U}) {
    SCOPED_TRACE(size);
    unlink(destination_.c_str());
    put(source_, text_of(size));
    EXPECT_EQ(call(GetParam()), SM_STATUS_SUCCESS);
    EXPECT_EQ(content_of(destination_), text_of(size));
    EXPECT_EQ(content_of(source_), text_of(size));
  }
}

TEST_P(AllFour, GiveANewFileTheTwelvePermissionBitsOfTheSource) {
  const mode_t before = umask(077);
  for (const unsigned mode : {0400U, 0644U, 0777U, 04755U, 02750U, 01666U, 07777U, 0600U}) {
    unlink(source_.c_str());
    unlink(destination_.c_str());
    put(source_, "content");
    chmod(source_.c_str(), mode);
    EXPECT_EQ(call(GetParam()), SM_STATUS_SUCCESS);
    EXPECT_EQ(mode_of(destination_), mode);
    EXPECT_EQ(content_of(destination_), "content");
  }
  umask(before);
}

TEST_P(AllFour, WithoutASourceFindNoFileAndCreateNone) {
  EXPECT_EQ(call(GetParam()), SM_STATUS_FILE_NOT_FOUND);
  EXPECT_EQ(GetParam()("", destination_.c_str(), 1), SM_STATUS_FILE_NOT_FOUND);
  EXPECT_TRUE(scratch_.names().empty());
  put(destination_, "old");
  EXPECT_EQ(call(GetParam()), SM_STATUS_FILE_NOT_FOUND);
  EXPECT_EQ(content_of(destination_), "old");
}

TEST_P(AllFour, OfASourceThatCannotBeOpenedFindNoFile) {
  // Root reads every file; this one it cannot read either.
  ASSERT_EQ(symlink(source_.c_str(), source_.c_str()), 0);
  EXPECT_EQ(call(GetParam()), SM_STATUS_FILE_NOT_FOUND);
  EXPECT_EQ(GetParam()((source_ + "/below").c_str(), destination_.c_str(), 1),
            SM_STATUS_FILE_NOT_FOUND);
  EXPECT_EQ(content_of(destination_), "(no file)");
}

TEST_P(AllFour, OfADirectoryFail) {
  EXPECT_EQ(GetParam()(scratch_.file("").c_str(), destination_.c_str(), 1), kFailed);
}

TEST_P(AllFour, ToADirectoryFail) {
  put(source_, "x");
  mkdir(destination_.c_str(), 0755);
  EXPECT_EQ(call(GetParam()), kFailed);
  EXPECT_EQ(mode_of(destination_), 0755U);
}

TEST_P(AllFour, BelowWhatIsNoDirectoryFail) {
  put(source_, "x");
  EXPECT_EQ(GetParam()(source_.c_str(), (source_ + "/below").c_str(), 1), kFailed);
  EXPECT_EQ(GetParam()(source_.c_str(), (destination_ + "/below").c_str(), 1), kFailed);
  EXPECT_EQ(GetParam()(source_.c_str(), "", 1), kFailed);
  EXPECT_EQ(content_of(source_), "x");
}

TEST_P(AllFour, FollowLinks) {
  put_both("new", "");
  ASSERT_EQ(symlink("source", scratch_.file("to source").c_str()), 0);
  ASSERT_EQ(symlink("destination", scratch_.file("to destination").c_str()), 0);
  EXPECT_EQ(
      GetParam()(scratch_.file("to source").c_str(), scratch_.file("to destination").c_str(), 1),
      SM_STATUS_SUCCESS);
  EXPECT_EQ(content_of(destination_), "new");
}

TEST_P(AllFour, CreateWhatALinkPointsTo) {
  put(source_, "new");
  ASSERT_EQ(symlink("destination", scratch_.file("link").c_str()), 0);
  EXPECT_EQ(GetParam()(source_.c_str(), scratch_.file("link").c_str(), 1), SM_STATUS_SUCCESS);
  EXPECT_EQ(content_of(destination_), "new");
}

TEST_P(AllFour, ReadHolesAsZeros) {
  put(source_, "begin");
  ASSERT_EQ(truncate(source_.c_str(), 300000), 0);
  EXPECT_EQ(call(GetParam()), SM_STATUS_SUCCESS);
  EXPECT_EQ(content_of(destination_), "begin" + std::string(299995, '\0'));
}

TEST_P(AllFour, ReadAFileWhoseSizeIsNotTold) {
  EXPECT_EQ(GetParam()("/proc/self/cmdline", destination_.c_str(), 1), SM_STATUS_SUCCESS);
  EXPECT_EQ(content_of(destination_), content_of("/proc/self/cmdline"));
}

TEST_P(AllFour, ReadAPipeToItsEnd) {
  const std::string text = text_of(100000);
  ASSERT_EQ(mkfifo(source_.c_str(), 0640), 0);
  std::thread writer([&] { put(source_, text); });
  const SMStatus status = call(GetParam());
  writer.join();
  EXPECT_EQ(status, SM_STATUS_SUCCESS);
  EXPECT_EQ(content_of(destination_), text);
  EXPECT_EQ(mode_of(destination_), 0640U);
}

TEST_P(AllFour, WithoutContentToCopySucceed) {
  put_both("", "old");
  EXPECT_EQ(call(GetParam()), SM_STATUS_SUCCESS);
  EXPECT_EQ(content_of(source_), "");
}

TEST_P(AllFour, LeaveNoDescriptorOpen) {
  const int before = dup(0);
  close(before);
  put_both("new", "old");
  mkdir(scratch_.file("directory").c_str(), 0755);
  (void)call(GetParam());
  (void)call(GetParam(), 0);
  (void)GetParam()(source_.c_str(), scratch_.file("directory").c_str(), 1);
  (void)GetParam()(scratch_.file("directory").c_str(), destination_.c_str(), 1);
  (void)GetParam()(source_.c_str(), source_.c_str(), 1);
  const int after = dup(0);
  close(after);
  EXPECT_EQ(after, before);
}

// The largest file that the process may write is a failure like any other.
TEST_P(AllFour, ThatMayNotWriteAllFailAndKeepWhatWasWritten) {
  const std::string text = text_of(100000);
  put(source_, text);
  struct rlimit old {};
  getrlimit(RLIMIT_FSIZE, &old);
  signal(SIGXFSZ, SIG_IGN);
  const struct rlimit limit = {50000, old.rlim_max};
  setrlimit(RLIMIT_FSIZE, &limit);
  const SMStatus status = call(GetParam());
  setrlimit(RLIMIT_FSIZE, &old);
  signal(SIGXFSZ, SIG_DFL);
  EXPECT_EQ(status, kFailed);
  EXPECT_EQ(content_of(destination_), text.substr(0, 50000));
}

// The permission bits are set when all is written: until then a new file has those that it was
// created with, and one that is copied over its own.
TEST_P(AllFour, ThatFailOnTheWaySetNoPermissionBits) {
  put(source_, text_of(100000));
  chmod(source_.c_str(), 0666);
  struct rlimit old {};
  getrlimit(RLIMIT_FSIZE, &old);
  signal(SIGXFSZ, SIG_IGN);
  const mode_t before = umask(027);
  const struct rlimit limit = {50000, old.rlim_max};
  setrlimit(RLIMIT_FSIZE, &limit);
  const SMStatus created = call(GetParam());
  const unsigned mode_of_created = mode_of(destination_);
  chmod(destination_.c_str(), 0604);
  const SMStatus again = call(GetParam());
  setrlimit(RLIMIT_FSIZE, &old);
  signal(SIGXFSZ, SIG_DFL);
  umask(before);
  EXPECT_EQ(created, kFailed);
  EXPECT_EQ(mode_of_created, 0640U);
  EXPECT_EQ(again, kFailed);
  EXPECT_EQ(mode_of(destination_), 0604U);
}

// ---- Onto itself ----

TEST_P(AllFour, LeaveAFileThatIsBothAsItIs) {
  put(source_, "content");
  chmod(source_.c_str(), 0640);
  ASSERT_EQ(link(source_.c_str(), scratch_.file("hard").c_str()), 0);
  ASSERT_EQ(symlink("source", scratch_.file("soft").c_str()), 0);
  for (const std::string name : {"source", "./source", "hard", "soft"}) {
    EXPECT_EQ(GetParam()(source_.c_str(), scratch_.file(name).c_str(), 1), kFailed) << name;
    EXPECT_EQ(GetParam()(scratch_.file(name).c_str(), source_.c_str(), 1), kFailed) << name;
    EXPECT_EQ(content_of(source_), "content") << name;
    EXPECT_EQ(mode_of(source_), 0640U);
  }
}

TEST_P(Copying, OfAnEmptyFileOntoItselfFails) {
  put(source_, "");
  EXPECT_EQ(GetParam()(source_.c_str(), source_.c_str(), 1), kFailed);
}

TEST_P(Copying, OntoItselfIsRefusedAsAnyOtherThatExists) {
  put(source_, "content");
  EXPECT_EQ(GetParam()(source_.c_str(), source_.c_str(), 0), SM_STATUS_FILE_EXISTS);
}

TEST_P(Appending, AnEmptyFileToItselfChangesNothing) {
  put(source_, "");
  EXPECT_EQ(GetParam()(source_.c_str(), source_.c_str(), 0), SM_STATUS_SUCCESS);
  EXPECT_EQ(content_of(source_), "");
}

// ---- Copies ----

TEST_P(Copying, OverAFileThatShallStayIsRefused) {
  put_both("new", "old");
  chmod(destination_.c_str(), 0604);
  EXPECT_EQ(call(GetParam(), 0), SM_STATUS_FILE_EXISTS);
  EXPECT_EQ(content_of(destination_), "old");
  EXPECT_EQ(mode_of(destination_), 0604U);
}

TEST_P(Copying, LooksForTheDestinationBeforeTheSource) {
  put(destination_, "old");
  EXPECT_EQ(call(GetParam(), 0), SM_STATUS_FILE_EXISTS);
}

TEST_P(Copying, ToANewFileNeedsNoLeaveToOverwrite) {
  put(source_, "new");
  EXPECT_EQ(call(GetParam(), 0), SM_STATUS_SUCCESS);
  EXPECT_EQ(content_of(destination_), "new");
}

TEST_P(Copying, OverAFileReplacesContentAndPermissionBits) {
  for (const size_t size : {0U, 3U, 9000U, 50000U}) {
    put_both(text_of(size), std::string(60000, 'o'));
    chmod(source_.c_str(), 0751);
    chmod(destination_.c_str(), 0604);
    EXPECT_EQ(call(GetParam(), 2), SM_STATUS_SUCCESS);
    EXPECT_EQ(content_of(destination_), text_of(size));
    EXPECT_EQ(mode_of(destination_), 0751U);
  }
}

TEST_P(Copying, OverADirectoryThatShallStayIsRefused) {
  put(source_, "x");
  mkdir(destination_.c_str(), 0755);
  EXPECT_EQ(call(GetParam(), 0), SM_STATUS_FILE_EXISTS);
}

TEST_P(Copying, KeepsOtherNamesOfTheDestination) {
  put_both("new", "old");
  ASSERT_EQ(link(destination_.c_str(), scratch_.file("other").c_str()), 0);
  EXPECT_EQ(call(GetParam()), SM_STATUS_SUCCESS);
  EXPECT_EQ(content_of(scratch_.file("other")), "new");
}

// ---- Appends ----

TEST_P(Appending, ToAMissingFileThatShallNotBeCreatedFindsNoFile) {
  put(source_, "new");
  EXPECT_EQ(call(GetParam(), 0), SM_STATUS_FILE_NOT_FOUND);
  EXPECT_EQ(scratch_.names(), std::vector<std::string>{"source"});
}

TEST_P(Appending, WritesBehindTheEnd) {
  for (const size_t size : {0U, 1U, 8192U, 8193U, 50000U}) {
    put_both(text_of(size), "old");
    EXPECT_EQ(call(GetParam(), 0), SM_STATUS_SUCCESS);
    EXPECT_EQ(call(GetParam(), 1), SM_STATUS_SUCCESS);
    EXPECT_EQ(content_of(destination_), "old" + text_of(size) + text_of(size));
  }
}

TEST_P(Appending, KeepsThePermissionBitsOfAFileThatExists) {
  put_both("new", "old");
  chmod(source_.c_str(), 0777);
  chmod(destination_.c_str(), 0604);
  EXPECT_EQ(call(GetParam(), 1), SM_STATUS_SUCCESS);
  EXPECT_EQ(mode_of(destination_), 0604U);
}

// ---- Large files ----

constexpr off_t kFourGiB = off_t{1} << 32;

TEST_P(Appending, ToAFileAboveFourGiBWritesBehindItsEnd) {
  put_both("new", "");
  ASSERT_EQ(truncate(destination_.c_str(), kFourGiB + 5), 0);
  EXPECT_EQ(call(GetParam(), 0), SM_STATUS_SUCCESS);
  struct stat about {};
  ASSERT_EQ(stat(destination_.c_str(), &about), 0);
  EXPECT_EQ(about.st_size, kFourGiB + 8);
  const int file = open(destination_.c_str(), O_RDONLY);
  char end[4] = {};
  EXPECT_EQ(pread(file, end, sizeof end, kFourGiB + 4), 4);
  EXPECT_EQ(std::string(end, 4), std::string("\0new", 4));
  close(file);
}

TEST_P(Copying, OverAFileAboveFourGiBReplacesIt) {
  put_both("new", "");
  ASSERT_EQ(truncate(destination_.c_str(), kFourGiB + 5), 0);
  EXPECT_EQ(call(GetParam()), SM_STATUS_SUCCESS);
  EXPECT_EQ(content_of(destination_), "new");
}

// ---- Signals ----

volatile sig_atomic_t signals = 0;
void count_signal(int) {
  signals = signals + 1;
}

// Signals that interrupt calls come while the source has nothing yet, and while the destination
// takes no more.
TEST_P(AllFour, GoOnWhenSignalsInterruptThem) {
  const std::string text = text_of(200000);
  ASSERT_EQ(mkfifo(source_.c_str(), 0600), 0);
  struct sigaction action {};
  action.sa_handler = count_signal;
  struct sigaction old {};
  sigaction(SIGUSR1, &action, &old);
  signals = 0;
  const pthread_t caller = pthread_self();
  std::atomic<bool> done = false;
  std::thread disturber([&] {
    while (!done) {
      pthread_kill(caller, SIGUSR1);
      usleep(500);
    }
  });
  std::thread writer([&] {
    const int file = open(source_.c_str(), O_WRONLY);
    for (size_t at = 0; at < text.size(); at += 20000) {
      usleep(3000);
      EXPECT_EQ(write(file, text.data() + at, 20000), 20000);
    }
    close(file);
  });
  const SMStatus status = call(GetParam());
  done = true;
  disturber.join();
  writer.join();
  sigaction(SIGUSR1, &old, nullptr);
  EXPECT_EQ(status, SM_STATUS_SUCCESS);
  EXPECT_GT(signals, 1);
  EXPECT_EQ(content_of(destination_), text);
}

// ---- Disks that are full or closed for writing ----

class FullDisk : public kqsupt::tests::FullDisk, public testing::WithParamInterface<Function> {
 protected:
  const Scratch elsewhere_;
  const std::string source_ = elsewhere_.file("source");
  const std::string destination_ = scratch_.file("destination");
};
INSTANTIATE_TEST_SUITE_P(Function, FullDisk,
                         testing::Values(SMFileCopy, SMFileCopyAndSync, SMFileAppend,
                                         SMFileAppendAndSync));

// Whole parts, and what fits of the next one, wherever in a part the room ends.
TEST_P(FullDisk, KeepsWhatThereWasRoomFor) {
  const std::string text = text_of(100000);
  put(source_, text);
  for (const int pages : {0, 1, 2, 3, 4, 7}) {
    SCOPED_TRACE(pages);
    unlink(destination_.c_str());
    put(destination_, "");
    make_room();
    fill(pages);
    EXPECT_EQ(GetParam()(source_.c_str(), destination_.c_str(), 1), SM_STATUS_OUT_OF_SPACE);
    EXPECT_EQ(content_of(destination_), text.substr(0, static_cast<size_t>(pages) * 4096));
  }
}

// Nobody continues a part of which only a part is written: when it is the last one, nothing fails.
TEST_P(FullDisk, TakesALastPartThatFitsInPartForWritten) {
  for (const size_t size : {6000U, 3 * 8192U + 6000U}) {
    const std::string text = text_of(size);
    put(source_, text);
    unlink(destination_.c_str());
    put(destination_, "");
    make_room();
    fill(static_cast<int>(size / 4096));
    EXPECT_EQ(GetParam()(source_.c_str(), destination_.c_str(), 1), SM_STATUS_SUCCESS);
    EXPECT_EQ(content_of(destination_), text.substr(0, size / 4096 * 4096));
  }
}

TEST_P(FullDisk, WithRoomAgainTakesAll) {
  const std::string text = text_of(30000);
  put(source_, text);
  fill(0);
  (void)GetParam()(source_.c_str(), destination_.c_str(), 1);
  make_room();
  unlink(destination_.c_str());
  EXPECT_EQ(GetParam()(source_.c_str(), destination_.c_str(), 1), SM_STATUS_SUCCESS);
  EXPECT_EQ(content_of(destination_), text);
}

// As far as there is room: the copy of a hole is no hole.
TEST_P(FullDisk, TakesTheBeginningOfAFileAboveFourGiB) {
  put(source_, "begin");
  ASSERT_EQ(truncate(source_.c_str(), kFourGiB + 5), 0);
  fill(5);
  EXPECT_EQ(GetParam()(source_.c_str(), destination_.c_str(), 1), SM_STATUS_OUT_OF_SPACE);
  EXPECT_EQ(content_of(destination_), "begin" + std::string(5 * 4096 - 5, '\0'));
}

class FullDirectory : public kqsupt::tests::Mounted,
                      public testing::WithParamInterface<Function> {};
INSTANTIATE_TEST_SUITE_P(Function, FullDirectory,
                         testing::Values(SMFileCopy, SMFileCopyAndSync, SMFileAppend,
                                         SMFileAppendAndSync));

TEST_P(FullDirectory, HasNoRoomForANewFile) {
  ASSERT_TRUE(succeeds({"mount", "-t", "tmpfs", "-o", "nr_inodes=2", "full", directory_}));
  put(scratch_.file("source"), "x");
  EXPECT_EQ(GetParam()(scratch_.file("source").c_str(), scratch_.file("new").c_str(), 1),
            SM_STATUS_OUT_OF_SPACE);
  EXPECT_EQ(scratch_.names(), std::vector<std::string>{"source"});
}

class ReadOnlyDirectory : public kqsupt::tests::ReadOnly,
                          public testing::WithParamInterface<Function> {};
INSTANTIATE_TEST_SUITE_P(Function, ReadOnlyDirectory,
                         testing::Values(SMFileCopy, SMFileCopyAndSync, SMFileAppend,
                                         SMFileAppendAndSync));

TEST_P(ReadOnlyDirectory, IsLeftAsItIs) {
  put(scratch_.file("source"), "new");
  put(scratch_.file("old"), "old");
  close_for_writing();
  for (const char* name : {"old", "missing"}) {
    EXPECT_EQ(GetParam()(scratch_.file("source").c_str(), scratch_.file(name).c_str(), 1), kFailed);
  }
  EXPECT_EQ(content_of(scratch_.file("old")), "old");
  EXPECT_EQ(scratch_.names(), (std::vector<std::string>{"old", "source"}));
}

}  // namespace
