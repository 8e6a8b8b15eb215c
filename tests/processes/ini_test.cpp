// Files that several processes change, some of which are killed or meet a failing system call.

#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "gtest/gtest.h"
#include "ipc/named.h"
#include "kqsupt/config.h"
#include "kqsupt/ipc.h"
#include "processes/driven.h"
#include "support/background.h"
#include "support/scratch.h"

namespace {

using kqsupt::tests::Background;
using kqsupt::tests::built_program;
using kqsupt::tests::Command;
using kqsupt::tests::content_of;
using kqsupt::tests::is_emulated;
using kqsupt::tests::kNotReached;
using kqsupt::tests::Outcome;
using kqsupt::tests::put;
using kqsupt::tests::registry;
using kqsupt::tests::Scratch;

Background worker(const std::vector<std::string>& arguments) {
  Command command{built_program("ini-worker")};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return Background(command);
}

std::string read(const std::string& path, const char* key) {
  char value[64] = "";
  uint32_t size = sizeof value;
  const SMStatus status =
      SMReadINIPathFileValue("S", key, SMINI_TYPE_UTF8, value, &size, nullptr, 0, path.c_str(), 1);
  return status == SM_STATUS_SUCCESS ? value : "status " + std::to_string(status);
}

TEST(IniProcesses, WriteDifferentKeysOfOneFileWhileOthersRead) {
  const std::string writes = is_emulated() ? "60" : "300";
  const Scratch scratch;
  const std::string path = scratch.file("a.ini");
  std::string content = "; shared\n[S]\n";
  for (int i = 0; i < 8; ++i) {
    content += "K" + std::to_string(i) + "=0:0\n";
  }
  put(path, content);
  std::vector<Background> workers;
  for (int i = 0; i < 8; ++i) {
    workers.push_back(worker({"write-many", path, "K" + std::to_string(i), writes}));
  }
  for (int i = 0; i < 4; ++i) {
    workers.push_back(worker({"read-many", path, "8", is_emulated() ? "400" : "4000"}));
  }
  for (Background& process : workers) {
    EXPECT_EQ(process.read_line(), "");
    EXPECT_EQ(process.wait(), 0);
  }
  for (int i = 0; i < 8; ++i) {
    EXPECT_EQ(read(path, ("K" + std::to_string(i)).c_str()), writes + ":" + writes);
  }
  EXPECT_EQ(scratch.names(), std::vector<std::string>{"a.ini"});
}

// ---- Killed, or told of a failure, at every system call ----

Outcome driven(const std::string& action, long place, const std::vector<std::string>& arguments) {
  return kqsupt::tests::driven(action, place, "ini-worker", arguments);
}

constexpr char kOld[] = "; head\n[S]\nK=old\nL=1\n\n; tail\n[U]\nM=2\n";

struct Change {
  const char* what;
  const char* fresh;  // the content that it makes of the old one
};
constexpr Change kChanges[] = {
    {"change", "; head\n[S]\nK=new\nL=1\n\n; tail\n[U]\nM=2\n"},
    {"add", "; head\n[S]\nK=old\nL=1\n\n; tail\n[U]\nM=2\n\n[T]\nK=new\n"},
    {"delete-key", "; head\n[S]\nL=1\n\n; tail\n[U]\nM=2\n"},
    {"delete-section", "; head\n[U]\nM=2\n"},
    {"property", "; head\n[S]\nK=new\nL=1\n\n; tail\n[U]\nM=2\n"},
};

std::string name_of_change(const testing::TestParamInfo<Change>& change) {
  std::string name = change.param.what;
  std::erase(name, '-');
  return name;
}

// An emulator makes many more calls than the program: some of them are left out there, others
// each time.
long step_of(long points) {
  return is_emulated() ? points : 1;
}

class Killed : public testing::TestWithParam<Change> {
 protected:
  // What a reader that nobody kills finds. Nobody repairs a property file: its old content is
  // then the backup.
  std::string found() {
    if (std::string(GetParam().what) == "property") {
      const std::string content = content_of(path_);
      return content != "(no file)" ? content : content_of(scratch_.file("a.bak"));
    }
    read(path_, "L");
    return content_of(path_);
  }

  void start_anew() {
    for (const std::string& name : scratch_.names()) {
      unlink(scratch_.file(name).c_str());
    }
    put(path_, kOld);
  }

