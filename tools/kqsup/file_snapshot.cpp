#include "file_snapshot.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace kqsup {

namespace {

class Descriptor {
 public:
  // A pipe that somebody put in a file's place is not waited for.
  explicit Descriptor(const std::string& path)
      : fd_(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY)) {}
  ~Descriptor() {
    if (fd_ >= 0) {
      close(fd_);
    }
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  [[nodiscard]] int get() const { return fd_; }

 private:
  int fd_;
};

// Reads on to the end, or to the limit. 0, or what the system answers instead.
int read_rest(int fd, size_t limit, std::string* content) {
  size_t used = 0;
  while (used <= limit) {
    content->resize(used + (size_t{64} << 10));
    const ssize_t count = read(fd, content->data() + used, content->size() - used);
    if (count < 0 && errno == EINTR) {
      continue;
    }
    if (count <= 0) {
      const int error = count < 0 ? errno : 0;
      content->resize(used);
      return error;
    }
    used += static_cast<size_t>(count);
  }
  content->resize(used);
  return EFBIG;
}

bool is_same(const struct stat& a, const struct stat& b) {
  return a.st_size == b.st_size && a.st_mtim.tv_sec == b.st_mtim.tv_sec &&
         a.st_mtim.tv_nsec == b.st_mtim.tv_nsec;
}

FileSnapshot unreadable(int error) {
  return {FileSnapshot::Result::kUnreadable, {}, std::strerror(error)};
}

}  // namespace

FileSnapshot read_file(const std::string& path) {
  const Descriptor file(path);
  if (file.get() < 0) {
    return errno == ENOENT ? FileSnapshot{} : unreadable(errno);
  }
  constexpr int kTries = 20;
  for (int tries = 0; tries < kTries; ++tries) {
    struct stat before {};
    struct stat after {};
    if (fstat(file.get(), &before) != 0) {
      return unreadable(errno);
    }
    if (!S_ISREG(before.st_mode)) {
      return {FileSnapshot::Result::kUnreadable, {}, "it is not a regular file"};
    }
    FileSnapshot snapshot{FileSnapshot::Result::kRead, {}, {}};
    if (lseek(file.get(), 0, SEEK_SET) != 0) {
      return unreadable(errno);
    }
    if (const int error = read_rest(file.get(), kLargestFile, &snapshot.content); error != 0) {
      return unreadable(error);
    }
    if (fstat(file.get(), &after) == 0 && is_same(before, after) &&
        snapshot.content.size() == static_cast<size_t>(after.st_size)) {
      return snapshot;
    }
  }
  return {FileSnapshot::Result::kUnreadable, {}, "it does not stay the same while it is read"};
}

std::string read_kernel_file(const std::string& path) {
  std::string content;
  const Descriptor file(path);
  if (file.get() < 0 || read_rest(file.get(), kLargestFile, &content) != 0) {
    content.clear();
  }
  return content;
}

std::string read_kernel_line(const std::string& path) {
  const Descriptor file(path);
  char line[4096];
  const ssize_t count = file.get() >= 0 ? read(file.get(), line, sizeof line) : 0;
  return {line, static_cast<size_t>(count > 0 ? count : 0)};
}

}  // namespace kqsup
