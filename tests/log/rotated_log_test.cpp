// Plain logs that are rotated by their size.

#include <fcntl.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <regex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "gtest/gtest.h"
#include "kqsupt/log.h"
#include "support/child.h"
#include "support/emulated.h"
#include "support/guarded.h"
#include "support/mounted.h"
#include "support/scratch.h"

namespace {

using kqsupt::tests::content_of;
using kqsupt::tests::Guarded;
using kqsupt::tests::in_child;
using kqsupt::tests::mode_of;
using kqsupt::tests::put;
using kqsupt::tests::Scratch;
using kqsupt::tests::survives_forks;

constexpr SMStatus kFailed = 0xFFFFFFFF;
constexpr uint32_t kMost = 0xFFFFFFFF;
constexpr char kNoFile[] = "(no file)";

using Names = std::vector<std::string>;

class RotatedLog : public testing::Test {
 protected:
  RotatedLog() { umask(022); }

  [[nodiscard]] std::string generation(uint32_t number) const {
    return path_ + "." + std::to_string(number);
  }
  void put_generations(const std::vector<uint32_t>& numbers) const {
    for (const uint32_t number : numbers) {
      put(generation(number), "generation " + std::to_string(number));
    }
  }
  // What is there now under the number of a generation.
  [[nodiscard]] std::string at(uint32_t number) const { return content_of(generation(number)); }

  SMStatus append(const char* message, uint32_t max_size = kMost, uint32_t count = 3,
                  uint32_t flags = 0) const {
    return SMFileLogMsgToRotatedLog(message, path_.c_str(), max_size, count, flags);
  }
  // What an append without a message leaves in an empty file.
  [[nodiscard]] std::string written(const char* message, uint32_t flags) const {
    unlink(path_.c_str());
    EXPECT_EQ(append(message, kMost, 0, flags), 0U);
    return content_of(path_);
  }

