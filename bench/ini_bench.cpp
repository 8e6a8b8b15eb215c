// INI files and install paths, beside the system calls that they cannot do without.

#include "ini_bench.h"

#include <fcntl.h>
#include <kqsupt/config.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <vector>

#include "ratio_table.h"

namespace kqbench {
namespace {

constexpr const char* kFloor = "floor";

void read_ours(const IniFile& file, const std::string& key) {
  char value[128];
  uint32_t size = sizeof value;
  require(SMReadINIPathFileValue("section", key.c_str(), SMINI_TYPE_UTF8, value, &size, nullptr, 0,
                                 file.path.c_str(), 1) == SM_STATUS_SUCCESS);
  benchmark::DoNotOptimize(value);
}

void rewrite_ours(const IniFile& file, const std::string& key) {
  require(SMWriteINIPathFileValue("section", key.c_str(), SMINI_TYPE_UTF8,
                                  "value of some length, number 999999", 36, file.path.c_str(),
                                  1) == SM_STATUS_SUCCESS);
}

// ---- The floors: the same system calls, and nothing else ----

std::string in_scratch(const char* name) {
  return std::string(std::getenv("TMPDIR")) + "/" + name;
}

class LockedFile {
 public:
  explicit LockedFile(int16_t type) {
    static const std::string path = in_scratch("floor.lock");
    file_ = open(path.c_str(), (type == F_RDLCK ? O_RDONLY : O_WRONLY) | O_CREAT | O_CLOEXEC, 0600);
    lock(type);
  }
  ~LockedFile() {
    lock(F_UNLCK);
    close(file_);
  }
  LockedFile(const LockedFile&) = delete;
  LockedFile& operator=(const LockedFile&) = delete;
  [[nodiscard]] int get() const { return file_; }

 private:
  void lock(int16_t type) const {
    struct flock whole {};
    whole.l_type = type;
    require(fcntl(file_, F_SETLKW, &whole) == 0);
  }
  int file_;
};

char room[32768];

void read_floor(const IniFile& file, const std::string&) {
  const LockedFile lock(F_RDLCK);
  require(rename(in_scratch("none.bak").c_str(), file.path.c_str()) != 0);
  const int input = open(file.path.c_str(), O_RDONLY | O_CLOEXEC);
  while (read(input, room, sizeof room) == static_cast<ssize_t>(sizeof room)) {
  }
  close(input);
  benchmark::DoNotOptimize(room);
}

void rewrite_floor(const IniFile& file, const std::string&) {
  static const std::string temporary = in_scratch("floor.new");
  static const std::string backup = in_scratch("floor.bak");
  require(mkdir(std::getenv("TMPDIR"), 0755) != 0);
  const LockedFile lock(F_WRLCK);
  require(rename(in_scratch("none.bak").c_str(), file.path.c_str()) != 0);
  const int input = open(file.path.c_str(), O_RDONLY | O_CLOEXEC);
  struct stat about {};
  require(fstat(input, &about) == 0);
  const ssize_t size = read(input, room, sizeof room);
  close(input);
  require(access(temporary.c_str(), F_OK) != 0);
  const int output = open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  require(fchmod(output, 0644) == 0 && write(output, room, static_cast<size_t>(size)) == size);
  close(output);
  require(rename(file.path.c_str(), backup.c_str()) == 0 &&
          rename(temporary.c_str(), file.path.c_str()) == 0 && unlink(backup.c_str()) == 0);
  require(stat(file.path.c_str(), &about) == 0 && fstat(lock.get(), &about) == 0);
}

// ---- Paths ----

constexpr size_t kQueries = 1000;

void add_paths() {
  const auto prepare = [] {
    char path[256];
    uint32_t size = sizeof path;
    require(SMGetPathByProductIDandType(35, SM_PATH_TYPE_INI, path, &size) == SM_STATUS_SUCCESS);
    return std::string(path);
  };
  add_measurement(kPathRow, kOurs, kQueries, prepare, [](const std::string&) {
    for (size_t i = 0; i < kQueries; ++i) {
      char path[256];
      uint32_t size = sizeof path;
      require(SMGetPathByProductIDandType(35, SM_PATH_TYPE_INI, path, &size) == SM_STATUS_SUCCESS);
      benchmark::DoNotOptimize(path);
    }
  });
  add_measurement(kPathRow, kFloor, kQueries, prepare, [](const std::string& path) {
    for (size_t i = 0; i < kQueries; ++i) {
      require(access(path.c_str(), F_OK) == 0);
    }
  });
}

const bool kAdded = [] {
  // GKeyFile writes its file to the disk as well, which none of the others does.
  add_family({"INI files and install paths",
              {kFloor, "inih", "GKeyFile"},
              {{kReadRow, "read one of 100 keys", 1.3, kFloor},
               {kReadLargeRow, "read one of 5,000 keys", 2.5, kFloor},
               {kRewriteRow, "rewrite one of 100 keys", 1.25, kFloor},
               {kPathRow, "path of a product", 1.3, kFloor}}});
  add_ini_measurement<100>(kReadRow, kOurs, read_ours);
  add_ini_measurement<100>(kReadRow, kFloor, read_floor);
  add_ini_measurement<5000>(kReadLargeRow, kOurs, read_ours);
  add_ini_measurement<5000>(kReadLargeRow, kFloor, read_floor);
  add_ini_measurement<100>(kRewriteRow, kOurs, rewrite_ours);
  add_ini_measurement<100>(kRewriteRow, kFloor, rewrite_floor);
  add_paths();
  return true;
}();

}  // namespace
}  // namespace kqbench
