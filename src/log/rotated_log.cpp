// Rotating and appending. No lock is waited for; two processes that come to rotate at the same time
// must still not do it twice, for the second one would drop what the first one has just kept.

#include "log/rotated_log.h"

#include <dirent.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cinttypes>
#include <climits>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <string_view>

#include "config/file_commit.h"
#include "frame/status.h"
#include "os/file_descriptor.h"

namespace kqsupt::log {
namespace {

using os::FileDescriptor;

constexpr uint32_t kWithTime = 1;
constexpr uint32_t kWithThread = 2;
constexpr uint32_t kWithLineEnd = 4;

constexpr mode_t kNewMode = 0644;
constexpr mode_t kAllBits = 07777;
constexpr mode_t kKeptBits = 01666;

// ---- Generations ----

class GenerationName {
 public:
  GenerationName(const char* path, uint32_t number) {
    std::snprintf(text_, sizeof text_, "%s.%" PRIu32, path, number);
  }
  [[nodiscard]] const char* c_str() const { return text_; }

 private:
  char text_[PATH_MAX + 16];  // whole for each path that a file may have
};

// The highest generation that there is, up to `count`. Callers may allow for any number of them, of
// which there are a few.
uint32_t highest_generation(const char* path, uint32_t count) {
  const std::string_view whole(path);
  std::string_view name = whole;
  name.remove_prefix(whole.rfind('/') + 1);  // none of it without a directory
  const config::DirectoryName directory_name(whole);
  DIR* const directory = directory_name.ok() ? opendir(directory_name.c_str()) : nullptr;
  if (directory == nullptr) {
    return count;
  }
  uint32_t highest = 0;
  while (const dirent* entry = readdir(directory)) {
    const std::string_view other(entry->d_name);
    if (other.size() <= name.size() + 1 || !other.starts_with(name) || other[name.size()] != '.') {
      continue;
    }
    const char* digits = other.data() + name.size() + 1;
    const char* end = other.data() + other.size();
    uint32_t number = 0;
    const auto [behind, error] = std::from_chars(digits, end, number);
    if (error == std::errc() && behind == end && number <= count) {
      highest = std::max(highest, number);
    }
  }
  closedir(directory);
  return highest;
}

// Whether the file is one to rotate, and the only name of it still this path.
bool is_too_large(const char* path, uint32_t max_size) {
  struct stat about {};
  return stat(path, &about) == 0 && S_ISREG(about.st_mode) && about.st_size > off_t{max_size};
}

// Holds the right to rotate a log. It is a lock on the file itself, so it goes with the file: who
// looks at the path again and finds the same file there knows that nobody has rotated it meanwhile.
class Rotation {
 public:
  explicit Rotation(const char* path)
      : file_(FileDescriptor::open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY)) {
    struct stat held {};
    struct stat there {};
    // Where files cannot be read or locked they are rotated all the same.
    is_mine_ =
        !file_.is_open() || flock(file_.get(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
    if (is_mine_ && file_.is_open()) {
      is_mine_ = fstat(file_.get(), &held) == 0 && stat(path, &there) == 0 &&
                 held.st_ino == there.st_ino && held.st_dev == there.st_dev;
    }
  }
  [[nodiscard]] bool is_mine() const { return is_mine_; }

 private:
  FileDescriptor file_;
  bool is_mine_;
};

// ---- Messages ----

// What stands before a message; at most 127 bytes.
class Prefix {
 public:
  explicit Prefix(uint32_t flags) {
    if ((flags & kWithTime) != 0) {
      add_time();
    }
    if ((flags & kWithThread) != 0) {
      const size_t length = std::strlen(text_);
      std::snprintf(text_ + length, sizeof text_ - length, "[%u:%llu] ",
                    static_cast<unsigned>(getpid()),
                    static_cast<unsigned long long>(pthread_self()));
    }
  }
  [[nodiscard]] const char* c_str() const { return text_; }

 private:
  void add_time() {
    const time_t now = time(nullptr);
    tm local{};
    if (localtime_r(&now, &local) == nullptr) {
      std::strcpy(text_, "[localtime error] ");
    } else if (std::strftime(text_, sizeof text_, "[%b %d %Y %H:%M:%S] ", &local) == 0) {
      std::strcpy(text_, "[strftime error] ");
    }
  }

  char text_[128] = "";
};

// All of it with one call, so that no other message comes in between.
bool write_message(const FileDescriptor& file, uint32_t flags, const char* message) {
  const Prefix prefix(flags);
  const std::string_view parts[] = {prefix.c_str(), message,
                                    (flags & kWithLineEnd) != 0 ? "\n" : ""};
  iovec blocks[std::size(parts)];
  size_t size = 0;
  for (size_t i = 0; i < std::size(parts); ++i) {
    blocks[i] = {const_cast<char*>(parts[i].data()), parts[i].size()};
    size += parts[i].size();
  }
  ssize_t written;
  do {
    written = writev(file.get(), blocks, std::size(blocks));
  } while (written < 0 && errno == EINTR);
  return written == static_cast<ssize_t>(size);
}

}  // namespace

void rotate_log(const char* path, uint32_t max_size, uint32_t count) {
  if (path == nullptr || !is_too_large(path, max_size)) {
    return;
  }
  const Rotation rotation(path);
  if (!rotation.is_mine() || !is_too_large(path, max_size)) {
    return;
  }
  if (count == 0) {
    unlink(path);
    return;
  }
  // Generations that are missing are passed over by their renaming.
  const uint32_t oldest = highest_generation(path, count - 1);
  for (uint32_t k = oldest; k >= 1; --k) {
    (void)rename(GenerationName(path, k).c_str(), GenerationName(path, k + 1).c_str());
  }
  (void)rename(path, GenerationName(path, 1).c_str());
}

SMStatus append_to_rotated_log(const char* message, const char* path, uint32_t max_size,
                               uint32_t count, uint32_t flags) {
  if (message == nullptr || path == nullptr) {
    return SM_STATUS_INVALID_PARAMETER;
  }
  struct stat about {};
  const mode_t mode = stat(path, &about) == 0 ? about.st_mode & kKeptBits : kNewMode;
  rotate_log(path, max_size, count);
  const auto file =
      FileDescriptor::open(path, O_WRONLY | O_APPEND | O_CREAT | O_NONBLOCK | O_NOCTTY, mode);
  if (!file.is_open()) {
    return frame::kFailed;
  }
  if (fstat(file.get(), &about) == 0 && (about.st_mode & kAllBits) != mode) {
    (void)fchmod(file.get(), mode);  // only its owner may
  }
  return write_message(file, flags, message) ? SMStatus{SM_STATUS_SUCCESS} : frame::kFailed;
}

void delete_rotated_log(const char* path, uint32_t delete_generations, uint32_t count) {
  if (path == nullptr) {
    return;
  }
  if (delete_generations == 1) {
    for (uint32_t k = highest_generation(path, count); k >= 1; --k) {
      unlink(GenerationName(path, k).c_str());
    }
  }
  unlink(path);
}

}  // namespace kqsupt::log