  const Scratch scratch_;
  const std::string path_ = scratch_.file("trace");
  const std::string large_ = std::string(101, 'x');
};

// ---- Rotating ----

TEST_F(RotatedLog, AboveItsSizeMovesEveryGenerationOnAndDropsTheOldest) {
  put(path_, large_);
  put_generations({1, 2, 3});
  EXPECT_EQ(append("message", 100, 3), 0U);
  EXPECT_EQ(content_of(path_), "message");
  EXPECT_EQ(at(1), large_);
  EXPECT_EQ(at(2), "generation 1");
  EXPECT_EQ(at(3), "generation 2");
  EXPECT_EQ(scratch_.names(), (Names{"trace", "trace.1", "trace.2", "trace.3"}));
}

TEST_F(RotatedLog, WithRoomForOneMoreGenerationDropsNone) {
  put(path_, large_);
  put_generations({1, 2});
  EXPECT_EQ(append("message", 100, 3), 0U);
  EXPECT_EQ(content_of(path_), "message");
  EXPECT_EQ(at(1), large_);
  EXPECT_EQ(at(2), "generation 1");
  EXPECT_EQ(at(3), "generation 2");
}

TEST_F(RotatedLog, OfExactlyItsSizeStays) {
  put(path_, large_);
  put_generations({1});
  EXPECT_EQ(append("y", 101, 3), 0U);
  EXPECT_EQ(content_of(path_), large_ + "y");
  EXPECT_EQ(at(1), "generation 1");
  // The size counts before a message, not with it.
  EXPECT_EQ(append("z", 101, 3), 0U);
  EXPECT_EQ(content_of(path_), "z");
  EXPECT_EQ(at(1), large_ + "y");
}

TEST_F(RotatedLog, BelowItsSizeStays) {
  put(path_, large_);
  SMFileRotateCheck(path_.c_str(), 102, 3);
  EXPECT_EQ(scratch_.names(), Names{"trace"});
}

TEST_F(RotatedLog, WithOneGenerationKeepsTheLastContentOnly) {
  put(path_, large_);
  put_generations({1, 2});
  SMFileRotateCheck(path_.c_str(), 100, 1);
  EXPECT_EQ(content_of(path_), kNoFile);
  EXPECT_EQ(at(1), large_);
  EXPECT_EQ(at(2), "generation 2");  // one that is beyond the count is not its business
}

TEST_F(RotatedLog, WithoutGenerationsIsDeleted) {
  put(path_, large_);
  put_generations({1});
  EXPECT_EQ(append("message", 100, 0), 0U);
  EXPECT_EQ(content_of(path_), "message");
  EXPECT_EQ(at(1), "generation 1");
  put(path_, large_);
  SMFileRotateCheck(path_.c_str(), 100, 0);
  EXPECT_EQ(scratch_.names(), Names{"trace.1"});
}

TEST_F(RotatedLog, OfSizeZeroAllowsForAnEmptyFileOnly) {
  put(path_, "");
  SMFileRotateCheck(path_.c_str(), 0, 3);
  EXPECT_EQ(scratch_.names(), Names{"trace"});
  put(path_, "x");
  SMFileRotateCheck(path_.c_str(), 0, 3);
  EXPECT_EQ(scratch_.names(), Names{"trace.1"});
}

TEST_F(RotatedLog, AboveFourGiBIsLargerThanEverySize) {
  put(path_, "x");
  ASSERT_EQ(truncate(path_.c_str(), off_t{kMost}), 0);
  SMFileRotateCheck(path_.c_str(), kMost, 3);
  EXPECT_EQ(scratch_.names(), Names{"trace"});
  ASSERT_EQ(truncate(path_.c_str(), off_t{kMost} + 1), 0);
  SMFileRotateCheck(path_.c_str(), kMost, 3);
  EXPECT_EQ(scratch_.names(), Names{"trace.1"});
}

TEST_F(RotatedLog, FillsGapsByMovingOnWhatIsThere) {
  put(path_, large_);
  put_generations({1, 3, 6});
  SMFileRotateCheck(path_.c_str(), 100, 8);
  EXPECT_EQ(scratch_.names(), (Names{"trace.1", "trace.2", "trace.4", "trace.7"}));
  EXPECT_EQ(at(1), large_);
  EXPECT_EQ(at(2), "generation 1");
  EXPECT_EQ(at(4), "generation 3");
  EXPECT_EQ(at(7), "generation 6");
}

TEST_F(RotatedLog, WithoutItsNewestGenerationLeavesNoGapBehind) {
  put(path_, large_);
  put_generations({2});
  SMFileRotateCheck(path_.c_str(), 100, 3);
  EXPECT_EQ(scratch_.names(), (Names{"trace.1", "trace.3"}));
  EXPECT_EQ(at(1), large_);
  EXPECT_EQ(at(3), "generation 2");
}

TEST_F(RotatedLog, KeepsManyGenerationsInOrder) {
  for (uint32_t k = 0; k < 25; ++k) {
    put(path_, "content " + std::to_string(k));
    SMFileRotateCheck(path_.c_str(), 0, 12);
  }
  EXPECT_EQ(scratch_.names().size(), 12U);
  for (uint32_t k = 1; k <= 12; ++k) {
    EXPECT_EQ(at(k), "content " + std::to_string(25 - k));
  }
}

// A count without bounds is one that a caller may give for "all".
TEST_F(RotatedLog, AllowsForAsManyGenerationsAsThereAreNumbers) {
  put(path_, large_);
  put_generations({1, 2, kMost - 1, kMost});
  SMFileRotateCheck(path_.c_str(), 100, kMost);
  EXPECT_EQ(scratch_.names(), (Names{"trace.1", "trace.2", "trace.3", "trace.4294967295"}));
  EXPECT_EQ(at(3), "generation 2");
  EXPECT_EQ(at(kMost), "generation 4294967294");
  SMFileDeleteRotated(path_.c_str(), 1, kMost);
  EXPECT_EQ(scratch_.names(), Names{});
}

// Names that are like those of generations.
TEST_F(RotatedLog, LeavesOtherFilesAlone) {
  const Names others{"trac.1",     "trace.",   "trace.+1", "trace.-1",          "trace.01",
                     "trace.1.gz", "trace.1x", "trace.a",  "trace.99999999999", "trace1",
                     "xtrace.1",   "trace.0"};
  for (const std::string& name : others) {
    put(scratch_.file(name), name);
  }
  put(path_, large_);
  SMFileRotateCheck(path_.c_str(), 100, kMost);
  SMFileDeleteRotated(path_.c_str(), 1, kMost);
  EXPECT_EQ(scratch_.names().size(), others.size());
  for (const std::string& name : others) {
    EXPECT_EQ(content_of(scratch_.file(name)), name);
  }
}

TEST_F(RotatedLog, CannotReplaceAGenerationThatIsADirectory) {
  put(path_, large_);
  std::filesystem::create_directories(generation(1) + "/kept");
  SMFileRotateCheck(path_.c_str(), 100, 1);
  EXPECT_EQ(content_of(path_), large_);
  // It cannot be replaced, but it is a name that can be moved on.
  SMFileRotateCheck(path_.c_str(), 100, 2);
  EXPECT_EQ(at(1), large_);
  EXPECT_TRUE(std::filesystem::is_directory(generation(2)));
}

TEST_F(RotatedLog, GoesOnWithWhatItCannotRename) {
  const std::string name(255, 'n');  // no room for a number behind it
  put(scratch_.file(name), large_);
  EXPECT_EQ(SMFileLogMsgToRotatedLog("y", scratch_.file(name).c_str(), 100, 3, 0), 0U);
  EXPECT_EQ(content_of(scratch_.file(name)), large_ + "y");
  EXPECT_EQ(scratch_.names(), Names{name});
}

TEST_F(RotatedLog, WithTheLongestPathHasItsGenerations) {
  std::string path = scratch_.file("");
  const std::string part = std::string(100, 'd') + "/";
  while (path.size() + part.size() < 4080) {
    path += part;
  }
  path += std::string(4080 - path.size(), 'n');
  // The emulator passes paths on as they are: all of it is made from the root.
  std::filesystem::create_directories(std::filesystem::path(path).parent_path());
  put(path, large_);
  SMFileRotateCheck(path.c_str(), 100, 3);
  EXPECT_EQ(content_of(path + ".1"), large_);
  SMFileDeleteRotated(path.c_str(), 1, 3);
  EXPECT_EQ(content_of(path + ".1"), kNoFile);
}

TEST_F(RotatedLog, ThatIsNotThereIsNotRotated) {
  put_generations({1});
  SMFileRotateCheck(path_.c_str(), 0, 3);
  EXPECT_EQ(scratch_.names(), Names{"trace.1"});
  SMFileRotateCheck((path_ + "/below").c_str(), 0, 3);
  SMFileRotateCheck("", 0, 3);
  SMFileRotateCheck(std::string(9000, 'n').c_str(), 0, 3);
  SMFileRotateCheck(nullptr, 0, 3);
  EXPECT_EQ(scratch_.names(), Names{"trace.1"});
}

// The working directory of these tests is the scratch directory.
class RotatedLogWithoutDirectory : public RotatedLog {
 protected:
  void SetUp() override { std::filesystem::current_path(scratch_.file("")); }
  void TearDown() override { std::filesystem::current_path(before_); }
  const std::filesystem::path before_ = std::filesystem::current_path();
};

TEST_F(RotatedLogWithoutDirectory, IsRotatedWhereItIs) {
  put(path_, large_);
  put_generations({1});
  EXPECT_EQ(SMFileLogMsgToRotatedLog("message", "trace", 100, 3, 4), 0U);
  EXPECT_EQ(content_of(path_), "message\n");
  EXPECT_EQ(at(1), large_);
  EXPECT_EQ(at(2), "generation 1");
  SMFileDeleteRotated("trace", 1, 3);
  EXPECT_EQ(scratch_.names(), Names{});
}

// The root is the machine's, and nothing is made there: what there is not is not found.
TEST(RotatedLogAtTheRoot, MayBeMissing) {
  const std::string path = "/kqsupt-trace-" + std::to_string(getpid());
  SMFileRotateCheck(path.c_str(), 0, 3);
  SMFileDeleteRotated(path.c_str(), 1, kMost);
  EXPECT_EQ(content_of(path), kNoFile);
}

TEST_F(RotatedLog, OfAnyNumberOfGenerationsIsRotatedAtOnceWhereNoDirectoryCanBeOpened) {
  put(path_, large_);
  put_generations({1});
  EXPECT_EQ(in_child([&] {
              const rlimit none{0, 0};
              setrlimit(RLIMIT_NOFILE, &none);
              SMFileRotateCheck(path_.c_str(), 100, kMost);
              return 0;
            }),
            0);
  EXPECT_EQ(at(1), large_);
  EXPECT_EQ(at(2), "generation 1");
}

// ---- Appending ----

TEST_F(RotatedLog, TakesMessagesAsTheyAre) {
  EXPECT_EQ(append("one"), 0U);
  EXPECT_EQ(append(""), 0U);
  EXPECT_EQ(append("%s%n\r\n\xFF\x01"), 0U);
  EXPECT_EQ(append("three", kMost, 3, SM_LOG_SUFFIX_NEWLINE), 0U);
  EXPECT_EQ(content_of(path_), "one%s%n\r\n\xFF\x01three\n");
}

TEST_F(RotatedLog, TakesAMessageOfAnyLength) {
  const std::string message(3000000, 'm');
  EXPECT_EQ(append(message.c_str(), kMost, 3, 4), 0U);
  EXPECT_EQ(content_of(path_), message + "\n");
}

TEST_F(RotatedLog, ReadsNoByteBehindItsArguments) {
  const Guarded<char> message("message", 8);
  const Guarded<char> path(path_.c_str(), path_.size() + 1);
  put(path_, large_);
  EXPECT_EQ(SMFileLogMsgToRotatedLog(message.data(), path.data(), 100, 3, 7), 0U);
  SMFileRotateCheck(path.data(), 0, 3);
  SMFileDeleteRotated(path.data(), 1, 3);
  EXPECT_EQ(scratch_.names(), Names{});
}

TEST_F(RotatedLog, RotatesForAnEmptyMessageToo) {
  put(path_, large_);
  EXPECT_EQ(append("", 100, 3), 0U);
  EXPECT_EQ(content_of(path_), "");
  EXPECT_EQ(at(1), large_);
}

TEST_F(RotatedLog, NeedsAMessageAndAPath) {
  put(path_, large_);
  EXPECT_EQ(SMFileLogMsgToRotatedLog(nullptr, path_.c_str(), 0, 3, 0), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMFileLogMsgToRotatedLog("message", nullptr, 0, 3, 0), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMFileLogMsgToRotatedLog(nullptr, nullptr, 0, 3, 7), SM_STATUS_INVALID_PARAMETER);
  // Nothing was rotated before that was seen.
  EXPECT_EQ(content_of(path_), large_);
  EXPECT_EQ(scratch_.names(), Names{"trace"});
  // Without a message a path that cannot be opened is not tried.
  EXPECT_EQ(SMFileLogMsgToRotatedLog(nullptr, "", 0, 3, 0), SM_STATUS_INVALID_PARAMETER);
}

TEST_F(RotatedLog, ThatCannotBeOpenedFails) {
  EXPECT_EQ(SMFileLogMsgToRotatedLog("x", "", 0, 3, 0), kFailed);
  EXPECT_EQ(SMFileLogMsgToRotatedLog("x", scratch_.file("no/trace").c_str(), 0, 3, 0), kFailed);
  EXPECT_EQ(SMFileLogMsgToRotatedLog("x", std::string(9000, 'n').c_str(), 0, 3, 0), kFailed);
  EXPECT_EQ(scratch_.names(), Names{});
}

TEST_F(RotatedLog, ThatIsADirectoryFailsAndStays) {
  std::filesystem::create_directories(path_ + "/kept");
  EXPECT_EQ(append("x", 0, 3), kFailed);
  EXPECT_EQ(append("x", 0, 0), kFailed);
  SMFileDeleteRotated(path_.c_str(), 1, 3);
  EXPECT_EQ(scratch_.names(), Names{"trace"});
  EXPECT_TRUE(std::filesystem::is_directory(path_ + "/kept"));
}

TEST_F(RotatedLog, ThatIsALinkTakesMessagesInTheFileItNames) {
  put(scratch_.file("file"), "before ");
  std::filesystem::create_symlink("file", path_);
  EXPECT_EQ(append("after"), 0U);
  EXPECT_EQ(content_of(scratch_.file("file")), "before after");
  EXPECT_TRUE(std::filesystem::is_symlink(path_));
}

TEST_F(RotatedLog, ThatIsALinkIsRenamedItselfByTheSizeOfItsFile) {
  put(scratch_.file("file"), large_);
  std::filesystem::create_symlink("file", path_);
  EXPECT_EQ(append("message", 100, 3), 0U);
  EXPECT_EQ(content_of(path_), "message");
  EXPECT_FALSE(std::filesystem::is_symlink(path_));
  EXPECT_TRUE(std::filesystem::is_symlink(generation(1)));
  EXPECT_EQ(content_of(scratch_.file("file")), large_);
}

TEST_F(RotatedLog, ThatIsALinkToNothingMakesTheFile) {
  std::filesystem::create_symlink("file", path_);
  EXPECT_EQ(append("message", 0, 3), 0U);
  EXPECT_EQ(content_of(scratch_.file("file")), "message");
  EXPECT_TRUE(std::filesystem::is_symlink(path_));
}

TEST_F(RotatedLog, ThatIsAPipeWithoutAReaderFailsAtOnce) {
  ASSERT_EQ(mkfifo(path_.c_str(), 0644), 0);
  EXPECT_EQ(append("x", 0, 3), kFailed);
  EXPECT_EQ(scratch_.names(), Names{"trace"});
}

TEST_F(RotatedLog, ThatIsAPipeIsReadByItsReader) {
  ASSERT_EQ(mkfifo(path_.c_str(), 0644), 0);
  const int reader = open(path_.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  EXPECT_EQ(append("message", 0, 3, 4), 0U);
  char text[16] = "";
  EXPECT_EQ(read(reader, text, sizeof text), 8);
  EXPECT_STREQ(text, "message\n");
  close(reader);
  EXPECT_EQ(scratch_.names(), Names{"trace"});
}

// ---- What stands around a message ----

constexpr char kTime[] =
    R"(\[(Jan|Feb|Mar|Apr|May|Jun|Jul|Aug|Sep|Oct|Nov|Dec) \d\d \d{4} \d\d:\d\d:\d\d\] )";
constexpr char kThread[] = R"(\[\d+:\d+\] )";

bool matches(const std::string& text, const std::string& shape) {
  return std::regex_match(text, std::regex(shape));
}

TEST_F(RotatedLog, PutsAroundAMessageWhatTheFlagsSay) {
  const std::string time = kTime;
  const std::string thread = kThread;
  EXPECT_EQ(written("text", 0), "text");
  EXPECT_TRUE(matches(written("text", 1), time + "text"));
  EXPECT_TRUE(matches(written("text", 2), thread + "text"));
  EXPECT_TRUE(matches(written("text", 3), time + thread + "text"));
  EXPECT_EQ(written("text", 4), "text\n");
  EXPECT_TRUE(matches(written("text", 5), time + "text\n"));
  EXPECT_TRUE(matches(written("text", 6), thread + "text\n"));
  EXPECT_TRUE(matches(written("text", 7), time + thread + "text\n"));
}

TEST_F(RotatedLog, IgnoresFlagsThatSayNothing) {
  EXPECT_EQ(written("text", 8), "text");
  EXPECT_EQ(written("text", 0xFFFFFFF8), "text");
  EXPECT_EQ(written("text", 0xFFFFFFFC), "text\n");
  EXPECT_TRUE(matches(written("text", kMost), std::string(kTime) + kThread + "text\n"));
}

// As the calendar has it at some second from before the call to after it, in the time zone of now.
TEST_F(RotatedLog, TellsTheLocalTime) {
  tzset();
  setenv("TZ", "XYZ-5:30", 1);
  const time_t before = time(nullptr);
  const std::string text = written("", SM_LOG_PREFIX_TIME);
  bool is_told = false;
  for (time_t second = before; second <= time(nullptr); ++second) {
    char expected[64];
    const time_t shifted = second + 5 * 3600 + 30 * 60;
    tm broken{};
    std::strftime(expected, sizeof expected, "[%b %d %Y %H:%M:%S] ", gmtime_r(&shifted, &broken));
    is_told = is_told || text == expected;
  }
  EXPECT_TRUE(is_told) << text;
  unsetenv("TZ");
  tzset();
}

std::string numbers_of_this_thread() {
  return "[" + std::to_string(getpid()) + ":" +
         std::to_string(static_cast<unsigned long long>(pthread_self())) + "] ";
}

TEST_F(RotatedLog, TellsTheProcessAndTheThread) {
  EXPECT_EQ(written("text", SM_LOG_PREFIX_THREAD), numbers_of_this_thread() + "text");
  std::string other;
  std::string other_numbers;
  std::thread([&] {
    other = written("text", SM_LOG_PREFIX_THREAD);
    other_numbers = numbers_of_this_thread();
  }).join();
  EXPECT_EQ(other, other_numbers + "text");
  EXPECT_NE(other_numbers, numbers_of_this_thread());
}

// ---- Permission bits ----

TEST_F(RotatedLog, ThatIsNewHasItsBitsWhateverTheMask) {
  umask(077);
  EXPECT_EQ(append("x"), 0U);
  umask(022);
  EXPECT_EQ(mode_of(path_), 0644U);
}

TEST_F(RotatedLog, KeepsItsBitsOverARotation) {
  const std::vector<std::pair<mode_t, unsigned>> bits{{0600, 0600}, {0640, 0640},  {0660, 0660},
                                                      {0666, 0666}, {0644, 0644},  {0755, 0644},
                                                      {0200, 0200}, {01600, 01600}};
  umask(077);
  for (const auto& [before, after] : bits) {
    put(path_, large_);
    ASSERT_EQ(chmod(path_.c_str(), before), 0);
    EXPECT_EQ(append("message", 100, 1), 0U);
    EXPECT_EQ(mode_of(path_), after);
    EXPECT_EQ(mode_of(generation(1)), before) << "the old file is only renamed";
    EXPECT_EQ(at(1), large_);
    unlink(path_.c_str());
  }
  umask(022);
}

TEST_F(RotatedLog, WithoutARotationLosesTheBitsOfAProgram) {
  for (const auto& [before, after] : std::array<std::pair<mode_t, unsigned>, 4>{
           {{04755, 0644}, {02711, 0600}, {01777, 01666}, {0600, 0600}}}) {
    put(path_, "");
    ASSERT_EQ(chmod(path_.c_str(), before), 0);
    EXPECT_EQ(append("message"), 0U);
    EXPECT_EQ(mode_of(path_), after);
    unlink(path_.c_str());
  }
}

TEST_F(RotatedLog, LosesTheBitsOfAProgramOverARotationToo) {
  put(path_, large_);
  ASSERT_EQ(chmod(path_.c_str(), 04755), 0);
  EXPECT_EQ(append("message", 100, 0), 0U);
  EXPECT_EQ(mode_of(path_), 0644U);
  EXPECT_EQ(content_of(path_), "message");
}

// Whoever comes by may find the file that was rotated away: it belongs to nobody's next message.
TEST_F(RotatedLog, ThatWasRenamedByHandIsMadeAnew) {
  EXPECT_EQ(append("one"), 0U);
  ASSERT_EQ(rename(path_.c_str(), scratch_.file("away").c_str()), 0);
  EXPECT_EQ(append("two"), 0U);
  EXPECT_EQ(content_of(scratch_.file("away")), "one");
  EXPECT_EQ(content_of(path_), "two");
}

// ---- Deleting ----

TEST_F(RotatedLog, IsDeletedWithItsGenerations) {
  put(path_, "x");
  put_generations({1, 2, 3, 4});
  SMFileDeleteRotated(path_.c_str(), 1, 3);
  EXPECT_EQ(scratch_.names(), Names{"trace.4"});
  EXPECT_EQ(at(4), "generation 4");
}

TEST_F(RotatedLog, IsDeletedWithGenerationsThatHaveGaps) {
  put(path_, "x");
  put_generations({2, 5, 9, 1000000000});
  SMFileDeleteRotated(path_.c_str(), 1, kMost);
  EXPECT_EQ(scratch_.names(), Names{});
}

TEST_F(RotatedLog, IsDeletedAloneForEveryAnswerButOne) {
  for (const uint32_t answer : {0U, 2U, 3U, 0x101U, kMost}) {
    put(path_, "x");
    put_generations({1});
    SMFileDeleteRotated(path_.c_str(), answer, 3);
    EXPECT_EQ(scratch_.names(), Names{"trace.1"}) << answer;
  }
}

TEST_F(RotatedLog, IsDeletedAloneWithACountOfZero) {
  put(path_, "x");
  put_generations({1});
  SMFileDeleteRotated(path_.c_str(), 1, 0);
  EXPECT_EQ(scratch_.names(), Names{"trace.1"});
}

TEST_F(RotatedLog, TakesMessagesOfAChildThatWasMadeWhileAThreadToldTheTime) {
  if (!survives_forks()) {
    GTEST_SKIP() << "what runs this does not survive such a fork";
  }
  const std::string other = scratch_.file("other");
  std::atomic<bool> done = false;
  std::thread logging([&] {
    while (!done) {
      SMFileLogMsgToRotatedLog("", other.c_str(), 1000000, 1, SM_LOG_PREFIX_TIME);
    }
  });
  int status = 0;
  for (int i = 0; i < 500 && status == 0; ++i) {
    status = in_child([&] { return append("child", kMost, 3, SM_LOG_PREFIX_TIME) == 0U ? 0 : 1; });
  }
  done = true;
  logging.join();
  EXPECT_EQ(status, 0);
}

TEST_F(RotatedLog, ThatIsGoneHasItsGenerationsDeleted) {
  put_generations({1, 2});
  SMFileDeleteRotated(path_.c_str(), 1, 3);
  EXPECT_EQ(scratch_.names(), Names{});
  SMFileDeleteRotated(path_.c_str(), 1, 3);
  SMFileDeleteRotated("", 1, 3);
  SMFileDeleteRotated(nullptr, 1, 3);
}

TEST_F(RotatedLog, IsDeletedAsALinkWithoutItsFile) {
  put(scratch_.file("file"), "kept");
  std::filesystem::create_symlink("file", path_);
  std::filesystem::create_symlink("file", generation(1));
  SMFileDeleteRotated(path_.c_str(), 1, 1);
  EXPECT_EQ(scratch_.names(), Names{"file"});
}

// ---- Disks ----

class RotatedLogOnAFullDisk : public kqsupt::tests::FullDisk {
 protected:
  SMStatus append(const std::string& message, uint32_t max_size = kMost) const {
    return SMFileLogMsgToRotatedLog(message.c_str(), path_.c_str(), max_size, 3, 0);
  }
  const std::string path_ = scratch_.file("trace");
};

TEST_F(RotatedLogOnAFullDisk, ToldThatAMessageIsNotThere) {
  put(path_, "before");
  fill(0);
  EXPECT_EQ(append(std::string(8192, 'm')), kFailed);
  EXPECT_EQ(content_of(path_).substr(0, 6), "before");
  EXPECT_LT(content_of(path_).size(), 8198U);
}

TEST_F(RotatedLogOnAFullDisk, KeepsWhatWasRotated) {
  const std::string old(4096, 'x');
  put(path_, old);
  fill(0);
  EXPECT_EQ(append("message", 100), kFailed);
  EXPECT_EQ(content_of(path_ + ".1"), old);
  EXPECT_EQ(content_of(path_), "");
  make_room();
  EXPECT_EQ(append("message", 100), 0U);
  EXPECT_EQ(content_of(path_), "message");
  EXPECT_EQ(content_of(path_ + ".1"), old);
}

class RotatedLogOnAReadOnlyDisk : public kqsupt::tests::ReadOnly {};

TEST_F(RotatedLogOnAReadOnlyDisk, StaysAsItIs) {
  const std::string path = scratch_.file("trace");
  put(path, "before");
  put(path + ".1", "first");
  close_for_writing();
  EXPECT_EQ(SMFileLogMsgToRotatedLog("message", path.c_str(), 0, 3, 0), kFailed);
  SMFileDeleteRotated(path.c_str(), 1, 3);
  EXPECT_EQ(content_of(path), "before");
  EXPECT_EQ(content_of(path + ".1"), "first");
}

}  // namespace
