// Rotated logs that several processes write and rotate at the same time, without a lock that they
// wait for.

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "gtest/gtest.h"
#include "processes/driven.h"
#include "support/background.h"
#include "support/scratch.h"

namespace {

using kqsupt::tests::Background;
using kqsupt::tests::built_program;
using kqsupt::tests::Command;
using kqsupt::tests::content_of;
using kqsupt::tests::is_emulated;
using kqsupt::tests::put;
using kqsupt::tests::Scratch;

struct Line {
  std::string name;
  int number;
};

class RotatedByMany : public testing::Test {
 protected:
  void start(const std::string& command, uint32_t size, uint32_t count, const Command& more = {}) {
    Command words{built_program("rotated-worker"), command, path_, std::to_string(size),
                  std::to_string(count),           go_};
    words.insert(words.end(), more.begin(), more.end());
    workers_.emplace_back(words);
  }
  // Has all of them begin at once.
  void go() {
    for (Background& worker : workers_) {
      ASSERT_EQ(worker.read_line(), "ready");
    }
    put(go_, "");
  }
  void expect_the_end_of(size_t workers) {
    for (size_t i = 0; i < workers; ++i) {
      EXPECT_EQ(workers_[i].wait(), 0);
    }
  }

  [[nodiscard]] std::string generation(int number) const {
    return number == 0 ? path_ : path_ + "." + std::to_string(number);
  }

  // All lines that are there, the oldest first.
  [[nodiscard]] std::vector<Line> lines() const {
    int generations = 0;
    for (const std::string& name : scratch_.names()) {
      const size_t dot = name.find('.');
      generations =
          std::max(generations, dot != std::string::npos ? std::stoi(name.substr(dot + 1)) : 0);
    }
    std::vector<Line> lines;
    for (int k = generations; k >= 0; --k) {
      // The newest content may have been rotated just now; who is killed while it moves the others
      // on leaves a gap between them.
      std::istringstream text(std::filesystem::exists(generation(k)) ? content_of(generation(k))
                                                                     : "");
      for (std::string line; std::getline(text, line);) {
        lines.push_back({line.substr(0, line.find(' ')), 0});
        std::istringstream words(line.substr(line.find(' ')));
        std::string end;
        words >> lines.back().number >> end;
        EXPECT_EQ(line, lines.back().name + " " + std::to_string(lines.back().number) + " end");
        EXPECT_FALSE(text.eof()) << "a line without its end in " << generation(k);
      }
    }
    return lines;
  }

  // Each process's lines are in their order, none is missing between two of them, and if there are
  // any the last one is.
  static void expect_no_gap(const std::vector<Line>& lines, int messages) {
    std::map<std::string, int> last;
    for (const Line& line : lines) {
      const auto [at, is_first] = last.try_emplace(line.name, line.number);
      if (!is_first) {
        EXPECT_EQ(line.number, at->second + 1) << line.name;
        at->second = line.number;
      }
    }
    for (const auto& [name, number] : last) {
      EXPECT_EQ(number, messages) << name;
    }
  }

  const Scratch scratch_;
  const Scratch beside_;
  const std::string path_ = scratch_.file("trace");
  const std::string go_ = beside_.file("go");
  std::vector<Background> workers_;
};

TEST_F(RotatedByMany, HoldsEveryLineOnce) {
  constexpr int kWriters = 8;
  const int messages = is_emulated() ? 60 : 300;
  for (int i = 0; i < kWriters; ++i) {
    start("append", 60, 1000000, {"writer" + std::to_string(i), std::to_string(messages)});
  }
  go();
  expect_the_end_of(kWriters);
  const std::vector<Line> all = lines();
  EXPECT_EQ(all.size(), static_cast<size_t>(kWriters * messages));
  expect_no_gap(all, messages);
  // Each rotation was of a file that had grown, and made one generation.
  const size_t generations = scratch_.names().size() - 1;
  EXPECT_GT(generations, 5U);
  for (size_t k = 1; k <= generations; ++k) {
    EXPECT_GT(content_of(generation(static_cast<int>(k))).size(), 60U) << k;
  }
}

TEST_F(RotatedByMany, KeepsTheNewestLinesWithoutAGap) {
  const int messages = is_emulated() ? 60 : 300;
  for (int round = 0; round < (is_emulated() ? 2 : 10); ++round) {
    start("append", 40, 3, {"first", std::to_string(messages)});
    start("append", 40, 3, {"second", std::to_string(messages)});
    go();
    expect_the_end_of(2);
    const std::vector<Line> newest = lines();
    EXPECT_GE(newest.size(), 6U);
    expect_no_gap(newest, messages);
    for (const int k : {1, 2, 3}) {
      EXPECT_GT(content_of(generation(k)).size(), 40U) << k;
    }
    EXPECT_EQ(content_of(generation(4)), "(no file)");
    workers_.clear();
    for (const std::string& name : scratch_.names()) {
      std::filesystem::remove(scratch_.file(name));
    }
    std::filesystem::remove(go_);
  }
}

// Each of them may come upon the moment in which there is no file, or a new one.
TEST_F(RotatedByMany, LosesNothingWhileOthersDoNothingButRotate) {
  const int messages = is_emulated() ? 60 : 600;
  start("append", 0, 1000000, {"writer", std::to_string(messages)});
  start("rotate", 0, 1000000);
  start("rotate", 0, 1000000);
  start("rotate", 0, 1000000);
  go();
  expect_the_end_of(1);
  for (size_t i = 1; i < workers_.size(); ++i) {
    workers_[i].kill();
    EXPECT_EQ(workers_[i].wait(), -1);
  }
  const std::vector<Line> all = lines();
  ASSERT_EQ(all.size(), static_cast<size_t>(messages));
  EXPECT_EQ(all.front().number, 1);
  expect_no_gap(all, messages);
}

}  // namespace