  Scratch scratch_;
  std::string path_ = scratch_.file("a.ini");
};

TEST_P(Killed, LeavesTheOldContentOrTheNewOne) {
  uint32_t points = 0;
  uint32_t changed = 0;
  for (long k = 1;; k += step_of(5)) {
    start_anew();
    if (driven("kill", k, {GetParam().what, path_}).exit_status == kNotReached) {
      break;
    }
    ++points;
    const std::string content = found();
    ASSERT_TRUE(content == kOld || content == GetParam().fresh) << k << ": " << content;
    changed += content != kOld ? 1 : 0;
    // Nothing is locked, and what was begun can be done.
    put(path_, kOld);
    unlink(scratch_.file("a.bak").c_str());
    ASSERT_EQ(worker({GetParam().what, path_}).read_line(), "0") << k;
    ASSERT_EQ(content_of(path_), GetParam().fresh) << k;
  }
  EXPECT_GT(points, changed);
  std::printf("[   FACT   ] %s: killed at %u points, after %u of them it was done\n",
              GetParam().what, points, changed);
}

// Who repairs is killed as well, at every point; then the next one repairs.
TEST_P(Killed, MayBeRepairedByOneThatIsKilledToo) {
  if (std::string(GetParam().what) == "property") {
    return;  // nobody repairs it
  }
  uint32_t points = 0;
  for (const char* repairer : {"read", "change"}) {
    for (long k = 1;; ++k) {
      start_anew();
      unlink(path_.c_str());
      put(scratch_.file("a.bak"), kOld);
      if (driven("kill", k, {repairer, path_}).exit_status == kNotReached) {
        break;
      }
      ++points;
      const std::string content = found();
      ASSERT_TRUE(content == kOld ||
                  (std::string(repairer) == "change" && content == kChanges[0].fresh))
          << repairer << " " << k << ": " << content;
      k += step_of(7) - 1;
    }
  }
  std::printf("[   FACT   ] who repairs was killed at %u points\n", points);
}

INSTANTIATE_TEST_SUITE_P(EveryChange, Killed, testing::ValuesIn(kChanges), name_of_change);

class Failing : public Killed {};

// The answers that changing a file may give.
const std::set<std::string> kDocumented = {
    "2", "7", "19", "258", "260", "270", "272", "4294967295",
};

TEST_P(Failing, ASystemCallLeavesTheOldContentOrSucceeds) {
  uint32_t points = 0;
  for (const int error : {ENOSPC, EIO, EACCES, EMFILE, EROFS, EINTR}) {
    for (long k = 1;; k += step_of(3)) {
      start_anew();
      const Outcome outcome = driven(std::to_string(error), k, {GetParam().what, path_});
      if (outcome.exit_status == kNotReached) {
        break;
      }
      ++points;
      const std::string status = outcome.out.substr(0, outcome.out.find('\n'));
      const std::string content = found();
      // A property file whose backup cannot be deleted is changed all the same: nobody goes back.
      const bool is_changed =
          status == "0" || (status == "270" && std::string(GetParam().what) == "property" &&
                            access(scratch_.file("a.bak").c_str(), F_OK) == 0);
      if (is_changed) {
        ASSERT_EQ(content, GetParam().fresh) << error << " at " << k;
      } else {
        ASSERT_EQ(content, kOld) << error << " at " << k << ": " << status;
        ASSERT_EQ(kDocumented.count(status), 1U) << error << " at " << k << ": " << status;
        ASSERT_NE(error, EINTR) << "at " << k << ": " << status;
      }
      put(path_, kOld);
      ASSERT_EQ(worker({GetParam().what, path_}).read_line(), "0") << error << " at " << k;
      ASSERT_EQ(content_of(path_), GetParam().fresh) << error << " at " << k;
    }
  }
  std::printf("[   FACT   ] %s: %u failures of system calls\n", GetParam().what, points);
}

TEST_P(Failing, AShortWriteIsGoneOnWith) {
  for (long k = 1;; ++k) {
    start_anew();
    const Outcome outcome = driven("short", k, {GetParam().what, path_});
    if (outcome.exit_status == kNotReached) {
      break;
    }
    ASSERT_EQ(outcome.out, "0\n") << k;
    ASSERT_EQ(found(), GetParam().fresh) << k;
  }
}

INSTANTIATE_TEST_SUITE_P(EveryChange, Failing, testing::ValuesIn(kChanges), name_of_change);

// ---- Files that cannot be read to their ends ----

// Every answer to a read of a file that is longer than what is read of it at once.
std::set<std::string> answers_to_failures(const char* what, const std::string& path) {
  std::set<std::string> answers;
  for (const int error : {EIO, EINTR}) {
    for (long k = 1;; k += step_of(3)) {
      const Outcome outcome = driven(std::to_string(error), k, {what, path});
      if (outcome.exit_status == kNotReached) {
        break;
      }
      EXPECT_TRUE(error != EINTR || outcome.out == "0\n") << k << ": " << outcome.out;
      answers.insert(outcome.out.substr(0, outcome.out.find('\n')));
    }
  }
  return answers;
}

TEST(FailingReads, AValueWithoutItsEndIsNone) {
  const Scratch scratch;
  const std::string path = scratch.file("a.properties");
  std::string content = "K=first\\\n";
  for (int i = 0; i < 10; ++i) {
    content += std::string(8000, 'x') + "\\\n";
  }
  put(path, content + "last\n");
  const std::set<std::string> answers = answers_to_failures("read-property", path);
  EXPECT_EQ(answers.count("12345"), 0U);
  EXPECT_EQ(answers.count("0"), 1U);
  EXPECT_EQ(answers.count("2"), is_emulated() ? answers.count("2") : 1U);
}

TEST(FailingReads, ADeviceMayHaveABoardInWhatCannotBeRead) {
  const Scratch scratch;
  const std::string path = scratch.file("pci.txt");
  std::string content = "V\t1\tvendor\nD\t2\tdevice\nO\t3\tmaker\n";
  for (int i = 0; i < 10; ++i) {
    content += std::string(8000, ';') + "\n";
  }
  put(path, content + "S\t4\tboard\n");
  const std::set<std::string> answers = answers_to_failures("read-devices", path);
  EXPECT_EQ(answers.count("12345"), 0U);
  EXPECT_EQ(answers.count("0"), 1U);
  EXPECT_EQ(answers.count("7"), is_emulated() ? answers.count("7") : 1U);
}

// ---- Objects ----

TEST(FailingObjects, ARegistrationThatFailsTakesNoKeyOfAnother) {
  uint32_t points = 0;
  uint32_t made = 0;
  const auto key_of = [](const std::string& name) {
    return kqsupt::tests::registered_key(kqsupt::tests::decorated("kqsupsmp", name));
  };
  SMSemaphoreDestroy(SMSemaphoreCreate("another", 0));
  const uint32_t other = key_of("another");
  for (const int error : {ENOSPC, EIO, EACCES, EMFILE, EROFS, EINTR}) {
    for (long k = 1;; k += step_of(5)) {
      const std::string name = "failing" + std::to_string(error) + "." + std::to_string(k);
      const Outcome outcome = driven(std::to_string(error), k, {"register", name});
      if (outcome.exit_status == kNotReached) {
        break;
      }
      ++points;
      made += outcome.out == "0\n" ? 1 : 0;
      ASSERT_EQ(key_of("another"), other) << error << " at " << k;
      SMSemaphore* semaphore = SMSemaphoreCreate(name.c_str(), 0);
      ASSERT_NE(semaphore, nullptr) << error << " at " << k;
      SMSemaphoreDestroy(semaphore);
      ASSERT_NE(key_of(name), 0U);
      ASSERT_NE(key_of(name), other);
    }
  }
  EXPECT_GT(made, 0U);
  std::printf("[   FACT   ] %u failures of system calls while a name is registered\n", points);
}

TEST(FailingObjects, AMutexThatFailsIsLeftUnlocked) {
  uint32_t points = 0;
  for (const int error : {EIO, EACCES, EMFILE, EROFS, EINTR}) {
    for (long k = 1;; ++k) {
      const Outcome outcome = driven(std::to_string(error), k, {"mutex", "failing"});
      if (outcome.exit_status == kNotReached) {
        break;
      }
      ++points;
      ASSERT_TRUE(outcome.out == "0\n" || error != EINTR) << k << ": " << outcome.out;
      SMMutex* mutex = SMMutexCreate("failing");
      ASSERT_EQ(SMMutexLock(mutex, 0), SM_STATUS_SUCCESS);
      SMMutexDestroy(mutex);
    }
  }
  std::printf("[   FACT   ] %u failures of system calls while a mutex is locked\n", points);
}

// ---- Full and read-only file systems ----

class FileSystem : public testing::Test {
 protected:
  void mount_with(const char* options) {
    ASSERT_EQ(mount("scratch", directory_.c_str(), "tmpfs", 0, options), 0) << strerror(errno);
    mounted_ = true;
  }
  void SetUp() override { ASSERT_EQ(mkdir(directory_.c_str(), 0755), 0); }
  void TearDown() override {
    if (mounted_) {
      umount(directory_.c_str());
    }
  }
  SMStatus write(const char* section, const std::string& value) {
    return SMWriteINIPathFileValue(section, "K", SMINI_TYPE_UTF8, value.c_str(),
                                   static_cast<uint32_t>(value.size() + 1), path_.c_str(), 1);
  }

