// Files whose lock another process holds: every access tries once, or waits.

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <string>
#include <thread>

#include "gtest/gtest.h"
#include "ipc/named.h"
#include "kqsupt.h"
#include "support/scratch.h"

namespace {

using kqsupt::tests::content_of;
using kqsupt::tests::lock_file_of_path;
using kqsupt::tests::put;
using kqsupt::tests::Scratch;

// A process that holds the lock of a file, to read or to write, until it is told to let go.
class Holder {
 public:
  Holder(const std::string& path, short type) {
    int ready[2];
    EXPECT_EQ(pipe(ready), 0);
    EXPECT_EQ(pipe(let_go_), 0);
    const std::string lock_file = lock_file_of_path(path);
    child_ = fork();
    if (child_ == 0) {
      alarm(60);
      close(let_go_[1]);
      const int fd = open(lock_file.c_str(), O_RDWR | O_CREAT, 0666);
      struct flock lock {};
      lock.l_type = type;
      lock.l_whence = SEEK_SET;
      const bool held = fd >= 0 && fcntl(fd, F_SETLK, &lock) == 0 && write(ready[1], "x", 1) == 1;
      close(ready[0]);
      close(ready[1]);
      char byte;
      _exit(held && read(let_go_[0], &byte, 1) == 0 ? 0 : 1);
    }
    close(ready[1]);
    close(let_go_[0]);
    char byte;
    EXPECT_EQ(read(ready[0], &byte, 1), 1) << "the lock cannot be held";
    close(ready[0]);
  }
  ~Holder() {
    let_go();
    int status = 1;
    waitpid(child_, &status, 0);
    EXPECT_EQ(status, 0);
  }
  Holder(const Holder&) = delete;
  Holder& operator=(const Holder&) = delete;

  void let_go() {
    close(let_go_[1]);
    let_go_[1] = -1;
  }

 private:
  pid_t child_ = -1;
  int let_go_[2] = {-1, -1};
};

class FileLocks : public testing::Test {
 public:
  FileLocks() {
    put(ini_, kIni);
    put(properties_, kProperties);
  }

  SMStatus read_ini(uint16_t wait) {
    char text[8] = "";
    uint32_t size = sizeof text;
    return SMReadINIPathFileValue("S", "K", SMINI_TYPE_UTF8, text, &size, nullptr, 0, ini_.c_str(),
                                  wait);
  }
  SMStatus write_ini(uint16_t wait) {
    return SMWriteINIPathFileValue("S", "K", SMINI_TYPE_UTF8, "2", 2, ini_.c_str(), wait);
  }
  SMStatus read_property(uint16_t wait) {
    char text[8] = "";
    uint32_t size = sizeof text;
    return SMPropertyFileReadValue("K", SMXLT_TYPE_UTF8, text, &size, nullptr, 0,
                                   properties_.c_str(), wait);
  }
  SMStatus write_property(uint16_t wait) {
    return SMPropertyFileWriteValue("K", SMXLT_TYPE_UTF8, "2", 2, properties_.c_str(), wait);
  }

 protected:
  static constexpr char kIni[] = "[S]\nK=1\n";
  static constexpr char kProperties[] = "K=1\n";
  static constexpr uint16_t kTries[] = {0, 2, 0x101, 0xFFFF};  // what does not wait
  Scratch scratch_;
  std::string ini_ = scratch_.file("a.ini");
  std::string properties_ = scratch_.file("a.properties");
};

TEST_F(FileLocks, AFileThatAnotherProcessWritesIsTriedOnce) {
  const Holder of_ini(ini_, F_WRLCK);
  const Holder of_properties(properties_, F_WRLCK);
  for (const uint16_t wait : kTries) {
    EXPECT_EQ(read_ini(wait), SM_STATUS_TIMEOUT) << wait;
    EXPECT_EQ(write_ini(wait), SM_STATUS_TIMEOUT) << wait;
    EXPECT_EQ(read_property(wait), SM_STATUS_TIMEOUT) << wait;
    EXPECT_EQ(write_property(wait), SM_STATUS_TIMEOUT) << wait;
  }
  EXPECT_EQ(content_of(ini_), kIni);
  EXPECT_EQ(content_of(properties_), kProperties);
}

TEST_F(FileLocks, AFileThatAnotherProcessReadsIsReadAndNotWritten) {
  const Holder of_ini(ini_, F_RDLCK);
  const Holder of_properties(properties_, F_RDLCK);
  for (const uint16_t wait : kTries) {
    EXPECT_EQ(read_ini(wait), 0U) << wait;
    EXPECT_EQ(write_ini(wait), SM_STATUS_TIMEOUT) << wait;
    EXPECT_EQ(read_property(wait), 0U) << wait;
    EXPECT_EQ(write_property(wait), SM_STATUS_TIMEOUT) << wait;
  }
  EXPECT_EQ(read_ini(1), 0U);
  EXPECT_EQ(read_property(1), 0U);
  EXPECT_EQ(content_of(ini_), kIni);
  EXPECT_EQ(content_of(properties_), kProperties);
}

TEST_F(FileLocks, WhoWaitsGetsTheFileWhenItIsLetGo) {
  for (SMStatus (FileLocks::*access)(uint16_t) :
       {&FileLocks::read_ini, &FileLocks::write_ini, &FileLocks::read_property,
        &FileLocks::write_property}) {
    Holder of_ini(ini_, F_WRLCK);
    Holder of_properties(properties_, F_WRLCK);
    EXPECT_EQ((this->*access)(0), SM_STATUS_TIMEOUT);
    of_ini.let_go();
    of_properties.let_go();
    EXPECT_EQ((this->*access)(1), 0U);
  }
  EXPECT_EQ(content_of(ini_), "[S]\nK=2\n");
  EXPECT_EQ(content_of(properties_), "K=2\n");
}

TEST_F(FileLocks, AListAndACopyLockTheFileToo) {
  const Holder holder(ini_, F_WRLCK);
  char text[8] = "~";
  uint32_t size = sizeof text;
  EXPECT_EQ(SMReadINIPathFileValue(nullptr, nullptr, SMINI_TYPE_UTF8, text, &size, nullptr, 0,
                                   ini_.c_str(), 0),
            SM_STATUS_TIMEOUT);
  EXPECT_STREQ(text, "~");
  EXPECT_EQ(SMReadINISectionKeyUTF8Value("S", "K", "default", &size, ini_.c_str(), 0), nullptr);
  EXPECT_EQ(size, 0U);
}

TEST_F(FileLocks, EventsAndClearingsWaitForTheLog) {
  const std::string log = scratch_.file("a.xml");
  const auto add = [&] {
    return SMAppendToXMLLog(log.c_str(), 1, 1, 1, "u", "s", "d", nullptr, nullptr, 0, 1048576);
  };
  ASSERT_EQ(add(), 0U);
  for (const bool clears : {false, true}) {
    const std::string before = content_of(log);
    Holder holder(log, F_WRLCK);
    std::atomic<bool> done = false;
    std::thread writer([&] {
      EXPECT_EQ(clears ? SMClearXMLLog(log.c_str(), 1, "u", "s") : add(), 0U);
      done = true;
    });
    usleep(200000);
    EXPECT_FALSE(done);
    EXPECT_EQ(content_of(log), before);
    holder.let_go();
    writer.join();
    EXPECT_NE(content_of(log), before);
  }
}

}  // namespace
