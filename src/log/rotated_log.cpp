// Rotating and appending. No lock is waited for, and a log that somebody else holds with flock() is
// not rotated; two processes that come to rotate at the same time must still not do it twice, for the
// second one would drop what the first one has just kept.

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
#include <iterator>
#include <string_view>

#include "frame/status.h"
#include "os/file_descriptor.h"
#include "text/calendar.h"

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

// The names in the directory of a path. They are read without the heap: a log is rotated as ever
// while memory is short.
class Neighbours {
 public:
  explicit Neighbours(std::string_view path) {
    const size_t slash = path.rfind('/');
    std::string_view name = ".";
    if (slash != std::string_view::npos) {
      name = {path.data(), std::max<size_t>(slash, 1)};
    }
    char text[PATH_MAX];
    if (name.size() < sizeof text) {
      *std::copy(name.begin(), name.end(), text) = '\0';
      directory_ = FileDescriptor::open(text, O_RDONLY | O_DIRECTORY);
    }
  }

  // Calls `visit` with each name. False when not all of them could be read.
  template <class Visit>
  [[nodiscard]] bool for_each(Visit visit) const {
    if (!directory_.is_open()) {
      return false;
    }
    alignas(dirent64) char entries[4096];
    ssize_t size = 0;
    while ((size = getdents64(directory_.get(), entries, sizeof entries)) > 0) {
      for (const char* at = entries; at < entries + size;) {
        const auto* entry = reinterpret_cast<const dirent64*>(at);
        visit(std::string_view(entry->d_name));
        at += entry->d_reclen;
      }
    }
    return size == 0;
  }

 private:
  FileDescriptor directory_;
};

// Where a directory cannot be read, generations up to this one are tried one by one, and what is
// beyond is not seen.
constexpr uint32_t kMostTried = 1000;

// The highest generation that there is, up to `most`; 0 for none. Where that cannot be known, the
// highest one that is to be tried.
uint32_t highest_generation(const char* path, uint32_t most) {
  const std::string_view whole(path);
  const size_t slash = whole.rfind('/');
  const size_t directory_size = slash == std::string_view::npos ? 0 : slash + 1;
  const std::string_view name(path + directory_size, whole.size() - directory_size);
  uint32_t highest = 0;
  const bool is_known = Neighbours(whole).for_each([&](std::string_view other) {
    if (other.size() <= name.size() + 1 || !other.starts_with(name) || other[name.size()] != '.') {
      return;
    }
    const char* end = other.data() + other.size();
    uint32_t number = 0;
    const auto [behind, error] = std::from_chars(other.data() + name.size() + 1, end, number);
    if (error == std::errc() && behind == end && number <= most) {
      highest = std::max(highest, number);
    }
  });
  return is_known ? highest : std::min(most, kMostTried);
}

// Calls `change` with the number of each generation from `most` down. Callers may allow for any
// number of generations, of which there are a few: when `change` finds one missing, and answers
// false, the gap is passed over at once.
template <class Change>
void for_each_generation(const char* path, uint32_t most, Change change) {
  uint32_t k = highest_generation(path, most);
  while (k != 0) {
    k = change(k) ? k - 1 : highest_generation(path, k - 1);
  }
}

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
    // Where files cannot be read or locked they are rotated all the same.
    if (!file_.is_open()) {
      is_mine_ = errno != ENOENT;
    } else if (flock(file_.get(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK) {
      struct stat held {};
      struct stat there {};
      is_mine_ = fstat(file_.get(), &held) == 0 && stat(path, &there) == 0 &&
                 held.st_ino == there.st_ino && held.st_dev == there.st_dev;
    }
  }
  [[nodiscard]] bool is_mine() const { return is_mine_; }

 private:
  FileDescriptor file_;
  bool is_mine_ = false;
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
    constexpr const char* kFormat = "[%b %d %Y %H:%M:%S] ";
    const auto result = text::write_local_time(time(nullptr), kFormat, text_, sizeof text_);
    if (result == text::LocalTime::kNoTime) {
      std::strcpy(text_, "[localtime error] ");
    } else if (result == text::LocalTime::kNoRoom) {
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
  for_each_generation(path, count - 1, [path](uint32_t k) {
    const GenerationName from(path, k);
    return rename(from.c_str(), GenerationName(path, k + 1).c_str()) == 0 || errno != ENOENT;
  });
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
    for_each_generation(path, count, [path](uint32_t k) {
      return unlink(GenerationName(path, k).c_str()) == 0 || errno != ENOENT;
    });
  }
  unlink(path);
}

}  // namespace kqsupt::log
