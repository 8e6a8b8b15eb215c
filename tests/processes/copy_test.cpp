// Copies and appends in which every system call fails in turn.

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <vector>

#include "gtest/gtest.h"
#include "processes/driven.h"
#include "support/scratch.h"

namespace {

using kqsupt::tests::content_of;
using kqsupt::tests::driven;
using kqsupt::tests::is_emulated;
using kqsupt::tests::kNotReached;
using kqsupt::tests::Outcome;
using kqsupt::tests::put;
using kqsupt::tests::Scratch;

constexpr char kSuccess[] = "0\n";
constexpr char kNoFile[] = "7\n";
constexpr char kNotExamined[] = "9\n";
constexpr char kNoRoom[] = "13\n";
constexpr char kFailed[] = "FFFFFFFF\n";

using Answers = std::vector<std::string>;

std::string large_text() {
  std::string text;
  for (int i = 0; text.size() < 40000; ++i) {
    text += std::to_string(i) + "\n";
  }
  return text;
}

class FailingCalls : public testing::Test {
 protected:
  Outcome copy(const std::string& action, long place, const std::string& kind,
               const std::string& content) {
    put(source_, content);
    put(destination_, "old");
    chmod(destination_.c_str(), 0604);
    return driven(action, place, "copy-worker", {kind, source_, destination_});
  }

  // What is answered when the first call fails, when the second one does, and so on.
  Answers answers(int error, const std::string& kind, const std::string& content) {
    Answers all;
    for (long k = 1;; ++k) {
      const Outcome outcome = copy(std::to_string(error), k, kind, content);
      if (outcome.exit_status == kNotReached) {
        return all;
      }
      EXPECT_EQ(outcome.exit_status, 0) << outcome.err;
      if (outcome.out == kSuccess) {
        EXPECT_EQ(content_of(destination_), (kind.starts_with("append") ? "old" : "") + content)
            << kind << ' ' << k;
      }
      all.push_back(outcome.out);
    }
  }

  const Scratch scratch_;
  const std::string source_ = scratch_.file("source");
  const std::string destination_ = scratch_.file("destination");
  const std::string text_ = large_text();
};

// An emulator makes calls of its own between those of the program: there only that each answer is
// given counts.
void expect_answers(const Answers& seen, const Answers& expected) {
  if (!is_emulated()) {
    EXPECT_EQ(seen, expected);
    return;
  }
  for (const std::string& answer : expected) {
    EXPECT_NE(std::count(seen.begin(), seen.end(), answer), 0) << answer;
  }
  for (const std::string& answer : seen) {
    EXPECT_NE(std::count(expected.begin(), expected.end(), answer), 0) << answer;
  }
}

// Looking for the destination; opening and examining the source; opening and examining the
// destination; emptying it; reading, writing, reading the end; the permission bits; closing both.
TEST_F(FailingCalls, OfASmallCopyAreAnswered) {
  expect_answers(answers(EIO, "copy", "new"),
                 {kSuccess, kNoFile, kNotExamined, kFailed, kFailed, kFailed, kFailed, kFailed,
                  kFailed, kFailed, kFailed, kSuccess});
}

TEST_F(FailingCalls, ForWantOfRoomAreAnswered) {
  expect_answers(answers(ENOSPC, "copy", "new"),
                 {kSuccess, kNoFile, kNotExamined, kNoRoom, kFailed, kNoRoom, kFailed, kNoRoom,
                  kFailed, kFailed, kNoRoom, kSuccess});
}

// Copying the bulk, which answers nothing: twice, for the second call sees the end.
TEST_F(FailingCalls, OfALargeCopyAreAnswered) {
  expect_answers(answers(EIO, "copy", text_),
                 {kSuccess, kNoFile, kNotExamined, kFailed, kFailed, kFailed, kSuccess, kSuccess,
                  kFailed, kFailed, kFailed, kSuccess});
}

// Waiting for the disk comes after the permission bits.
TEST_F(FailingCalls, OfASyncAreAnswered) {
  expect_answers(answers(EIO, "copy-sync", "new"),
                 {kSuccess, kNoFile, kNotExamined, kFailed, kFailed, kFailed, kFailed, kFailed,
                  kFailed, kFailed, kFailed, kFailed, kSuccess});
}

// No emptying, and no permission bits; but when the destination was not found, those.
TEST_F(FailingCalls, OfAnAppendAreAnswered) {
  expect_answers(answers(EIO, "append", "new"), {kSuccess, kNoFile, kNotExamined, kFailed, kFailed,
                                                 kFailed, kFailed, kFailed, kFailed, kSuccess});
}

TEST_F(FailingCalls, OfAnAppendWithSyncAreAnswered) {
  expect_answers(answers(ENOSPC, "append-sync", "new"),
                 {kSuccess, kNoFile, kNotExamined, kNoRoom, kFailed, kFailed, kNoRoom, kFailed,
                  kNoRoom, kNoRoom, kSuccess});
}

TEST_F(FailingCalls, ThatASignalInterruptsAreMadeAgain) {
  for (const char* kind : {"copy", "copy-sync", "append", "append-sync"}) {
    for (const std::string& content : {std::string("new"), text_}) {
      const Answers seen = answers(EINTR, kind, content);
      EXPECT_GE(seen.size(), 3U);
      for (const std::string& answer : seen) {
        EXPECT_EQ(answer, kSuccess);
      }
    }
  }
}

// What a write left out is missing, and nobody asks.
TEST_F(FailingCalls, WriteThatIsShortIsAccepted) {
  const Outcome outcome = copy("short", 1, "append", text_);
  EXPECT_EQ(outcome.out, kSuccess);
  EXPECT_EQ(content_of(destination_), "old" + text_.substr(0, 4096) + text_.substr(8192));
  EXPECT_EQ(copy("short", 1, "copy", "content").out, kSuccess);
  EXPECT_EQ(content_of(destination_), "cont");
}

}  // namespace
