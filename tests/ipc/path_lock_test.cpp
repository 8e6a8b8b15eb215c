// The lock files beside files that are read and written, and who may lock them.

#include <sys/stat.h>

#include <string>

#include "gtest/gtest.h"
#include "ipc/named.h"
#include "kqsupt/config.h"
#include "support/child.h"
#include "support/scratch.h"

namespace {

using kqsupt::tests::content_of;
using kqsupt::tests::give_up_privileges;
using kqsupt::tests::in_child;
using kqsupt::tests::lock_file_of_path;
using kqsupt::tests::mode_of;
using kqsupt::tests::put;
using kqsupt::tests::Scratch;

class PathLock : public testing::Test {
 protected:
  SMStatus read() {
    char value[8];
    uint32_t size = sizeof value;
    return SMReadINIPathFileValue("S", "K", SMINI_TYPE_UTF8, value, &size, nullptr, 0,
                                  path_.c_str(), 1);
  }
  SMStatus write() {
    return SMWriteINIPathFileValue("S", "K", SMINI_TYPE_UTF8, "2", 2, path_.c_str(), 1);
  }
  void put_file(mode_t mode) {
    put(path_, kContent);
    set_mode(mode);
  }
  void set_mode(mode_t mode) { EXPECT_EQ(chmod(path_.c_str(), mode), 0); }
  [[nodiscard]] unsigned lock_mode() const { return mode_of(lock_file_); }

  static constexpr char kContent[] = "[S]\nK=1\n";
  const Scratch scratch_;
  const std::string path_ = scratch_.file("a.ini");
  const std::string lock_file_ = lock_file_of_path(path_);
};

TEST_F(PathLock, HasALockFileWithTheBitsOfTheFile) {
  put_file(0660);
  EXPECT_EQ(read(), SM_STATUS_SUCCESS);
  EXPECT_EQ(lock_mode(), 0660U);
}

TEST_F(PathLock, OfAFileThatIsMissingHasTheBits0644) {
  EXPECT_NE(read(), SM_STATUS_SUCCESS);
  EXPECT_EQ(lock_mode(), 0644U);
}

TEST_F(PathLock, GetsNewBitsOfTheFileWhenThatIsWrittenAndNotWhenItIsRead) {
  put_file(0644);
  EXPECT_EQ(read(), SM_STATUS_SUCCESS);
  set_mode(0600);
  EXPECT_EQ(read(), SM_STATUS_SUCCESS);
  EXPECT_EQ(lock_mode(), 0644U);
  EXPECT_EQ(write(), SM_STATUS_SUCCESS);
  EXPECT_EQ(mode_of(path_), 0600U);
  EXPECT_EQ(lock_mode(), 0600U);
}

TEST_F(PathLock, ThatExistsGetsTheBitsOfTheFileWhenItIsFirstUsed) {
  put_file(0640);
  put(lock_file_, "");
  EXPECT_EQ(chmod(lock_file_.c_str(), 0), 0);
  // As its owner and no more, who may not even open it.
  EXPECT_EQ(
      in_child([this] { return give_up_privileges() && read() == SM_STATUS_SUCCESS ? 0 : 1; }), 0);
  EXPECT_EQ(lock_mode(), 0640U);
}

TEST_F(PathLock, OfAFileThatMayOnlyBeReadIsRefusedToWriters) {
  put_file(0444);
  EXPECT_EQ(read(), SM_STATUS_SUCCESS);
  EXPECT_EQ(lock_mode(), 0444U);
  EXPECT_EQ(in_child([this] {
              return give_up_privileges() && write() == SM_STATUS_ACCESS_DENIED &&
                             read() == SM_STATUS_SUCCESS
                         ? 0
                         : 1;
            }),
            0);
  EXPECT_EQ(content_of(path_), kContent);
}

}  // namespace
