// Directories with a file system of their own: one of a few pages that can be full, and one that is
// mounted for reading only.
#pragma once

#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <vector>

#include "gtest/gtest.h"
#include "support/program.h"
#include "support/scratch.h"

namespace kqsupt::tests {

class Mounted : public testing::Test {
 protected:
  ~Mounted() override { run_native({"umount", "-l", directory_}); }

  // The machine's own program mounts: an emulator need not know how to.
  static bool succeeds(const Command& command) {
    const Outcome outcome = run_native(command);
    EXPECT_EQ(outcome.exit_status, 0) << outcome.err;
    return outcome.exit_status == 0;
  }

  const Scratch scratch_;
  const std::string directory_ = scratch_.file("");
};

class FullDisk : public Mounted {
 protected:
  void SetUp() override {
    ASSERT_TRUE(succeeds({"mount", "-t", "tmpfs", "-o", "size=64k", "full", directory_}));
  }

  // Takes what room there is but for `left` pages.
  void fill(int left) {
    std::ofstream fill(scratch_.file("fill"), std::ios::binary);
    const std::string page(4096, 'x');
    while (fill.write(page.data(), 4096).flush()) {
    }
    fill.close();
    const auto size = static_cast<off_t>(content_of(scratch_.file("fill")).size());
    ASSERT_EQ(truncate(scratch_.file("fill").c_str(), std::max<off_t>(size - left * 4096, 0)), 0);
  }
  void make_room() { unlink(scratch_.file("fill").c_str()); }

  // What is there beside what fills it.
  [[nodiscard]] std::vector<std::string> names() const {
    std::vector<std::string> names = scratch_.names();
    std::erase(names, "fill");
    return names;
  }
};

class ReadOnly : public Mounted {
 protected:
  // Called when what shall be in the directory is there.
  void close_for_writing() {
    ASSERT_TRUE(succeeds({"mount", "--bind", directory_, directory_}) &&
                succeeds({"mount", "-o", "remount,bind,ro", directory_}));
  }
};

}  // namespace kqsupt::tests