  Scratch scratch_;
  std::string directory_ = scratch_.file("mounted");
  std::string path_ = directory_ + "/a.ini";
  bool mounted_ = false;
};

TEST_F(FileSystem, ThatIsFullLeavesTheFileAsItWas) {
  mount_with("size=64k");
  ASSERT_EQ(write("S", "old"), SM_STATUS_SUCCESS);
  for (int i = 0; write(("T" + std::to_string(i)).c_str(), std::string(4000, 'x')) == 0; ++i) {
  }
  const std::string before = content_of(path_);
  EXPECT_EQ(write("S", std::string(4000, 'y')), SM_STATUS_OUT_OF_SPACE);
  EXPECT_EQ(write("new", std::string(8000, 'y')), SM_STATUS_OUT_OF_SPACE);
  EXPECT_EQ(content_of(path_), before);
  EXPECT_EQ(read(path_, "K"), "old");
}

TEST_F(FileSystem, ThatIsReadOnlyIsReadAndNotWritten) {
  mount_with("size=64k");
  ASSERT_EQ(write("S", "old"), SM_STATUS_SUCCESS);
  ASSERT_EQ(mount(nullptr, directory_.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
  EXPECT_EQ(write("S", "new"), SM_STATUS_FILE_NOT_FOUND);
  EXPECT_EQ(write("T", "new"), SM_STATUS_FILE_NOT_FOUND);
  EXPECT_EQ(read(path_, "K"), "old");
}

}  // namespace
